#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/tuplemerging.h"
#include "memory/scratchblock.h"

namespace Atelier::Vel {

/// The distinct vertices of a mesh whose attributes are indexed separately.
///
/// Two corners share a vertex when the bytes of their values are the same in all attributes (so −0.0 and 0.0
/// differ, and two NaNs of the same bits do not). Vertices are numbered from 0 in the order in which they
/// first appear over the corners.
class VertexMerging {
public:
    /// Finds the vertices and writes the vertex of each corner to `vertexOfCorner`, which has room for
    /// `cornerCount` entries. The attributes' values must stay in place while this object lives, and their
    /// lists as long as it needs them. `vertexOfCorner` may be one of the lists if `elsewhere` gives other
    /// room for the vertices: it is asked for where the lists turn out to be needed, and the list is as it
    /// was then, but for invalid indices, which may be other invalid ones. `meter` counts corners, some of
    /// them twice. Cost: one pass over the corners; working memory of at most 16 bytes per corner.
    VertexMerging(std::vector<CornerAttribute> attributes, quint32 cornerCount, quint32* vertexOfCorner,
                  const std::function<quint32*()>& elsewhere = {}, const WorkMeter& meter = {});

    /// The same for corners whose tuples are numbered in `tupleOfCorner` already, which becomes the vertex of
    /// each.
    VertexMerging(std::vector<CornerAttribute> attributes, TupleMerging tuples, quint32 cornerCount,
                  quint32* tupleOfCorner, const WorkMeter& meter = {});

    quint32 vertexCount() const { return _vertexCount; }
    /// Whether gather() reads the attributes' index lists.
    bool needsIndices() const { return !_tuples.isDone(); }
    /// The corners whose value in one attribute is taken as zero because they have no valid index.
    quint64 substitutedCorners(std::size_t attribute) const { return _substituted[attribute]; }
    /// Writes the values of all vertices of one attribute to `out`: vertexCount() times its stride in bytes.
    /// `meter` counts vertices.
    void gather(std::size_t attribute, unsigned char* out, const WorkMeter& meter = {}) const;

private:
    void mergeTuples(quint32 cornerCount, quint32* vertexOfCorner, const WorkMeter& meter);

    std::vector<CornerAttribute> _attributes; ///< as _corners are numbered: by corner or by tuple
    TupleMerging _tuples;
    std::unique_ptr<ScratchBlock> _corners; ///< the first of each vertex; null where each is one
    std::vector<quint64> _substituted;
    quint32 _vertexCount = 0;
};

} // namespace Atelier::Vel
