#include "import/obj/plainlines.h"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "import/text/digits.h"

#if !defined(__clang__)
// GCC's definitions of the instructions leave a value undefined intentionally, but GCC warns about them.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

// Not every x86-64 processor has byte permutations, compressions and expansions of whole registers. Functions
// that use them are compiled for these features and called only if all of the features are available. AVX2 is
// listed because a compiler uses it together with AVX-512F.
#define VELMODEL_FEATURES(first, further)                                                                    \
    first("sse4.1") further("popcnt") further("bmi") further("bmi2") further("avx2") further("avx512f")      \
        further("avx512bw") further("avx512vl") further("avx512vbmi") further("avx512vbmi2")
#define VELMODEL_NAME(feature) feature
#define VELMODEL_FURTHER_NAME(feature) "," feature
#define VELMODEL_HAS(feature) __builtin_cpu_supports(feature)
#define VELMODEL_HAS_FURTHER(feature) &&__builtin_cpu_supports(feature)
#define VELMODEL_AVX512 __attribute__((target(VELMODEL_FEATURES(VELMODEL_NAME, VELMODEL_FURTHER_NAME))))
// One step of a line. The data of a line stay in registers only if every step is inlined.
#define VELMODEL_STEP VELMODEL_AVX512 __attribute__((always_inline)) inline

namespace Atelier::Vel {

namespace {

/// One bit for each of 64 characters. The first character has the lowest bit.
using Bits = std::uint64_t;

constexpr unsigned int kWindow = 64;

// A double represents up to fifteen digits exactly.
constexpr Bits kMaxDecimalDigits = 15;

// Corners are parsed four at a time, with up to three numbers each.
constexpr unsigned int kStepCorners = 4;

/// The bytes of a register.
struct Bytes {
    alignas(64) std::uint8_t bytes[64] = {};

    VELMODEL_STEP __m512i load() const { return _mm512_load_si512(bytes); }
};

constexpr Bytes repeated(std::uint8_t byte) {
    Bytes result;
    for (std::uint8_t& each : result.bytes)
        each = byte;
    return result;
}

constexpr Bytes counted() {
    Bytes result;
    for (unsigned int i = 0; i < 64; ++i)
        result.bytes[i] = static_cast<std::uint8_t>(i);
    return result;
}

/// For each byte, its distance from the end of its group of `width` bytes.
constexpr Bytes fromEnd(unsigned int width) {
    Bytes result;
    for (unsigned int i = 0; i < 64; ++i)
        result.bytes[i] = static_cast<std::uint8_t>(width - i % width);
    return result;
}

/// The order of the numbers of `corners` corners, eight bytes for each number: first the positions, then the
/// other numbers, kind by kind.
constexpr Bytes cornerOrder(unsigned int numbers, unsigned int firstCorner, unsigned int corners) {
    Bytes result;
    for (unsigned int i = 0; i < corners * numbers * 8; ++i)
        result.bytes[i] =
            static_cast<std::uint8_t>((firstCorner + i / 8 % corners) * numbers + i / 8 / corners);
    return result;
}

/// For each of four parts of a register, the number of every second byte.
constexpr Bytes countOrder() {
    Bytes result;
    for (unsigned int i = 0; i < 64; ++i)
        result.bytes[i] = static_cast<std::uint8_t>(i / 16 * 2);
    return result;
}

/// Keeps a constant in a register. Without this, compilers load it again for each line.
VELMODEL_STEP __m512i keep(const Bytes& constant) {
    __m512i value = constant.load();
    __asm__("" : "+v"(value));
    return value;
}

constexpr Bytes kZeros = repeated('0');
constexpr Bytes kTens = repeated(10);
constexpr Bytes kMinuses = repeated('-');
constexpr Bytes kCounted = counted();
constexpr Bytes kControls = repeated(16);
constexpr Bytes kFromEighth = fromEnd(8);

struct Constants {
    __m512i zeros = keep(kZeros);
    __m512i tens = keep(kTens);
    __m512i controls = keep(kControls);
    __m512i minuses = keep(kMinuses);
    __m512i counted = keep(kCounted);

    VELMODEL_STEP Constants() {}
};

VELMODEL_STEP unsigned int firstOf(Bits bits) {
    return static_cast<unsigned int>(_tzcnt_u64(bits));
}

VELMODEL_STEP unsigned int countOf(Bits bits) {
    return static_cast<unsigned int>(_mm_popcnt_u64(bits));
}

VELMODEL_STEP Bits bitsBelow(unsigned int end) {
    return _bzhi_u64(~Bits(0), end);
}

VELMODEL_STEP Bits findAll(const __m512i& text, char character) {
    return _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8(character));
}

/// The places of the numbers of up to four corners, and the index of the first corner.
struct CornersTask {
    const char* at;
    size_t corner;
    __m128i places;    ///< of the stops after the numbers
    __m128i distances; ///< from the stops before the numbers
};

/// Corners that were found and whose indices are not yet computed. Finding corners and computing indices are
/// both long chains of dependent steps. A processor executes several lines at once, limited by its
/// instruction window. It can overlap twice the number of lines if the two chains are executed separately.
struct CornerTasks {
    static constexpr size_t kLines = 64;
    static constexpr size_t kStepsOfFace = ObjRun::kPlainCorners / kStepCorners;

    FixedList<CornersTask, kLines + kStepsOfFace> list;
    unsigned int numbers =
        0; ///< per corner, the same for all: a task always makes four corners, even if there are fewer

    bool hasCapacity() const { return list.size <= kLines; }
};

/// A window of 64 characters of the text.
struct Window {
    __m512i text;
    Bits stops;    ///< characters that are not digits
    Bits lineEnds; ///< control characters below 16; all but line feeds and carriage returns are not plain

    VELMODEL_STEP Window(const char* at, const Constants& constants)
        : text(_mm512_loadu_si512(at)),
          stops(_mm512_cmpge_epu8_mask(_mm512_sub_epi8(text, constants.zeros), constants.tens)),
          lineEnds(_mm512_cmplt_epu8_mask(text, constants.controls)) {}
};

/// The next line after a line end; null if `end` is not a line end.
VELMODEL_STEP const char* lineBehind(const char* end) {
    if (*end == '\n')
        return end + 1;
    return *end == '\r' && end[1] == '\n' ? end + 2 : nullptr;
}

/// Joins digits to numbers of four digits.
VELMODEL_STEP __m512i joinFours(const __m512i& digits) {
    const __m512i pairs = _mm512_maddubs_epi16(digits, _mm512_set1_epi16(10 + (1 << 8)));
    return _mm512_madd_epi16(pairs, _mm512_set1_epi32(100 + (1 << 16)));
}

/// Joins numbers of four digits to numbers of eight digits. Each part of the register contains two from
/// `low`, then two from `high`.
VELMODEL_STEP __m512i joinEights(const __m512i& low, const __m512i& high) {
    return _mm512_madd_epi16(_mm512_packus_epi32(low, high), _mm512_set1_epi32(10000 + (1 << 16)));
}

/// The decimals of a vertex line.
struct Decimals {
    Bits lengths; ///< two bytes per decimal: the number of digits before and after its point
    Bits signs;   ///< one bit per decimal
};

/// The lowest bit of the two bytes of each decimal.
template<size_t Count>
constexpr Bits kEachLength = 0x0001'0001'0001'0001 >> (64 - 16 * Count);

/// Finds decimals in the usual form: all have a point, they are separated by one blank, and the last one is
/// at the first place in `end`. Returns: false if they have another form.
template<size_t Count>
VELMODEL_STEP bool findUsualDecimals(const Window& window, Bits end, const Constants& constants,
                                     Decimals& decimals) {
    constexpr unsigned int kBits = 16 * Count;                   // two bytes per decimal
    constexpr Bits kShape = 0x2E'202E'202E'202E >> (64 - kBits); // ". . . .", read backwards
    constexpr Bits kBlanks = 0b10101010 & ((1 << (2 * Count - 1)) - 1);
    constexpr Bits kLengths = kEachLength<Count> * 0x0101;
    const Bits minuses = _mm512_cmpeq_epi8_mask(window.text, constants.minuses);
    const Bits stops = _mm512_mask_cmpneq_epi8_mask(window.stops, window.text, constants.minuses);
    const __m512i characters = _mm512_maskz_compress_epi8(stops, window.text);
    const __m512i places = _mm512_maskz_compress_epi8(stops, constants.counted);
    const auto shape = static_cast<Bits>(_mm_cvtsi128_si64(_mm512_castsi512_si128(characters)));
    const auto ends = static_cast<Bits>(_mm_cvtsi128_si64(_mm512_castsi512_si128(places)));
    const Bits starts = _pdep_u64(kBlanks, stops) << 1 | 1;
    const Bits line = end ^ (end - 1); // up to the end
    decimals.signs = _pext_u64(minuses, starts);
    // The distances between the stops, excluding the stops themselves and the signs.
    decimals.lengths = _bzhi_u64(ends - (ends << 8) - (0x0101010101010101 - 1), kBits) -
                       _pdep_u64(decimals.signs, kEachLength<Count>);
    const Bits empty = (decimals.lengths - kLengths) & (kLengths << 7);
    const Bits lastStop = _bzhi_u64(ends, kBits) >> (kBits - 8);
    return ((_bzhi_u64(shape, kBits - 8) ^ kShape) | (minuses & line & ~starts) | empty |
            (lastStop ^ firstOf(end))) == 0;
}

/// Finds decimals with or without a point. Anything may follow the last one.
template<size_t Count>
VELMODEL_STEP bool findDecimals(const Window& window, Decimals& decimals) {
    const Bits digits = ~window.stops;
    const Bits blanks = findAll(window.text, ' ');
    Bits stops = blanks | window.lineEnds;
    unsigned int ends[Count];
    for (unsigned int& end : ends) {
        end = firstOf(stops);
        stops = _blsr_u64(stops);
    }
    const Bits line = bitsBelow(ends[Count - 1]);
    // After two blanks, the last token is empty: it starts at its end.
    const Bits starts = (blanks << 1 | 1) & (line << 1 | 1);
    const Bits minuses = findAll(window.text, '-') & starts;
    const Bits points = findAll(window.text, '.') & line;
    Bits doubled = 0;
    Bits before = 0;
    decimals.lengths = 0;
    for (size_t i = 0; i < Count; ++i) {
        const Bits token = bitsBelow(ends[i]) & ~before;
        before = bitsBelow(ends[i]);
        const Bits point = points & token;
        const Bits behindPoint = ~(point - 1); // no bits if there is no point
        doubled |= point & (point - 1);
        const Bits count = countOf(digits & token);
        const Bits fraction = countOf(digits & token & behindPoint);
        decimals.lengths |= (count - fraction) << 16 * i | fraction << (16 * i + 8);
    }
    decimals.signs = _pext_u64(minuses, starts);
    // Each decimal must have a digit at its start, after its sign, and after its point.
    const Bits mustBeDigits = (starts & ~minuses) | minuses << 1 | points << 1;
    const Bits strangers = line & ~(digits | blanks | points | minuses);
    return ends[Count - 1] < kWindow && ((mustBeDigits & ~digits) | strangers | doubled) == 0;
}

/// Converts the digits of each decimal to a number in the lower half of a part of the register. `digitCounts`
/// contains the number of digits of each decimal.
VELMODEL_STEP __m512i mantissasOf(const Window& window, const Constants& constants, Bits digitCounts) {
    static constexpr Bytes kFromSixteenth = fromEnd(16);
    static constexpr Bytes kCountOrder = countOrder();
    const __m512i counts = _mm512_permutexvar_epi8(
        kCountOrder.load(), _mm512_castsi128_si512(_mm_cvtsi64_si128(static_cast<long long>(digitCounts))));
    const __m512i values = _mm512_sub_epi8(window.text, constants.zeros);
    // Compresses the digits, then expands them so that those of each decimal are at the end of sixteen bytes.
    const __m512i digits = _mm512_maskz_expand_epi8(_mm512_cmple_epu8_mask(kFromSixteenth.load(), counts),
                                                    _mm512_maskz_compress_epi8(~window.stops, values));
    const __m512i fours = joinFours(digits);
    const __m512i eights = joinEights(fours, fours);
    return _mm512_add_epi64(_mm512_mul_epu32(eights, _mm512_set1_epi64(100000000)),
                            _mm512_srli_epi64(eights, 32));
}

/// Converts numbers below 2^52 to doubles. As the low bits of 2^52, a number is the amount by which the
/// double exceeds 2^52.
VELMODEL_STEP __m128d toDoubles(__m128i numbers) {
    const __m128d base = _mm_set1_pd(0x1p52);
    return _mm_sub_pd(_mm_castsi128_pd(_mm_or_si128(numbers, _mm_castpd_si128(base))), base);
}

constexpr std::uint32_t kMinus = 0x80000000;
// Row n has the sign bits for the three bits of n.
alignas(16) constexpr std::uint32_t kSigns[8][4] = {
    {0, 0, 0, 0},      {kMinus, 0, 0, 0},      {0, kMinus, 0, 0},      {kMinus, kMinus, 0, 0},
    {0, 0, kMinus, 0}, {kMinus, 0, kMinus, 0}, {0, kMinus, kMinus, 0}, {kMinus, kMinus, kMinus, 0},
};

VELMODEL_STEP const double* powerFor(const Decimals& decimals, unsigned int number) {
    return kPowersOfTen + (decimals.lengths >> (16 * number + 8) & 0xFF);
}

/// Writes the values of decimals `number` and `number` + 1.
VELMODEL_STEP void storeTwo(const __m128i& first, const __m128i& second, const Decimals& decimals,
                            unsigned int number, const __m128& signs, float* values) {
    const __m128d powers =
        _mm_loadh_pd(_mm_load_sd(powerFor(decimals, number)), powerFor(decimals, number + 1));
    const __m128 two = _mm_cvtpd_ps(_mm_div_pd(toDoubles(_mm_unpacklo_epi64(first, second)), powers));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(values + number), _mm_castps_si128(_mm_or_ps(two, signs)));
}

VELMODEL_STEP __m128 loadSigns(Bits signs) {
    return _mm_load_ps(reinterpret_cast<const float*>(kSigns[signs]));
}

template<size_t Count>
VELMODEL_STEP void storeValues(const __m512i& mantissas, const Decimals& decimals, float* values) {
    const __m128 signs = loadSigns(Count == 4 ? decimals.signs & 3 : decimals.signs);
    storeTwo(_mm512_castsi512_si128(mantissas), _mm512_extracti32x4_epi32(mantissas, 1), decimals, 0, signs,
             values);
    if constexpr (Count == 3) {
        const __m128d third = toDoubles(_mm512_extracti32x4_epi32(mantissas, 2));
        const __m128 one = _mm_cvtpd_ps(_mm_div_sd(third, _mm_load_sd(powerFor(decimals, 2))));
        _mm_store_ss(values + 2, _mm_or_ps(one, _mm_movehl_ps(signs, signs)));
    }
    if constexpr (Count == 4)
        storeTwo(_mm512_extracti32x4_epi32(mantissas, 2), _mm512_extracti32x4_epi32(mantissas, 3), decimals,
                 2, loadSigns(decimals.signs >> 2), values);
}

/// Converts decimals and writes their values. Returns: false if one has too many digits.
template<size_t Count>
VELMODEL_STEP bool takeValues(const Window& window, const Decimals& decimals, const Constants& constants,
                              float* values) {
    const Bits digitCounts = (decimals.lengths + (decimals.lengths >> 8)) & kEachLength<Count> * 0xFF;
    const Bits tooMany =
        (digitCounts + kEachLength<Count> * (0x7F - kMaxDecimalDigits)) & kEachLength<Count> << 7;
    if (tooMany != 0)
        return false;
    storeValues<Count>(mantissasOf(window, constants, digitCounts), decimals, values);
    return true;
}

/// Parses a vertex line; `at` is after the keyword and a blank. Returns: the next line; null if the line is
/// not plain.
template<size_t Count, size_t N>
VELMODEL_STEP const char* takeVertex(const char* at, const Constants& constants, FixedList<float, N>& values,
                                     quint32& lineCount) {
    while (*at == ' ')
        ++at;
    const Window window(at, constants);
    Decimals decimals;
    if (lineCount == 0 || window.lineEnds == 0 ||
        (!findUsualDecimals<Count>(window, window.lineEnds, constants, decimals) &&
         !findDecimals<Count>(window, decimals)))
        return nullptr;
    // Any characters left before the line end are operands that are ignored.
    const char* const next = lineBehind(at + firstOf(window.lineEnds));
    if (next == nullptr || !takeValues<Count>(window, decimals, constants, values.items + values.size))
        return nullptr;
    values.size += Count;
    ++lineCount;
    return next;
}

/// Parses decimals up to the first place in `end`. Returns: false if they are not plain.
template<size_t Count>
VELMODEL_STEP bool takeDecimals(const Window& window, Bits end, const Constants& constants, float* values) {
    Decimals decimals;
    return (findUsualDecimals<Count>(window, end, constants, decimals) ||
            findDecimals<Count>(window, decimals)) &&
           takeValues<Count>(window, decimals, constants, values);
}

/// Parses the colour in the rest of a "v" line. Returns: the next line; null if the line is not plain.
VELMODEL_STEP const char* takeColour(const char* at, const Constants& constants, ObjColour& colour) {
    const Window window(at, constants);
    const Bits line = window.lineEnds ^ (window.lineEnds - 1);
    const unsigned int numbers = countOf(findAll(window.text, ' ') & line) + 1;
    Decimals ignored;
    bool isPlain = false;
    if (numbers == 3)
        isPlain = takeDecimals<3>(window, window.lineEnds, constants, colour.values);
    else if (numbers == 4)
        isPlain = takeDecimals<4>(window, window.lineEnds, constants, colour.values);
    else if (numbers < 3)
        isPlain = numbers == 1 ? findDecimals<1>(window, ignored) : findDecimals<2>(window, ignored);
    colour.components = numbers < 3 ? 0 : static_cast<int>(numbers);
    return isPlain && window.lineEnds != 0 ? lineBehind(at + firstOf(window.lineEnds)) : nullptr;
}

/// The same as takeVertex() for a "v" line and its colour.
VELMODEL_STEP const char* takeColouredPosition(const char* at, const Constants& constants, ObjRun& run,
                                               quint32& lineCount) {
    while (*at == ' ')
        ++at;
    const Window window(at, constants);
    const Bits blanks = findAll(window.text, ' ');
    const Bits third = _pdep_u64(0b100, blanks);
    const Bits line = window.lineEnds ^ (window.lineEnds - 1);
    ObjColour colour;
    if ((third & line) == 0) {
        const char* const next = takeVertex<3>(at, constants, run.positions, lineCount);
        if (next != nullptr)
            run.addColour(colour);
        return next;
    }
    float* const position = run.positions.items + run.positions.size;
    const char* const next = takeColour(at + firstOf(third) + 1, constants, colour);
    if (lineCount == 0 || next == nullptr || !takeDecimals<3>(window, third, constants, position))
        return nullptr;
    run.positions.size += 3;
    run.addColour(colour);
    ++lineCount;
    return next;
}

/// The first sixteen characters of a line that are not digits, if they are among the first 128 characters.
struct Stops {
    unsigned int lineEnd; ///< the place of the first line end
    unsigned int last;    ///< the number of that stop
    __m128i places;
    __m128i distances; ///< of each stop from the previous one
    __m128i characters;

    VELMODEL_STEP Stops(const char* at, const Constants& constants) {
        const Window low(at, constants);
        __m512i all = _mm512_maskz_compress_epi8(low.stops, constants.counted);
        if (low.lineEnds != 0) {
            lineEnd = firstOf(low.lineEnds);
            last = countOf(_bzhi_u64(low.stops, lineEnd));
            characters = _mm512_castsi512_si128(_mm512_permutexvar_epi8(all, low.text));
        } else {
            const Window high(at + kWindow, constants);
            const unsigned int lowCount = countOf(low.stops);
            lineEnd = kWindow + firstOf(high.lineEnds);
            last = lowCount + countOf(_bzhi_u64(high.stops, lineEnd - kWindow));
            const __m512i highPlaces = _mm512_or_si512(constants.counted, _mm512_set1_epi8(kWindow));
            all = _mm512_mask_expand_epi8(all, ~bitsBelow(lowCount),
                                          _mm512_maskz_compress_epi8(high.stops, highPlaces));
            characters = _mm512_castsi512_si128(_mm512_permutex2var_epi8(low.text, all, high.text));
        }
        places = _mm512_castsi512_si128(all);
        distances = _mm_sub_epi8(places, _mm_alignr_epi8(places, _mm_set1_epi8(-1), 15));
    }
};

/// The digits before some stops. The digits of each number are at the end of eight bytes. `order` contains
/// the number of the stop for each byte.
VELMODEL_STEP __m512i digitsBefore(const CornersTask& task, const Bytes& order) {
    const __m512i fromEighth = kFromEighth.load();
    const __m512i numbers = order.load();
    const __m512i places = _mm512_permutexvar_epi8(numbers, _mm512_castsi128_si512(task.places));
    const __m512i distances = _mm512_permutexvar_epi8(numbers, _mm512_castsi128_si512(task.distances));
    const __m512i text =
        _mm512_permutex2var_epi8(_mm512_loadu_si512(task.at), _mm512_sub_epi8(places, fromEighth),
                                 _mm512_loadu_si512(task.at + kWindow));
    return _mm512_maskz_sub_epi8(_mm512_cmplt_epu8_mask(fromEighth, distances), text, kZeros.load());
}

VELMODEL_STEP void store(__m128i indices, quint32* to) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), indices);
}

/// The numbers of four corners, kind by kind.
template<unsigned int Numbers>
VELMODEL_STEP __m512i numbersOfFour(const CornersTask& task) {
    if constexpr (Numbers == 3) {
        static constexpr Bytes kFirstCorners = cornerOrder(Numbers, 0, 2);
        static constexpr Bytes kOtherCorners = cornerOrder(Numbers, 2, 2);
        return joinEights(joinFours(digitsBefore(task, kFirstCorners)),
                          joinFours(digitsBefore(task, kOtherCorners)));
    } else {
        // All of them fit into one register. joinEights() returns each part twice.
        const __m512i everyOther = _mm512_set_epi64(6, 4, 2, 0, 6, 4, 2, 0);
        static constexpr Bytes kAllCorners = cornerOrder(Numbers, 0, 4);
        const __m512i fours = joinFours(digitsBefore(task, kAllCorners));
        return _mm512_permutexvar_epi64(everyOther, joinEights(fours, fours));
    }
}

/// Computes the indices of corners with `Numbers` numbers each.
template<unsigned int Numbers>
VELMODEL_AVX512 void makeIndices(const CornerTasks& tasks, ObjRun& run) {
    const __m128i none = _mm_set1_epi32(static_cast<int>(kNoIndex));
    for (size_t i = 0; i < tasks.list.size; ++i) {
        const CornersTask& task = tasks.list.items[i];
        const __m512i numbers = numbersOfFour<Numbers>(task);
        // A number 0 is now the maximum number, and all others are below kNoIndex.
        const __m512i indices = _mm512_min_epu32(_mm512_sub_epi32(numbers, _mm512_set1_epi32(1)),
                                                 _mm512_set1_epi32(static_cast<int>(kNoIndex)));
        store(_mm512_castsi512_si128(indices), run.positionIndices.items + task.corner);
        store(Numbers > 1 ? _mm512_extracti32x4_epi32(indices, 1) : none,
              run.texCoordIndices.items + task.corner);
        store(Numbers > 2 ? _mm512_extracti32x4_epi32(indices, 2) : none,
              run.normalIndices.items + task.corner);
    }
}

/// The expected form of corners with one, two or three numbers.
struct CornerShape {
    alignas(16) char stops[17];             ///< the stops after the numbers
    alignas(16) std::uint8_t distances[16]; ///< the minimum distance of two stops
    alignas(16) std::uint8_t more[16];      ///< the maximum excess over that
    std::uint64_t counts; ///< four bits per count of numbers: the number of complete corners, or 0
};

// Texture coordinates may be empty between two slashes.
constexpr CornerShape kCornerShapes[] = {
    {"                ",
     {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2},
     {6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6},
     0x43210},
    {"/ / / / / / / / ",
     {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2},
     {6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6},
     0x403020100},
    {"// // // // // /",
     {2, 1, 2, 2, 1, 2, 2, 1, 2, 2, 1, 2, 2, 1, 2, 2},
     {6, 7, 6, 6, 7, 6, 6, 7, 6, 6, 7, 6, 6, 7, 6, 6},
     0x4003002001000},
};

VELMODEL_STEP __m128i loadPart(const void* bytes) {
    return _mm_load_si128(static_cast<const __m128i*>(bytes));
}

/// Checks up to four corners with `Numbers` numbers each. `numbers` is the count of numbers up to the line
/// end. Returns: the number of corners; 0 if they are not plain.
template<unsigned int Numbers>
VELMODEL_STEP unsigned int countCorners(const Stops& stops, unsigned int numbers) {
    constexpr const CornerShape& kShape = kCornerShapes[Numbers - 1];
    constexpr unsigned int kMax = kStepCorners * Numbers;
    __mmask16 strangers = _mm_cmpneq_epi8_mask(stops.characters, loadPart(kShape.stops));
    strangers =
        _mm_mask_cmpge_epu8_mask(strangers, stops.characters, _mm_set1_epi8(16)); // except at the line end
    const __mmask16 wrong =
        _mm_cmpgt_epu8_mask(_mm_sub_epi8(stops.distances, loadPart(kShape.distances)), loadPart(kShape.more));
    const unsigned int taken = std::min(numbers, kMax);
    const bool isPlain = _bzhi_u32(_kor_mask16(strangers, wrong), taken) == 0;
    return isPlain ? static_cast<unsigned int>(kShape.counts >> 4 * taken & 0xF) : 0;
}

/// The count of numbers per corner, derived from the first two stops: 1 for "1 ", 2 for "1/2 ", 3 for "1/2/"
/// and "1//".
VELMODEL_STEP unsigned int numbersOf(const __m128i& characters) {
    const int two = _mm_cvtsi128_si32(characters);
    if ((two & 0xFF) != '/')
        return 1;
    return (two >> 8 & 0xFF) == '/' ? 3 : 2;
}

/// Parses a face; `at` is after the keyword and a blank. Returns: the next line; null if the line is not
/// plain.
VELMODEL_STEP const char* takeFace(const char* at, const Constants& constants, ObjRun& run,
                                   CornerTasks& tasks) {
    while (*at == ' ')
        ++at;
    size_t corners = 0;
    while (corners + kStepCorners <= ObjRun::kPlainCorners) {
        const Stops stops(at, constants);
        // There is no number after a blank at the line end.
        const unsigned int left = stops.last + ((at + stops.lineEnd)[-1] == ' ' ? 0 : 1);
        const unsigned int numbers = numbersOf(stops.characters);
        if (tasks.list.size == 0)
            tasks.numbers = numbers;
        const unsigned int count = numbers == 1   ? countCorners<1>(stops, left)
                                   : numbers == 2 ? countCorners<2>(stops, left)
                                                  : countCorners<3>(stops, left);
        // Corners of another form must wait for the next call of takeLines().
        if (count == 0 || numbers != tasks.numbers)
            return nullptr;
        tasks.list.push({at, run.positionIndices.size + corners, stops.places, stops.distances});
        corners += count;
        if (left <= kStepCorners * numbers) {
            const char* const next = lineBehind(at + stops.lineEnd);
            if (next != nullptr)
                run.addFace(corners);
            return next;
        }
        const int end = numbers == 1   ? _mm_extract_epi8(stops.places, 3)
                        : numbers == 2 ? _mm_extract_epi8(stops.places, 7)
                                       : _mm_extract_epi8(stops.places, 11);
        at += end + 1;
    }
    return nullptr;
}

template<bool TakesColours>
VELMODEL_STEP const char* takeLine(const char* first, const Constants& constants, ObjLineCounts& counts,
                                   ObjRun& run, CornerTasks& tasks) {
    if (first[1] == ' ' && first[0] == 'f')
        return takeFace(first + 2, constants, run, tasks);
    if (first[0] != 'v')
        return nullptr;
    if (first[1] == ' ' && TakesColours)
        return takeColouredPosition(first + 2, constants, run, counts.positions);
    if (first[1] == ' ')
        return takeVertex<3>(first + 2, constants, run.positions, counts.positions);
    if (first[2] != ' ')
        return nullptr;
    if (first[1] == 'n')
        return takeVertex<3>(first + 3, constants, run.normals, counts.normals);
    return first[1] == 't' ? takeVertex<2>(first + 3, constants, run.texCoords, counts.texCoords) : nullptr;
}

/// Parses some lines; none if the first line is not plain. Returns: the first line that was not parsed.
template<bool TakesColours>
VELMODEL_AVX512 const char* takeLines(const char* first, const char* last, ObjLineCounts& counts,
                                      ObjRun& run) {
    const Constants constants;
    CornerTasks tasks;
    size_t lines = std::min(run.lineCapacityLeft(), CornerTasks::kLines);
    for (; lines != 0 && first != last && tasks.hasCapacity(); --lines) {
        const char* const next = takeLine<TakesColours>(first, constants, counts, run, tasks);
        if (next == nullptr)
            break;
        first = next;
    }
    if (tasks.numbers == 1)
        makeIndices<1>(tasks, run);
    else if (tasks.numbers == 2)
        makeIndices<2>(tasks, run);
    else
        makeIndices<3>(tasks, run);
    return first;
}

const char* parseLines(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run) {
    const char* next = first;
    do {
        first = next;
        next = run.takesColours ? takeLines<true>(first, last, counts, run)
                                : takeLines<false>(first, last, counts, run);
    } while (next != first);
    return first;
}

} // namespace

WideParser* findAvx512Parser() {
    const bool isThere = VELMODEL_FEATURES(VELMODEL_HAS, VELMODEL_HAS_FURTHER);
    return isThere ? parseLines : nullptr;
}

} // namespace Atelier::Vel

#else

namespace Atelier::Vel {

WideParser* findAvx512Parser() {
    return nullptr;
}

} // namespace Atelier::Vel

#endif
