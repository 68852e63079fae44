#pragma once

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// An object that can be bound to its OpenGL binding target: a buffer, a texture, a vertex array, a program.
///
/// Calls of bind() and unbind() come in pairs and nest: each unbind() belongs to the latest bind() that has
/// none yet. A bind() that failed needs its unbind() as well, which then changes nothing. AutoBinder keeps to
/// this.
///
/// Threads: bind() and unbind() are called on the thread of the current context. The destructors of VelGL's
/// objects may run on any thread, with or without a context, while no other thread uses the object.
class VELGL_EXPORT Bindable {
public:
    /// Does not unbind.
    virtual ~Bindable();

    /// Binds this object to its target and remembers what was bound there. Makes the GL object if there is
    /// none yet that the current context knows.
    /// Returns: false when no context is current, when the GL object cannot be made, and when the object
    /// belongs to a context that does not share with the current one. Nothing is bound then, nor when it
    /// throws std::bad_alloc.
    virtual bool bind() = 0;

    /// Binds what was bound before the matching bind(); nothing, if that was deleted in between. Does nothing
    /// in a context other than that of the matching bind(), and without one. Throws nothing.
    virtual void unbind() = 0;

protected:
    Bindable() = default;
    Bindable(const Bindable&) = default;
    Bindable& operator=(const Bindable&) = default;
};

} // namespace Atelier::Vel
