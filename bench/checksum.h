#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <QtCore/QString>

namespace Atelier::Vel::Bench {

/// A running 64-bit checksum over words of eight bytes.
class Checksum {
public:
    void add(const void* data, std::size_t bytes) {
        const auto* next = static_cast<const unsigned char*>(data);
        for (; bytes >= sizeof(std::uint64_t);
             bytes -= sizeof(std::uint64_t), next += sizeof(std::uint64_t)) {
            std::uint64_t word = 0;
            std::memcpy(&word, next, sizeof word);
            step(word);
        }
        std::uint64_t rest = 0;
        std::memcpy(&rest, next, bytes);
        step(rest ^ (std::uint64_t(bytes + 1) << 56));
    }
    void add(std::uint64_t value) { step(value); }
    void add(const QString& text) { add(text.constData(), std::size_t(text.size()) * sizeof(QChar)); }

    std::uint64_t value() const { return _state; }

private:
    void step(std::uint64_t word) {
        _state = (_state ^ word) * 0x9FB21C651E98DF25U;
        _state ^= _state >> 32;
    }

    std::uint64_t _state = 0x243F6A8885A308D3U;
};

} // namespace Atelier::Vel::Bench
