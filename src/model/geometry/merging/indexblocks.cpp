#include "geometry/merging/indexblocks.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Atelier::Vel {

namespace {

/// Whether the list has entries for all of the corners, and each of them names a value.
bool allHaveValues(const CornerAttribute& attribute, quint32 first, quint32 count) {
    return attribute.indices != nullptr && attribute.indexStep == 1 && attribute.valueCount != 0 &&
           quint64{first} + count <= attribute.indexCount &&
           allBelow(attribute.indices + first, count, static_cast<quint32>(attribute.valueCount));
}

} // namespace

bool allBelow(const quint32* numbers, quint32 count, quint32 limit) {
    if (limit == 0)
        return count == 0;
    quint32 i = 0;
#if defined(__SSE2__)
    // There is only a signed comparison: moving both sides by half the range makes it do.
    const __m128i half = _mm_set1_epi32(static_cast<int>(0x80000000U));
    const __m128i last = _mm_set1_epi32(static_cast<int>((limit - 1) ^ 0x80000000U));
    __m128i above = _mm_setzero_si128();
    for (; i + 4 <= count; i += 4) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(numbers + i));
        above = _mm_or_si128(above, _mm_cmpgt_epi32(_mm_xor_si128(four, half), last));
    }
    if (_mm_movemask_epi8(above) != 0)
        return false;
#endif
    for (; i < count; ++i)
        if (numbers[i] >= limit)
            return false;
    return true;
}

const quint32* IndexBlock::read(const CornerAttribute& attribute, quint32 first, quint32 count) {
    if (allHaveValues(attribute, first, count))
        return attribute.indices + first;
    for (quint32 i = 0; i < count; ++i) {
        const quint64 value = attribute.valueOf(quint64{first} + i);
        _substitutedCorners += value == attribute.valueCount ? 1 : 0;
        _numbers[i] = static_cast<quint32>(value);
    }
    return _numbers.data();
}

} // namespace Atelier::Vel
