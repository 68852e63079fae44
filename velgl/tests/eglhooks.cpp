#include "eglhooks.h"

#include <cstring>

#include <dlfcn.h>

namespace Atelier::Vel::Testing {

namespace {

template<typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

template<typename Function>
Function extension(const char* name) {
    return reinterpret_cast<Function>(next<decltype(eglGetProcAddress)>("eglGetProcAddress")(name));
}

} // namespace

EglFunctions EglFunctions::real() {
    EglFunctions functions;
    functions.queryDevices = extension<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    functions.queryDeviceString = extension<PFNEGLQUERYDEVICESTRINGEXTPROC>("eglQueryDeviceStringEXT");
    functions.getPlatformDisplay = extension<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    functions.initialize = [](EGLDisplay display) {
        return next<decltype(eglInitialize)>("eglInitialize")(display, nullptr, nullptr);
    };
    functions.queryString = next<decltype(eglQueryString)>("eglQueryString");
    functions.bindAPI = next<decltype(eglBindAPI)>("eglBindAPI");
    functions.chooseConfig = next<decltype(eglChooseConfig)>("eglChooseConfig");
    functions.createContext = next<decltype(eglCreateContext)>("eglCreateContext");
    functions.destroyContext = next<decltype(eglDestroyContext)>("eglDestroyContext");
    functions.makeCurrent = next<decltype(eglMakeCurrent)>("eglMakeCurrent");
    functions.getError = next<decltype(eglGetError)>("eglGetError");
    functions.glVersion = next<int()>("epoxy_gl_version");
    functions.hasGLExtension = next<bool(const char*)>("epoxy_has_gl_extension");
    return functions;
}

EglFunctions& EglFunctions::current() {
    static EglFunctions functions = real();
    return functions;
}

} // namespace Atelier::Vel::Testing

using Atelier::Vel::Testing::EglFunctions;

// The dynamic linker finds these before the functions of the libraries, because it searches the program
// first. NOLINTBEGIN(readability-identifier-naming): the names are those of the libraries
#define VISIBLE extern "C" __attribute__((visibility("default")))

VISIBLE int epoxy_gl_version();
VISIBLE bool epoxy_has_gl_extension(const char* extension);

namespace {

EGLBoolean queryDevices(EGLint capacity, EGLDeviceEXT* devices, EGLint* count) {
    return EglFunctions::current().queryDevices(capacity, devices, count);
}

const char* queryDeviceString(EGLDeviceEXT device, EGLint name) {
    return EglFunctions::current().queryDeviceString(device, name);
}

EGLDisplay getPlatformDisplay(EGLenum platform, void* native, const EGLint* attributes) {
    return EglFunctions::current().getPlatformDisplay(platform, native, attributes);
}

template<typename Function>
__eglMustCastToProperFunctionPointerType unlessEmpty(bool isThere, Function* function) {
    return isThere ? reinterpret_cast<__eglMustCastToProperFunctionPointerType>(function) : nullptr;
}

} // namespace

VISIBLE __eglMustCastToProperFunctionPointerType eglGetProcAddress(const char* name) {
    const EglFunctions& functions = EglFunctions::current();
    if (std::strcmp(name, "eglQueryDevicesEXT") == 0)
        return unlessEmpty(bool(functions.queryDevices), queryDevices);
    if (std::strcmp(name, "eglQueryDeviceStringEXT") == 0)
        return unlessEmpty(bool(functions.queryDeviceString), queryDeviceString);
    if (std::strcmp(name, "eglGetPlatformDisplayEXT") == 0)
        return unlessEmpty(bool(functions.getPlatformDisplay), getPlatformDisplay);
    return reinterpret_cast<decltype(&eglGetProcAddress)>(dlsym(RTLD_NEXT, "eglGetProcAddress"))(name);
}

VISIBLE EGLBoolean eglInitialize(EGLDisplay display, EGLint* /*major*/, EGLint* /*minor*/) {
    return EglFunctions::current().initialize(display);
}

VISIBLE const char* eglQueryString(EGLDisplay display, EGLint name) {
    return EglFunctions::current().queryString(display, name);
}

VISIBLE EGLBoolean eglBindAPI(EGLenum api) {
    return EglFunctions::current().bindAPI(api);
}

VISIBLE EGLBoolean eglChooseConfig(EGLDisplay display, const EGLint* attributes, EGLConfig* configs,
                                   EGLint size, EGLint* count) {
    return EglFunctions::current().chooseConfig(display, attributes, configs, size, count);
}

VISIBLE EGLContext eglCreateContext(EGLDisplay display, EGLConfig config, EGLContext shared,
                                    const EGLint* attributes) {
    return EglFunctions::current().createContext(display, config, shared, attributes);
}

VISIBLE EGLBoolean eglDestroyContext(EGLDisplay display, EGLContext context) {
    return EglFunctions::current().destroyContext(display, context);
}

VISIBLE EGLBoolean eglMakeCurrent(EGLDisplay display, EGLSurface draw, EGLSurface read, EGLContext context) {
    return EglFunctions::current().makeCurrent(display, draw, read, context);
}

VISIBLE EGLint eglGetError() {
    return EglFunctions::current().getError();
}

int epoxy_gl_version() {
    return EglFunctions::current().glVersion();
}

bool epoxy_has_gl_extension(const char* extension) {
    return EglFunctions::current().hasGLExtension(extension);
}
// NOLINTEND(readability-identifier-naming)
