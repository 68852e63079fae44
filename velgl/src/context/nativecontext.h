#pragma once

namespace Atelier::Vel {

/// The handle of a context as the window system knows it.
struct NativeContext {
    enum class Api { None, Egl, Glx };

    Api api = Api::None;
    void* handle = nullptr;
    void* display = nullptr; ///< the EGLDisplay, for isDestroyed() and sharing; null for GLX

    friend bool operator==(const NativeContext& a, const NativeContext& b) {
        return a.api == b.api && a.handle == b.handle;
    }
    friend bool operator!=(const NativeContext& a, const NativeContext& b) { return !(a == b); }
};

/// Returns: the native context that is current on the calling thread, whichever library made it current,
/// without its display.
NativeContext currentNativeContext();
/// Returns: the EGLDisplay of the current context; null if that is none of EGL.
void* currentEglDisplay();

/// Returns: true if the context is known to be destroyed; false if it exists or nothing is known.
bool isDestroyed(const NativeContext& context);

} // namespace Atelier::Vel
