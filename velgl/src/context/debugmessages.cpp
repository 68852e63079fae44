#include <epoxy/gl.h>

#include "context/debugmessages.h"

#include "context/log.h"

namespace Atelier::Vel {

namespace {

void APIENTRY logMessage(GLenum /*source*/, GLenum /*type*/, GLuint /*id*/, GLenum severity, GLsizei length,
                         const GLchar* text, const void* /*user*/) {
    const QByteArray message(text, length < 0 ? -1 : length);
    switch (severity) {
    case GL_DEBUG_SEVERITY_HIGH:
        qCCritical(velglLog, "%s", message.constData());
        return;
    case GL_DEBUG_SEVERITY_MEDIUM:
        qCWarning(velglLog, "%s", message.constData());
        return;
    default:
        qCDebug(velglLog, "%s", message.constData());
    }
}

} // namespace

void logDebugMessages() {
    void* callback = nullptr;
    glGetPointerv(GL_DEBUG_CALLBACK_FUNCTION, &callback);
    if (!callback)
        glDebugMessageCallback(logMessage, nullptr);
}

void enableDebugMessages(DebugDelivery delivery) {
    glEnable(GL_DEBUG_OUTPUT);
    if (delivery == DebugDelivery::Synchronous)
        glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS);
}

} // namespace Atelier::Vel
