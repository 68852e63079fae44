#pragma once

#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QTextStream>

#include "import/text/linesource.h"

namespace Atelier::Vel {

/// Reads Wavefront MTL text line by line and knows ten keywords.
///
/// Construct it with an open stream and call setDirectory(). As long as hasNext() is true, call read(), use
/// the line according to kind() if read() returned true, and call next(). The first read() is before the
/// first line and returns false.
class MtlReader {
public:
    enum class Kind : quint32 {
        NewMtl,  ///< "newmtl"
        Ka,      ///< "Ka"
        Kd,      ///< "Kd"
        Ks,      ///< "Ks"
        Ns,      ///< "Ns"
        D,       ///< "d"
        MapKd,   ///< "map_Kd"
        MapKs,   ///< "map_Ks"
        MapKa,   ///< "map_Ka"
        MapNs,   ///< "map_Ns"
        End,     ///< after the last line
        Unknown, ///< any other keyword
    };

    /// If `skipUnknown` is true, next() skips lines with an unknown keyword.
    MtlReader(QTextStream* stream, bool skipUnknown, const LineSourceOptions& options = {});

    /// Sets the directory for relative map names.
    void setDirectory(const QString& path) { _directory = QDir(path); }

    bool hasNext() const { return _kind != Kind::End; }
    /// Advances to the next line with content.
    void next();
    /// Parses the operands of the current line. Returns: false if an operand is missing or malformed.
    bool read();

    Kind kind() const { return _kind; }
    /// Three components of a colour, or a scalar in the first.
    const float* values() const { return _values; }
    /// The name of a material or the path of a map.
    const QString& text() const { return _text; }

private:
    bool takeLine();
    void readMap();

    bool _skipUnknown;
    QDir _directory;
    LineSource _lines;
    QString _line; ///< the input of _lineStream, without comment and outer white space
    QTextStream _lineStream;
    bool _ok = false;
    Kind _kind = Kind::Unknown;
    float _values[3] = {};
    QString _text;
};

} // namespace Atelier::Vel
