#pragma once

#include "geometry/triangulation/polygonscratch.h"

namespace Atelier::Vel {

/// Triangulates the polygon with the corners `scratch.points`, wound as `clockwise` says, into
/// `scratch.triangles`: none if the polygon has fewer than three corners or no ear is left. Cost: O(count²)
/// for small polygons; large ones look for ears and for corners inside them through a queue and a tree.
void EarClip(int count, bool clockwise, PolygonScratch& scratch);

} // namespace Atelier::Vel
