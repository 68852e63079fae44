#pragma once

#include <vector>

#include <QtCore/QString>

namespace Atelier::Vel {

/// A display on which EGL may create a context without a window.
struct EglDisplayCandidate {
    void* display = nullptr; ///< EGLDisplay; null when it could not be opened
    QString description;     ///< for error messages: what it is, or why it is not used
};

/// Opens the devices that EGL lists, in that order, then the surfaceless platform. If `device` is not empty,
/// only devices whose description contains that text are opened.
/// Returns: all candidates, with a null display where one was not opened.
std::vector<EglDisplayCandidate> eglDisplays(const QString& device);

/// Returns: the name of the last EGL error, for messages.
QString eglErrorText();

} // namespace Atelier::Vel
