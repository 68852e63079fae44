#pragma once

#include <optional>

#include <QtCore/QDir>
#include <QtCore/QStringList>
#include <QtCore/QTextStream>

#include "import/obj/objreader.h"

namespace Atelier::Vel::Testing {

/// An ObjReader made of Qt's own calls, line by line. The real one has to agree with it.
class LiteralObjReader {
public:
    using Kind = ObjReader::Kind;

    explicit LiteralObjReader(QTextStream* stream);

    /// Makes the names of libraries absolute.
    void setDirectory(const QString& path) { _directory = QDir(path); }
    bool hasNext() const { return _kind != Kind::End; }
    void next();
    bool read();
    Kind kind() const { return _kind; }
    const float* values() const { return _values; }
    ObjColour colour() const;
    int cornerCount() const { return _corners.size(); }
    ObjCorner corner(int i) const { return _corners.at(i); }
    const QString& text() const { return _text; }

private:
    bool readFace();
    bool readCorner(const QString& token);

    std::optional<QDir> _directory;
    QTextStream* _stream;
    QStringList _tokens;
    bool _ok = false;
    Kind _kind = Kind::None;
    float _values[3] = {};
    QString _text;
    QVector<ObjCorner> _corners;
    int _positionCount = 0;
    int _texCoordCount = 0;
    int _normalCount = 0;
};

} // namespace Atelier::Vel::Testing
