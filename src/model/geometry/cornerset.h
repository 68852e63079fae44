#pragma once

#include <array>

#include <QtCore/QtGlobal>

#include "scratchblock.h"

namespace Atelier::Vel {

/// Folds two words into a running hash; every bit of the words reaches every bit of the result.
inline quint64 mixWords(quint64 hash, quint64 a, quint64 b) {
    __extension__ using Product = unsigned __int128;
    const Product product =
        static_cast<Product>(hash ^ a ^ 0x9E3779B97F4A7C15U) * static_cast<Product>(b ^ 0xD6E8FEB86659FD93U);
    // The sum with the rotated words keeps them apart where one factor happens to be zero.
    return static_cast<quint64>(product) ^ static_cast<quint64>(product >> 64) ^ (a << 32 | a >> 32) ^ b;
}

/// An open-addressing set of corners that numbers the distinct ones in order of insertion.
///
/// A slot is one 32-bit word: the number plus one, and above it as many bits of the hash as are left, so that
/// nearly all slots of other corners are passed over without a look at them.
class CornerSet {
public:
    /// A set for at most `capacity` corners.
    explicit CornerSet(quint32 capacity)
        : _slotCount(capacity + capacity / 3 + 4),
          _scratch(_slotCount * sizeof(quint32)),
          _slots(_scratch.as<quint32>()) {
        while (_numberMask < capacity)
            _numberMask = _numberMask << 1 | 1;
    }

    /// Inserts corners 0 to `count` − 1 in this order. `Keys` hashes runs of corners and compares two.
    /// Writes the number of each corner and the first corner of each number; returns how many there are.
    template<typename Keys>
    quint32 insertAll(const Keys& keys, quint32 count, quint32* numberOfCorner, quint32* firstCorner) {
        quint32 numbers = 0;
        for (quint32 first = 0; first < count; first += kBlock) {
            const quint32 block = count - first < kBlock ? count - first : kBlock;
            prepareBlock(keys, first, block);
            for (quint32 i = 0; i < block; ++i) {
                const quint32 corner = first + i;
                const quint32 number = find(keys, corner, _hashes[i], numbers, firstCorner);
                if (number == numbers)
                    firstCorner[numbers++] = corner;
                numberOfCorner[corner] = number;
            }
        }
        return numbers;
    }

private:
    // Enough look-ups in flight to hide the latency of memory, few enough to stay in the first-level cache.
    static constexpr quint32 kBlock = 64;

    template<typename Keys>
    void prepareBlock(const Keys& keys, quint32 first, quint32 count) {
        keys.hash(first, count, _hashes.data());
        for (quint32 i = 0; i < count; ++i)
            __builtin_prefetch(_slots + home(_hashes[i]));
    }

    quint64 home(quint64 hash) const { return (hash >> 32) * _slotCount >> 32; }

    /// The number of the corner; takes the free slot for `next` when the corner is new.
    template<typename Keys>
    quint32 find(const Keys& keys, quint32 corner, quint64 hash, quint32 next, const quint32* firstCorner) {
        const quint32 tag = static_cast<quint32>(hash) & ~_numberMask;
        for (quint64 slot = home(hash);; slot = slot + 1 == _slotCount ? 0 : slot + 1) {
            const quint32 entry = _slots[slot];
            if (entry == 0) {
                _slots[slot] = tag | (next + 1);
                return next;
            }
            const quint32 number = (entry & _numberMask) - 1;
            if ((entry & ~_numberMask) == tag && keys.equal(corner, firstCorner[number]))
                return number;
        }
    }

    quint64 _slotCount;
    quint32 _numberMask = 1;
    ScratchBlock _scratch;
    quint32* _slots;
    std::array<quint64, kBlock> _hashes;
};

} // namespace Atelier::Vel
