#pragma once

#include <QtCore/QIODevice>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include "check/findinglog.h"
#include "import/text/linesource.h"

namespace Atelier::Vel {

/// Examines the bytes of a text: marks, carriage returns, null characters, blanks beyond ASCII, and lines
/// that are too long. Columns do not count carriage returns, which no reader of lines returns.
class TextBytes {
public:
    /// `log` must outlive the object. Lines of more than `lineBytes` are reported.
    TextBytes(QString file, FindingLog& log, qint64 lineBytes = LineSourceOptions().lineBytes);

    /// Examines all of a device that is open for reading, in blocks of `blockBytes`.
    /// Returns: a sentence about what was not examined; null if nothing was left out.
    QString examine(QIODevice& device, qint64 blockBytes = kBlockBytes);

private:
    static constexpr qint64 kBlockBytes = qint64(256) * 1024;

    bool takeMark(const QByteArray& start);
    void take(const char* first, const char* last);
    void takePiece(const char* first, const char* last, bool isLineEnd);
    void takeCarriageReturns(const char* first, const char* last);
    void takeNulls(const char* first, const char* last);
    void takeForeign(const char* first, const char* last);
    void endLine();
    bool isInComment(const char* first, const char* last);
    int columnAt(const char* first, const char* at) const;

    QString _file;
    FindingLog& _log;
    qint64 _maxLineBytes;
    qint64 _line = 1;
    qint64 _lineBytes = 0; ///< of the current line, in the pieces so far
    int _characters = 0;   ///< the same in decoded characters, without carriage returns
    enum class Beginning { Blank, Text, Comment } _beginning = Beginning::Blank;
    bool _hasOthers = false; ///< whether the current block has null characters or bytes beyond ASCII
    int _returnColumn = 0;   ///< of a carriage return at the end of the last piece; 0 if there is none
};

} // namespace Atelier::Vel
