#include "import/obj/plainlines.h"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))

#include <cstddef>
#include <cstring>

#include <smmintrin.h>

#include <QtCore/QtAlgorithms>

#include "import/text/digits.h"

// Not every x86-64 processor has SSE4.1. Functions that use it are compiled for it and called only if it is
// available.
#define VELMODEL_FEATURE "sse4.1"
#define VELMODEL_SSE41 __attribute__((target(VELMODEL_FEATURE)))
// One parsing step. The position in the text stays in registers only if every step is inlined.
#define VELMODEL_STEP VELMODEL_SSE41 __attribute__((always_inline)) inline

namespace Atelier::Vel {

namespace {

using Word = std::uint64_t;

// A double represents up to fifteen digits exactly. Together with their point, they fill a vector.
constexpr unsigned int kMaxDecimalDigits = 15;
constexpr unsigned int kMaxIndexDigits = 7;
// The number of digits that are joined to one 32-bit number.
constexpr unsigned int kEight = 8;

// Row n removes the point from a decimal that has n digits after the point and ends at the end of the vector.
// The digits before the point move up by one byte.
struct PointTable {
    alignas(16) std::uint8_t rows[16][16];

    constexpr PointTable() : rows() {
        for (int fraction = 0; fraction < 16; ++fraction)
            for (int i = 0; i < 16; ++i)
                rows[fraction][i] = static_cast<std::uint8_t>(i >= 16 - fraction ? i : i == 0 ? 0x80 : i - 1);
    }
};
constexpr PointTable kPointTable;

// The sixteen bytes from position n keep the last n bytes of a vector. The eight bytes from position 8 + n do
// the same for half a vector.
alignas(16) constexpr std::uint8_t kKeepTable[32] = {
    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

VELMODEL_STEP __m128i loadBytes(const void* bytes) {
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

/// Loads eight bytes from each of two addresses.
VELMODEL_STEP __m128i loadHalves(const void* low, const void* high) {
    const __m128i half = _mm_loadl_epi64(static_cast<const __m128i*>(low));
    return _mm_unpacklo_epi64(half, _mm_loadl_epi64(static_cast<const __m128i*>(high)));
}

/// Joins sixteen digits to four numbers of four digits.
VELMODEL_STEP __m128i joinFours(__m128i digits) {
    const __m128i pairs =
        _mm_maddubs_epi16(digits, _mm_setr_epi8(10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1));
    return _mm_madd_epi16(pairs, _mm_setr_epi16(100, 1, 100, 1, 100, 1, 100, 1));
}

/// Joins two times four numbers of four digits to four numbers of eight digits.
VELMODEL_STEP __m128i joinEights(__m128i low, __m128i high) {
    return _mm_madd_epi16(_mm_packus_epi32(low, high),
                          _mm_setr_epi16(10000, 1, 10000, 1, 10000, 1, 10000, 1));
}

/// Iterates over the stops of a text: the characters that are not digits. The stops among 64 characters are
/// bits of a word, so that finding the end of a token does not depend on the end of the previous token.
class Stops {
public:
    VELMODEL_STEP explicit Stops(const char* at) : _at(at), _stops(look(at)) {}

    /// The next stop. It remains the next stop until it is passed.
    VELMODEL_STEP const char* next() {
        while (_stops == 0) {
            _at += 64;
            _stops = look(_at);
        }
        return _at + qCountTrailingZeroBits(_stops);
    }
    /// Passes the stop that next() returned.
    VELMODEL_STEP void pass() { _stops &= _stops - 1; }
    /// Passes the stop if `condition` is 1, and does nothing if it is 0. Uses no branch, because the CPU
    /// cannot predict signs.
    VELMODEL_STEP void passIf(Word condition) { _stops &= _stops - condition; }
    VELMODEL_STEP const char* take() {
        const char* const stop = next();
        pass();
        return stop;
    }

private:
    VELMODEL_STEP static Word look(const char* at) {
        return ~(digits(at) | digits(at + 16) << 16 | digits(at + 32) << 32 | digits(at + 48) << 48);
    }

    VELMODEL_STEP static Word digits(const char* at) {
        const __m128i values = _mm_sub_epi8(loadBytes(at), _mm_set1_epi8('0'));
        const __m128i areDigits = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
        return static_cast<Word>(_mm_movemask_epi8(areDigits));
    }

    const char* _at;
    Word _stops;
};

/// A decimal in the text. `fraction` of its `digits` are after the point.
struct Decimal {
    const char* end; ///< of the sixteen bytes that end with its digits, or with a stop if it has no point
    unsigned int digits;
    unsigned int fraction;
    quint32 sign; ///< the sign bit of a float
};

VELMODEL_STEP bool takeDecimal(Stops& stops, const char* at, Decimal& decimal) {
    const Word negative = *at == '-' ? 1 : 0;
    stops.next();
    stops.passIf(negative);
    const char* const point = stops.take();
    decimal.end = stops.take();
    const auto integers = static_cast<unsigned int>(point - at - static_cast<std::ptrdiff_t>(negative));
    decimal.fraction = static_cast<unsigned int>(decimal.end - point - 1);
    decimal.digits = integers + decimal.fraction;
    decimal.sign = static_cast<quint32>(negative) << 31;
    // A count of 0 wraps around and fails the comparison.
    return *point == '.' && integers - 1 < kMaxDecimalDigits && decimal.fraction - 1 < kMaxDecimalDigits &&
           decimal.digits <= kMaxDecimalDigits;
}

/// The same for a decimal that may be an integer. Returns: its end, or null.
VELMODEL_STEP const char* takeComponent(Stops& stops, const char* at, Decimal& decimal) {
    Stops ahead = stops;
    if (takeDecimal(ahead, at, decimal)) {
        stops = ahead;
        return decimal.end;
    }
    if (decimal.sign != 0)
        stops.take();
    const char* const end = stops.take();
    // The byte after the digits is removed as the point is.
    decimal.end = end + 1;
    decimal.fraction = 0;
    decimal.digits = static_cast<unsigned int>(end - at) - (decimal.sign >> 31);
    return decimal.digits - 1 < kMaxDecimalDigits ? end : nullptr;
}

/// The digits without their point, joined to numbers of four digits. Missing digits are 0.
VELMODEL_STEP __m128i foursOf(const Decimal& decimal) {
    __m128i values = _mm_sub_epi8(loadBytes(decimal.end - 16), _mm_set1_epi8('0'));
    values = _mm_shuffle_epi8(values, loadBytes(kPointTable.rows[decimal.fraction]));
    return joinFours(_mm_and_si128(values, loadBytes(kKeepTable + decimal.digits)));
}

/// Converts `magnitudes` to floats with the signs of the decimals.
VELMODEL_STEP __m128 withSigns(__m128d magnitudes, const Decimal& low, const Decimal& high) {
    const __m128i signs =
        _mm_insert_epi32(_mm_cvtsi32_si128(static_cast<int>(low.sign)), static_cast<int>(high.sign), 1);
    return _mm_or_ps(_mm_cvtpd_ps(magnitudes), _mm_castsi128_ps(signs));
}

/// Writes two values: their mantissas, divided by powers of ten.
VELMODEL_STEP void storeTwo(__m128d mantissas, const Decimal& low, const Decimal& high, float* values) {
    const __m128d powers =
        _mm_loadh_pd(_mm_load_sd(kPowersOfTen + low.fraction), kPowersOfTen + high.fraction);
    const __m128 both = withSigns(_mm_div_pd(mantissas, powers), low, high);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(values), _mm_castps_si128(both));
}

VELMODEL_STEP void storeOne(__m128d mantissa, const Decimal& decimal, float* value) {
    const __m128d power = _mm_load_sd(kPowersOfTen + decimal.fraction);
    _mm_store_ss(value, withSigns(_mm_div_sd(mantissa, power), decimal, decimal));
}

VELMODEL_STEP void storeLong(const Decimal& decimal, float* value) {
    const __m128i fours = foursOf(decimal);
    const auto both = static_cast<Word>(_mm_cvtsi128_si64(joinEights(fours, fours)));
    const auto mantissa = static_cast<double>((both & 0xFFFFFFFFU) * 100000000U + (both >> 32));
    storeOne(_mm_set_sd(mantissa), decimal, value);
}

template<size_t Count>
VELMODEL_STEP void storeValues(const Decimal* decimals, float* values) {
    static_assert(Count == 2 || Count == 3);
    const Decimal& last = decimals[Count - 1];
    if (qMax(qMax(decimals[0].digits, decimals[1].digits), last.digits) > kEight) {
        for (size_t i = 0; i < Count; ++i)
            storeLong(decimals[i], values + i);
        return;
    }
    // All digits are in the upper halves of the fours.
    const __m128i low = _mm_unpackhi_epi64(foursOf(decimals[0]), foursOf(decimals[1]));
    const __m128i high = Count == 2 ? low : _mm_srli_si128(foursOf(last), 8);
    const __m128i mantissas = joinEights(low, high);
    storeTwo(_mm_cvtepi32_pd(mantissas), decimals[0], decimals[1], values);
    if (Count == 3)
        storeOne(_mm_cvtepi32_pd(_mm_srli_si128(mantissas, 8)), last, values + 2);
}

VELMODEL_STEP bool isLineEnd(const char* at) {
    return *at == '\n' || (*at == '\r' && at[1] == '\n');
}

/// Skips the rest of the line after its last token, which ends at `end`. Returns: the next line; null if this
/// line is not plain.
VELMODEL_STEP const char* leaveLine(Stops& stops, const char* end) {
    if (*end == '\n')
        return end + 1;
    if (*end == '\r' && end[1] == '\n')
        return stops.take() + 1;
    if (*end != ' ')
        return nullptr;
    // Skips operands that are ignored.
    do
        end = stops.take();
    while (*end != '\n');
    return end + 1;
}

/// Returns: the end of the last decimal; null if the line is not plain.
template<size_t Count>
VELMODEL_STEP const char* takeDecimals(Stops& stops, const char* at, Decimal* decimals) {
    for (size_t i = 0; i < Count; ++i) {
        while (*at == ' ')
            at = stops.take() + 1;
        if (!takeDecimal(stops, at, decimals[i]))
            return nullptr;
        at = decimals[i].end;
        if (i + 1 < Count && *at++ != ' ')
            return nullptr;
    }
    return at;
}

template<size_t Count, size_t N>
VELMODEL_STEP const char* takeVertex(Stops& stops, const char* at, FixedList<float, N>& values,
                                     quint32& lineCount) {
    if (lineCount == 0)
        return nullptr;
    Decimal decimals[Count];
    at = takeDecimals<Count>(stops, at, decimals);
    if (at == nullptr)
        return nullptr;
    const char* const next = leaveLine(stops, at);
    if (next == nullptr)
        return nullptr;
    storeValues<Count>(decimals, values.items + values.size);
    values.size += Count;
    ++lineCount;
    return next;
}

/// Parses the numbers after a position, which ends at `at`. Returns: the end of the last one; null if the
/// line is not plain.
VELMODEL_STEP const char* takeColour(Stops& stops, const char* at, ObjColour& colour) {
    Decimal decimals[ObjColour::kSize];
    int count = 0;
    while (*at == ' ' && !isLineEnd(at + 1)) {
        if (count == static_cast<int>(ObjColour::kSize))
            return nullptr;
        at = takeComponent(stops, at + 1, decimals[count++]);
        if (at == nullptr)
            return nullptr;
    }
    if (count < 3)
        return at;
    storeValues<3>(decimals, colour.values);
    if (count == 4)
        storeLong(decimals[3], colour.values + 3);
    colour.components = count;
    return at;
}

VELMODEL_STEP const char* takeColouredPosition(Stops& stops, const char* at, ObjRun& run,
                                               quint32& lineCount) {
    if (lineCount == 0)
        return nullptr;
    Decimal decimals[3];
    ObjColour colour;
    at = takeDecimals<3>(stops, at, decimals);
    if (at != nullptr)
        at = takeColour(stops, at, colour);
    const char* const next = at == nullptr ? nullptr : leaveLine(stops, at);
    if (next == nullptr)
        return nullptr;
    storeValues<3>(decimals, run.positions.items + run.positions.size);
    run.positions.size += 3;
    run.addColour(colour);
    ++lineCount;
    return next;
}

/// A number without a sign in the text.
struct Number {
    const char* end;
    unsigned int digits;
};

VELMODEL_STEP bool takeNumber(Stops& stops, const char* at, Number& number) {
    number.end = stops.take();
    number.digits = static_cast<unsigned int>(number.end - at);
    return number.digits - 1 < kMaxIndexDigits;
}

VELMODEL_STEP __m128i foursOf(const Number& low, const Number& high) {
    const __m128i values = _mm_sub_epi8(loadHalves(low.end - kEight, high.end - kEight), _mm_set1_epi8('0'));
    const __m128i kept = loadHalves(kKeepTable + kEight + low.digits, kKeepTable + kEight + high.digits);
    return joinFours(_mm_and_si128(values, kept));
}

/// Converts the number to an index, which counts from 0.
VELMODEL_STEP quint32 indexOf(const Number& number, bool negative, quint32 lineCount) {
    // The digits are in the highest bytes. The shifts replace the characters before them by zeros.
    const unsigned int others = 64 - 8 * number.digits;
    const auto value = static_cast<quint32>(joinDigits(digitValues(number.end - kEight) >> others << others));
    return value == 0 ? kNoIndex : negative ? lineCount - value : value - 1;
}

/// Converts three numbers without signs to indices in the lower lanes.
VELMODEL_STEP __m128i indicesOf(const Number& first, const Number& second, const Number& third) {
    const __m128i numbers = joinEights(foursOf(first, second), foursOf(third, third));
    const __m128i areZero = _mm_cmpeq_epi32(numbers, _mm_setzero_si128());
    // For 0, all bits but the highest: kNoIndex.
    return _mm_andnot_si128(_mm_slli_epi32(areZero, 31), _mm_add_epi32(numbers, _mm_set1_epi32(-1)));
}

/// Parses the usual form of a corner: one or three numbers without signs. Returns: its end; null for any
/// other form.
VELMODEL_STEP const char* takeUsualCorner(Stops& stops, const char* at, ObjRun& run, size_t corner) {
    Number position;
    Number texCoord;
    Number normal;
    if (!takeNumber(stops, at, position))
        return nullptr;
    if (*position.end != '/') {
        run.positionIndices.items[corner] = indexOf(position, false, 0);
        run.texCoordIndices.items[corner] = kNoIndex;
        run.normalIndices.items[corner] = kNoIndex;
        return position.end;
    }
    if (!takeNumber(stops, position.end + 1, texCoord) || *texCoord.end != '/' ||
        !takeNumber(stops, texCoord.end + 1, normal))
        return nullptr;
    const __m128i indices = indicesOf(position, texCoord, normal);
    run.positionIndices.items[corner] = static_cast<quint32>(_mm_cvtsi128_si32(indices));
    run.texCoordIndices.items[corner] = static_cast<quint32>(_mm_extract_epi32(indices, 1));
    run.normalIndices.items[corner] = static_cast<quint32>(_mm_extract_epi32(indices, 2));
    return normal.end;
}

VELMODEL_STEP bool takeIndex(Stops& stops, const char*& at, quint32 lineCount, quint32& index) {
    Number number;
    const bool negative = *at == '-';
    if (negative)
        at = stops.take() + 1;
    if (!takeNumber(stops, at, number))
        return false;
    index = indexOf(number, negative, lineCount);
    at = number.end;
    return true;
}

VELMODEL_STEP const char* takeOtherCorner(Stops& stops, const char* at, const ObjLineCounts& counts,
                                          ObjRun& run, size_t corner) {
    quint32& texCoord = run.texCoordIndices.items[corner] = kNoIndex;
    quint32& normal = run.normalIndices.items[corner] = kNoIndex;
    if (!takeIndex(stops, at, counts.positions, run.positionIndices.items[corner]))
        return nullptr;
    if (*at != '/')
        return at;
    ++at;
    if (*at == '/') {
        stops.take();
    } else {
        if (!takeIndex(stops, at, counts.texCoords, texCoord))
            return nullptr;
        if (*at != '/')
            return at;
    }
    ++at;
    return takeIndex(stops, at, counts.normals, normal) ? at : nullptr;
}

VELMODEL_STEP const char* takeFace(Stops& stops, const char* at, const ObjLineCounts& counts, ObjRun& run) {
    const char* end = nullptr;
    size_t corners = 0;
    do {
        while (*at == ' ')
            at = stops.take() + 1;
        if (corners == ObjRun::kPlainCorners)
            return nullptr;
        const size_t corner = run.positionIndices.size + corners;
        Stops ahead = stops;
        end = takeUsualCorner(ahead, at, run, corner);
        if (end != nullptr)
            stops = ahead;
        else
            end = takeOtherCorner(stops, at, counts, run, corner);
        if (end == nullptr)
            return nullptr;
        ++corners;
        at = end + 1;
    } while (*end == ' ' && !isLineEnd(at));
    const char* const next = leaveLine(stops, end);
    if (next != nullptr)
        run.addFace(corners);
    return next;
}

template<bool TakesColours>
VELMODEL_STEP const char* takeLine(Stops& stops, const char* first, ObjLineCounts& counts, ObjRun& run) {
    const bool isFace = first[0] == 'f';
    const int keyword = isFace || first[1] == ' ' ? 1 : 2;
    if ((!isFace && first[0] != 'v') || first[keyword] != ' ')
        return nullptr;
    stops.take();
    stops.take();
    if (isFace)
        return takeFace(stops, first + 2, counts, run);
    if (keyword == 1 && TakesColours)
        return takeColouredPosition(stops, first + 2, run, counts.positions);
    if (keyword == 1)
        return takeVertex<3>(stops, first + 2, run.positions, counts.positions);
    stops.take();
    if (first[1] == 'n')
        return takeVertex<3>(stops, first + 3, run.normals, counts.normals);
    return first[1] == 't' ? takeVertex<2>(stops, first + 3, run.texCoords, counts.texCoords) : nullptr;
}

template<bool TakesColours>
VELMODEL_SSE41 const char* takeLines(const char* first, const char* last, ObjLineCounts& counts,
                                     ObjRun& run) {
    if (first == last)
        return first;
    Stops stops(first);
    while (first != last && !run.isFull()) {
        const char* const next = takeLine<TakesColours>(stops, first, counts, run);
        if (next == nullptr)
            break;
        first = next;
    }
    return first;
}

const char* parseWideLines(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run) {
    return run.takesColours ? takeLines<true>(first, last, counts, run)
                            : takeLines<false>(first, last, counts, run);
}

} // namespace

WideParser* findSse41Parser() {
    return __builtin_cpu_supports(VELMODEL_FEATURE) ? parseWideLines : nullptr;
}

} // namespace Atelier::Vel

#else

namespace Atelier::Vel {

WideParser* findSse41Parser() {
    return nullptr;
}

} // namespace Atelier::Vel

#endif
