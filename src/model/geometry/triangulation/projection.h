#pragma once

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

/// The normalized sum of the cross products of the positions of consecutive corners. About this direction,
/// the polygon is wound counter-clockwise. The result is zero if the sum is zero. `positions` has three
/// floats per vertex; `indices` gives the vertex of each of `count` corners. Requires: at least one corner.
SpacePoint PolygonNormal(int count, const int* indices, const float* positions);

/// Writes the corners, projected to the plane through corner 0 that is perpendicular to `normal`, to
/// `points`, which has capacity for `count` points. Corner 0 is the origin. Requires: at least one corner.
void ProjectPolygon(const SpacePoint& normal, int count, const int* indices, const float* positions,
                    PlanePoint* points);

/// Whether a polygon in the plane is wound counter-clockwise, or has no area. Requires: at least one point.
bool IsCounterClockwise(int count, const PlanePoint* points);

} // namespace Atelier::Vel
