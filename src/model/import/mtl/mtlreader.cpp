#include "import/mtl/mtlreader.h"

#include <algorithm>
#include <iterator>

#include "import/mtl/mapoptions.h"
#include "import/text/names.h"

namespace Atelier::Vel {

namespace {

// In the order of MtlReader::Kind.
constexpr const char* kKeywords[] = {"newmtl", "Ka",     "Kd",     "Ks",     "Ns",   "d",     "map_Kd",
                                     "map_Ks", "map_Ka", "map_Ns", "Ke",     "Tr",   "illum", "Pr",
                                     "Pm",     "map_Ke", "map_Pr", "map_Pm", "norm", "map_Kn"};
constexpr std::ptrdiff_t kPlainKeywords = 10;

constexpr QLatin1Char kComment('#');

MtlReader::Kind kindOf(const QString& keyword, bool isExtended) {
    const auto* const end = isExtended ? std::end(kKeywords) : std::begin(kKeywords) + kPlainKeywords;
    const auto* const found = std::find_if(
        std::begin(kKeywords), end, [&](const char* known) { return keyword == QLatin1String(known); });
    return found == end ? MtlReader::Kind::Unknown
                        : static_cast<MtlReader::Kind>(std::distance(std::begin(kKeywords), found));
}

} // namespace

MtlReader::MtlReader(QTextStream* stream, bool skipUnknown, const LineSourceOptions& options,
                     const MtlDialect& dialect)
    : _skipUnknown(skipUnknown), _lines(stream, options), _dialect(dialect) {}

void MtlReader::next() {
    _ok = false;
    do {
        if (!takeLine()) {
            _kind = Kind::End;
            return;
        }
        QString keyword;
        _lineStream >> keyword;
        _kind = kindOf(keyword, _dialect.extended);
    } while (_skipUnknown && _kind == Kind::Unknown);
}

// Sets the line stream to the next line that has content.
bool MtlReader::takeLine() {
    while (_lines.next()) {
        const QString line = _lines.text(_lines.begin(), _lines.end());
        if (_dialect.names || _dialect.mapOptions || _dialect.extended)
            _whole = line.trimmed();
        _line = line.left(line.indexOf(kComment)).trimmed(); // the whole line if there is no comment
        if (_line.isEmpty())
            continue;
        _lineStream.setString(&_line, QIODevice::ReadOnly);
        _lineStream.resetStatus();
        return true;
    }
    return false;
}

bool MtlReader::read() {
    _ok = false;
    bool isName = false;
    switch (_kind) {
    case Kind::NewMtl:
        _lineStream >> _text;
        isName = true;
        break;
    case Kind::Ka:
    case Kind::Kd:
    case Kind::Ks:
    case Kind::Ke:
        _lineStream >> _values[0] >> _values[1] >> _values[2];
        break;
    case Kind::Ns:
    case Kind::D:
    case Kind::Tr:
    case Kind::Illum:
    case Kind::Pr:
    case Kind::Pm:
        _lineStream >> _values[0];
        break;
    case Kind::MapKd:
    case Kind::MapKs:
    case Kind::MapKa:
    case Kind::MapNs:
    case Kind::MapKe:
    case Kind::MapPr:
    case Kind::MapPm:
    case Kind::Norm:
    case Kind::MapKn:
        readMap();
        isName = true;
        break;
    case Kind::End:
    case Kind::Unknown:
        return false;
    }
    // Where names are repaired, one may begin with '#'.
    const bool isNamed = _dialect.names && isName && !rest().isEmpty();
    _ok = isNamed || _lineStream.status() == QTextStream::Ok;
    return _ok;
}

QString MtlReader::rest() const {
    const auto* const end =
        std::find_if(_whole.cbegin(), _whole.cend(), [](QChar at) { return at.isSpace(); });
    return _whole.mid(static_cast<int>(end - _whole.cbegin())).trimmed();
}

void MtlReader::readMap() {
    _lineStream >> _text;
    _firstWord = _text;
    if (_dialect.names || _dialect.mapOptions)
        _text = repairedMapName();
}

QStringList MtlReader::mapNames() const {
    if (!_dialect.names && !_dialect.mapOptions)
        return {_text};
    const QString whole = rest();
    const auto nameIn = [this](const QString& text) {
        return unquoted(_dialect.mapOptions ? parseMapOptions(text).name : text);
    };
    return {nameIn(whole), nameIn(withoutComment(whole)), wordsOf(whole).value(0), _text};
}

QString MtlReader::repairedMapName() const {
    const QString whole = rest();
    const QString uncommented = withoutComment(whole);
    QString name = _dialect.names ? uncommented : whole.left(whole.indexOf(kComment)).trimmed();
    if (name.isEmpty())
        name = whole;
    if (!_dialect.mapOptions)
        return wordsOf(name).value(0);
    name = parseMapOptions(name).name;
    return _dialect.names ? unquoted(name) : name;
}

} // namespace Atelier::Vel
