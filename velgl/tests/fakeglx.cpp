// A library with the name of GLX, whose current context the test sets.
namespace {

void* current = nullptr;

} // namespace

// NOLINTBEGIN(readability-identifier-naming): the name is that of GLX
extern "C" __attribute__((visibility("default"))) void* glXGetCurrentContext();
extern "C" __attribute__((visibility("default"))) void setCurrentContext(void* context);

void* glXGetCurrentContext() {
    return current;
}
// NOLINTEND(readability-identifier-naming)

void setCurrentContext(void* context) {
    current = context;
}
