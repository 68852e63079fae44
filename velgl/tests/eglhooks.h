#pragma once

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <functional>

namespace Atelier::Vel::Testing {

/// The functions of EGL and libepoxy that VelGL calls to make contexts. In a program that compiles
/// eglhooks.cpp, calls of those functions reach current() instead of the libraries.
struct EglFunctions {
    /// Returns: the functions of the libraries.
    static EglFunctions real();
    /// Returns: the functions that are called now; tests change them.
    static EglFunctions& current();

    // Empty if EGL lacks the function.
    std::function<EGLBoolean(EGLint capacity, EGLDeviceEXT* devices, EGLint* count)> queryDevices;
    std::function<const char*(EGLDeviceEXT device, EGLint name)> queryDeviceString;
    std::function<EGLDisplay(EGLenum platform, void* native, const EGLint* attributes)> getPlatformDisplay;

    std::function<EGLBoolean(EGLDisplay display)> initialize;
    std::function<const char*(EGLDisplay display, EGLint name)> queryString;
    std::function<EGLBoolean(EGLenum api)> bindAPI;
    std::function<EGLBoolean(EGLDisplay display, const EGLint* attributes, EGLConfig* configs, EGLint size,
                             EGLint* count)>
        chooseConfig;
    std::function<EGLContext(EGLDisplay display, EGLConfig config, EGLContext shared,
                             const EGLint* attributes)>
        createContext;
    std::function<EGLBoolean(EGLDisplay display, EGLContext context)> destroyContext;
    std::function<EGLBoolean(EGLDisplay display, EGLSurface draw, EGLSurface read, EGLContext context)>
        makeCurrent;
    std::function<EGLint()> getError;

    std::function<int()> glVersion;
    std::function<bool(const char* extension)> hasGLExtension;
};

} // namespace Atelier::Vel::Testing
