#include "check/bytecounts.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Atelier::Vel {

namespace {

bool isBlank(char byte) {
    return static_cast<quint8>(byte) <= ' ';
}

bool isPunctuation(char byte) {
    return static_cast<quint8>(byte) > ' ' && static_cast<quint8>(byte) < '-';
}

#if defined(__SSE2__)
constexpr int kVectorBytes = 16;
// More vectors could overflow the sums of single bytes.
constexpr int kVectors = 255;
constexpr int kChunk = kVectorBytes * kVectors;

__m128i load(const char* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

// Bytes up to `limit`, and from it on, without a sign.
__m128i upTo(__m128i bytes, char limit) {
    return _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(limit)), bytes);
}

__m128i from(__m128i bytes, char limit) {
    return _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8(limit)), bytes);
}

__m128i equal(__m128i bytes, char byte) {
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte));
}

quint64 sumOf(__m128i bytes) {
    const __m128i halves = _mm_sad_epu8(bytes, _mm_setzero_si128());
    return static_cast<quint64>(_mm_cvtsi128_si32(halves)) +
           static_cast<quint64>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(halves, halves)));
}

bool isAny(__m128i bytes) {
    return _mm_movemask_epi8(bytes) != 0;
}

void addChunk(const char* bytes, TextContent& content) {
    __m128i lineFeeds = _mm_setzero_si128();
    __m128i returns = lineFeeds;
    __m128i others = lineFeeds;
    for (int i = 0; i < kVectors; ++i) {
        const __m128i vector = load(bytes + qint64{i} * kVectorBytes);
        lineFeeds = _mm_sub_epi8(lineFeeds, equal(vector, '\n'));
        returns = _mm_or_si128(returns, equal(vector, '\r'));
        others = _mm_or_si128(others, _mm_or_si128(vector, equal(vector, '\0')));
    }
    content.lineFeeds += sumOf(lineFeeds);
    content.hasReturns = content.hasReturns || isAny(returns);
    content.hasOthers = content.hasOthers || isAny(others);
}

void addChunk(const char* bytes, WordCounts& counts) {
    __m128i words = _mm_setzero_si128();
    __m128i letters = words;
    __m128i others = words;
    for (int i = 0; i < kVectors; ++i) {
        const __m128i vector = load(bytes + qint64{i} * kVectorBytes);
        const __m128i next = load(bytes + qint64{i} * kVectorBytes + 1);
        words = _mm_sub_epi8(words, _mm_andnot_si128(upTo(next, ' '), upTo(vector, ' ')));
        letters = _mm_sub_epi8(letters, from(vector, '9' + 1));
        const __m128i punctuation = _mm_and_si128(from(vector, ' ' + 1), upTo(vector, '-' - 1));
        const __m128i zeros = _mm_and_si128(equal(vector, '/'), equal(next, '0'));
        others = _mm_or_si128(others, _mm_or_si128(punctuation, zeros));
    }
    counts.words += sumOf(words);
    counts.letters += sumOf(letters);
    counts.hasOthers = counts.hasOthers || isAny(others);
}

// Adds the whole chunks, and moves `first` behind them.
template<typename Counts>
void addChunks(const char*& first, const char* last, Counts& counts) {
    for (; last - first >= kChunk; first += kChunk)
        addChunk(first, counts);
}
#else
template<typename Counts>
void addChunks(const char*&, const char*, Counts&) {}
#endif

} // namespace

TextContent contentOf(const char* first, const char* last) {
    TextContent content;
    addChunks(first, last, content);
    for (; first != last; ++first) {
        const auto byte = static_cast<quint8>(*first);
        content.lineFeeds += byte == '\n' ? 1 : 0;
        content.hasReturns = content.hasReturns || byte == '\r';
        content.hasOthers = content.hasOthers || byte >= 0x80 || byte == 0;
    }
    return content;
}

WordCounts wordCountsOf(const char* first, const char* last) {
    WordCounts counts;
    addChunks(first, last, counts);
    for (; first != last; ++first) {
        counts.words += isBlank(first[0]) && !isBlank(first[1]) ? 1 : 0;
        counts.letters += static_cast<quint8>(*first) > '9' ? 1 : 0;
        counts.hasOthers =
            counts.hasOthers || isPunctuation(first[0]) || (first[0] == '/' && first[1] == '0');
    }
    return counts;
}

} // namespace Atelier::Vel
