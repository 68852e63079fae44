#pragma once

#include <memory>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/indextupletable.h"
#include "geometry/merging/mergeoptions.h"

namespace Atelier::Vel {

/// Merges corners that use the same values, by the numbers of the values alone: cheap, and it leaves few
/// corners to merge by their bytes.
class TupleMerging {
public:
    /// Numbers the distinct tuples from 0 in the order in which they first appear over the corners, and
    /// writes the number of each corner's tuple to `tupleOfCorner`, which has capacity for `cornerCount`
    /// entries and may be the list of one of the attributes. Corners without a value count as using one more
    /// value. Stops as soon as the policy finds it not worthwhile: then isDone() is false, and a list that
    /// was overwritten has its valid indices again; invalid ones may be replaced by the number of values.
    TupleMerging(const std::vector<CornerAttribute>& attributes, quint32 cornerCount, quint32* tupleOfCorner,
                 const MergeOptions& options);

    /// Takes over the tuples of corners that were numbered as they were read. The numbers of attribute i
    /// stand at place `places[i]` of the tuples; some may name no value.
    TupleMerging(const std::vector<CornerAttribute>& attributes, std::unique_ptr<IndexTupleTable> tuples,
                 std::vector<std::size_t> places, quint32 cornerCount, const quint32* tupleOfCorner);

    /// Whether all corners were merged.
    bool isDone() const { return _tuples != nullptr; }
    quint32 tupleCount() const { return _tuples->tupleCount(); }
    /// The corners without a value in one attribute.
    quint64 substitutedCorners(std::size_t attribute) const { return _substituted[attribute]; }
    /// The tuples as corners of their own: corner t uses the values of tuple t.
    std::vector<CornerAttribute> tuples(const std::vector<CornerAttribute>& attributes) const;

private:
    std::unique_ptr<IndexTupleTable> _tuples;
    std::vector<std::size_t> _places; ///< of each attribute
    std::vector<quint64> _substituted;
};

} // namespace Atelier::Vel
