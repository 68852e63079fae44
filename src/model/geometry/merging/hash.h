#pragma once

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

// 2^64 divided by the golden ratio, the multiplier of Fibonacci hashing: it spreads consecutive numbers
// evenly.
constexpr quint64 kGoldenRatio = 0x9E3779B97F4A7C15U;

// A multiplier of published 64-bit mixing functions, odd and with about half of its bits set. The tests
// measure that with these two every bit of the words changes about half of the bits of the hash.
constexpr quint64 kMixingFactor = 0xD6E8FEB86659FD93U;

/// Folds two words into a running hash: the two halves of a 128-bit product are combined, so that every bit
/// of the words reaches every bit of the result.
inline quint64 mixWords(quint64 hash, quint64 a, quint64 b) {
    __extension__ using Product = unsigned __int128;
    const Product product =
        static_cast<Product>(hash ^ a ^ kGoldenRatio) * static_cast<Product>(b ^ kMixingFactor);
    // The XOR with the rotated `a` and with `b` keeps different words apart if one factor happens to be zero.
    return static_cast<quint64>(product) ^ static_cast<quint64>(product >> 64) ^ (a << 32 | a >> 32) ^ b;
}

/// Finishes a running hash. With about one seed in a hundred, words that differ little are folded to hashes
/// in a few clusters; the final product spreads them.
inline quint64 finishedHash(quint64 hash) {
    return (hash ^ hash >> 32) * kGoldenRatio;
}

} // namespace Atelier::Vel
