#pragma once

#include <memory>
#include <vector>

#include <QtCore/QFileDevice>
#include <QtCore/QString>
#include <QtCore/QTextStream>

namespace Atelier::Vel {

/// Sizes that a LineSource works with; tests make them small.
struct LineSourceLimits {
    /// Bytes read from the device at a time; at least 4, so that the first block holds a byte-order mark.
    qint64 blockBytes = qint64(256) * 1024;
    /// A longer line is dropped whole: a QString could hold little more.
    qint64 lineBytes = qint64(512) * 1024 * 1024;
};

/// Gives the lines of a text stream as bytes: the same lines as QTextStream::readLine.
///
/// A plain file in text mode is read in large blocks, past the stream, and its ASCII lines are handed out
/// where they lie. Lines with other characters, and all lines where the stream's device cannot be read past
/// it (UTF-16 and UTF-32, a codec of its own, a stream over anything else or read from before), are decoded
/// as the stream decodes them and handed out with one byte per character: white space as ' ', any other
/// character beyond ASCII as `kForeign`.
class LineSource {
public:
    static constexpr char kForeign = '\x80';
    /// Bytes before wholeLinesBegin() that can be read, whatever they hold. Behind wholeLinesEnd() as many
    /// can, counted from the first of them that is no digit: there always is one.
    static constexpr qint64 kPadding = 128;

    /// `stream` must outlive the source and is not to be used by anyone else meanwhile.
    explicit LineSource(QTextStream* stream, const LineSourceLimits& limits = {});

    /// Advances to the next line. Returns: false behind the last one.
    bool next();

    /// The bytes of the current line, without its end; valid until the next advance.
    const char* begin() const { return _lineBegin; }
    const char* end() const { return _lineEnd; }
    /// The characters of a part of the current line.
    QString text(const char* first, const char* last) const;

    /// Sees to it that unread lines lie in memory. Returns: false when none are left there, because the text
    /// is at its end or comes from the stream itself; next() tells which.
    bool fill();
    /// The lines that lie in memory, undecoded, each with a line feed. What is passed over by skipTo() is not
    /// handed out by next().
    const char* wholeLinesBegin() const { return _unread; }
    const char* wholeLinesEnd() const { return _wholeLinesEnd; }
    void skipTo(const char* lineBegin) { _unread = lineBegin; }

    /// Bytes taken from the device so far; 0 where the lines come from the stream itself.
    qint64 bytesRead() const { return _bytesRead; }

private:
    bool nextOfStream();
    bool readBlock();
    qint64 readBytes();
    bool findWholeLines(const char* fresh);
    bool closeLastLine();
    void dropBlock();
    void skipByteOrderMark();
    void reserveBlock(qint64 bytes);
    void show(const char* first, const char* lineFeed);
    void showWithoutCarriageReturns(const char* first, const char* last);
    void showDecoded();
    void decode(const char* first, const char* last);
    bool streamDropsMark(qint64 offset);

    QTextStream* _stream;
    QFileDevice* _device; ///< null where the lines come from the stream itself
    LineSourceLimits _limits;
    qint64 _fileSize = 0; ///< when reading began
    qint64 _bytesRead = 0;

    std::unique_ptr<char[]> _storage;
    char* _block = nullptr;  ///< in _storage, with padding before and behind it
    qint64 _capacity = 0;    ///< of the block
    qint64 _blockOffset = 0; ///< where in the file _block begins
    const char* _unread = nullptr;
    const char* _wholeLinesEnd = nullptr;
    char* _blockEnd = nullptr;
    bool _lastLineClosed = false; ///< the last line feed is ours, not the file's
    bool _inOverlongLine = false;
    bool _passedMark = false; ///< a byte-order mark was met at the start of a block of the stream

    const char* _lineBegin = nullptr;
    const char* _lineEnd = nullptr;
    bool _isDecoded = false;
    QString _decoded;         ///< the current line, where it had to be decoded
    std::vector<char> _bytes; ///< the current line, where it does not lie in the block
};

} // namespace Atelier::Vel
