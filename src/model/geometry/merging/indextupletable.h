#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include <QtCore/QtGlobal>

#include "geometry/merging/mergepolicy.h"
#include "memory/growinglist.h"

namespace Atelier::Vel {

/// Numbers tuples of value numbers, corner by corner, from 0 in the order in which they first appear.
class IndexTupleTable {
public:
    /// For tuples of `places` numbers, at least one and at most MergePolicy::kMaxTuplePlaces.
    static std::unique_ptr<IndexTupleTable> make(std::size_t places);
    virtual ~IndexTupleTable() = default;
    IndexTupleTable(const IndexTupleTable&) = delete;
    IndexTupleTable& operator=(const IndexTupleTable&) = delete;

    /// Allows first numbers below `limit`. Requires: `limit` is not below that of an earlier call.
    virtual void raiseLimit(quint64 limit) = 0;
    /// Writes the numbers of the tuples of `count` corners to `out`. `numbers` has one list per place; `out`
    /// may be one of them.
    virtual void add(const quint32* const* numbers, quint32 count, quint32* out) = 0;
    /// Releases the memory that only add() needs.
    virtual void finish() = 0;

    std::size_t places() const { return _places; }
    /// The number of distinct tuples so far.
    quint32 tupleCount() const { return _tupleCount; }
    /// The numbers at one place of all tuples. The distance between two numbers is places(). Null if there
    /// are no tuples.
    const quint32* numbersAt(std::size_t place) const {
        return _tupleCount == 0 ? nullptr : _tuples.items() + place;
    }
    /// The maximum number at a place of the tuples; 0 if there are no tuples.
    quint32 greatest(std::size_t place) const { return _greatest[place]; }
    /// The cost of numbering so far.
    TupleCost cost() const { return {_places, _tupleCount, _steps}; }

protected:
    explicit IndexTupleTable(std::size_t places) : _places(places) {}

    std::size_t _places;
    quint32 _tupleCount = 0;
    std::array<quint32, MergePolicy::kMaxTuplePlaces> _greatest{};
    quint64 _steps = 0; ///< comparisons with a different tuple
    GrowingList<quint32> _tuples;
};

} // namespace Atelier::Vel
