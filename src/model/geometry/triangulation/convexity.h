#pragma once

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

/// Whether a polygon is so clearly convex that every corner of it, and of whatever clipping leaves of it, is
/// an ear by the defined test. Corner k + 1 follows corner k counter-clockwise, or precedes it if
/// `clockwise`. Cost: O(count), without a division or square root.
bool isClearlyConvex(int count, const PlanePoint* points, bool clockwise);

} // namespace Atelier::Vel
