#include <velgl/opengldevicecontext.h>

#include "context/contexttable.h"

namespace Atelier::Vel {

struct OpenGLDeviceContext::Data {
    std::unique_ptr<ContextGL> gl;
};

std::unique_ptr<ContextGL>& ContextAccess::gl(OpenGLDeviceContext& context) {
    return context._data->gl;
}

namespace {

// Static objects are destroyed after the thread-local objects of the main thread, and may still call
// current().
thread_local bool substituteIsDestroyed = false;

struct Substitute {
    QSharedPointer<OpenGLDeviceContext> context;
    ~Substitute() { substituteIsDestroyed = true; }
};

thread_local Substitute substitute;

} // namespace

OpenGLDeviceContext::OpenGLDeviceContext() : _data(std::make_unique<Data>()) {}

OpenGLDeviceContext::~OpenGLDeviceContext() = default;

QSharedPointer<OpenGLDeviceContext> OpenGLDeviceContext::current() {
    return ContextAccess::isSubstituted() ? substitute.context : ContextTable::instance().current();
}

QSharedPointer<OpenGLDeviceContext> ContextAccess::known() noexcept {
    return isSubstituted() ? substitute.context : ContextTable::instance().known();
}

bool ContextAccess::isSubstituted() noexcept {
    return !substituteIsDestroyed && substitute.context;
}

void OpenGLDeviceContext::forget() {
    ContextTable::instance().forgetCurrent();
}

void OpenGLDeviceContext::setCurrent(QSharedPointer<OpenGLDeviceContext> context) {
    if (!substituteIsDestroyed)
        substitute.context.swap(context);
}

bool OpenGLDeviceContext::makeCurrent() {
    if (const ContextGL* gl = _data->gl.get())
        return gl->native() == currentNativeContext();
    return current() == this;
}

void OpenGLDeviceContext::doneCurrent() {}

int OpenGLDeviceContext::version() const {
    return _data->gl ? _data->gl->version() : 0;
}

QString OpenGLDeviceContext::description() const {
    return _data->gl ? _data->gl->description() : QString();
}

} // namespace Atelier::Vel
