#pragma once

#include <velgl/bufferobject.h>

#include "context/contextgl.h"

namespace Atelier::Vel {

/// Gives VelGL access to the private part of a buffer.
struct BufferAccess {
    /// Returns: a number that no other content of any buffer of the process has had. It changes with each
    /// upload, and when the content is lost with its contexts. 0 for an object of a derived class, whose
    /// content may change without VelGL.
    static quint64 contentRevision(const BufferObject& buffer);
    /// Returns: the GL name; 0 when there is none that the current context `gl` knows.
    static unsigned int nameIn(const ContextGL& gl, const BufferObject& buffer);
};

} // namespace Atelier::Vel
