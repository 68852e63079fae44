#include <dlfcn.h>

#include "context/nativecontext.h"

#include <atomic>

namespace Atelier::Vel {

namespace {

void* findFunction(const char* library, const char* name) {
    // Loads nothing. A library that is found is not unloaded any more, so that its functions stay valid.
    void* handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    if (!handle)
        return nullptr;
    // A program or a preloaded library may replace the function.
    void* function = dlsym(RTLD_DEFAULT, name);
    if (!function)
        function = dlsym(handle, name);
    dlclose(handle);
    return function;
}

// A function of a library that the process may have loaded already: otherwise no context of it can be
// current. Constant-initialised, and safe to use on several threads at a time.
template<typename Function>
class LoadedFunction {
public:
    constexpr LoadedFunction(const char* name, const char* library, const char* otherLibrary = nullptr)
        : _name(name), _libraries{library, otherLibrary} {}

    /// Returns: the function if an earlier search found it; else null.
    Function* known() const { return _function.load(std::memory_order_relaxed); }
    /// Searches for a function that is not known. Threads that do so at the same time find the same.
    Function* find() {
        for (const char* library : _libraries)
            if (void* found = known() || !library ? nullptr : findFunction(library, _name))
                _function.store(reinterpret_cast<Function*>(found), std::memory_order_relaxed);
        return known();
    }

private:
    const char* _name;
    const char* _libraries[2];
    std::atomic<Function*> _function{nullptr};
};

constexpr char kEgl[] = "libEGL.so.1";
LoadedFunction<void*()> eglGetCurrentContext("eglGetCurrentContext", kEgl);
LoadedFunction<void*()> eglGetCurrentDisplay("eglGetCurrentDisplay", kEgl);
LoadedFunction<unsigned int(void* display, void* context, int attribute, int* value)>
    eglQueryContext("eglQueryContext", kEgl);
LoadedFunction<void*()> glXGetCurrentContext("glXGetCurrentContext", "libGLX.so.0", "libGL.so.1");

constexpr int kEglContextClientType = 0x3097; // EGL_CONTEXT_CLIENT_TYPE

NativeContext contextOf(void* (*eglContext)(), void* (*glxContext)()) {
    if (void* context = eglContext ? eglContext() : nullptr)
        return {NativeContext::Api::Egl, context, nullptr};
    if (void* context = glxContext ? glxContext() : nullptr)
        return {NativeContext::Api::Glx, context, nullptr};
    return {};
}

} // namespace

// Functions that are known are called first, since a search opens files.
NativeContext currentNativeContext() {
    const NativeContext context = contextOf(eglGetCurrentContext.known(), glXGetCurrentContext.known());
    return context.api != NativeContext::Api::None
               ? context
               : contextOf(eglGetCurrentContext.find(), glXGetCurrentContext.find());
}

void* currentEglDisplay() {
    const auto display = eglGetCurrentDisplay.find();
    return display ? display() : nullptr;
}

bool isDestroyed(const NativeContext& context) {
    const auto query = context.api == NativeContext::Api::Egl ? eglQueryContext.find() : nullptr;
    int clientType = 0;
    return query && !query(context.display, context.handle, kEglContextClientType, &clientType);
}

} // namespace Atelier::Vel
