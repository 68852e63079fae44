#pragma once

#include "state/scopedbinding.h"

namespace Atelier::Vel {

/// Returns: whether a mode draws lists, for which a restart index is an ordinary vertex: points, lines,
/// triangles, quadrilaterals, their forms with adjacency, and patches.
bool isPrimitiveList(GLenum mode);

/// Turns the client's primitive restart off while lists are drawn: points, lines, triangles, quadrilaterals,
/// their forms with adjacency, and patches. The restart index is an ordinary vertex there. Strips, loops and
/// fans keep the client's setting. Restores it on destruction.
/// Cost: two queries for a list, none for other modes.
class ScopedPrimitiveRestart {
public:
    explicit ScopedPrimitiveRestart(GLenum mode);
    ~ScopedPrimitiveRestart();
    ScopedPrimitiveRestart(const ScopedPrimitiveRestart&) = delete;
    ScopedPrimitiveRestart& operator=(const ScopedPrimitiveRestart&) = delete;

private:
    bool _atIndex = false; ///< whether GL_PRIMITIVE_RESTART was turned off
    bool _atFixedIndex = false;
};

} // namespace Atelier::Vel
