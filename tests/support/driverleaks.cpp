// Suppresses leak reports for memory that the software driver, its loader and Qt keep until the process ends,
// and for the cache of LoadTexture, which intentionally keeps its textures. The sanitizer's runtime finds
// these functions by name, so they have to be visible. It prints no list of suppressions, because tests
// compare the output of programs.
#define VISIBLE extern "C" __attribute__((visibility("default")))

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's names
VISIBLE const char* __lsan_default_suppressions();
VISIBLE const char* __lsan_default_options();
VISIBLE const char* __asan_default_options();

const char* __lsan_default_suppressions() {
    return "leak:libEGL_mesa.so\n"
           "leak:libGLX_mesa.so\n"
           "leak:libLLVM\n"
           "leak:swrast_dri.so\n"
           "leak:libdbus-1.so\n"     // by QApplication
           "leak:libfontconfig.so\n" // by QApplication
           "leak:__argz_add_sep\n"   // LOCPATH, by the C library
           "leak:Atelier::Vel::LoadTexture\n";
}

const char* __lsan_default_options() {
    return "print_suppressions=0";
}

// AddressSanitizer's record of thread-local memory is wrong for some threads of the driver, and its check for
// leaks then crashes. Without the record, that memory counts as the thread's own.
const char* __asan_default_options() {
    return "intercept_tls_get_addr=0";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
