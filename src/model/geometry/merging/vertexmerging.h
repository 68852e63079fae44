#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/mergeoptions.h"
#include "geometry/merging/tuplemerging.h"
#include "geometry/merging/vertexremap.h"

namespace Atelier::Vel {

/// The distinct vertices of a mesh whose attributes are indexed separately: the entry point of merging.
///
/// Two corners share a vertex if their values have the same bytes in all attributes (so −0.0 and 0.0 differ,
/// and two NaNs with the same bits are equal). Vertices are numbered from 0 in the order in which they first
/// appear over the corners.
class VertexMerging {
public:
    /// Finds the vertices and writes the vertex of each corner to `vertexOfCorner`, which has capacity for
    /// `cornerCount` entries. The values of the attributes must remain valid during the lifetime of this
    /// object, and their lists while needsIndices() is true. `vertexOfCorner` may be the list of one of the
    /// attributes if `otherList` is given. If the lists turn out to be needed later, `otherList` is called
    /// and returns another list for the vertices. Then valid indices in the list are unchanged; invalid ones
    /// may be replaced by the number of values.
    /// Cost: one pass over the corners; working memory of at most 16 bytes per corner.
    VertexMerging(std::vector<CornerAttribute> attributes, quint32 cornerCount, quint32* vertexOfCorner,
                  const MergeOptions& options, const std::function<quint32*()>& otherList = {});

    /// The same for corners whose tuples are already numbered in `tupleOfCorner`. That list becomes the list
    /// of vertices.
    VertexMerging(std::vector<CornerAttribute> attributes, TupleMerging tuples, quint32 cornerCount,
                  quint32* tupleOfCorner, const MergeOptions& options);

    quint32 vertexCount() const { return _vertexCount; }
    /// Whether gather() reads the index lists of the attributes.
    bool needsIndices() const { return !_tuples.isDone(); }
    /// The number of corners whose value in one attribute is zero because they have no valid index.
    quint64 substitutedCorners(std::size_t attribute) const { return _substituted[attribute]; }
    /// Writes the values of all vertices in one attribute to `out`, vertexCount() times its stride in bytes.
    /// `meter` counts vertices.
    void gather(std::size_t attribute, unsigned char* out, const WorkMeter& meter = {}) const;

private:
    void keep(VertexRemap remap);
    void mergeTuples(quint32 cornerCount, quint32* vertexOfCorner, const MergeOptions& options);

    std::vector<CornerAttribute> _attributes; ///< numbered by corner, or by tuple if tuples were merged
    TupleMerging _tuples;
    std::vector<quint64> _substituted;
    quint32 _vertexCount = 0;
    std::unique_ptr<ScratchBlock> _firstCorner; ///< of each vertex; null if the remap is the identity
};

} // namespace Atelier::Vel
