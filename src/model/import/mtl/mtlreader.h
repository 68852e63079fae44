#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTextStream>

#include "import/text/linesource.h"

namespace Atelier::Vel {

/// What a reader knows beyond ten keywords and their first words, see LoadOptions.
struct MtlDialect {
    bool names = false;      ///< names have spaces and quotes, and '#' in a word begins no comment
    bool mapOptions = false; ///< options are skipped, and the name of a map is what is left of the line
    bool extended = false;   ///< ten more keywords
};

/// Reads Wavefront MTL text line by line and knows ten keywords, or twenty.
///
/// Construct it with an open stream. As long as hasNext() is true, call read(), use the line according to
/// kind() if read() returned true, and call next(). The first read() is before the first line and returns
/// false.
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
        Ke,      ///< "Ke"; this and the following ones only in the extended dialect
        Tr,      ///< "Tr"
        Illum,   ///< "illum"
        Pr,      ///< "Pr"
        Pm,      ///< "Pm"
        MapKe,   ///< "map_Ke"
        MapPr,   ///< "map_Pr"
        MapPm,   ///< "map_Pm"
        Norm,    ///< "norm"
        MapKn,   ///< "map_Kn"
        End,     ///< after the last line
        Unknown, ///< any other keyword
    };

    /// If `skipUnknown` is true, next() skips lines with an unknown keyword.
    MtlReader(QTextStream* stream, bool skipUnknown, const LineSourceOptions& options = {},
              const MtlDialect& dialect = {});

    bool hasNext() const { return _kind != Kind::End; }
    /// Advances to the next line with content.
    void next();
    /// Parses the operands of the current line. Returns: false if an operand is missing or malformed.
    bool read();

    Kind kind() const { return _kind; }
    /// Three components of a colour, or a scalar in the first.
    const float* values() const { return _values; }
    /// The name of a material or of a map.
    const QString& text() const { return _text; }
    /// The lines, of which the current one is the line of kind().
    const LineSource& lines() const { return _lines; }
    /// All text after the keyword of the current line, without white space around it. Requires: a dialect.
    QString rest() const;
    /// The names that the file of the current map may have, the most probable first, and text() as the last.
    QStringList mapNames() const;
    /// The first word after the keyword of the current map, which is its name if nothing is repaired.
    const QString& firstWord() const { return _firstWord; }
    /// The current line, see LineSource::line().
    TextLine line(const QString& file) const { return _lines.line(file); }

private:
    bool takeLine();
    void readMap();
    QString repairedMapName() const;

    bool _skipUnknown;
    LineSource _lines;
    MtlDialect _dialect;
    QString _whole; ///< the current line, without outer white space, if there is a dialect
    QString _line;  ///< the input of _lineStream, without comment and outer white space
    QTextStream _lineStream;
    bool _ok = false;
    Kind _kind = Kind::Unknown;
    float _values[3] = {};
    QString _text;
    QString _firstWord;
};

} // namespace Atelier::Vel
