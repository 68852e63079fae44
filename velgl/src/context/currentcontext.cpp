#include "context/currentcontext.h"

#include "context/contextaccess.h"

namespace Atelier::Vel {

ContextGL* findCurrentContext() {
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    ContextGL* gl = context ? ContextAccess::gl(*context).get() : nullptr;
    // An object put in place by setCurrent() need not be the one that is natively current.
    return gl && gl->native() == currentNativeContext() ? gl : nullptr;
}

ContextGL* enterCurrentContext() {
    ContextGL* gl = findCurrentContext();
    if (gl)
        gl->deleteQueuedNames();
    return gl;
}

} // namespace Atelier::Vel
