#pragma once

#include "geometry/triangulation/polygonscratch.h"

namespace Atelier::Vel {

/// Triangulates the polygon with the corners `scratch.points` and the winding `clockwise`. Writes the
/// triangles to `scratch.triangles`, which is empty afterwards if the polygon has fewer than three corners or
/// no ear is left.
/// Cost: O(count²) for small polygons. Large polygons use a queue to find ears and a tree to find corners
/// inside them.
void EarClip(int count, bool clockwise, PolygonScratch& scratch);

} // namespace Atelier::Vel
