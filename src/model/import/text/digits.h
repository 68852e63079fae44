#pragma once

#include <cstdint>

#include <QtCore/QtEndian>

namespace Atelier::Vel {

constexpr std::uint64_t everyByte(std::uint64_t byte) {
    return byte * 0x0101010101010101U;
}

/// Eight characters at once, one to a byte, the first in the lowest: as digits they are their values.
inline std::uint64_t digitValues(const char* text) {
    return qFromLittleEndian<std::uint64_t>(text) ^ everyByte('0');
}

/// The number that eight digits make, the first in the lowest byte. Pairs, fours and eights of them are
/// joined, each step in one multiplication for all.
inline std::uint64_t joinDigits(std::uint64_t digits) {
    constexpr std::uint64_t kPairs = 0x000000FF000000FFU;
    digits = digits * 10 + (digits >> 8);
    return ((digits & kPairs) * (100 + (std::uint64_t(1000000) << 32)) +
            ((digits >> 16) & kPairs) * (1 + (std::uint64_t(10000) << 32))) >>
           32;
}

/// Powers of ten that a double holds exactly; a mantissa up to 2^53 divided by one of them rounds as the
/// decimal itself does.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kMaxExactPower = 22;
constexpr std::uint64_t kMaxExactMantissa = std::uint64_t(1) << 53;

} // namespace Atelier::Vel
