#include "refusedcontext.h"

#include <limits>

#include <dlfcn.h>

#include <EGL/egl.h>

namespace {

int granted = std::numeric_limits<int>::max();

} // namespace

// Replaces the library's own function in this whole program.
extern "C" __attribute__((visibility("default"))) EGLBoolean
eglMakeCurrent(EGLDisplay display, EGLSurface draw, EGLSurface read, EGLContext context) {
    static const auto real = reinterpret_cast<decltype(&eglMakeCurrent)>(dlsym(RTLD_NEXT, "eglMakeCurrent"));
    if (context != EGL_NO_CONTEXT && granted-- <= 0)
        return EGL_FALSE;
    return real(display, draw, read, context);
}

namespace Atelier::Vel::Testing {

RefusedContext::RefusedContext(int granted) {
    ::granted = granted;
}

RefusedContext::~RefusedContext() {
    granted = std::numeric_limits<int>::max();
}

} // namespace Atelier::Vel::Testing
