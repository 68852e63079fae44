#pragma once

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// The shape of a polygon in space.
struct FaceShape {
    double normal[3] = {}; ///< of length 1, where the face is seen counter-clockwise; zero if degenerate
    double size = 0;       ///< the diagonal of the box around the corners; of a triangle, the longest edge
    double deviation = 0;  ///< the largest distance of a corner from the mean plane
    bool isFinite = true;  ///< whether all coordinates are; nothing else is set if not
    /// Whether the corners lie on a line, up to the rounding of their coordinates.
    bool isDegenerate = true;
};

/// Measures the polygon whose corners have the given vertex numbers. `positions` has three floats per vertex.
/// The normal is that of the summed cross products (Newell), in double precision; if they cancel each other
/// out, as in a polygon that crosses itself, it is that of the widest triangle of corners.
/// Requires: three corners at least, and every vertex number lies in `positions`.
/// Cost:     O(count).
FaceShape shapeOf(const float* positions, const quint32* corners, quint32 count);

/// The cosine of the angle between a face and a vector of three floats; 0 if the vector is zero.
/// Requires: the face is not degenerate.
double cosineTo(const FaceShape& shape, const float* vector);

/// Whether that cosine is above `minCosine`, which is not negative. Faster than cosineTo().
bool isOnSide(const FaceShape& shape, const float* vector, double minCosine);

} // namespace Atelier::Vel
