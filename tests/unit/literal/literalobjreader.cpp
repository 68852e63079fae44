#include "literal/literalobjreader.h"

#include <QtCore/QRegExp>

namespace Atelier::Vel::Testing {

namespace {

quint32 storedIndex(int number, int count) {
    if (number > 0)
        return static_cast<quint32>(number) - 1;
    return number < 0 ? static_cast<quint32>(count) + static_cast<quint32>(number) : kNoIndex;
}

} // namespace

LiteralObjReader::LiteralObjReader(QTextStream* stream) : _stream(stream) {
    next();
}

void LiteralObjReader::next() {
    static const QRegExp whiteSpace(QStringLiteral("\\s+"));
    _kind = Kind::None;
    _ok = false;
    while (_kind == Kind::None) {
        if (_stream->atEnd()) {
            _kind = Kind::End;
            return;
        }
        _tokens = _stream->readLine().split(whiteSpace, Qt::SkipEmptyParts);
        if (_tokens.isEmpty() || _tokens[0].startsWith(QLatin1Char('#')))
            continue;
        const QString& keyword = _tokens[0];
        if (keyword == QLatin1String("v")) {
            _kind = Kind::Position;
            ++_positionCount;
        } else if (keyword == QLatin1String("vn")) {
            _kind = Kind::Normal;
            ++_normalCount;
        } else if (keyword == QLatin1String("vt")) {
            _kind = Kind::TexCoord;
            ++_texCoordCount;
        } else if (keyword == QLatin1String("f")) {
            _kind = Kind::Face;
        } else if (keyword == QLatin1String("usemtl")) {
            _kind = Kind::UseMaterial;
        } else if (keyword == QLatin1String("mtllib")) {
            _kind = Kind::MaterialLibrary;
        }
    }
}

bool LiteralObjReader::read() {
    switch (_kind) {
    case Kind::Position:
    case Kind::Normal:
        for (int i = 0; i < 3; ++i)
            _values[i] = _tokens.value(i + 1).toFloat();
        break;
    case Kind::TexCoord:
        for (int i = 0; i < 2; ++i)
            _values[i] = _tokens.value(i + 1).toFloat();
        break;
    case Kind::Face:
        return _ok = readFace();
    case Kind::MaterialLibrary:
        _text = _tokens.value(1);
        if (_directory && QDir::isRelativePath(_text))
            _text = _directory->absoluteFilePath(_text);
        break;
    case Kind::UseMaterial:
        _text = _tokens.value(1);
        break;
    default:
        return _ok;
    }
    return _ok = _stream->status() == QTextStream::Ok;
}

ObjColour LiteralObjReader::colour() const {
    QVector<float> numbers;
    for (const QString& token : _tokens.mid(1)) {
        if (token.startsWith(QLatin1Char('#')))
            break;
        bool isNumber = false;
        token.toDouble(&isNumber);
        if (!isNumber)
            return {};
        numbers.append(token.toFloat());
    }
    ObjColour colour;
    if (numbers.size() != 6 && numbers.size() != 7)
        return colour;
    std::copy(numbers.begin() + 3, numbers.end(), colour.values);
    colour.components = numbers.size() - 3;
    return colour;
}

bool LiteralObjReader::readFace() {
    if (_stream->status() != QTextStream::Ok)
        return false;
    _corners.clear();
    for (int i = 1; i < _tokens.size(); ++i) {
        if (_tokens[i].startsWith(QLatin1Char('#')))
            return true;
        if (!readCorner(_tokens[i]))
            return false;
    }
    return true;
}

bool LiteralObjReader::readCorner(const QString& token) {
    const QStringList parts = token.split(QLatin1Char('/'), Qt::KeepEmptyParts, Qt::CaseSensitive);
    int numbers[3] = {};
    for (int i = 0; i < 3 && i < parts.size(); ++i) {
        if (i > 0 && parts[i].isEmpty())
            continue;
        bool isInteger = false;
        numbers[i] = parts[i].toInt(&isInteger);
        if (!isInteger)
            return false;
    }
    _corners.append({storedIndex(numbers[0], _positionCount), storedIndex(numbers[2], _normalCount),
                     storedIndex(numbers[1], _texCoordCount)});
    return true;
}

} // namespace Atelier::Vel::Testing
