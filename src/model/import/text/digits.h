#pragma once

#include <cstdint>

#include <QtCore/QtEndian>

namespace Atelier::Vel {

constexpr std::uint64_t everyByte(std::uint64_t byte) {
    return byte * 0x0101010101010101U;
}

/// Converts eight characters at once, one per byte, the first in the lowest byte. A digit becomes its value.
inline std::uint64_t digitValues(const char* text) {
    return qFromLittleEndian<std::uint64_t>(text) ^ everyByte('0');
}

/// The number that consists of eight digits, the first in the lowest byte. Joins digits to pairs, fours and
/// eights.
inline std::uint64_t joinDigits(std::uint64_t digits) {
    constexpr std::uint64_t kPairs = 0x000000FF000000FFU;
    digits = digits * 10 + (digits >> 8);
    return ((digits & kPairs) * (100 + (std::uint64_t(1000000) << 32)) +
            ((digits >> 16) & kPairs) * (1 + (std::uint64_t(10000) << 32))) >>
           32;
}

/// Powers of ten that a double represents exactly. A mantissa of up to 2^53 divided by one of them is rounded
/// in the same way as the decimal itself.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kMaxExactPower = 22;
constexpr std::uint64_t kMaxExactMantissa = std::uint64_t(1) << 53;

} // namespace Atelier::Vel
