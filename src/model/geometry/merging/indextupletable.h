#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include <QtCore/QtGlobal>

#include "memory/growinglist.h"

namespace Atelier::Vel {

/// Numbers tuples of value numbers, corner by corner, from 0 in the order in which they first appear.
class IndexTupleTable {
public:
    static constexpr std::size_t kMaxPlaces = 6;

    /// For tuples of `places` numbers, at least one and at most kMaxPlaces.
    static std::unique_ptr<IndexTupleTable> make(std::size_t places);
    virtual ~IndexTupleTable() = default;
    IndexTupleTable(const IndexTupleTable&) = delete;
    IndexTupleTable& operator=(const IndexTupleTable&) = delete;

    /// Lets the first number of a tuple be anything below `limit`, which never becomes less.
    virtual void admit(quint64 limit) = 0;
    /// Writes the numbers of the tuples of `count` corners to `out`. `numbers` has a list for each place;
    /// `out` may be one of them.
    virtual void add(const quint32* const* numbers, quint32 count, quint32* out) = 0;
    /// Gives back what only add() needs.
    virtual void finish() = 0;

    std::size_t places() const { return _places; }
    /// The different tuples so far.
    quint32 tupleCount() const { return _tupleCount; }
    /// The numbers at one place of all tuples, places() apart; null where there are none.
    const quint32* numbersAt(std::size_t place) const {
        return _tupleCount == 0 ? nullptr : _tuples.items() + place;
    }
    /// The greatest number at a place of the tuples; 0 where there are none.
    quint32 greatest(std::size_t place) const { return _greatest[place]; }
    /// Whether this pays yet, after `added` corners of an expected number. It does not where most corners
    /// have tuples of their own or many tuples share a first number.
    bool isWorthwhile(quint64 added, quint64 expected) const;

protected:
    explicit IndexTupleTable(std::size_t places) : _places(places) {}

    std::size_t _places;
    quint32 _tupleCount = 0;
    std::array<quint32, kMaxPlaces> _greatest{};
    quint64 _steps = 0; ///< tuples that were looked at in vain
    GrowingList<quint32> _tuples;
};

} // namespace Atelier::Vel
