#include <EGL/egl.h>
#include <dlfcn.h>

#include "context/nativecontext.h"

#include <initializer_list>

namespace Atelier::Vel {

namespace {

using GlxGetCurrentContext = void* (*)();

// GLX is used only if the process has loaded it already: otherwise no GLX context can be current.
GlxGetCurrentContext findGlx() {
    for (const char* library : {"libGLX.so.0", "libGL.so.1"}) {
        if (void* handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD)) {
            void* symbol = dlsym(handle, "glXGetCurrentContext");
            dlclose(handle);
            if (symbol)
                return reinterpret_cast<GlxGetCurrentContext>(symbol);
        }
    }
    return nullptr;
}

void* currentGlxContext() {
    static GlxGetCurrentContext getCurrentContext = nullptr;
    if (!getCurrentContext)
        getCurrentContext = findGlx();
    return getCurrentContext ? getCurrentContext() : nullptr;
}

} // namespace

NativeContext currentNativeContext() {
    if (void* context = eglGetCurrentContext())
        return {NativeContext::Api::Egl, context, eglGetCurrentDisplay()};
    if (void* context = currentGlxContext())
        return {NativeContext::Api::Glx, context, nullptr};
    return {};
}

bool isDestroyed(const NativeContext& context) {
    if (context.api != NativeContext::Api::Egl)
        return false;
    EGLint clientType = 0;
    return !eglQueryContext(context.display, context.handle, EGL_CONTEXT_CLIENT_TYPE, &clientType);
}

} // namespace Atelier::Vel
