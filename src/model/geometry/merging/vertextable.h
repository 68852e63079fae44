#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include <QtCore/QtGlobal>

#include "geometry/workmeter.h"
#include "memory/prefetch.h"
#include "memory/scratchblock.h"

namespace Atelier::Vel {

/// An open-addressing hash table of corners that numbers the distinct ones in order of insertion.
///
/// A slot is one 32-bit word. It contains the number plus one, and bits of the hash in the remaining high
/// bits. So a look-up skips nearly all slots of other corners without comparing them.
///
/// If many corners are equal, a look-up usually ends in a comparison with an earlier corner, whose indices
/// and values may be anywhere in memory. So the keys of the first distinct corners are stored side by side:
/// one small area of memory instead of up to seven large ones.
class VertexTable {
public:
    /// A table for at most `capacity` corners, 8 bytes for each, and keys of `keyWords` words for a quarter
    /// of them; no keys are kept if `keyWords` is 0.
    VertexTable(quint32 capacity, quint32 keyWords)
        : _slotCount(2 * quint64{capacity} + 1),
          _scratch(_slotCount * sizeof(quint32)),
          _slots(_scratch.as<quint32>()),
          _keyWords(keyWords),
          _keyCapacity(keyWords == 0 ? 0 : capacity / 4),
          _keyScratch(quint64{_keyCapacity} * keyWords * sizeof(quint64), ScratchBlock::Content::Unspecified),
          _keys(_keyScratch.as<quint64>()),
          _blockKeys(std::size_t{kSteps} * kBlock * keyWords) {
        while (_numberMask < capacity)
            _numberMask = _numberMask << 1 | 1;
    }

    /// Inserts corners 0 to `count` − 1 in this order. Writes the number of each corner and the first corner
    /// of each number. `meter` counts corners. `Keys` hashes runs of corners and copies their keys, compares
    /// two corners, and prefetches the indices and the values of one corner.
    /// Returns: the number of distinct corners.
    template<typename Keys>
    quint32 insertAll(const Keys& keys, quint32 count, quint32* numberOfCorner, quint32* firstCorner,
                      const WorkMeter& meter = {}) {
        // A look-up reads the slot, the first corner there, its indices and its values, and each of these may
        // miss the caches. So the look-ups of a block are divided into steps. Each step prefetches for the
        // next step, and the steps of several blocks alternate.
        const quint32 blockCount = count / kBlock + (count % kBlock != 0 ? 1 : 0);
        quint32 numbers = 0;
        for (quint64 turn = 0; turn < quint64{blockCount} + kSteps - 1; ++turn) {
            if (turn % kBlocksPerReport == kBlocksPerReport - 1 && meter)
                meter(kBlocksPerReport * kBlock);
            for (quint32 step = 0; step < kSteps; ++step) {
                const quint64 index = turn - step;
                if (index >= blockCount)
                    continue;
                Block& block = _blocks[index % kSteps];
                if (step == 0)
                    begin(keys, block, static_cast<quint32>(index) * kBlock, count);
                else if (step == 1)
                    expect(block, firstCorner);
                else if (step == 2)
                    forExpected(block, firstCorner, [&](quint32 corner) { keys.prefetchIndices(corner); });
                else if (step == 3)
                    forExpected(block, firstCorner, [&](quint32 corner) { keys.prefetchValues(corner); });
                else
                    numbers = finish(keys, block, numbers, numberOfCorner, firstCorner);
            }
        }
        return numbers;
    }

private:
    // More look-ups than a core can have cache misses outstanding, few enough for the blocks to stay in the
    // first-level cache.
    static constexpr quint32 kBlock = 32;
    // Slot, first corner, its indices, its values, comparison: each needs what the step before has fetched.
    static constexpr quint32 kSteps = 5;
    static constexpr quint32 kBlocksPerReport = 1024; // about a millisecond

    struct Block {
        quint32 first = 0;
        quint32 count = 0;
        quint32 expectedCount = 0;
        std::array<quint64, kBlock> hashes;
        std::array<quint32, kBlock> expected; ///< probable numbers of corners of the block
    };

    template<typename Keys>
    void begin(const Keys& keys, Block& block, quint32 first, quint32 count) {
        block.first = first;
        block.count = std::min(kBlock, count - first);
        keys.read(first, block.count, block.hashes.data(), keysOf(block));
        for (quint32 i = 0; i < block.count; ++i)
            prefetch(_slots + home(block.hashes[i]));
    }

    /// Prefetches the data that the comparison of the corners of a block needs. This is the key if it is
    /// kept.
    void expect(Block& block, const quint32* firstCorner) const {
        block.expectedCount = 0;
        for (quint32 i = 0; i < block.count; ++i) {
            const quint32 entry = _slots[home(block.hashes[i])];
            if (entry == 0 || (entry & ~_numberMask) != tag(block.hashes[i]))
                continue;
            const quint32 number = (entry & _numberMask) - 1;
            if (number < _keyCapacity) {
                prefetch(keyOf(number));
                continue;
            }
            prefetch(firstCorner + number);
            block.expected[block.expectedCount++] = number;
        }
    }

    template<typename Work>
    static void forExpected(const Block& block, const quint32* firstCorner, const Work& work) {
        for (quint32 i = 0; i < block.expectedCount; ++i)
            work(firstCorner[block.expected[i]]);
    }

    template<typename Keys>
    quint32 finish(const Keys& keys, const Block& block, quint32 numbers, quint32* numberOfCorner,
                   quint32* firstCorner) {
        const quint64* key = keysOf(block);
        for (quint32 i = 0; i < block.count; ++i, key += _keyWords) {
            const quint32 corner = block.first + i;
            const auto isEqual = [&](quint32 number) {
                return number < _keyCapacity ? equalKeys(key, keyOf(number))
                                             : keys.equal(corner, firstCorner[number]);
            };
            const quint32 number = find(block.hashes[i], numbers, isEqual);
            if (number == numbers) {
                if (number < _keyCapacity)
                    std::copy_n(key, _keyWords, keyOf(number));
                firstCorner[numbers++] = corner;
            }
            numberOfCorner[corner] = number;
        }
        return numbers;
    }

    quint64 home(quint64 hash) const { return (hash >> 32) * _slotCount >> 32; }
    quint32 tag(quint64 hash) const { return static_cast<quint32>(hash) & ~_numberMask; }

    /// The keys of the corners of a block.
    quint64* keysOf(const Block& block) {
        return _blockKeys.data() + static_cast<std::size_t>(&block - _blocks.data()) * kBlock * _keyWords;
    }
    quint64* keyOf(quint32 number) const { return _keys + quint64{number} * _keyWords; }
    bool equalKeys(const quint64* a, const quint64* b) const {
        quint64 difference = 0;
        for (quint32 i = 0; i < _keyWords; ++i)
            difference |= a[i] ^ b[i];
        return difference == 0;
    }

    /// The number of the corner with that hash; takes the free slot for `next` if the corner is new.
    template<typename IsEqual>
    quint32 find(quint64 hash, quint32 next, const IsEqual& isEqual) {
        for (quint64 slot = home(hash);; slot = slot + 1 == _slotCount ? 0 : slot + 1) {
            const quint32 entry = _slots[slot];
            if (entry == 0) {
                _slots[slot] = tag(hash) | (next + 1);
                return next;
            }
            const quint32 number = (entry & _numberMask) - 1;
            if ((entry & ~_numberMask) == tag(hash) && isEqual(number))
                return number;
        }
    }

    quint64 _slotCount;
    quint32 _numberMask = 1;
    ScratchBlock _scratch;
    quint32* _slots;
    quint32 _keyWords;
    quint32 _keyCapacity; ///< keys are kept for numbers below this
    ScratchBlock _keyScratch;
    quint64* _keys;
    std::array<Block, kSteps> _blocks;
    std::vector<quint64> _blockKeys;
};

} // namespace Atelier::Vel
