#include "import/obj/objreader.h"

#include <iterator>

#include "import/text/numbers.h"

namespace Atelier::Vel {

namespace {

// Enough capacity for the corners of ordinary faces.
constexpr size_t kCornersReserved = 100;

bool isSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

// The part of `token` up to the next slash. Removes that part and the slash from `token`.
std::string_view takePart(std::string_view& token) {
    const size_t slash = token.find('/');
    const std::string_view part = token.substr(0, slash);
    token = slash == std::string_view::npos ? std::string_view() : token.substr(slash + 1);
    return part;
}

} // namespace

ObjReader::ObjReader(QTextStream* stream, const LineSourceOptions& options, WideParser* wideParser,
                     ObjKeywords keywords)
    : _stream(stream), _lines(stream, options), _wideParser(wideParser), _keywords(keywords) {
    _corners.reserve(kCornersReserved);
    next();
}

void ObjReader::next() {
    do
        nextLine();
    while (_kind == Kind::None);
}

void ObjReader::next(ObjRun& run) {
    _runBegin = _runEnd = nullptr;
    if (_stream->status() == QTextStream::Ok && _lines.fill()) {
        _runBegin = _lines.wholeLinesBegin();
        _runEnd = parsePlainLines(_runBegin, _lines.singleLinesEnd(), _counts, run, _wideParser);
        _lines.skipTo(_runEnd);
        if (run.isFull() || isAtBlockEnd()) {
            _kind = Kind::None;
            _ok = false;
            return;
        }
    }
    do
        nextLine();
    while (_kind == Kind::None && !isAtBlockEnd());
}

void ObjReader::nextLine() {
    _kind = Kind::None;
    _ok = false;
    if (!_lines.next()) {
        _kind = Kind::End;
        return;
    }
    _unread = _lines.begin();
    _kind = classify(nextToken());
    _operands = _unread;
}

ObjReader::Kind ObjReader::classify(std::string_view keyword) {
    if (keyword == "v") {
        ++_counts.positions;
        return Kind::Position;
    }
    if (keyword == "vn") {
        ++_counts.normals;
        return Kind::Normal;
    }
    if (keyword == "vt") {
        ++_counts.texCoords;
        return Kind::TexCoord;
    }
    if (keyword == "f")
        return Kind::Face;
    if (keyword == "usemtl")
        return Kind::UseMaterial;
    if (keyword == "mtllib")
        return Kind::MaterialLibrary;
    return classifyOptional(keyword);
}

ObjReader::Kind ObjReader::classifyOptional(std::string_view keyword) const {
    if (_keywords.smoothing && keyword == "s")
        return Kind::SmoothingGroup;
    if (_keywords.parts && keyword == "o")
        return Kind::Object;
    if (_keywords.parts && keyword == "g")
        return Kind::Group;
    const bool isComment = keyword.empty() || keyword.front() == '#';
    return _keywords.others && !isComment ? Kind::Other : Kind::None;
}

bool ObjReader::read() {
    _unread = _operands;
    switch (_kind) {
    case Kind::Position:
    case Kind::Normal:
        _values[0] = nextFloat();
        _values[1] = nextFloat();
        _values[2] = nextFloat();
        break;
    case Kind::TexCoord:
        _values[0] = nextFloat();
        _values[1] = nextFloat();
        break;
    case Kind::Face:
        return _ok = readFace();
    case Kind::MaterialLibrary:
    case Kind::UseMaterial:
    case Kind::SmoothingGroup:
        _text = nextText();
        break;
    case Kind::Object:
    case Kind::Group:
        _text = rest();
        break;
    case Kind::Other:
    case Kind::End:
    case Kind::None:
        return _ok;
    }
    return _ok = _stream->status() == QTextStream::Ok;
}

std::string_view ObjReader::takeToken(const char*& unread) const {
    const char* end = _lines.end();
    while (unread != end && isSpace(*unread))
        ++unread;
    const char* first = unread;
    while (unread != end && !isSpace(*unread))
        ++unread;
    return {first, static_cast<size_t>(unread - first)};
}

QString ObjReader::nextText() {
    const std::string_view token = nextToken();
    return _lines.text(token.data(), token.data() + token.size());
}

float ObjReader::toFloat(std::string_view token, bool* isNumber) const {
    float value = 0.0F;
    if (parseFloat(token.data(), token.data() + token.size(), value))
        return value;
    const QString text = _lines.text(token.data(), token.data() + token.size());
    // QString::toFloat() reports failure for doubles beyond the range of floats.
    if (isNumber != nullptr)
        text.toDouble(isNumber);
    return text.toFloat();
}

ObjColour ObjReader::colour() const {
    constexpr size_t kPosition = 3;
    float numbers[kPosition + ObjColour::kSize];
    size_t count = 0;
    const char* unread = _operands;
    for (;;) {
        const std::string_view token = takeToken(unread);
        if (token.empty() || token.front() == '#')
            return count < kPosition ? ObjColour() : ObjColour(numbers + kPosition, count - kPosition);
        bool isNumber = true;
        if (count == std::size(numbers))
            return {};
        numbers[count++] = toFloat(token, &isNumber);
        if (!isNumber)
            return {};
    }
}

bool ObjReader::readFace() {
    // Empty, but it has a place in the line. NOLINTNEXTLINE(bugprone-string-constructor)
    _badCorner = std::string_view(_operands, 0);
    if (_stream->status() != QTextStream::Ok)
        return false;
    _corners.clear();
    for (;;) {
        const std::string_view token = nextToken();
        if (token.empty() || token.front() == '#')
            return true;
        if (!readCorner(token)) {
            _badCorner = token;
            return false;
        }
    }
}

bool ObjReader::readCorner(std::string_view token) {
    const std::string_view position = takePart(token);
    const std::string_view texCoord = takePart(token);
    const std::string_view normal = takePart(token);
    ObjCorner corner = {kNoIndex, kNoIndex, kNoIndex};
    if (!toIndex(position, _counts.positions, corner.position))
        return false;
    if (!texCoord.empty() && !toIndex(texCoord, _counts.texCoords, corner.texCoord))
        return false;
    if (!normal.empty() && !toIndex(normal, _counts.normals, corner.normal))
        return false;
    _corners.push_back(corner);
    return true;
}

// 1 is the first line of its kind, and -1 is the last one of the `count` lines so far. There is no range
// check.
bool ObjReader::toIndex(std::string_view number, quint32 count, quint32& index) const {
    int value = 0;
    if (!parseInt(number.data(), number.data() + number.size(), value)) {
        bool isInteger = false;
        value = _lines.text(number.data(), number.data() + number.size()).toInt(&isInteger);
        if (!isInteger)
            return false;
    }
    const auto bits = static_cast<quint32>(value);
    index = value > 0 ? bits - 1 : value < 0 ? count + bits : kNoIndex;
    return true;
}

} // namespace Atelier::Vel
