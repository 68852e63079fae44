#pragma once

#include <vector>

#include "geometry/cornerattribute.h"
#include "scratchblock.h"

namespace Atelier::Vel {

/// Merges corners that use the same values, by their numbers alone, without a look at the values: cheap, and
/// it leaves few corners to compare by their bytes. Corners without a value count as using one more value.
class TupleMerging {
public:
    /// Numbers the distinct tuples from 0 in the order in which they first appear over the corners, and
    /// writes the number of each corner's tuple to `tupleOfCorner`, which has room for `cornerCount` entries
    /// and may be the list of one of the attributes. Where it is given up, that list is as it was, but for
    /// invalid indices, which are the number of values then.
    TupleMerging(const std::vector<CornerAttribute>& attributes, quint32 cornerCount, quint32* tupleOfCorner);

    /// Whether merging by tuples paid. It does not, and was given up, where most corners have tuples of
    /// their own or many tuples share one value in each attribute.
    bool isDone() const { return _isDone; }
    quint32 tupleCount() const { return _tupleCount; }
    /// The corners without a value in one attribute.
    quint64 substitutedCorners(std::size_t attribute) const { return _substituted[attribute]; }
    /// The tuples as corners of their own: corner t uses the values of tuple t.
    std::vector<CornerAttribute> tuples(const std::vector<CornerAttribute>& attributes) const;

private:
    template<int Others>
    struct Table;
    template<int Others>
    void merge(const std::vector<CornerAttribute>& attributes, quint32 cornerCount, quint32* tupleOfCorner);
    void restoreList(const std::vector<CornerAttribute>& ordered, quint64 count,
                     quint32* tupleOfCorner) const;

    std::size_t _pivot = 0;
    quint32 _tupleCount = 0;
    bool _isDone = false;
    std::vector<quint64> _substituted;
    ScratchBlock _tuples; ///< value numbers, one of each attribute per tuple
};

} // namespace Atelier::Vel
