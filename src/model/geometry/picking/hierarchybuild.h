#pragma once

#include <vector>

#include "geometry/picking/trianglehierarchy.h"

namespace Atelier::Vel {

/// The content of a TriangleHierarchy.
struct HierarchyBuild {
    std::vector<TriangleHierarchy::Node> nodes;
    std::vector<TriangleHierarchy::Triangle> triangles; ///< in the order of the leaves
};

/// Builds a tree from the root. A node is divided at one of 16 planes across the longest extent of its
/// triangles' centres, where the expected number of tests of a random ray, by the surfaces of the two boxes,
/// is smallest. Below a depth of 32, and where centres coincide, it is divided into halves, so no path has
/// more than kMaxDepth nodes.
HierarchyBuild buildHierarchy(const PickingMesh& mesh);

/// Whether a triangle can be hit: its positions are finite, and it has an area.
bool canBeHit(const TriangleCorners& corners);

} // namespace Atelier::Vel
