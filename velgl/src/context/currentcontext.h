#pragma once

#include "context/contextgl.h"

namespace Atelier::Vel {

/// Finds the context that OpenGL calls on this thread reach. One that VelGL meets for the first time is
/// recorded; no GL name is deleted.
/// Returns: null when no context is current, and when VelGL cannot use the one that is.
ContextGL* findCurrentContext();

/// Finds the current context and deletes the GL names that were queued for it. The operations of all GL
/// objects begin with this call, so a queued name is deleted with the next use of VelGL in its context.
/// Returns: the same as findCurrentContext().
ContextGL* enterCurrentContext();

} // namespace Atelier::Vel
