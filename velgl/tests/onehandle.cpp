#include "onehandle.h"

#include <EGL/egl.h>
#include <dlfcn.h>

namespace Atelier::Vel::Testing {

namespace {

bool isReplaced = false;
int handle = 0; // its address is the handle

template<typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

OneHandle::OneHandle() {
    isReplaced = true;
}

OneHandle::~OneHandle() {
    isReplaced = false;
}

} // namespace Atelier::Vel::Testing

using namespace Atelier::Vel::Testing;

// The dynamic linker finds these before the functions of the library, because it searches the program first.
// NOLINTBEGIN(readability-identifier-naming): the names are those of the library
#define VISIBLE extern "C" __attribute__((visibility("default")))

VISIBLE EGLContext eglGetCurrentContext() {
    const EGLContext context = next<decltype(eglGetCurrentContext)>("eglGetCurrentContext")();
    return context != EGL_NO_CONTEXT && isReplaced ? &handle : context;
}

VISIBLE EGLBoolean eglQueryContext(EGLDisplay display, EGLContext context, EGLint attribute, EGLint* value) {
    if (context == &handle)
        return EGL_TRUE;
    return next<decltype(eglQueryContext)>("eglQueryContext")(display, context, attribute, value);
}
// NOLINTEND(readability-identifier-naming)
