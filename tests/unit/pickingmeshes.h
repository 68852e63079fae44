#pragma once

#include <random>
#include <utility>
#include <vector>

#include "geometry/picking/pickingray.h"
#include "geometry/picking/trianglehierarchy.h"

namespace Atelier::Vel::Testing {

/// Positions and triangles of a mesh.
struct PlainMesh {
    std::vector<float> positions;
    std::vector<quint32> indices;

    void addTriangle(const TriangleCorners& corners);
    /// All triangles, in one range.
    PickingMesh mesh() const;
};

/// A closed surface around the origin: a subdivided octahedron whose vertices have random distances from
/// `inner` to `outer`.
PlainMesh closedMesh(int subdivisions, float inner, float outer, std::mt19937& random);

/// Coordinates from -2 to 2, in part integers, so that edges and planes are met exactly.
TriangleCorners randomTriangle(std::mt19937& random);
/// An origin and a direction of such coordinates.
std::pair<SpaceVector, SpaceVector> randomLine(std::mt19937& random);

/// What a plain method finds.
struct LiteralHit {
    bool isHit = false;
    double distance = 0;
    double margin = 0; ///< by how much the closest of its comparisons holds
};
LiteralHit literalHit(const SpaceVector& origin, const SpaceVector& direction,
                      const TriangleCorners& corners);

/// The nearest hit, by testing all triangles.
TriangleHit nearestOfAll(const PickingMesh& mesh, const PickingRay& ray, const TriangleFilter& accepts = {});

} // namespace Atelier::Vel::Testing
