#include "geometry/merging/duplicatefilter.h"

#include "geometry/merging/valuebytes.h"
#include "geometry/merging/valuegathering.h"
#include "memory/scratchblock.h"

namespace Atelier::Vel {

namespace {

/// A table with slots of two bits: no corner, one corner or several corners hash to a slot.
class DuplicateFilter {
public:
    explicit DuplicateFilter(quint32 cornerCount)
        : _slotCount(kSlotsPerCorner * quint64{cornerCount} + 1),
          _words((_slotCount / kSlotsPerWord + 1) * sizeof(quint64)) {}

    void prefetchSlot(quint32 slot) const { prefetch(_words.as<quint64>() + slot / kSlotsPerWord); }
    quint32 slotOf(quint64 hash) const { return static_cast<quint32>((hash >> 32) * _slotCount >> 32); }
    void count(quint32 slot) {
        quint64& word = _words.as<quint64>()[slot / kSlotsPerWord];
        const quint32 shift = slot % kSlotsPerWord * 2;
        word |= ((word >> shift & 1) << 1 | 1) << shift;
    }
    bool isShared(quint32 slot) const {
        return (_words.as<quint64>()[slot / kSlotsPerWord] >> (slot % kSlotsPerWord * 2) & 2) != 0;
    }

private:
    // With 7 slots per corner, one in eight corners without a duplicate shares its slot.
    static constexpr quint64 kSlotsPerCorner = 7;
    static constexpr quint32 kSlotsPerWord = 32;

    quint64 _slotCount;
    ScratchBlock _words;
};

/// Writes the candidates among `count` corners to `found`. `cornerAt(i)` returns a corner. Returns: the
/// number of candidates.
template<typename CornerAt>
quint32 findCandidates(const CornerAttribute& attribute, quint32 count, const CornerAt& cornerAt,
                       quint64 seed, quint32* found, const WorkMeter& meter) {
    DuplicateFilter filter(count);
    // The slots of a large mesh are accessed in random order and are not in a cache. This prefetch distance
    // covers one memory latency.
    constexpr quint32 kAhead = 32;
    withStride(attribute.stride, [&](auto value) {
        forValues(attribute, value.stride(), count, cornerAt, meter,
                  [&](quint32 i, const unsigned char* bytes) {
                      found[i] = filter.slotOf(finishedHash(value.hashed(seed, bytes)));
                      filter.prefetchSlot(found[i]);
                      if (i >= kAhead)
                          filter.count(found[i - kAhead]);
                  });
    });
    for (quint32 i = count - std::min(count, kAhead); i < count; ++i)
        filter.count(found[i]);
    // Candidates are written over the slots, without a branch that the CPU cannot predict.
    quint32 foundCount = 0;
    for (quint32 i = 0; i < count; ++i) {
        filter.prefetchSlot(found[std::min(i + kAhead, count - 1)]);
        const bool isCandidate = filter.isShared(found[i]);
        found[foundCount] = cornerAt(i);
        foundCount += isCandidate ? 1 : 0;
    }
    return foundCount;
}

} // namespace

// The second pass filters with another seed. After it, one in sixty of the corners without a duplicate is
// left.
std::vector<quint32> duplicateCandidates(const CornerAttribute& attribute, quint32 cornerCount,
                                         quint64 hashSeed, quint32* slots, const WorkMeter& meter) {
    const auto itself = [](quint32 corner) { return corner; };
    const quint32 firstCount = findCandidates(attribute, cornerCount, itself, hashSeed, slots, meter);
    const std::vector<quint32> first(slots, slots + firstCount);
    const auto firstAt = [&first](quint32 i) { return first[i]; };
    const quint32 count = findCandidates(attribute, firstCount, firstAt, ~hashSeed, slots, {});
    return std::vector<quint32>(slots, slots + count);
}

} // namespace Atelier::Vel
