#pragma once

#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QTextStream>

#include "import/text/linesource.h"

namespace Atelier::Vel {

/// Which faults of MTL text a reader repairs, see LoadRepairs.
struct MtlRepairs {
    bool names = false;      ///< names have spaces and quotes, and '#' in a word begins no comment
    bool mapOptions = false; ///< options are skipped, and the name of a map is what is left of the line
};

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
    MtlReader(QTextStream* stream, bool skipUnknown, const LineSourceOptions& options = {},
              const MtlRepairs& repairs = {});

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
    /// All text after the keyword of the current line, without white space around it.
    QString rest() const;
    /// Whether the current line is a map whose name is not the first word after the keyword.
    bool isRepaired() const { return _isRepaired; }

private:
    bool takeLine();
    void readMap();
    QString repairedMapName() const;

    bool _skipUnknown;
    QDir _directory;
    LineSource _lines;
    MtlRepairs _repairs;
    QString _whole; ///< the current line, without outer white space
    QString _line;  ///< the input of _lineStream, without comment and outer white space
    QTextStream _lineStream;
    bool _ok = false;
    Kind _kind = Kind::Unknown;
    float _values[3] = {};
    bool _isRepaired = false;
    QString _text;
};

} // namespace Atelier::Vel
