#include "import/obj/plainlines.h"

#include <cstdint>
#include <cstring>

#include <QtCore/QtAlgorithms>

#include "import/text/digits.h"

namespace Atelier::Vel {

namespace {

// Up to eight characters at once, one per byte, the first in the lowest byte. A digit is represented by its
// value.
struct Digits {
    std::uint64_t values; ///< of the characters, '0' being 0
    int count;            ///< of digits before the first other character

    explicit Digits(const char* text) {
        values = digitValues(text);
        // The top bit of each byte above 9. 10 + 0x76 is 0x80, and no byte carries into the next.
        const std::uint64_t others =
            (((values & everyByte(0x7F)) + everyByte(0x76)) | values) & everyByte(0x80);
        count = others == 0 ? 8 : static_cast<int>(qCountTrailingZeroBits(others)) / 8;
    }

    // Requires: count > 0.
    std::uint64_t number() const { return joinDigits(values << (64 - 8 * count)); }
};

constexpr int kMaxIntegerDigits = 7;
constexpr std::uint64_t kIntegerPowersOfTen[] = {1,      10,      100,      1000,     10000,
                                                 100000, 1000000, 10000000, 100000000};
// Seven, eight and four digits are 19 digits, which fit into 64 bits.
constexpr int kMaxLateDigits = 4;

/// Parses one line step by step. Each step returns false if the line is not plain.
class PlainLine {
public:
    PlainLine(const char* at, const char* last) : _at(at), _last(last) {}

    const char* at() const { return _at; }
    void skip(int characters) { _at += characters; }
    bool isAtEnd() const { return *_at == '\n' || (*_at == '\r' && _at[1] == '\n'); }

    bool takeBlanks() {
        if (*_at != ' ')
            return false;
        while (*_at == ' ')
            ++_at;
        return true;
    }

    bool takeSlash() {
        const bool isSlash = *_at == '/';
        _at += isSlash ? 1 : 0;
        return isSlash;
    }

    bool takeSign() {
        const bool isMinus = *_at == '-';
        _at += isMinus ? 1 : 0;
        return isMinus;
    }

    bool takeDecimal(float& value) {
        const bool negative = takeSign();
        const Digits integer(_at);
        if (integer.count == 0 || integer.count > kMaxIntegerDigits)
            return false;
        _at += integer.count;
        std::uint64_t mantissa = integer.number();
        int fractionDigits = 0;
        if (*_at == '.' && !takeFraction(mantissa, fractionDigits))
            return false;
        const double magnitude = static_cast<double>(mantissa) / kPowersOfTen[fractionDigits];
        value = static_cast<float>(negative ? -magnitude : magnitude);
        return true;
    }

    /// Reads a short number and converts it to an index.
    bool takeIndex(quint32 lineCount, quint32& index) {
        const bool negative = takeSign();
        const Digits digits(_at);
        if (digits.count == 0 || digits.count > kMaxIntegerDigits)
            return false;
        _at += digits.count;
        const auto number = static_cast<quint32>(digits.number());
        index = number == 0 ? kNoIndex : negative ? lineCount - number : number - 1;
        return true;
    }

    /// Skips the rest of the line. After a blank, there are only operands that are ignored.
    bool takeRest() {
        if (*_at == ' ')
            _at = static_cast<const char*>(std::memchr(_at, '\n', static_cast<size_t>(_last - _at)));
        else if (!isAtEnd())
            return false;
        _at += *_at == '\r' ? 2 : 1;
        return true;
    }

private:
    // Reads the point and the digits after it.
    bool takeFraction(std::uint64_t& mantissa, int& fractionDigits) {
        const Digits fraction(_at + 1);
        if (fraction.count == 0)
            return false;
        mantissa = mantissa * kIntegerPowersOfTen[fraction.count] + fraction.number();
        fractionDigits = fraction.count;
        _at += 1 + fraction.count;
        return fraction.count < 8 || takeLateDigits(mantissa, fractionDigits);
    }

    // Reads the ninth digit of a fraction and the digits after it.
    bool takeLateDigits(std::uint64_t& mantissa, int& fractionDigits) {
        const Digits late(_at);
        if (late.count > kMaxLateDigits)
            return false;
        if (late.count != 0)
            mantissa = mantissa * kIntegerPowersOfTen[late.count] + late.number();
        fractionDigits += late.count;
        _at += late.count;
        return mantissa <= kMaxExactMantissa;
    }

    const char* _at;
    const char* _last;
};

template<size_t Count>
bool takeDecimals(PlainLine& line, float* values) {
    for (size_t i = 0; i < Count; ++i)
        if (!line.takeBlanks() || !line.takeDecimal(values[i]))
            return false;
    return true;
}

template<size_t Count, size_t N>
bool takeVertex(PlainLine& line, FixedList<float, N>& values) {
    if (!takeDecimals<Count>(line, values.items + values.size) || !line.takeRest())
        return false;
    values.size += Count;
    return true;
}

bool takeColour(PlainLine& line, ObjColour& colour) {
    float numbers[ObjColour::kSize];
    size_t count = 0;
    while (!line.isAtEnd()) {
        if (!line.takeBlanks())
            return false;
        if (line.isAtEnd())
            break;
        if (count == ObjColour::kSize || !line.takeDecimal(numbers[count++]))
            return false;
    }
    colour = ObjColour(numbers, count);
    return true;
}

bool takePosition(PlainLine& line, ObjRun& run) {
    if (!run.takesColours)
        return takeVertex<3>(line, run.positions);
    ObjColour colour;
    if (!takeDecimals<3>(line, run.positions.items + run.positions.size) || !takeColour(line, colour) ||
        !line.takeRest())
        return false;
    run.positions.size += 3;
    run.addColour(colour);
    return true;
}

// Writes a corner after the `taken` corners that the face has so far.
bool takeCorner(PlainLine& line, const ObjLineCounts& counts, ObjRun& run, size_t taken) {
    const size_t at = run.positionIndices.size + taken;
    quint32& texCoord = run.texCoordIndices.items[at] = kNoIndex;
    quint32& normal = run.normalIndices.items[at] = kNoIndex;
    if (!line.takeIndex(counts.positions, run.positionIndices.items[at]))
        return false;
    if (!line.takeSlash())
        return true;
    if (!line.takeSlash()) {
        if (!line.takeIndex(counts.texCoords, texCoord))
            return false;
        if (!line.takeSlash())
            return true;
    }
    return line.takeIndex(counts.normals, normal);
}

bool takeFace(PlainLine& line, const ObjLineCounts& counts, ObjRun& run) {
    size_t corners = 0;
    while (!line.isAtEnd()) {
        if (corners == ObjRun::kPlainCorners || !line.takeBlanks())
            return false;
        if (line.isAtEnd())
            break;
        if (!takeCorner(line, counts, run, corners))
            return false;
        ++corners;
    }
    run.addFace(corners);
    return line.takeRest();
}

// `line` is after the "v".
bool takeVertexLine(PlainLine& line, ObjLineCounts& counts, ObjRun& run) {
    switch (*line.at()) {
    case ' ':
        return counts.positions != 0 && takePosition(line, run) && ++counts.positions != 0;
    case 'n':
        line.skip(1);
        return counts.normals != 0 && takeVertex<3>(line, run.normals) && ++counts.normals != 0;
    case 't':
        line.skip(1);
        return counts.texCoords != 0 && takeVertex<2>(line, run.texCoords) && ++counts.texCoords != 0;
    default:
        return false;
    }
}

// Parses one line. Returns: the next line, or `first` if the line is not plain.
const char* parsePlainLine(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run) {
    PlainLine line(first, last);
    const char keyword = *line.at();
    line.skip(1);
    const bool taken = keyword == 'v'   ? takeVertexLine(line, counts, run)
                       : keyword == 'f' ? takeFace(line, counts, run)
                                        : false;
    return taken ? line.at() : first;
}

} // namespace

const char* parsePlainLines(const char* first, const char* last, ObjLineCounts& counts, ObjRun& run,
                            WideParser* wideParser) {
    while (first != last && !run.isFull()) {
        const char* next = wideParser == nullptr ? first : wideParser(first, last, counts, run);
        if (next == first)
            next = parsePlainLine(first, last, counts, run);
        if (next == first)
            break;
        first = next;
    }
    return first;
}

WideParser* findWideParser() {
    WideParser* const widest = findAvx512Parser();
    return widest != nullptr ? widest : findSse41Parser();
}

} // namespace Atelier::Vel
