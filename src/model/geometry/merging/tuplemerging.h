#pragma once

#include <memory>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/indextupletable.h"
#include "geometry/merging/mergeoptions.h"

namespace Atelier::Vel {

/// Merges corners that use the same values by the value numbers alone. This is cheap, and it leaves few
/// corners to merge by bytes.
class TupleMerging {
public:
    /// Numbers the distinct tuples from 0 in the order in which they first appear over the corners, and
    /// writes the number of each corner's tuple to `tupleOfCorner`, which has capacity for `cornerCount`
    /// entries and may be the list of one of the attributes. A corner without a value counts as using one
    /// additional value. Stops as soon as the policy decides that merging by tuples is not worthwhile. Then
    /// isDone() is false, and the valid indices of an overwritten list are restored; invalid ones may be
    /// replaced by the number of values.
    TupleMerging(const std::vector<CornerAttribute>& attributes, quint32 cornerCount, quint32* tupleOfCorner,
                 const MergeOptions& options);

    /// Takes over the tuples of corners that were numbered as they were read. The numbers of attribute i are
    /// at place `places[i]` of the tuples. Some of them may be invalid.
    TupleMerging(const std::vector<CornerAttribute>& attributes, std::unique_ptr<IndexTupleTable> tuples,
                 std::vector<std::size_t> places, quint32 cornerCount, const quint32* tupleOfCorner);

    /// Whether all corners were merged.
    bool isDone() const { return _tuples != nullptr; }
    quint32 tupleCount() const { return _tuples->tupleCount(); }
    /// The number of corners without a value in one attribute.
    quint64 substitutedCorners(std::size_t attribute) const { return _substituted[attribute]; }
    /// The tuples as corners: corner t uses the values of tuple t.
    std::vector<CornerAttribute> tuples(const std::vector<CornerAttribute>& attributes) const;

private:
    std::unique_ptr<IndexTupleTable> _tuples;
    std::vector<std::size_t> _places; ///< of each attribute
    std::vector<quint64> _substituted;
};

} // namespace Atelier::Vel
