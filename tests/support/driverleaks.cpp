// What the software driver, its loader and its compiler keep to the end of the process is not this project's leak.
// The sanitizer looks for a function of this name in the program.
extern "C" __attribute__((visibility("default"))) const char*
__lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)

const char* __lsan_default_suppressions() { // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
    return "leak:libEGL_mesa.so\n"
           "leak:libGLX_mesa.so\n"
           "leak:libLLVM\n"
           "leak:swrast_dri.so\n";
}
