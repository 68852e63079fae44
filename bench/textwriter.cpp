#include "textwriter.h"

#include <cstring>

namespace Atelier::Vel::Bench {

namespace {

constexpr std::size_t kBufferSize = std::size_t(1) << 20;
constexpr std::int64_t kMillion = 1000000;
constexpr int kMaxNumberLength = 24;

} // namespace

TextWriter::TextWriter(const QString& path) : _file(path), _buffer(kBufferSize) {
    if (!_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
}

TextWriter::~TextWriter() {
    reserve(kBufferSize);
}

void TextWriter::reserve(std::size_t bytes) {
    if (_used + bytes <= kBufferSize)
        return;
    if (_file.write(_buffer.data(), qint64(_used)) != qint64(_used))
        qFatal("cannot write %s", qPrintable(_file.fileName()));
    _used = 0;
}

void TextWriter::text(std::string_view text) {
    reserve(text.size());
    std::memcpy(_buffer.data() + _used, text.data(), text.size());
    _used += text.size();
}

void TextWriter::number(std::uint64_t value) {
    char digits[kMaxNumberLength];
    char* first = digits + sizeof digits;
    do {
        *--first = char('0' + value % 10);
        value /= 10;
    } while (value > 0);
    text({first, std::size_t(digits + sizeof digits - first)});
}

void TextWriter::decimal(std::int64_t millionths) {
    if (millionths < 0)
        text("-");
    const auto magnitude = std::uint64_t(millionths < 0 ? -millionths : millionths);
    number(magnitude / kMillion);
    char fraction[7] = {'.'};
    auto rest = magnitude % kMillion;
    for (int place = 6; place > 0; --place) {
        fraction[place] = char('0' + rest % 10);
        rest /= 10;
    }
    text({fraction, sizeof fraction});
}

} // namespace Atelier::Vel::Bench
