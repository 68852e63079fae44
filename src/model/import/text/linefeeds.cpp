#include "import/text/linefeeds.h"

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Atelier::Vel {

#if defined(__SSE2__)

namespace {

constexpr qint64 kLaneBytes = 16;
// Four lanes per step, since the counting costs less than the loop around it.
constexpr qint64 kStepBytes = 4 * kLaneBytes;
// Each step adds up to four to a byte.
constexpr qint64 kMaxSteps = 63;

// 255 where `bytes` has a line feed.
__m128i lineFeeds(const char* bytes) {
    return _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), _mm_set1_epi8('\n'));
}

qint64 countInSteps(const char* first, qint64 steps) {
    __m128i counts = _mm_setzero_si128();
    for (const char* const last = first + steps * kStepBytes; first != last; first += kStepBytes) {
        counts = _mm_sub_epi8(counts, lineFeeds(first));
        counts = _mm_sub_epi8(counts, lineFeeds(first + kLaneBytes));
        counts = _mm_sub_epi8(counts, lineFeeds(first + 2 * kLaneBytes));
        counts = _mm_sub_epi8(counts, lineFeeds(first + 3 * kLaneBytes));
    }
    const __m128i sums = _mm_sad_epu8(counts, _mm_setzero_si128());
    return _mm_cvtsi128_si64(sums) + _mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums));
}

} // namespace

qint64 countLineFeeds(const char* first, const char* last) {
    qint64 count = 0;
    while (last - first >= kStepBytes) {
        const qint64 steps = std::min<qint64>((last - first) / kStepBytes, kMaxSteps);
        count += countInSteps(first, steps);
        first += steps * kStepBytes;
    }
    return count + std::count(first, last, '\n');
}

#else

qint64 countLineFeeds(const char* first, const char* last) {
    return std::count(first, last, '\n');
}

#endif

} // namespace Atelier::Vel
