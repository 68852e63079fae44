#pragma once

#include <QtCore/QSharedPointer>

#include "context/contextgl.h"

namespace Atelier::Vel {

class OpenGLDeviceContext;

/// Finds the context that OpenGL calls on this thread reach. One that VelGL meets for the first time is
/// recorded; no GL name is deleted.
/// Returns: null when no context is current, and when VelGL cannot use the one that is.
ContextGL* findCurrentContext();

/// The same, but does not record a context that VelGL has not met. It allocates no memory and logs nothing:
/// for destructors, and for what undoes an earlier call.
ContextGL* findKnownContext() noexcept;

/// Finds the current context and deletes the GL names that were queued for it. The operations of all GL
/// objects begin with this call, so a queued name is deleted with the next use of VelGL in its context.
/// Returns: the same as findCurrentContext().
ContextGL* enterCurrentContext();

/// Finds the current context once for all operations within a scope on this thread: a context that VelGL did
/// not make has to be asked who it is. No other context may be made current in the scope.
class ContextScope {
public:
    ContextScope();
    ~ContextScope();
    ContextScope(const ContextScope&) = delete;
    ContextScope& operator=(const ContextScope&) = delete;

    /// Returns: the same as enterCurrentContext().
    ContextGL* gl() const { return _gl; }

    /// Suspends the scopes of this thread while a client's function runs, which may change the context. The
    /// function has to restore it.
    class Pause {
    public:
        Pause() noexcept;
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        ContextGL* _gl;
    };

private:
    QSharedPointer<OpenGLDeviceContext> _context; // keeps what `_gl` points to
    ContextGL* _outer;
    ContextGL* _gl;
};

} // namespace Atelier::Vel
