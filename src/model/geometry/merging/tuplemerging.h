#pragma once

#include <memory>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/indextupletable.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Merges corners that use the same values, by their numbers alone, without a look at the values: cheap, and
/// it leaves few corners to compare by their bytes.
class TupleMerging {
public:
    /// Numbers the distinct tuples from 0 in the order in which they first appear over the corners, and
    /// writes the number of each corner's tuple to `tupleOfCorner`, which has room for `cornerCount` entries
    /// and may be the list of one of the attributes. Corners without a value count as using one more value.
    /// Where it is given up, that list is as it was, but for invalid indices, which are the number of values
    /// then.
    /// `meter` counts corners.
    TupleMerging(const std::vector<CornerAttribute>& attributes, quint32 cornerCount, quint32* tupleOfCorner,
                 const WorkMeter& meter = {});

    /// The same for corners whose tuples were numbered as they came. The numbers of attribute i stand at
    /// place `places[i]` of the tuples; some may name no value.
    TupleMerging(const std::vector<CornerAttribute>& attributes, std::unique_ptr<IndexTupleTable> tuples,
                 std::vector<std::size_t> places, quint32 cornerCount, const quint32* tupleOfCorner);

    /// Whether merging by tuples paid. It does not, and was given up, where most corners have tuples of
    /// their own or many tuples share one value in each attribute.
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
