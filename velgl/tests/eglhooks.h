#pragma once

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <functional>

namespace Atelier::Vel::Testing {

/// What VelGL calls of EGL, and the questions that it asks libepoxy. A program that compiles eglhooks.cpp
/// puts these in the place of the libraries' own functions.
struct EglFunctions {
    /// Those of the libraries.
    static EglFunctions real();
    /// Those that count now.
    static EglFunctions& current();

    // Empty where EGL lacks the function.
    std::function<EGLBoolean(EGLint most, EGLDeviceEXT* devices, EGLint* count)> queryDevices;
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
