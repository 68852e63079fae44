#include "check/textbytes.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <QtCore/QTextCodec>

#include "check/bytecounts.h"

namespace Atelier::Vel {

namespace {

constexpr int kMarkBytes = 3; // of UTF-8
constexpr int kUtf8Mib = 106;

// The end of the last character that is complete. The rest of a character comes with the next block.
const char* wholeCharactersEnd(const char* first, const char* last) {
    constexpr int kMaxTail = 3;
    for (int tail = 1; tail <= kMaxTail && last - first >= tail; ++tail) {
        const auto byte = static_cast<quint8>(last[-tail]);
        if (byte < 0x80)
            return last;
        if (byte >= 0xC0)
            return (byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4) > tail ? last - tail : last;
    }
    return last;
}

QString decoded(const char* first, const char* last) {
    return QString::fromUtf8(first, static_cast<int>(last - first));
}

} // namespace

TextBytes::TextBytes(QString file, FindingLog& log, qint64 lineBytes)
    : _file(std::move(file)), _log(log), _maxLineBytes(lineBytes) {}

QString TextBytes::examine(QIODevice& device, qint64 blockBytes) {
    QByteArray block = device.read(blockBytes);
    if (takeMark(block.left(4)))
        return QStringLiteral("The line ends and null characters of '%1', because it is not UTF-8")
            .arg(_file);
    if (block.startsWith("\xEF\xBB\xBF"))
        block.remove(0, kMarkBytes);
    while (!block.isEmpty()) {
        const char* const end = wholeCharactersEnd(block.constData(), block.constData() + block.size());
        take(block.constData(), end);
        const QByteArray rest = block.mid(static_cast<int>(end - block.constData()));
        const QByteArray next = device.read(blockBytes);
        if (next.isEmpty()) {
            take(rest.constData(), rest.constData() + rest.size());
            break;
        }
        block = rest.isEmpty() ? next : rest + next;
    }
    endLine();
    return {};
}

// Returns: whether the text has an encoding of several bytes per character.
bool TextBytes::takeMark(const QByteArray& start) {
    const QTextCodec* const codec = QTextCodec::codecForUtfText(start, nullptr);
    if (codec == nullptr)
        return false;
    const bool isUtf8 = codec->mibEnum() == kUtf8Mib;
    _log.add(CheckCode::ByteOrderMark, {_file, 1, 0}, [&](CheckFinding& finding) {
        finding.message =
            isUtf8
                ? QStringLiteral("The file begins with a byte-order mark, which other programs may read as "
                                 "part of the first line")
                : QStringLiteral("The file is %1, which other programs may not read")
                      .arg(QString::fromLatin1(codec->name()));
    });
    return !isUtf8;
}

void TextBytes::take(const char* first, const char* last) {
    const TextContent content = contentOf(first, last);
    _hasOthers = content.hasOthers;
    const bool isPlain = !content.hasReturns && !content.hasOthers && _returnColumn == 0;
    // Of such lines only the first one, which may have begun before, can be too long.
    if (isPlain && content.lineFeeds != 0 && last - first <= _maxLineBytes) {
        const char* const firstEnd =
            static_cast<const char*>(std::memchr(first, '\n', static_cast<size_t>(last - first)));
        _lineBytes += firstEnd - first;
        endLine();
        _line += content.lineFeeds;
        first = static_cast<const char*>(memrchr(first, '\n', static_cast<size_t>(last - first))) + 1;
    }
    while (first != last) {
        const auto* const lineFeed =
            static_cast<const char*>(std::memchr(first, '\n', static_cast<size_t>(last - first)));
        if (lineFeed == nullptr)
            return takePiece(first, last, false);
        takePiece(first, lineFeed, true);
        endLine();
        ++_line;
        first = lineFeed + 1;
    }
}

void TextBytes::endLine() {
    if (_lineBytes > _maxLineBytes)
        _log.add(CheckCode::LineTooLong, {_file, _line, 0}, [this](CheckFinding& finding) {
            finding.message = QStringLiteral("The line has %1 bytes, and is passed over").arg(_lineBytes);
        });
    _lineBytes = 0;
    _characters = 0;
    _beginning = Beginning::Blank;
    _returnColumn = 0;
}

// Examines the characters of a line, or a part of them.
void TextBytes::takePiece(const char* first, const char* last, bool isLineEnd) {
    if (first == last)
        return;
    const char* end = last;
    while (end != first && end[-1] == '\r')
        --end;
    takeCarriageReturns(first, end);
    if (_hasOthers && !isInComment(first, last)) {
        takeNulls(first, end);
        takeForeign(first, end);
    }
    _lineBytes += last - first;
    if (isLineEnd)
        return;
    isInComment(first, last);
    if (end != last)
        _returnColumn = columnAt(first, end);
    _characters = columnAt(first, end) - 1;
}

bool TextBytes::isInComment(const char* first, const char* last) {
    if (_beginning == Beginning::Blank) {
        const char* const text =
            std::find_if(first, last, [](char byte) { return byte != ' ' && byte != '\t' && byte != '\r'; });
        if (text != last)
            _beginning = *text == '#' ? Beginning::Comment : Beginning::Text;
    }
    return _beginning == Beginning::Comment;
}

int TextBytes::columnAt(const char* first, const char* at) const {
    QString text = decoded(first, at);
    return _characters + text.remove(QLatin1Char('\r')).size() + 1;
}

// Requires: there are other characters behind the last carriage return.
void TextBytes::takeCarriageReturns(const char* first, const char* last) {
    if (first == last)
        return;
    const auto report = [this](int column) {
        _log.add(CheckCode::CarriageReturn, {_file, _line, column}, [](CheckFinding& finding) {
            finding.message = QStringLiteral("A carriage return without a line feed does not end a line: the "
                                             "text behind it belongs to this line");
        });
    };
    if (_returnColumn != 0)
        report(std::exchange(_returnColumn, 0));
    for (const char* at = first; at != last; ++at) {
        at = static_cast<const char*>(std::memchr(at, '\r', static_cast<size_t>(last - at)));
        if (at == nullptr)
            return;
        if (_log.isFull(CheckCode::CarriageReturn))
            _log.count(CheckCode::CarriageReturn);
        else
            report(columnAt(first, at));
    }
}

void TextBytes::takeNulls(const char* first, const char* last) {
    for (const char* at = first; at != last; ++at) {
        at = static_cast<const char*>(std::memchr(at, 0, static_cast<size_t>(last - at)));
        if (at == nullptr)
            return;
        if (_log.isFull(CheckCode::NullCharacter)) {
            _log.count(CheckCode::NullCharacter);
            continue;
        }
        _log.add(CheckCode::NullCharacter, {_file, _line, columnAt(first, at)}, [](CheckFinding& finding) {
            finding.message = QStringLiteral("A null character is part of the text, and no blank");
        });
    }
}

void TextBytes::takeForeign(const char* first, const char* last) {
    const QString text = decoded(first, last);
    int returns = 0;
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        returns += character == QLatin1Char('\r') ? 1 : 0;
        if (character.unicode() < 0x80 || !character.isSpace())
            continue;
        _log.add(CheckCode::ForeignBlank, {_file, _line, _characters + i - returns + 1},
                 [character](CheckFinding& finding) {
                     finding.text = character;
                     finding.message = QStringLiteral("The character U+%1 is read as a blank; other programs "
                                                      "may read it as text")
                                           .arg(character.unicode(), 4, 16, QLatin1Char('0'));
                 });
    }
}

} // namespace Atelier::Vel
