#include "context/currentcontext.h"

#include <utility>

#include "context/contextaccess.h"
#include "context/contexttable.h"

namespace Atelier::Vel {

namespace {

// The context of the innermost ContextScope of the thread; null outside of all scopes.
thread_local ContextGL* scopedContext = nullptr;

// An object put in place by setCurrent() need not be the one that is natively current.
ContextGL* nativelyCurrent(const QSharedPointer<OpenGLDeviceContext>& context) noexcept {
    ContextGL* gl = context ? ContextAccess::gl(*context).get() : nullptr;
    const bool isCurrent = gl && (!ContextAccess::isSubstituted() || gl->native() == currentNativeContext());
    return isCurrent ? gl : nullptr;
}

} // namespace

ContextGL* findCurrentContext() {
    return scopedContext ? scopedContext : nativelyCurrent(OpenGLDeviceContext::current());
}

ContextGL* findKnownContext() noexcept {
    return scopedContext ? scopedContext : nativelyCurrent(ContextAccess::known());
}

ContextGL* enterCurrentContext() {
    ContextGL* gl = findCurrentContext();
    if (gl)
        gl->deleteQueuedNames();
    return gl;
}

ContextScope::ContextScope() : _outer(scopedContext), _gl(_outer) {
    if (!_gl) {
        _context = OpenGLDeviceContext::current();
        _gl = nativelyCurrent(_context);
    }
    if (_gl)
        _gl->deleteQueuedNames();
    scopedContext = _gl;
}

ContextScope::~ContextScope() {
    scopedContext = _outer;
}

ContextScope::Pause::Pause() noexcept : _gl(std::exchange(scopedContext, nullptr)) {}

ContextScope::Pause::~Pause() {
    scopedContext = _gl;
}

} // namespace Atelier::Vel
