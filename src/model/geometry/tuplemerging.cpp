#include "geometry/tuplemerging.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "geometry/indexblocks.h"
#include "prefetch.h"

namespace Atelier::Vel {

namespace {

constexpr std::size_t kMaxAttributes = 6;
constexpr quint64 kBytesPerCorner = 16;

// What merging the tuples by bytes will need for each of them, besides the tuple.
constexpr quint64 kBytesPerTuple = 16;

/// The attribute with the most values: its values have the fewest tuples each.
std::size_t pivotOf(const std::vector<CornerAttribute>& attributes) {
    const auto most = std::max_element(
        attributes.begin(), attributes.end(),
        [](const CornerAttribute& a, const CornerAttribute& b) { return a.valueCount < b.valueCount; });
    return static_cast<std::size_t>(most - attributes.begin());
}

/// Where there are nearly as many values as corners, hardly two corners share a tuple.
bool canPay(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    return !attributes.empty() && attributes.size() <= kMaxAttributes &&
           std::all_of(attributes.begin(), attributes.end(), [cornerCount](const CornerAttribute& attribute) {
               return attribute.indices != nullptr && attribute.valueCount <= cornerCount / 2;
           });
}

} // namespace

/// The tuples seen so far, found by their value in the pivot attribute: one slot for each of its values, and
/// chained to it, from the other end of the memory, a slot for each further tuple with that value.
template<int Others>
struct TupleMerging::Table {
    struct Slot {
        std::array<quint32, Others> others;
        quint32 tuple; ///< plus one; 0 is a free slot
        quint32 next;  ///< number of the next slot of the chain; 0 ends it
    };

    Table(quint64 slotCount, quint64 bytes) : scratch(bytes), slots(scratch.as<Slot>()), bySlot(slotCount) {
        chained = slots + bytes / sizeof(Slot);
    }

    Slot* chainedSlot(quint32 number) const { return chained - number; }
    quint64 bytesUsed() const { return (bySlot + chainedCount) * sizeof(Slot); }

    /// Word by word: two words of a tuple that was just put together cannot be loaded as one without a stall.
    static bool equal(const std::array<quint32, Others>& a, const std::array<quint32, Others>& b) {
        quint32 difference = 0;
        for (std::size_t i = 0; i < Others; ++i)
            difference |= a[i] ^ b[i];
        return difference == 0;
    }

    /// The slot of the tuple; free when the tuple is new.
    Slot* find(quint32 pivot, const std::array<quint32, Others>& others) {
        Slot* slot = slots + pivot;
        if (slot->tuple == 0)
            return slot;
        while (!equal(slot->others, others)) {
            ++steps;
            if (slot->next == 0) {
                slot->next = ++chainedCount;
                return chainedSlot(chainedCount);
            }
            slot = chainedSlot(slot->next);
        }
        return slot;
    }

    ScratchBlock scratch;
    Slot* slots;
    Slot* chained;
    quint64 bySlot;
    quint32 chainedCount = 0;
    quint64 steps = 0; ///< along chains
};

TupleMerging::TupleMerging(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                           quint32* tupleOfCorner)
    : _tuples(canPay(attributes, cornerCount) ? kBytesPerCorner * cornerCount : 0,
              ScratchBlock::Content::Unspecified) {
    if (!canPay(attributes, cornerCount))
        return;
    _pivot = pivotOf(attributes);
    static constexpr std::array<decltype(&TupleMerging::merge<0>), kMaxAttributes> kMerges = {
        &TupleMerging::merge<0>, &TupleMerging::merge<1>, &TupleMerging::merge<2>,
        &TupleMerging::merge<3>, &TupleMerging::merge<4>, &TupleMerging::merge<5>};
    (this->*kMerges[attributes.size() - 1])(attributes, cornerCount, tupleOfCorner);
}

std::vector<CornerAttribute> TupleMerging::tuples(const std::vector<CornerAttribute>& attributes) const {
    std::vector<CornerAttribute> result = attributes;
    std::swap(result.front(), result[_pivot]);
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i].indices = _tuples.as<quint32>() + i;
        result[i].indexCount = _tupleCount;
        result[i].indexStep = result.size();
    }
    std::swap(result.front(), result[_pivot]);
    return result;
}

// Writes the value numbers of the first `count` corners back if their tuples stand in their place.
void TupleMerging::restoreList(const std::vector<CornerAttribute>& ordered, quint64 count,
                               quint32* tupleOfCorner) const {
    const auto overwritten =
        std::find_if(ordered.begin(), ordered.end(), [tupleOfCorner](const CornerAttribute& attribute) {
            return attribute.indices == tupleOfCorner;
        });
    if (overwritten == ordered.end())
        return;
    const quint32* const numbers = _tuples.as<quint32>() + (overwritten - ordered.begin());
    std::transform(tupleOfCorner, tupleOfCorner + count, tupleOfCorner,
                   [&](quint32 tuple) { return numbers[tuple * ordered.size()]; });
}

template<int Others>
void TupleMerging::merge(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                         quint32* tupleOfCorner) {
    // The pivot is read first, and a tuple is stored in that order.
    std::vector<CornerAttribute> ordered = attributes;
    std::swap(ordered.front(), ordered[_pivot]);
    const quint64 budget = kBytesPerCorner * cornerCount;
    using Slot = typename Table<Others>::Slot;
    const quint64 slotCount = ordered.front().valueCount + 1;
    if (slotCount * sizeof(Slot) > budget)
        return;
    Table<Others> table(slotCount, budget);
    std::array<IndexBlock, Others + 1> blocks;
    quint32* tuples = _tuples.as<quint32>();
    for (quint64 start = 0; start < cornerCount; start += IndexBlock::kSize) {
        const auto first = static_cast<quint32>(start);
        constexpr quint64 kGrowth = IndexBlock::kSize * (sizeof(Slot) + (Others + 1) * sizeof(quint32));
        const quint64 tupleBytes = quint64{_tupleCount} * (Others + 1) * sizeof(quint32);
        if (table.bytesUsed() + tupleBytes + kGrowth > budget ||
            tupleBytes + quint64{_tupleCount} * kBytesPerTuple > budget || table.steps > start * 8 + 65536)
            return restoreList(ordered, start, tupleOfCorner);
        const quint32 count = std::min(IndexBlock::kSize, cornerCount - first);
        std::array<const quint32*, Others + 1> numbers;
        for (std::size_t i = 0; i <= Others; ++i)
            numbers[i] = blocks[i].read(ordered[i], first, count);
        for (quint32 i = 0; i < count; ++i) {
            // Look-ups of faces in random order would each wait for memory.
            constexpr quint32 kAhead = 24;
            prefetch(table.slots + numbers[0][std::min(i + kAhead, count - 1)]);
            std::array<quint32, Others> others;
            for (std::size_t k = 0; k < Others; ++k)
                others[k] = numbers[k + 1][i];
            Slot* const slot = table.find(numbers[0][i], others);
            if (slot->tuple == 0) {
                slot->tuple = ++_tupleCount;
                slot->others = others;
                *tuples++ = numbers[0][i];
                tuples = std::copy(others.begin(), others.end(), tuples);
            }
            tupleOfCorner[first + i] = slot->tuple - 1;
        }
    }
    for (const IndexBlock& block : blocks)
        _substituted.push_back(block.substitutedCorners());
    std::swap(_substituted.front(), _substituted[_pivot]);
    _isDone = true;
}

} // namespace Atelier::Vel
