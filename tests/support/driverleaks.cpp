// What the software driver and its loader keep to the end of the process is not this project's leak, and the
// cache of LoadTexture is meant to keep its textures that long. The sanitizer's runtime finds these functions
// by name, so they have to be visible; it shall not talk about them, since tests compare what programs print.
#define VISIBLE extern "C" __attribute__((visibility("default")))

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's names
VISIBLE const char* __lsan_default_suppressions();
VISIBLE const char* __lsan_default_options();

const char* __lsan_default_suppressions() {
    return "leak:libEGL_mesa.so\n"
           "leak:libGLX_mesa.so\n"
           "leak:libLLVM\n"
           "leak:swrast_dri.so\n"
           "leak:__argz_add_sep\n" // LOCPATH, by the C library
           "leak:Atelier::Vel::loadTextureFrom\n";
}

const char* __lsan_default_options() {
    return "print_suppressions=0";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
