#pragma once

#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QTextStream>

#include "import/text/linesource.h"

namespace Atelier::Vel {

/// Reads Wavefront MTL text line by line and knows ten keywords.
///
/// Construct it over an open stream, call setDirectory(), and as long as hasNext(): read(), use the line
/// according to kind() when read() returned true, next(). The first read() comes before the first line and
/// returns false.
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
        End,     ///< behind the last line
        Unknown, ///< any other keyword
    };

    /// With `skipUnknown`, next() passes over lines with an unknown keyword.
    MtlReader(QTextStream* stream, bool skipUnknown, const LineSourceLimits& limits = {});

    /// Where relative map names start from.
    void setDirectory(const QString& path) { _directory = QDir(path); }

    bool hasNext() const { return _kind != Kind::End; }
    /// Advances to the next line with content.
    void next();
    /// Parses the operands of the current line. Returns: false when one is missing or malformed.
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
    QString _line; ///< what _lineStream reads: no comment, no white space around it
    QTextStream _lineStream;
    bool _ok = false;
    Kind _kind = Kind::Unknown;
    float _values[3] = {};
    QString _text;
};

} // namespace Atelier::Vel
