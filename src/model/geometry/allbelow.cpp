#include "geometry/allbelow.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Atelier::Vel {

bool allBelow(const quint32* numbers, quint32 count, quint32 limit) {
    if (limit == 0)
        return count == 0;
    quint32 i = 0;
#if defined(__SSE2__)
    // SSE2 compares only signed numbers. Flipping the highest bit of both sides gives the unsigned order.
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

} // namespace Atelier::Vel
