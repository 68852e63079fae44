#pragma once

#include <vector>

#include <QtCore/QString>

namespace Atelier::Vel {

/// A place where EGL may make a context without a window.
struct EglDisplayCandidate {
    void* display = nullptr; ///< EGLDisplay; null when it could not be opened
    QString description;     ///< for people: what it is, or what went wrong
};

/// The devices that EGL lists, in its order, then the surfaceless platform; initialised. With a `device`,
/// only the devices whose description contains that text.
std::vector<EglDisplayCandidate> eglDisplays(const QString& device);

/// The last EGL error in words.
QString eglErrorText();

} // namespace Atelier::Vel
