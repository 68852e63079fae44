#include "geometry/merging/indextupletable.h"

#include <algorithm>
#include <array>

#include "memory/prefetch.h"

namespace Atelier::Vel {

namespace {

/// Finds a tuple by its first number. Each first number has a slot. The slots of further tuples with the same
/// first number are chained to it.
template<std::size_t Others>
class ChainedTable final : public IndexTupleTable {
public:
    ChainedTable() : IndexTupleTable(Others + 1) {}

    void raiseLimit(quint64 limit) override {
        _slots.reserve(limit, _limit);
        // Two tuples per first number are enough for nearly every mesh. Moving tuples is expensive, and
        // unused capacity costs nothing.
        _tuples.reserve(2 * limit * (Others + 1), quint64{_tupleCount} * (Others + 1));
        _limit = std::max(_limit, limit);
    }

    void add(const quint32* const* numbers, quint32 count, quint32* out) override {
        _tuples.reserve((quint64{_tupleCount} + count) * (Others + 1), quint64{_tupleCount} * (Others + 1));
        _chained.reserve(quint64{_chainedCount} + count + 1, quint64{_chainedCount} + 1);
        // Copies of members, so that the compiler can keep them in registers while it writes numbers.
        Slot* const slots = _slots.items();
        quint32 tupleCount = _tupleCount;
        std::array<quint32, Others + 1> greatest{};
        quint32* tuple = _tuples.items() + quint64{tupleCount} * (Others + 1);
        for (quint32 i = 0; i < count; ++i) {
            // Without a prefetch, each look-up would wait for memory if faces are in random order. This
            // prefetch distance covers the wait.
            constexpr quint32 kAhead = 24;
            prefetch(slots + numbers[0][std::min(i + kAhead, count - 1)]);
            const quint32 first = numbers[0][i];
            Rest others;
            for (std::size_t k = 0; k < Others; ++k)
                others[k] = numbers[k + 1][i];
            Slot* const slot = find(slots + first, others);
            if (slot->tuple == 0) {
                slot->tuple = ++tupleCount;
                slot->others = others;
                *tuple++ = first;
                tuple = std::copy(others.begin(), others.end(), tuple);
                greatest[0] = std::max(greatest[0], first);
                for (std::size_t k = 0; k < Others; ++k)
                    greatest[k + 1] = std::max(greatest[k + 1], others[k]);
            }
            out[i] = slot->tuple - 1;
        }
        _tupleCount = tupleCount;
        for (std::size_t k = 0; k <= Others; ++k)
            _greatest[k] = std::max(_greatest[k], greatest[k]);
    }

    void finish() override {
        _slots.clear();
        _chained.clear();
    }

private:
    using Rest = std::array<quint32, Others>;

    struct Slot {
        Rest others;
        quint32 tuple; ///< tuple number plus one; 0 marks a free slot
        quint32 next;  ///< number of the next slot of the chain; 0 ends it
    };

    /// Compares word by word. Loading two words as one would stall, because the tuple was written just
    /// before.
    static bool equal(const Rest& a, const Rest& b) {
        quint32 difference = 0;
        for (std::size_t i = 0; i < Others; ++i)
            difference |= a[i] ^ b[i];
        return difference == 0;
    }

    /// The slot of the tuple. The search starts at the slot of its first number. The result is free if the
    /// tuple is new.
    Slot* find(Slot* slot, const Rest& others) {
        if (slot->tuple == 0)
            return slot;
        while (!equal(slot->others, others)) {
            ++_steps;
            if (slot->next == 0) {
                slot->next = ++_chainedCount;
                return _chained.items() + _chainedCount;
            }
            slot = _chained.items() + slot->next;
        }
        return slot;
    }

    GrowingList<Slot> _slots;
    GrowingList<Slot> _chained; ///< numbered from 1
    quint64 _limit = 0;
    quint32 _chainedCount = 0;
};

} // namespace

std::unique_ptr<IndexTupleTable> IndexTupleTable::make(std::size_t places) {
    switch (places) {
    case 1:
        return std::make_unique<ChainedTable<0>>();
    case 2:
        return std::make_unique<ChainedTable<1>>();
    case 3:
        return std::make_unique<ChainedTable<2>>();
    case 4:
        return std::make_unique<ChainedTable<3>>();
    case 5:
        return std::make_unique<ChainedTable<4>>();
    default:
        return std::make_unique<ChainedTable<5>>();
    }
}

} // namespace Atelier::Vel
