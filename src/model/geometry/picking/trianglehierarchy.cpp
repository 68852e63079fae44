#include "geometry/picking/trianglehierarchy.h"

#include <utility>

#include "geometry/picking/hierarchybuild.h"

namespace Atelier::Vel {

namespace {

/// A node that the ray passes, from a distance on.
struct Pending {
    quint32 node;
    double near;
};

} // namespace

TriangleHierarchy::TriangleHierarchy(const PickingMesh& mesh) : _positions(mesh.positions) {
    HierarchyBuild build = buildHierarchy(mesh);
    _nodes = std::move(build.nodes);
    _triangles = std::move(build.triangles);
}

quint64 TriangleHierarchy::byteCount() const {
    return _nodes.capacity() * sizeof(Node) + _triangles.capacity() * sizeof(Triangle);
}

void TriangleHierarchy::findNearer(const PickingRay& ray, const TriangleFilter& accepts,
                                   TriangleHit& nearest) const {
    Pending pending[kMaxDepth + 1];
    int count = 0;
    const auto push = [&](quint32 node, const RayInterval& interval) {
        if (!interval.isEmpty() && interval.near <= nearest.distance)
            pending[count++] = {node, interval.near};
    };
    if (!_nodes.empty())
        push(0, ray.within(_nodes[0].minimum, _nodes[0].maximum));
    while (count > 0) {
        const Pending next = pending[--count];
        if (next.near > nearest.distance)
            continue;
        const Node& node = _nodes[next.node];
        if (node.triangles != 0) {
            testLeaf(node, ray, accepts, nearest);
            continue;
        }
        const Node* const children = &_nodes[node.first];
        const RayInterval left = ray.within(children[0].minimum, children[0].maximum);
        const RayInterval right = ray.within(children[1].minimum, children[1].maximum);
        // The nearer one is taken first.
        const bool isLeftFirst = left.near <= right.near;
        push(node.first + (isLeftFirst ? 1 : 0), isLeftFirst ? right : left);
        push(node.first + (isLeftFirst ? 0 : 1), isLeftFirst ? left : right);
    }
}

void TriangleHierarchy::testLeaf(const Node& leaf, const PickingRay& ray, const TriangleFilter& accepts,
                                 TriangleHit& nearest) const {
    for (quint32 i = leaf.first; i < leaf.first + leaf.triangles; ++i) {
        const Triangle& triangle = _triangles[i];
        TriangleHit hit;
        hit.number = triangle.number;
        if (ray.meets(_positions.cornersOf(triangle.vertices), hit) && hit.isNearerThan(nearest) &&
            (!accepts || accepts(hit.number)))
            nearest = hit;
    }
}

} // namespace Atelier::Vel
