#pragma once

#include <vector>

#include <QtCore/QtGlobal>

#include <velmodel/drawdata.h>

/// Orders of triangles and vertices that a GPU draws faster. Plain arrays in and out.
namespace Atelier::Vel {

/// Float positions, `components` of them for each vertex, of which the first three are the coordinates.
struct PositionView {
    const void* data = nullptr;
    quint64 components = 3;
};

/// Reorders the triangles of ranges of indices, one range after the other. Its working memory is kept between
/// them, and a range costs time for the vertices in it only, however many the mesh has.
class TriangleOrder {
public:
    /// Requires: `positions` has `vertexCount` vertices, and outlives this.
    TriangleOrder(const PositionView& positions, quint64 vertexCount);

    /// Reorders `count` indices in place: first for the vertex cache, then to draw fewer pixels twice, which
    /// may cost the cache a twentieth. The winding of the triangles stays.
    /// Requires: `count` is divisible by three; every index is below the vertex count.
    /// Returns:  false, with the order unchanged, when a coordinate is infinite or no number.
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

/// The new number of each vertex: those that are used come first, in the order of their first use, and the
/// others follow in their old order. Requires: every index is below `vertexCount`, which is below 2^32.
std::vector<quint32> fetchOrder(const quint32* indices, quint64 count, quint64 vertexCount);

/// How well a cache of 16 vertices serves the triangles. Requires: `count` is divisible by three; every index
/// is below `vertexCount`.
DrawData::VertexCacheStatistics cacheStatistics(const quint32* indices, quint64 count, quint64 vertexCount);

} // namespace Atelier::Vel
