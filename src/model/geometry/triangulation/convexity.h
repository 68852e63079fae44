#pragma once

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

/// Whether a polygon is so clearly convex that by the defined test every corner is an ear, both in the
/// polygon and in what remains of it after clipping. Corner k + 1 follows corner k counter-clockwise, or
/// precedes it if `clockwise`.
/// Cost: O(count), without a division or square root.
bool isClearlyConvex(int count, const PlanePoint* points, bool clockwise);

} // namespace Atelier::Vel
