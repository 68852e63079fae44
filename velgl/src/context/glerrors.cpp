#include <epoxy/gl.h>

#include "context/glerrors.h"

#include <QtCore/QStringList>

#include "context/log.h"

namespace Atelier::Vel {

namespace {

QString errorName(GLenum error) {
    switch (error) {
    case GL_OUT_OF_MEMORY:
        return QStringLiteral("GL_OUT_OF_MEMORY");
    case GL_INVALID_ENUM:
        return QStringLiteral("GL_INVALID_ENUM");
    case GL_INVALID_VALUE:
        return QStringLiteral("GL_INVALID_VALUE");
    case GL_INVALID_OPERATION:
        return QStringLiteral("GL_INVALID_OPERATION");
    case GL_INVALID_FRAMEBUFFER_OPERATION:
        return QStringLiteral("GL_INVALID_FRAMEBUFFER_OPERATION");
    case GL_CONTEXT_LOST:
        return QStringLiteral("GL_CONTEXT_LOST");
    default:
        return QStringLiteral("0x%1").arg(error, 0, 16);
    }
}

} // namespace

QString takeErrors() {
    // OpenGL has fewer kinds of errors. A lost context may report its loss forever, so the loop needs an end.
    constexpr int kMaxErrors = 8;
    QStringList names;
    for (int i = 0; i < kMaxErrors; ++i) {
        const GLenum error = glGetError();
        if (error == GL_NO_ERROR)
            break;
        names.append(errorName(error));
    }
    names.removeDuplicates();
    return names.join(QStringLiteral(", "));
}

void FailureReport::failed(const char* action, const QString& label) {
    const QString errors = takeErrors();
    if (_isFailed)
        return;
    _isFailed = true;
    _waiting = QStringLiteral("could not be %1 (%2)")
                   .arg(QLatin1String(action),
                        errors.isEmpty() ? QStringLiteral("OpenGL reported no error") : errors);
    setLabel(label);
}

void FailureReport::setLabel(const QString& label) {
    if (_waiting.isNull() || label.isEmpty())
        return;
    qCWarning(velglLog, "%s '%s' %s", _kind, qPrintable(label), qPrintable(_waiting));
    _waiting = QString();
}

void FailureReport::succeeded() {
    _isFailed = false;
    _waiting = QString();
}

} // namespace Atelier::Vel
