#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include <QtCore/QFile>

namespace Atelier::Vel::Bench {

/// Writes OBJ text through one large buffer. Numbers are written with integer arithmetic only, so that the
/// bytes are the same on every machine.
class TextWriter {
public:
    explicit TextWriter(const QString& path);
    ~TextWriter();
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    void text(std::string_view text);
    void number(std::uint64_t value);
    /// A number with six decimals, given in millionths.
    void decimal(std::int64_t millionths);

private:
    void reserve(std::size_t bytes);

    QFile _file;
    std::vector<char> _buffer;
    std::size_t _used = 0;
};

} // namespace Atelier::Vel::Bench
