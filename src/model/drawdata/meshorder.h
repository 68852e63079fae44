#pragma once

#include <vector>

#include <QtCore/QtGlobal>

#include <velmodel/drawdata.h>

/// Orders of triangles and vertices that a GPU draws faster. Input and output are plain arrays.
namespace Atelier::Vel {

/// Float positions, with `components` floats per vertex. The first three are the coordinates.
struct PositionView {
    const void* data = nullptr;
    quint64 components = 3;
};

/// Reorders the triangles of index ranges, one range at a time. Keeps its working memory between ranges. The
/// time for a range depends on its own vertices, not on the number of vertices in the mesh.
class TriangleOrder {
public:
    /// Requires: `positions` has `vertexCount` vertices, and its data outlive this object.
    TriangleOrder(const PositionView& positions, quint64 vertexCount);

    /// Reorders `count` indices in place: first for the vertex cache, then to reduce overdraw, which may
    /// worsen the use of the cache by 5 percent. The winding of the triangles is unchanged.
    /// Requires: `count` is divisible by three; every index is below the vertex count.
    /// Returns:  false, with the order unchanged, if a coordinate is infinite or NaN.
    bool reorder(quint32* indices, quint64 count);

private:
    void numberVertices(const quint32* indices, quint64 count);
    void forgetVertices();
    bool collectPoints();
    void orderTriangles();

    PositionView _positions;
    std::vector<quint32> _numbers;   ///< of the vertices in the range; kNone for all others
    std::vector<quint32> _vertices;  ///< in the range, by their numbers
    std::vector<float> _points;      ///< three coordinates for each of _vertices
    std::vector<quint32> _triangles; ///< by the numbers of their vertices
    std::vector<quint32> _reordered;
};

/// The new number of each vertex. Used vertices come first, in the order of their first use. Unused vertices
/// follow in their old order. Requires: every index is below `vertexCount`, which is below 2^32.
std::vector<quint32> fetchOrder(const quint32* indices, quint64 count, quint64 vertexCount);

/// The statistics of the triangles for a cache of 16 vertices. Requires: `count` is divisible by three; every
/// index is below `vertexCount`.
DrawData::VertexCacheStatistics cacheStatistics(const quint32* indices, quint64 count, quint64 vertexCount);

} // namespace Atelier::Vel
