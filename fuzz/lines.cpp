// Compares the line source with the text stream that it replaces. The first two bytes of an input select the
// size of the blocks and the position of the text in the blocks of the stream.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include "claim.h"
#include "import/text/linesource.h"
#include "memoryfile.h"
#include "textlines.h"

using namespace Atelier::Vel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int kHeaderBytes = 2;
// A stream decodes this number of bytes at a time. A character that is cut there can decode differently.
constexpr int kStreamBlockBytes = 16384;

// A second byte of at least this value puts the end of a block into the middle of the text.
constexpr std::uint8_t kFirstWithFiller = 0xF0;

/// The text with a long line inserted, so that a block of the stream ends shortly after that line.
QByteArray textOf(const QByteArray& text, std::uint8_t layout) {
    if (layout < kFirstWithFiller)
        return text;
    const int before = text.size() / 2;
    const int after = std::min(layout - kFirstWithFiller, text.size() - before);
    const QByteArray filler = '\n' + QByteArray(kStreamBlockBytes - before - after - 2, 'x') + '\n';
    return text.left(before) + filler + text.mid(before);
}

/// Whether the bytes of the current line encode its characters as LineSource defines.
bool standsForItsText(const LineSource& source) {
    const QString text = source.text(source.begin(), source.end());
    return std::equal(source.begin(), source.end(), text.begin(), text.end(), [](char byte, QChar character) {
        if (character.unicode() < 0x80)
            return byte == static_cast<char>(character.unicode());
        return byte == (character.isSpace() ? ' ' : LineSource::kForeign);
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kHeaderBytes)
        return 0;
    const QByteArray content = QByteArray::fromRawData(reinterpret_cast<const char*>(data) + kHeaderBytes,
                                                       static_cast<int>(size) - kHeaderBytes);
    const QByteArray text = textOf(content, data[1]);
    static Fuzzing::MemoryFile memory;
    memory.write(text.constData(), static_cast<std::size_t>(text.size()));
    QFile file;
    memory.openText(file);
    QTextStream stream(&file);
    const QStringList expected = Testing::linesOf(stream);
    file.seek(0);
    QTextStream sourceStream(&file);
    LineSourceOptions limits;
    limits.blockBytes = 4 + data[0];
    LineSource source(&sourceStream, limits);
    QStringList lines;
    while (source.next()) {
        Fuzzing::require(standsForItsText(source), "the bytes of a line stand for its characters");
        lines << source.text(source.begin(), source.end());
    }
    Fuzzing::require(Testing::withoutEmptyEnd(lines) == Testing::withoutEmptyEnd(expected),
                     "lines are those of the stream");
    return 0;
}
