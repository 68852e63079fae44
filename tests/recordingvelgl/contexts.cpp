#include <velgl/opengldevicecontext.h>

#include <velgl/bufferobject.h>
#include <velgl/sharedpointer.h>
#include <velgl/vertexarrayobject.h>

#include "callrecord.h"

namespace Atelier::Vel {

using Testing::CallRecord;

struct OpenGLDeviceContext::Data {};

namespace {

QSharedPointer<OpenGLDeviceContext>& inPlace() {
    static QSharedPointer<OpenGLDeviceContext> context;
    return context;
}

template<typename Object>
QSharedPointer<Object> made(const char* factory) {
    CallRecord& record = CallRecord::instance();
    QSharedPointer<Object> object;
    if (record.objectsLeft-- > 0)
        object = shared(std::make_unique<Object>());
    record.add(QStringLiteral("context: %1 -> %2").arg(QLatin1String(factory), record.nameOf(object.data())));
    return object;
}

} // namespace

OpenGLDeviceContext::OpenGLDeviceContext() = default;

OpenGLDeviceContext::~OpenGLDeviceContext() = default;

QSharedPointer<OpenGLDeviceContext> OpenGLDeviceContext::current() {
    CallRecord::instance().add(inPlace() ? QStringLiteral("current -> context")
                                         : QStringLiteral("current -> null"));
    return inPlace();
}

void OpenGLDeviceContext::setCurrent(QSharedPointer<OpenGLDeviceContext> context) {
    inPlace() = std::move(context);
}

bool OpenGLDeviceContext::makeCurrent() {
    CallRecord::instance().add(QStringLiteral("context: makeCurrent"));
    return true;
}

void OpenGLDeviceContext::doneCurrent() {
    CallRecord::instance().add(QStringLiteral("context: doneCurrent"));
}

int OpenGLDeviceContext::version() const {
    return 0; // as of any context without a native one
}

QSharedPointer<BufferObject> OpenGLDeviceContext::createBufferObject() {
    return made<BufferObject>("createBufferObject");
}

QSharedPointer<VertexArrayObject> OpenGLDeviceContext::createVertexArrayObject() {
    return made<VertexArrayObject>("createVertexArrayObject");
}

} // namespace Atelier::Vel
