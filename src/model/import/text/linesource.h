#pragma once

#include <memory>
#include <vector>

#include <QtCore/QIODevice>
#include <QtCore/QString>
#include <QtCore/QTextStream>

#include "import/text/continuedlines.h"
#include "import/text/textline.h"

namespace Atelier::Vel {

/// How a LineSource reads. Tests use small sizes.
struct LineSourceOptions {
    /// Bytes read from the device at a time; at least 4, so that the first block contains a byte-order mark.
    qint64 blockBytes = qint64(256) * 1024;
    /// A longer line is dropped completely, because a QString cannot hold much more.
    qint64 lineBytes = qint64(512) * 1024 * 1024;
    /// Whether a backslash at the end of a line continues it on the next line, unless the line has a comment:
    /// a '#' at its start or after a blank. The backslash and the end of the line become a blank.
    bool joinsContinuedLines = false;
    /// Whether the lines are counted.
    bool numbersLines = false;

    /// The default sizes, and whether continued lines are joined.
    static LineSourceOptions joining(bool joinsContinuedLines) {
        LineSourceOptions options;
        options.joinsContinuedLines = joinsContinuedLines;
        return options;
    }
};

/// Reads the lines of a text stream as bytes: the same lines as QTextStream::readLine.
///
/// A device that can seek, in text mode, is read in large blocks, bypassing the stream, and its ASCII lines
/// are returned in place, without a copy. Lines with other characters are decoded as the stream decodes them.
/// So are all lines if the stream cannot be bypassed: UTF-16 and UTF-32, a codec set by the client, a stream
/// over a sequential device or a string, or one that was read before. Decoded lines are returned with one
/// byte per character: white space as ' ', any other character beyond ASCII as `kForeign`.
class LineSource {
public:
    static constexpr char kForeign = '\x80';
    /// The number of readable bytes before wholeLinesBegin(); their content is unspecified. After
    /// wholeLinesEnd(), the same number of bytes is readable, counted from the first byte that is not a
    /// digit. There always is such a byte.
    static constexpr qint64 kPadding = 128;

    /// `stream` must outlive the source and must not be used otherwise in the meantime.
    explicit LineSource(QTextStream* stream, const LineSourceOptions& options = {});

    /// Advances to the next line. Returns: false after the last line.
    bool next();

    /// The bytes of the current line, without its end; valid until the next advance.
    const char* begin() const { return _lineBegin; }
    const char* end() const { return _lineEnd; }
    /// The characters of a part of the current line.
    QString text(const char* first, const char* last) const;

    /// The current line, for observations. `file` is the name of the text. It has only that name if lines are
    /// not numbered. A line feed ends a line; a continued line has the number of its first one.
    TextLine line(const QString& file) const;

    /// The same for a line in memory, from `first` to its line feed at `last`. Requires: line() or this
    /// function was not called for a later line.
    TextLine lineInMemory(const QString& file, const char* first, const char* last) const;

    /// The numbers of these lines alone, from 1. Require: lines are numbered.
    qint64 lineNumber() const;
    qint64 lineNumberInMemory(const char* first) const;

    /// Ensures that unread lines are in memory. Returns: false if there are none, because the text is at its
    /// end or comes from the stream itself; next() distinguishes the two cases.
    bool fill();
    /// The lines in memory, undecoded, each with a line feed. next() does not return lines that were skipped
    /// by skipTo().
    const char* wholeLinesBegin() const { return _unread; }
    const char* wholeLinesEnd() const { return _wholeLinesEnd; }
    /// The end of those of them that may be skipped: the first line that is continued, if there is one, or
    /// wholeLinesEnd().
    const char* singleLinesEnd();
    void skipTo(const char* lineBegin) { _unread = lineBegin; }

    /// The number of bytes read from the device so far; 0 if the lines come from the stream itself.
    qint64 bytesRead() const { return _bytesRead; }

private:
    bool nextOfStream();
    QString readPiece();
    bool readStreamLine();
    void passRestOfStreamLine(QString piece);
    const char* lineEnd(const char* first) const;
    const char* joinedLineEnd(const char* first) const;
    bool readBlock();
    qint64 readBytes();
    bool findWholeLines(const char* fresh);
    const char* overlongLineEnd(const char* fresh);
    bool closeLastLine();
    void dropBlock();
    void countLines(const char* end) const;
    void skipByteOrderMark();
    void reserveBlock(qint64 bytes);
    void show(const char* first, const char* lineFeed);
    void showWithoutCarriageReturns(const char* first, const char* last);
    void showDecoded();
    void decode(const char* first, const char* lineFeed, bool isLineFeedOfFile);
    bool streamDropsMark(qint64 offset);

    QTextStream* _stream;
    QIODevice* _device; ///< null if the lines come from the stream itself
    LineSourceOptions _options;
    qint64 _fileSize = 0; ///< when reading began
    qint64 _bytesRead = 0;

    std::unique_ptr<char[]> _storage;
    char* _block = nullptr;  ///< in _storage, with padding before and after it
    qint64 _capacity = 0;    ///< of the block
    qint64 _blockOffset = 0; ///< where in the file _block begins
    const char* _unread = nullptr;
    const char* _wholeLinesEnd = nullptr;
    const char* _singleLinesEnd = nullptr; ///< null if not searched for since the block was read
    char* _blockEnd = nullptr;
    bool _lastLineClosed = false; ///< the last line feed is not from the file
    bool _inOverlongLine = false;
    ContinuationScan _overlongLine; ///< how it began, if continued lines are joined
    bool _passedMark = false;       ///< a byte-order mark was at the start of a block of the stream

    // Lines are counted up to a place in the block, which moves to a line that is asked for.
    mutable const char* _counted = nullptr;
    mutable qint64 _linesBefore = 0;    ///< before _counted, or before the current line of a stream
    qint64 _streamLines = 0;            ///< read from the stream
    const char* _lineInBlock = nullptr; ///< the beginning of the current line in the block

    const char* _lineBegin = nullptr;
    const char* _lineEnd = nullptr;
    bool _isJoined = false;
    bool _isDecoded = false;
    QString _decoded;         ///< the current line, if it was decoded
    std::vector<char> _bytes; ///< the current line, if it is not in the block
};

} // namespace Atelier::Vel
