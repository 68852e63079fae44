#include "import/text/linesource.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include <QtCore/QTextCodec>

#include "import/text/linefeeds.h"

namespace Atelier::Vel {

namespace {

// The number of bytes that a QTextStream reads and decodes at a time.
constexpr int kStreamBlockBytes = 16384;
constexpr int kUtf8Mib = 106;

// The device of a stream, if the stream reads it from its start, in text mode, as UTF-8 unless a byte-order
// mark specifies another encoding. Otherwise null.
QIODevice* plainDevice(const QTextStream& stream) {
    QIODevice* device = stream.device();
    const bool plain = device != nullptr && device->isReadable() && device->isTextModeEnabled() &&
                       !device->isSequential() && device->pos() == 0;
    const bool utf8 = stream.autoDetectUnicode() && stream.codec() == QTextCodec::codecForLocale() &&
                      stream.codec()->mibEnum() == kUtf8Mib;
    return plain && utf8 ? device : nullptr;
}

qint64 readRaw(QIODevice& device, char* bytes, qint64 count) {
    device.setTextModeEnabled(false);
    const qint64 read = device.read(bytes, count);
    device.setTextModeEnabled(true);
    return read;
}

struct Content {
    bool foreign = false;
    bool carriageReturn = false;
};

Content contentOf(const char* first, const char* last) {
    unsigned char allBits = 0;
    unsigned char carriageReturns = 0;
    for (; first != last; ++first) {
        allBits = static_cast<unsigned char>(allBits | static_cast<unsigned char>(*first));
        carriageReturns = static_cast<unsigned char>(carriageReturns | (*first == '\r' ? 1 : 0));
    }
    return {allBits >= 0x80, carriageReturns != 0};
}

// Whether the bytes contain a UTF-8 byte-order mark that begins at `cut` or is divided there.
bool isMarkAt(const char* first, const char* cut, const char* last) {
    constexpr char kMark[] = {'\xEF', '\xBB', '\xBF'};
    const char* from = std::max(first, cut - 2);
    const char* to = std::min(last, cut + 3);
    return std::search(from, to, std::begin(kMark), std::end(kMark)) != to;
}

// The start of the line that ends at `last`, or `first`.
const char* lineStart(const char* first, const char* last) {
    const auto* lineFeed = static_cast<const char*>(memrchr(first, '\n', static_cast<size_t>(last - first)));
    return lineFeed == nullptr ? first : lineFeed + 1;
}

// The start of the first continued line, or `last`.
const char* findContinuedLine(const char* first, const char* last) {
    const char* at = first;
    while ((at = static_cast<const char*>(std::memchr(at, '\\', static_cast<size_t>(last - at)))) !=
           nullptr) {
        ++at;
        const char* end = at;
        while (*end == '\r')
            ++end;
        if (*end == '\n' && isContinued(lineStart(first, at), end))
            return lineStart(first, at);
    }
    return last;
}

char byteFor(QChar character) {
    if (character.unicode() < 0x80)
        return static_cast<char>(character.unicode());
    return character.isSpace() ? ' ' : LineSource::kForeign;
}

} // namespace

LineSource::LineSource(QTextStream* stream, const LineSourceOptions& options)
    : _stream(stream), _device(plainDevice(*stream)), _options(options) {
    if (_device == nullptr)
        return;
    _fileSize = std::max<qint64>(_device->size(), 0);
    reserveBlock(std::min(_options.blockBytes, _fileSize));
    readBlock();
    skipByteOrderMark();
}

void LineSource::skipByteOrderMark() {
    // The beginning of the file is no longer in memory if its first line was too long.
    if (_blockOffset != 0)
        return;
    const QByteArray start =
        QByteArray::fromRawData(_block, static_cast<int>(std::min<qint64>(_blockEnd - _block, 4)));
    const QTextCodec* codec = QTextCodec::codecForUtfText(start, nullptr);
    if (codec == nullptr)
        return;
    if (codec->mibEnum() == kUtf8Mib) {
        _unread += 3;
        return;
    }
    _device->seek(0);
    _device = nullptr;
    _bytesRead = 0;
    _unread = _wholeLinesEnd;
}

bool LineSource::fill() {
    while (_unread == _wholeLinesEnd)
        if (_device == nullptr || !readBlock())
            return false;
    return true;
}

bool LineSource::next() {
    if (_device == nullptr)
        return nextOfStream();
    while (fill()) {
        const char* first = _unread;
        const char* lineFeed = lineEnd(first);
        _isJoined = _options.joinsContinuedLines && isContinued(first, lineFeed);
        if (_isJoined)
            lineFeed = joinedLineEnd(first);
        _unread = lineFeed + 1;
        _lineInBlock = first;
        if (lineFeed - first <= _options.lineBytes) {
            show(first, lineFeed);
            return true;
        }
    }
    return false;
}

// Requires: a line in memory.
const char* LineSource::lineEnd(const char* first) const {
    return static_cast<const char*>(std::memchr(first, '\n', static_cast<size_t>(_wholeLinesEnd - first)));
}

// The end of the last line that continues the one at `first`.
const char* LineSource::joinedLineEnd(const char* first) const {
    const char* end = lineEnd(first);
    for (const char* part = first; end + 1 != _wholeLinesEnd && isContinued(part, end); end = lineEnd(part))
        part = end + 1;
    return end;
}

const char* LineSource::singleLinesEnd() {
    if (!_options.joinsContinuedLines)
        return _wholeLinesEnd;
    if (_singleLinesEnd == nullptr || _singleLinesEnd < _unread)
        _singleLinesEnd = findContinuedLine(_unread, _wholeLinesEnd);
    return _singleLinesEnd;
}

// Reads a line of the stream with those on which it is continued. Returns: false if it is too long.
bool LineSource::readStreamLine() {
    QString piece = readPiece();
    _decoded = piece;
    for (int part = 0; _decoded.size() < _options.lineBytes; _decoded += piece) {
        if (!_options.joinsContinuedLines || !isContinued(_decoded.cbegin() + part, _decoded.cend()))
            return true;
        _decoded.back() = kJoint;
        part = _decoded.size();
        piece = _stream->atEnd() ? QString() : readPiece();
    }
    passRestOfStreamLine(piece);
    return false;
}

// `piece` is what was read last of a line that is too long. It begins a line of the file.
void LineSource::passRestOfStreamLine(QString piece) {
    ContinuationScan scan;
    for (;; piece = readPiece()) {
        for (const QChar character : qAsConst(piece))
            scan.take(character);
        if (piece.size() == _options.lineBytes)
            continue;
        if (!_options.joinsContinuedLines || !scan.isContinued() || _stream->atEnd())
            return;
        scan.take(QLatin1Char('\n'));
    }
}

// Reads a line of the stream, or a part of it that is as long as a line may be.
QString LineSource::readPiece() {
    QString piece = _stream->readLine(_options.lineBytes);
    _streamLines += piece.size() < _options.lineBytes ? 1 : 0;
    return piece;
}

bool LineSource::nextOfStream() {
    while (!_stream->atEnd()) {
        _linesBefore = _streamLines;
        const bool isShort = readStreamLine();
        // The result is null if the device has bytes left but no character, or if it cannot be read.
        if (_decoded.isNull())
            return false;
        if (isShort) {
            showDecoded();
            return true;
        }
    }
    return false;
}

void LineSource::reserveBlock(qint64 bytes) {
    if (bytes < _capacity)
        return;
    const qint64 used = _blockEnd - _block;
    const qint64 passed = _unread - _block;
    const qint64 counted = _counted - _block;
    _capacity = std::max(bytes + 1, 2 * _capacity);
    std::unique_ptr<char[]> grown(new char[static_cast<size_t>(kPadding + _capacity + kPadding)]);
    if (used > 0)
        std::memcpy(grown.get() + kPadding, _block, static_cast<size_t>(used));
    _storage = std::move(grown);
    _block = _storage.get() + kPadding;
    _blockEnd = _block + used;
    _unread = _wholeLinesEnd = _block + passed;
    _counted = _block + counted;
}

bool LineSource::readBlock() {
    if (_lastLineClosed)
        return false;
    // The incomplete last line moves to the front.
    const qint64 carried = _blockEnd - _unread;
    countLines(_unread);
    _blockOffset += _unread - _block;
    std::memmove(_block, _unread, static_cast<size_t>(carried));
    _blockEnd = _block + carried;
    _counted = _unread = _wholeLinesEnd = _block;
    _singleLinesEnd = nullptr;
    for (;;) {
        const qint64 fresh = readBytes();
        if (fresh == 0)
            return closeLastLine();
        if (findWholeLines(_blockEnd - fresh))
            return true;
    }
}

qint64 LineSource::readBytes() {
    if (_device->atEnd())
        return 0;
    // A small file needs no large block, unless it has grown in the meantime.
    const qint64 left = _fileSize - _bytesRead;
    const qint64 wanted = left > 0 ? std::min(_options.blockBytes, left) : _options.blockBytes;
    reserveBlock(_blockEnd - _block + wanted);
    const qint64 count = std::max<qint64>(readRaw(*_device, _blockEnd, wanted), 0);
    _blockEnd += count;
    _bytesRead += count;
    *_blockEnd = '\n';
    return count;
}

bool LineSource::findWholeLines(const char* fresh) {
    const void* const lineFeed = std::memchr(fresh, '\n', static_cast<size_t>(_blockEnd - fresh));
    if (_inOverlongLine) {
        const char* const end = overlongLineEnd(fresh);
        _inOverlongLine = end == nullptr;
        _unread = _wholeLinesEnd = _inOverlongLine ? _blockEnd : end + 1;
    }
    // A continued line ends with another one. All lines before the fresh bytes are continued.
    for (const char* end = _blockEnd; lineFeed != nullptr && end > std::max(fresh, _unread); --end) {
        if (end[-1] == '\n' &&
            !(_options.joinsContinuedLines && isContinued(lineStart(_unread, end - 1), end - 1))) {
            _wholeLinesEnd = end;
            return true;
        }
    }
    if (!_inOverlongLine && _blockEnd - _unread > _options.lineBytes) {
        _inOverlongLine = true;
        _overlongLine = ContinuationScan();
        overlongLineEnd(_unread);
    }
    if (_inOverlongLine)
        dropBlock();
    return false;
}

// The line feed that ends the line which is too long, or null.
const char* LineSource::overlongLineEnd(const char* fresh) {
    if (!_options.joinsContinuedLines)
        return static_cast<const char*>(std::memchr(fresh, '\n', static_cast<size_t>(_blockEnd - fresh)));
    for (const char* at = fresh; at != _blockEnd; ++at) {
        if (*at == '\n' && !_overlongLine.isContinued())
            return at;
        _overlongLine.take(*at);
    }
    return nullptr;
}

void LineSource::dropBlock() {
    countLines(_blockEnd);
    _blockOffset += _blockEnd - _block;
    _blockEnd = _block;
    _counted = _unread = _wholeLinesEnd = _blockEnd;
}

bool LineSource::closeLastLine() {
    if (_blockEnd == _block)
        return false;
    if (_options.joinsContinuedLines && isContinued(lineStart(_unread, _blockEnd), _blockEnd))
        *static_cast<char*>(memrchr(_block, '\\', static_cast<size_t>(_blockEnd - _block))) = kJoint;
    *_blockEnd++ = '\n';
    *_blockEnd = '\n';
    _lastLineClosed = true;
    _wholeLinesEnd = _blockEnd;
    return true;
}

void LineSource::show(const char* first, const char* lineFeed) {
    const Content content = contentOf(first, lineFeed);
    _isDecoded = content.foreign;
    if (content.foreign) {
        decode(first, lineFeed, !_lastLineClosed || lineFeed + 1 != _blockEnd);
    } else if (content.carriageReturn || _isJoined) {
        showWithoutCarriageReturns(first, lineFeed);
    } else {
        _lineBegin = first;
        _lineEnd = lineFeed;
    }
}

void LineSource::showWithoutCarriageReturns(const char* first, const char* last) {
    _bytes.clear();
    std::remove_copy(first, last, std::back_inserter(_bytes), '\r');
    if (_isJoined)
        _bytes.erase(joinLines(_bytes.begin(), _bytes.end()), _bytes.end());
    _lineBegin = _bytes.data();
    _lineEnd = _lineBegin + _bytes.size();
}

// Splits the bytes at the block boundaries of the stream, because they affect the result: a malformed
// sequence is lost at a boundary, and gives replacement characters anywhere else.
void LineSource::decode(const char* first, const char* lineFeed, bool isLineFeedOfFile) {
    const char* const last = isLineFeedOfFile ? lineFeed + 1 : lineFeed;
    QTextCodec::ConverterState state;
    const QTextCodec* utf8 = _stream->codec();
    _decoded.clear();
    for (const char* piece = first; piece != last;) {
        const qint64 offset = _blockOffset + (piece - _block);
        const qint64 past = offset % kStreamBlockBytes;
        const qint64 length = std::min<qint64>(last - piece, kStreamBlockBytes - past);
        const bool dropsMark = past == 0 && isMarkAt(first, piece, last) && streamDropsMark(offset);
        state.flags = dropsMark ? QTextCodec::DefaultConversion : QTextCodec::IgnoreHeader;
        _decoded += utf8->toUnicode(piece, static_cast<int>(length), &state);
        piece += length;
    }
    _decoded.remove(QLatin1Char('\r'));
    if (isLineFeedOfFile && _decoded.endsWith(QLatin1Char('\n')))
        _decoded.chop(1);
    if (_isJoined)
        _decoded.resize(static_cast<int>(joinLines(_decoded.begin(), _decoded.end()) - _decoded.begin()));
    showDecoded();
}

// A stream drops a byte-order mark at the start of any of its blocks, not only of the first, as long as its
// decoder has not left the fast path for ASCII. This can be determined only by decoding the file from its
// start. That is done at most once, because a mark, dropped or not, makes the decoder leave the fast path.
bool LineSource::streamDropsMark(qint64 offset) {
    if (_passedMark)
        return false;
    _passedMark = true;
    const qint64 position = _device->pos();
    QTextCodec::ConverterState state;
    QByteArray block(kStreamBlockBytes, Qt::Uninitialized);
    _device->seek(0);
    for (qint64 done = 0; done < offset; done += kStreamBlockBytes) {
        const qint64 count = readRaw(*_device, block.data(), kStreamBlockBytes);
        _stream->codec()->toUnicode(block.constData(), static_cast<int>(std::max<qint64>(count, 0)), &state);
    }
    _device->seek(position);
    return !state.flags.testFlag(QTextCodec::IgnoreHeader);
}

void LineSource::showDecoded() {
    _isDecoded = true;
    _bytes.resize(static_cast<size_t>(_decoded.size()));
    std::transform(_decoded.cbegin(), _decoded.cend(), _bytes.begin(), byteFor);
    _lineBegin = _bytes.data();
    _lineEnd = _lineBegin + _bytes.size();
}

void LineSource::countLines(const char* end) const {
    if (!_options.numbersLines)
        return;
    _linesBefore += countLineFeeds(_counted, end);
    _counted = end;
}

qint64 LineSource::lineNumber() const {
    return _device == nullptr ? _linesBefore + 1 : lineNumberInMemory(_lineInBlock);
}

qint64 LineSource::lineNumberInMemory(const char* first) const {
    countLines(first);
    return _linesBefore + 1;
}

TextLine LineSource::line(const QString& file) const {
    if (!_options.numbersLines)
        return {file};
    return {file, lineNumber(), text(_lineBegin, _lineEnd)};
}

TextLine LineSource::lineInMemory(const QString& file, const char* first, const char* last) const {
    if (!_options.numbersLines)
        return {file};
    return {file, lineNumberInMemory(first),
            QString::fromUtf8(first, static_cast<int>(last - first)).remove(QLatin1Char('\r'))};
}

QString LineSource::text(const char* first, const char* last) const {
    const int length = static_cast<int>(last - first);
    if (_isDecoded)
        return _decoded.mid(static_cast<int>(first - _lineBegin), length);
    return QString::fromLatin1(first, length);
}

} // namespace Atelier::Vel
