#include "context/qtcontext.h"

#include <QtCore/QVariant>
#include <QtGui/QOpenGLContext>

namespace Atelier::Vel {

namespace {

// The handle in a QGLXNativeContext or a QEGLNativeContext; null if Qt gives another kind of handle, or none.
// In both types the handle is the first member. Their headers need those of X11 and of EGL.
const void* nativeHandle(const QOpenGLContext& context) {
    const QVariant handle = context.nativeHandle();
    const QByteArray type = handle.typeName();
    const bool isKnown = type == "QGLXNativeContext" || type == "QEGLNativeContext";
    return isKnown ? *static_cast<const void* const*>(handle.constData()) : nullptr;
}

} // namespace

const QOpenGLContext* qtContextOf(const NativeContext& native) {
    const QOpenGLContext* context = QOpenGLContext::currentContext();
    const void* handle = context ? nativeHandle(*context) : nullptr;
    return !handle || handle == native.handle ? context : nullptr;
}

} // namespace Atelier::Vel
