#include "import/plainlines.h"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))

#include <cstring>

#include <smmintrin.h>

#include <QtCore/QtAlgorithms>

#include "import/digits.h"

// SSE4.1 is not in every x86-64 processor: what uses it is compiled for it and only called where it is there.
#define VELMODEL_SSE41 __attribute__((target("sse4.1")))

namespace Atelier::Vel {

namespace {

using Word = std::uint64_t;

// A double is exact up to fifteen digits.
constexpr int kMostDecimalDigits = 15;
constexpr int kMostIndexDigits = 7;
// Three numbers of eight characters, with their separators and some room: what a corner takes at most.
constexpr int kCornerBytes = 32;

// Row n takes the point out of a decimal with n digits behind it, that ends with the row: what is before the
// point moves up by one.
struct PointTable {
    alignas(16) std::uint8_t rows[16][16];

    constexpr PointTable() : rows() {
        for (int fraction = 0; fraction < 16; ++fraction)
            for (int i = 0; i < 16; ++i)
                rows[fraction][i] = static_cast<std::uint8_t>(i >= 16 - fraction ? i : i == 0 ? 0x80 : i - 1);
    }
};
constexpr PointTable kPointTable;

// Sixteen bytes from position n on keep the last n bytes of a vector.
alignas(16) constexpr std::uint8_t kKeepTable[32] = {
    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

VELMODEL_SSE41 inline __m128i loadBytes(const void* bytes) {
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

// Which of sixteen characters are neither digits nor minus signs, and which are minus signs.
struct Marks {
    Word others;
    Word minuses;
};

VELMODEL_SSE41 inline Marks marksOf(const char* at) {
    const __m128i text = loadBytes(at);
    const __m128i values = _mm_sub_epi8(text, _mm_set1_epi8('0'));
    const __m128i digits = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
    const __m128i minuses = _mm_cmpeq_epi8(text, _mm_set1_epi8('-'));
    const int tokens = _mm_movemask_epi8(_mm_or_si128(digits, minuses));
    return {static_cast<Word>(tokens ^ 0xFFFF), static_cast<Word>(_mm_movemask_epi8(minuses))};
}

// The digits of a decimal without its point. `end` is behind it; `fraction` of its `digits` stand behind the
// point.
VELMODEL_SSE41 inline Word joinDecimal(const char* end, int digits, int fraction) {
    __m128i values = _mm_sub_epi8(loadBytes(end - 16), _mm_set1_epi8('0'));
    values = _mm_shuffle_epi8(values, loadBytes(kPointTable.rows[fraction]));
    values = _mm_and_si128(values, loadBytes(kKeepTable + digits));
    const __m128i pairs =
        _mm_maddubs_epi16(values, _mm_setr_epi8(10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_setr_epi16(100, 1, 100, 1, 100, 1, 100, 1));
    const __m128i packed = _mm_packus_epi32(fours, fours);
    const __m128i eights = _mm_madd_epi16(packed, _mm_setr_epi16(10000, 1, 10000, 1, 10000, 1, 10000, 1));
    const auto both = static_cast<Word>(_mm_cvtsi128_si64(eights));
    return (both & 0xFFFFFFFFU) * 100000000U + (both >> 32);
}

/// Sixty-four characters from which tokens are taken one after the other. Digits and minus signs make tokens;
/// every other character ends one, and its place is a bit in a word, so that finding the next end costs two
/// instructions. Each step returns false where the line is not plain or is not in sight.
class WideLine {
public:
    VELMODEL_SSE41 explicit WideLine(const char* at) { lookAt(at); }

    VELMODEL_SSE41 void lookAt(const char* at) {
        const Marks marks[] = {marksOf(at), marksOf(at + 16), marksOf(at + 32), marksOf(at + 48)};
        const Word others =
            marks[0].others | marks[1].others << 16 | marks[2].others << 32 | marks[3].others << 48;
        const Word minuses =
            marks[0].minuses | marks[1].minuses << 16 | marks[2].minuses << 32 | marks[3].minuses << 48;
        // A minus sign belongs to a token that it begins and ends any other.
        const Word leading = minuses & (others << 1 | 1);
        _at = at;
        _ends = others | (minuses & ~leading);
    }

    /// Goes behind a keyword and the blank that ends it.
    void skipKeyword(int length) {
        _begin = length + 1;
        _ends &= ~Word(0) << _begin;
    }

    /// Sees to it that a corner is in sight.
    VELMODEL_SSE41 void lookAhead() {
        if (_begin <= 64 - kCornerBytes)
            return;
        lookAt(_at + _begin);
        _begin = 0;
    }

    VELMODEL_SSE41 bool takeDecimal(float& value) {
        const Word afterPoint = _ends & (_ends - 1);
        if (afterPoint == 0)
            return false;
        const int point = static_cast<int>(qCountTrailingZeroBits(_ends));
        const int end = static_cast<int>(qCountTrailingZeroBits(afterPoint));
        const int negative = _at[_begin] == '-' ? 1 : 0;
        const int integers = point - _begin - negative;
        const int fraction = end - point - 1;
        if (_at[point] != '.' || _at[point + 1] == '-' || integers <= 0 || fraction <= 0 ||
            integers + fraction > kMostDecimalDigits)
            return false;
        const Word mantissa = joinDecimal(_at + end, integers + fraction, fraction);
        const auto magnitude = static_cast<float>(static_cast<double>(mantissa) / kPowersOfTen[fraction]);
        value = withSign(magnitude, negative);
        _ends = afterPoint & (afterPoint - 1);
        _begin = end + 1;
        return true;
    }

    bool takeIndex(quint32 lineCount, quint32& index) {
        if (_ends == 0)
            return false;
        const int end = static_cast<int>(qCountTrailingZeroBits(_ends));
        const int negative = _at[_begin] == '-' ? 1 : 0;
        const int digits = end - _begin - negative;
        if (digits <= 0 || digits > kMostIndexDigits)
            return false;
        // The digits lie at the top; what comes before them is shifted out and zeros in.
        const int others = 64 - 8 * digits;
        const auto number = static_cast<quint32>(joinDigits(digitValues(_at + end - 8) >> others << others));
        index = number == 0 ? kNoIndex : negative != 0 ? lineCount - number : number - 1;
        _ends &= _ends - 1;
        _begin = end + 1;
        return true;
    }

    /// A slash that follows the last one at once.
    bool takeSlash() {
        if (_at[_begin] != '/')
            return false;
        _ends &= _ends - 1;
        ++_begin;
        return true;
    }

    /// The character that ended the last token.
    char lastEnd() const { return _at[_begin - 1]; }
    /// Behind the character that ended the last token.
    const char* at() const { return _at + _begin; }

private:
    static float withSign(float magnitude, int negative) {
        quint32 bits = 0;
        std::memcpy(&bits, &magnitude, sizeof bits);
        bits |= static_cast<quint32>(negative) << 31;
        std::memcpy(&magnitude, &bits, sizeof bits);
        return magnitude;
    }

    const char* _at = nullptr;
    Word _ends = 0; ///< one bit for each character that ends a token and was not taken
    int _begin = 0; ///< of the next token
};

// Returns: the next line; null where this one is not plain.
const char* nextLine(const WideLine& line, const char* last) {
    if (line.lastEnd() == '\n')
        return line.at();
    if (line.lastEnd() == '\r' && *line.at() == '\n')
        return line.at() + 1;
    if (line.lastEnd() != ' ')
        return nullptr;
    // Operands that nobody reads.
    const auto* lineFeed = std::memchr(line.at(), '\n', static_cast<size_t>(last - line.at()));
    return static_cast<const char*>(lineFeed) + 1;
}

template<size_t Count, size_t N>
VELMODEL_SSE41 const char* takeVertex(const char* first, const char* last, int keyword,
                                      FixedList<float, N>& values, quint32& lineCount) {
    if (lineCount == 0 || values.room() < Count)
        return nullptr;
    WideLine line(first);
    line.skipKeyword(keyword);
    float* const operands = values.items + values.size;
    for (size_t i = 0; i < Count; ++i)
        if ((i != 0 && line.lastEnd() != ' ') || !line.takeDecimal(operands[i]))
            return nullptr;
    const char* next = nextLine(line, last);
    if (next == nullptr)
        return nullptr;
    values.size += Count;
    ++lineCount;
    return next;
}

VELMODEL_SSE41 bool takeCorner(WideLine& line, const ObjLineCounts& counts, ObjRun& run, size_t at) {
    quint32& texCoord = run.texCoordIndices.items[at] = kNoIndex;
    quint32& normal = run.normalIndices.items[at] = kNoIndex;
    if (!line.takeIndex(counts.positions, run.positionIndices.items[at]))
        return false;
    if (line.lastEnd() != '/')
        return true;
    if (!line.takeSlash()) {
        if (!line.takeIndex(counts.texCoords, texCoord))
            return false;
        if (line.lastEnd() != '/')
            return true;
    }
    return line.takeIndex(counts.normals, normal);
}

VELMODEL_SSE41 const char* takeFace(const char* first, const char* last, const ObjLineCounts& counts,
                                    ObjRun& run) {
    WideLine line(first);
    line.skipKeyword(1);
    size_t corners = 0;
    do {
        line.lookAhead();
        if (corners == ObjRun::kPlainCorners ||
            !takeCorner(line, counts, run, run.positionIndices.size + corners))
            return nullptr;
        ++corners;
    } while (line.lastEnd() == ' ');
    const char* next = nextLine(line, last);
    if (next != nullptr)
        run.addFace(corners);
    return next;
}

VELMODEL_SSE41 const char* takeLine(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run) {
    if (first[0] == 'f')
        return first[1] == ' ' ? takeFace(first, last, counts, run) : nullptr;
    if (first[0] != 'v')
        return nullptr;
    if (first[1] == ' ')
        return takeVertex<3>(first, last, 1, run.positions, counts.positions);
    if (first[2] != ' ')
        return nullptr;
    if (first[1] == 'n')
        return takeVertex<3>(first, last, 2, run.normals, counts.normals);
    return first[1] == 't' ? takeVertex<2>(first, last, 2, run.texCoords, counts.texCoords) : nullptr;
}

VELMODEL_SSE41 const char* parseWideLines(const char* first, const char* last, ObjLineCounts& counts,
                                          ObjRun& run) {
    while (first != last && !run.isFull()) {
        const char* next = takeLine(first, last, counts, run);
        if (next == nullptr)
            break;
        first = next;
    }
    return first;
}

} // namespace

WideParser* findWideParser() {
    return __builtin_cpu_supports("sse4.1") ? parseWideLines : nullptr;
}

} // namespace Atelier::Vel

#else

namespace Atelier::Vel {

WideParser* findWideParser() {
    return nullptr;
}

} // namespace Atelier::Vel

#endif
