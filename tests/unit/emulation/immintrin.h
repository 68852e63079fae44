#pragma once

// Replaces the compiler's header of this name: the AVX-512 and BMI instructions of the AVX-512 parser in
// plain C++, as the processors' manual defines them. The parser then runs on processors that lack them.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <nmmintrin.h>

#include "emulation/emulatedavx512.h"
#include "import/text/digits.h"

// The names are the compilers' own.
// NOLINTBEGIN

struct __m512i {
    unsigned char bytes[64];
};
using __mmask16 = std::uint16_t;

namespace Atelier::Vel::Testing {

template<typename Lane>
using Lanes = std::array<Lane, 64 / sizeof(Lane)>;

template<typename Lane>
Lanes<Lane> lanesOf(const __m512i& value) {
    Lanes<Lane> lanes;
    std::memcpy(lanes.data(), &value, sizeof value);
    return lanes;
}

template<typename Lane>
__m512i joined(const Lanes<Lane>& lanes) {
    __m512i value;
    std::memcpy(&value, lanes.data(), sizeof value);
    return value;
}

template<typename Lane>
__m512i repeated(Lane lane) {
    Lanes<Lane> lanes;
    lanes.fill(lane);
    return joined<Lane>(lanes);
}

/// `operation` on each two lanes at the same place.
template<typename Lane, typename Operation>
__m512i lanewise(const __m512i& a, const __m512i& b, Operation operation) {
    Lanes<Lane> lanes = lanesOf<Lane>(a);
    const Lanes<Lane> others = lanesOf<Lane>(b);
    for (std::size_t i = 0; i < lanes.size(); ++i)
        lanes[i] = static_cast<Lane>(operation(lanes[i], others[i]));
    return joined<Lane>(lanes);
}

/// A bit for each byte, whether `comparison` holds with the one at the same place.
template<typename Comparison>
std::uint64_t comparedBytes(const __m512i& a, const __m512i& b, Comparison comparison) {
    std::uint64_t mask = 0;
    for (std::size_t i = 0; i < sizeof a.bytes; ++i)
        mask |= std::uint64_t{comparison(a.bytes[i], b.bytes[i])} << i;
    return mask;
}

/// A register with a given lower part. The upper parts are undefined.
inline __m512i widened(const __m128i& part) {
    __m512i value = repeated<unsigned char>(0xA5);
    std::memcpy(&value, &part, sizeof part);
    return value;
}

template<typename Comparison>
__mmask16 comparedBytes(const __m128i& a, const __m128i& b, Comparison comparison) {
    return static_cast<__mmask16>(comparedBytes(widened(a), widened(b), comparison));
}

template<typename Wide, typename Narrow>
Narrow saturated(Wide value, Wide least, Wide greatest) {
    return static_cast<Narrow>(value < least ? least : value > greatest ? greatest : value);
}

inline bool hasBit(std::uint64_t mask, std::size_t bit) {
    return (mask >> bit & 1) != 0;
}

} // namespace Atelier::Vel::Testing

inline std::uint64_t _tzcnt_u64(std::uint64_t value) {
    return value == 0 ? 64 : static_cast<std::uint64_t>(__builtin_ctzll(value));
}

inline std::uint64_t _blsr_u64(std::uint64_t value) {
    return value & (value - 1);
}

inline std::uint64_t _bzhi_u64(std::uint64_t value, std::uint32_t end) {
    return (end & 0xFF) < 64 ? value & ((std::uint64_t{1} << (end & 0xFF)) - 1) : value;
}

inline std::uint32_t _bzhi_u32(std::uint32_t value, std::uint32_t end) {
    return (end & 0xFF) < 32 ? value & ((std::uint32_t{1} << (end & 0xFF)) - 1) : value;
}

inline std::uint64_t _pdep_u64(std::uint64_t value, std::uint64_t mask) {
    std::uint64_t result = 0;
    for (std::size_t bit = 0; mask != 0; ++bit, mask = _blsr_u64(mask))
        if (Atelier::Vel::Testing::hasBit(value, bit))
            result |= mask & ~(mask - 1);
    return result;
}

inline std::uint64_t _pext_u64(std::uint64_t value, std::uint64_t mask) {
    std::uint64_t result = 0;
    for (std::size_t bit = 0; mask != 0; ++bit, mask = _blsr_u64(mask))
        result |= std::uint64_t{(value & mask & ~(mask - 1)) != 0} << bit;
    return result;
}

inline __mmask16 _kor_mask16(__mmask16 a, __mmask16 b) {
    return static_cast<__mmask16>(a | b);
}

inline __m512i _mm512_loadu_si512(const void* from) {
    __m512i value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

inline __m512i _mm512_load_si512(const void* from) {
    if (reinterpret_cast<std::uintptr_t>(from) % sizeof(__m512i) != 0)
        __builtin_trap();
    return _mm512_loadu_si512(from);
}

inline __m512i _mm512_set1_epi8(char value) {
    return Atelier::Vel::Testing::repeated(value);
}

inline __m512i _mm512_set1_epi16(short value) {
    return Atelier::Vel::Testing::repeated(value);
}

inline __m512i _mm512_set1_epi32(int value) {
    return Atelier::Vel::Testing::repeated(value);
}

inline __m512i _mm512_set1_epi64(long long value) {
    return Atelier::Vel::Testing::repeated(value);
}

inline __m512i _mm512_set_epi64(long long h, long long g, long long f, long long e, long long d, long long c,
                                long long b, long long a) {
    return Atelier::Vel::Testing::joined<long long>({a, b, c, d, e, f, g, h});
}

inline __m512i _mm512_castsi128_si512(const __m128i& part) {
    return Atelier::Vel::Testing::widened(part);
}

inline __m128i _mm512_extracti32x4_epi32(const __m512i& value, int part) {
    __m128i result;
    std::memcpy(&result, value.bytes + sizeof result * static_cast<std::size_t>(part), sizeof result);
    return result;
}

inline __m128i _mm512_castsi512_si128(const __m512i& value) {
    return _mm512_extracti32x4_epi32(value, 0);
}

inline __m512i _mm512_or_si512(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::lanewise<std::uint64_t>(a, b, [](auto x, auto y) { return x | y; });
}

inline __m512i _mm512_sub_epi8(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::lanewise<std::uint8_t>(a, b, [](auto x, auto y) { return x - y; });
}

inline __m512i _mm512_sub_epi32(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::lanewise<std::uint32_t>(a, b, [](auto x, auto y) { return x - y; });
}

inline __m512i _mm512_add_epi64(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::lanewise<std::uint64_t>(a, b, [](auto x, auto y) { return x + y; });
}

inline __m512i _mm512_min_epu32(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::lanewise<std::uint32_t>(a, b, [](auto x, auto y) { return x < y ? x : y; });
}

/// The lower halves of 64-bit lanes.
inline __m512i _mm512_mul_epu32(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::lanewise<std::uint64_t>(
        a, b, [](auto x, auto y) { return (x & 0xFFFFFFFF) * (y & 0xFFFFFFFF); });
}

inline __m512i _mm512_srli_epi64(const __m512i& value, unsigned int bits) {
    return Atelier::Vel::Testing::lanewise<std::uint64_t>(
        value, value, [bits](auto x, auto) { return bits < 64 ? x >> bits : 0; });
}

/// Pairs of bytes, `a` without signs, multiplied and added.
inline __m512i _mm512_maddubs_epi16(const __m512i& a, const __m512i& b) {
    Atelier::Vel::Testing::Lanes<std::int16_t> sums;
    for (std::size_t i = 0; i < sums.size(); ++i) {
        int sum = 0;
        for (std::size_t byte = 2 * i; byte < 2 * i + 2; ++byte)
            sum += a.bytes[byte] * static_cast<signed char>(b.bytes[byte]);
        sums[i] = Atelier::Vel::Testing::saturated<int, std::int16_t>(sum, INT16_MIN, INT16_MAX);
    }
    return Atelier::Vel::Testing::joined<std::int16_t>(sums);
}

inline __m512i _mm512_madd_epi16(const __m512i& a, const __m512i& b) {
    const auto left = Atelier::Vel::Testing::lanesOf<std::int16_t>(a);
    const auto right = Atelier::Vel::Testing::lanesOf<std::int16_t>(b);
    Atelier::Vel::Testing::Lanes<std::int32_t> sums;
    for (std::size_t i = 0; i < sums.size(); ++i)
        sums[i] = left[2 * i] * right[2 * i] + left[2 * i + 1] * right[2 * i + 1];
    return Atelier::Vel::Testing::joined<std::int32_t>(sums);
}

/// In each part of 16 bytes four numbers of `a`, then four of `b`.
inline __m512i _mm512_packus_epi32(const __m512i& a, const __m512i& b) {
    const auto first = Atelier::Vel::Testing::lanesOf<std::int32_t>(a);
    const auto second = Atelier::Vel::Testing::lanesOf<std::int32_t>(b);
    Atelier::Vel::Testing::Lanes<std::uint16_t> packed;
    for (std::size_t i = 0; i < packed.size(); ++i) {
        const std::int32_t number = (i % 8 < 4 ? first : second)[i / 8 * 4 + i % 4];
        packed[i] = Atelier::Vel::Testing::saturated<std::int32_t, std::uint16_t>(number, 0, UINT16_MAX);
    }
    return Atelier::Vel::Testing::joined<std::uint16_t>(packed);
}

inline __m512i _mm512_permutexvar_epi8(const __m512i& order, const __m512i& value) {
    __m512i result;
    for (std::size_t i = 0; i < sizeof result; ++i)
        result.bytes[i] = value.bytes[order.bytes[i] & 63];
    return result;
}

inline __m512i _mm512_permutex2var_epi8(const __m512i& low, const __m512i& order, const __m512i& high) {
    __m512i result;
    for (std::size_t i = 0; i < sizeof result; ++i)
        result.bytes[i] = ((order.bytes[i] & 64) == 0 ? low : high).bytes[order.bytes[i] & 63];
    return result;
}

inline __m512i _mm512_permutexvar_epi64(const __m512i& order, const __m512i& value) {
    const auto lanes = Atelier::Vel::Testing::lanesOf<std::uint64_t>(value);
    return Atelier::Vel::Testing::lanewise<std::uint64_t>(
        order, order, [&lanes](auto place, auto) { return lanes[place & 7]; });
}

inline __m512i _mm512_maskz_compress_epi8(std::uint64_t mask, const __m512i& value) {
    __m512i result = {};
    std::size_t next = 0;
    for (std::size_t i = 0; i < sizeof result; ++i)
        if (Atelier::Vel::Testing::hasBit(mask, i))
            result.bytes[next++] = value.bytes[i];
    return result;
}

inline __m512i _mm512_mask_expand_epi8(__m512i result, std::uint64_t mask, const __m512i& value) {
    std::size_t next = 0;
    for (std::size_t i = 0; i < sizeof result; ++i)
        if (Atelier::Vel::Testing::hasBit(mask, i))
            result.bytes[i] = value.bytes[next++];
    return result;
}

inline __m512i _mm512_maskz_expand_epi8(std::uint64_t mask, const __m512i& value) {
    return _mm512_mask_expand_epi8({}, mask, value);
}

inline __m512i _mm512_maskz_sub_epi8(std::uint64_t mask, const __m512i& a, const __m512i& b) {
    __m512i result = _mm512_sub_epi8(a, b);
    for (std::size_t i = 0; i < sizeof result; ++i)
        result.bytes[i] = Atelier::Vel::Testing::hasBit(mask, i) ? result.bytes[i] : 0;
    return result;
}

inline std::uint64_t _mm512_cmpeq_epi8_mask(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::comparedBytes(a, b, [](auto x, auto y) { return x == y; });
}

inline std::uint64_t _mm512_cmpge_epu8_mask(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::comparedBytes(a, b, [](auto x, auto y) { return x >= y; });
}

inline std::uint64_t _mm512_cmple_epu8_mask(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::comparedBytes(a, b, [](auto x, auto y) { return x <= y; });
}

inline std::uint64_t _mm512_cmplt_epu8_mask(const __m512i& a, const __m512i& b) {
    return Atelier::Vel::Testing::comparedBytes(a, b, [](auto x, auto y) { return x < y; });
}

inline std::uint64_t _mm512_mask_cmpneq_epi8_mask(std::uint64_t mask, const __m512i& a, const __m512i& b) {
    return mask & ~_mm512_cmpeq_epi8_mask(a, b);
}

inline __mmask16 _mm_cmpneq_epi8_mask(const __m128i& a, const __m128i& b) {
    return Atelier::Vel::Testing::comparedBytes(a, b, [](auto x, auto y) { return x != y; });
}

inline __mmask16 _mm_cmpgt_epu8_mask(const __m128i& a, const __m128i& b) {
    return Atelier::Vel::Testing::comparedBytes(a, b, [](auto x, auto y) { return x > y; });
}

inline __mmask16 _mm_mask_cmpge_epu8_mask(__mmask16 mask, const __m128i& a, const __m128i& b) {
    return mask & Atelier::Vel::Testing::comparedBytes(a, b, [](auto x, auto y) { return x >= y; });
}

// The features that the parser is compiled for, its test of the processor, and its way to keep a constant in
// a register.
#define target(features) __target__("sse4.1,popcnt")
#define __builtin_cpu_supports(feature) Atelier::Vel::Testing::isEmulated(feature)
#define __asm__(...)

// NOLINTEND
