#include "import/mtl/mtlreader.h"

#include <algorithm>
#include <iterator>

namespace Atelier::Vel {

namespace {

// In the order of MtlReader::Kind.
constexpr const char* kKeywords[] = {"newmtl", "Ka",     "Kd",     "Ks",     "Ns",
                                     "d",      "map_Kd", "map_Ks", "map_Ka", "map_Ns"};

MtlReader::Kind kindOf(const QString& keyword) {
    const auto* const found =
        std::find_if(std::begin(kKeywords), std::end(kKeywords),
                     [&](const char* known) { return keyword == QLatin1String(known); });
    return found == std::end(kKeywords)
               ? MtlReader::Kind::Unknown
               : static_cast<MtlReader::Kind>(std::distance(std::begin(kKeywords), found));
}

} // namespace

MtlReader::MtlReader(QTextStream* stream, bool skipUnknown, const LineSourceOptions& options)
    : _skipUnknown(skipUnknown), _directory(QString()), _lines(stream, options) {}

void MtlReader::next() {
    _ok = false;
    do {
        if (!takeLine()) {
            _kind = Kind::End;
            return;
        }
        QString keyword;
        _lineStream >> keyword;
        _kind = kindOf(keyword);
    } while (_skipUnknown && _kind == Kind::Unknown);
}

// Sets the line stream to the next line that has content.
bool MtlReader::takeLine() {
    while (_lines.next()) {
        const QString line = _lines.text(_lines.begin(), _lines.end());
        const int comment = line.indexOf(QLatin1Char('#'));
        _line = line.left(comment).trimmed(); // the whole line if there is no comment
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
    switch (_kind) {
    case Kind::NewMtl:
        _lineStream >> _text;
        break;
    case Kind::Ka:
    case Kind::Kd:
    case Kind::Ks:
        _lineStream >> _values[0] >> _values[1] >> _values[2];
        break;
    case Kind::Ns:
    case Kind::D:
        _lineStream >> _values[0];
        break;
    case Kind::MapKd:
    case Kind::MapKs:
    case Kind::MapKa:
    case Kind::MapNs:
        readMap();
        break;
    case Kind::End:
    case Kind::Unknown:
        return false;
    }
    _ok = _lineStream.status() == QTextStream::Ok;
    return _ok;
}

void MtlReader::readMap() {
    _lineStream >> _text;
    if (QDir::isRelativePath(_text))
        _text = _directory.absoluteFilePath(_text);
}

} // namespace Atelier::Vel
