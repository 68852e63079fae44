#include <EGL/egl.h>
#include <EGL/eglext.h>

#include "context/egldisplays.h"

#include <QtCore/QStringList>

namespace Atelier::Vel {

namespace {

template<typename Function>
Function entryPoint(const char* name) {
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

bool hasExtension(const char* extensions, const char* name) {
    return extensions && QByteArray(extensions).split(' ').contains(name);
}

void* initialised(EGLenum platform, void* native) {
    const auto getPlatformDisplay = entryPoint<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    EGLDisplay display = getPlatformDisplay ? getPlatformDisplay(platform, native, nullptr) : EGL_NO_DISPLAY;
    // The display is never terminated: the program, or another context of VelGL, may use it too.
    return display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) ? display : EGL_NO_DISPLAY;
}

std::vector<EGLDeviceEXT> devices() {
    const auto queryDevices = entryPoint<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    EGLint count = 0;
    if (!queryDevices || !queryDevices(0, nullptr, &count))
        return {};
    std::vector<EGLDeviceEXT> found(static_cast<std::size_t>(count));
    if (!queryDevices(count, found.data(), &count))
        return {};
    found.resize(static_cast<std::size_t>(count));
    return found;
}

QString deviceDescription(EGLDeviceEXT device, int number) {
    QStringList parts{QStringLiteral("EGL device %1").arg(number)};
    const auto queryString = entryPoint<PFNEGLQUERYDEVICESTRINGEXTPROC>("eglQueryDeviceStringEXT");
    if (!queryString)
        return parts.first();
    const char* extensions = queryString(device, EGL_EXTENSIONS);
    if (hasExtension(extensions, "EGL_MESA_device_software"))
        parts += QStringLiteral("software");
    if (hasExtension(extensions, "EGL_EXT_device_query_name"))
        parts += QString::fromUtf8(queryString(device, EGL_RENDERER_EXT));
    if (hasExtension(extensions, "EGL_EXT_device_drm"))
        parts += QString::fromUtf8(queryString(device, EGL_DRM_DEVICE_FILE_EXT));
    if (hasExtension(extensions, "EGL_EXT_device_drm_render_node"))
        parts += QString::fromUtf8(queryString(device, EGL_DRM_RENDER_NODE_FILE_EXT));
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

EglDisplayCandidate candidate(EGLenum platform, void* native, const QString& description) {
    void* display = initialised(platform, native);
    if (display)
        return {display, description};
    return {nullptr, QStringLiteral("%1: cannot be opened (%2)").arg(description, eglErrorText())};
}

} // namespace

std::vector<EglDisplayCandidate> eglDisplays(const QString& device) {
    std::vector<EglDisplayCandidate> candidates;
    int number = 0;
    for (EGLDeviceEXT native : devices()) {
        const QString description = deviceDescription(native, number++);
        if (description.contains(device, Qt::CaseInsensitive))
            candidates.push_back(candidate(EGL_PLATFORM_DEVICE_EXT, native, description));
        else
            candidates.push_back({nullptr, QStringLiteral("%1: not '%2'").arg(description, device)});
    }
    if (device.isEmpty() &&
        hasExtension(eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS), "EGL_MESA_platform_surfaceless"))
        candidates.push_back(
            candidate(EGL_PLATFORM_SURFACELESS_MESA, nullptr, QStringLiteral("surfaceless platform")));
    return candidates;
}

QString eglErrorText() {
    switch (const EGLint error = eglGetError()) {
    case EGL_SUCCESS:
        return QStringLiteral("no reason given");
    case EGL_NOT_INITIALIZED:
        return QStringLiteral("EGL_NOT_INITIALIZED");
    case EGL_BAD_ACCESS:
        return QStringLiteral("EGL_BAD_ACCESS: another window system's context may be current");
    case EGL_BAD_ALLOC:
        return QStringLiteral("EGL_BAD_ALLOC");
    case EGL_BAD_MATCH:
        return QStringLiteral("EGL_BAD_MATCH");
    case EGL_BAD_CONFIG:
        return QStringLiteral("EGL_BAD_CONFIG");
    case EGL_BAD_ATTRIBUTE:
        return QStringLiteral("EGL_BAD_ATTRIBUTE");
    default:
        return QStringLiteral("EGL error 0x%1").arg(error, 0, 16);
    }
}

} // namespace Atelier::Vel
