#pragma once

#include <functional>
#include <vector>

#include <QtCore/QtGlobal>

#include "geometry/picking/pickingray.h"

namespace Atelier::Vel {

/// Whether the triangle of a number can be hit. May be empty: then all can.
using TriangleFilter = std::function<bool(quint32 number)>;

/// A tree of boxes around triangles, for the question which triangle a ray meets first.
///
/// Left out are triangles with an index or a position that does not exist, with a position that is not
/// finite, and those without an area. Threads: const functions may be called on several threads at a time.
class TriangleHierarchy {
public:
    /// Refers to the positions of the mesh, and not to its indices.
    /// Cost: n log n for n triangles; 32 bytes of working memory for each. Nothing is recursive.
    explicit TriangleHierarchy(const PickingMesh& mesh);

    /// Replaces `nearest` by the nearest hit that is nearer and passes the filter, if there is one.
    /// `accepts` is called for those triangles that are nearer than all hits found before.
    void findNearer(const PickingRay& ray, const TriangleFilter& accepts, TriangleHit& nearest) const;

    /// The bytes that the tree occupies.
    quint64 byteCount() const;

    /// A box around two further nodes or around triangles.
    struct Node {
        float minimum[3];
        quint32 first; ///< of two consecutive nodes, or of the triangles
        float maximum[3];
        quint32 triangles; ///< their number; 0 for an inner node
    };
    struct Triangle {
        quint32 vertices[3];
        quint32 number;
    };
    /// The nodes on the way to a leaf. A pending node is stored for each of them at most.
    static constexpr int kMaxDepth = 64;

private:
    void testLeaf(const Node& leaf, const PickingRay& ray, const TriangleFilter& accepts,
                  TriangleHit& nearest) const;

    VertexPositions _positions;
    std::vector<Node> _nodes; // the root is the first one; empty without triangles
    std::vector<Triangle> _triangles;
};

} // namespace Atelier::Vel
