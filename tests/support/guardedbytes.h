#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "support/guardedmemory.h"

namespace Atelier::Vel::Testing {

/// Bytes in guarded memory that moves whenever their number changes. New ones are anything but zero. Where
/// they do not fill the last word, a write to the rest of it ends the process, too.
class GuardedBytes {
public:
    ~GuardedBytes() { expectTail(); }

    std::size_t size() const { return _size; }
    unsigned char* data() const { return _memory ? _memory->as<unsigned char>() : nullptr; }
    void resize(std::size_t bytes) {
        expectTail();
        auto memory = std::make_unique<GuardedMemory>(withTail(bytes));
        const std::size_t kept = std::min(bytes, _size);
        std::copy_n(data(), kept, memory->as<unsigned char>());
        _memory = std::move(memory);
        _size = bytes;
        std::fill(data() + kept, data() + withTail(_size), kTail);
    }

private:
    static constexpr unsigned char kTail = 0xA5;

    // Words have to be aligned.
    static std::size_t withTail(std::size_t bytes) { return (bytes + 3) / 4 * 4; }
    void expectTail() const {
        if (std::all_of(data() + _size, data() + withTail(_size),
                        [](unsigned char byte) { return byte == kTail; }))
            return;
        std::fputs("written behind the end of a stream\n", stderr);
        std::abort();
    }

    std::unique_ptr<GuardedMemory> _memory;
    std::size_t _size = 0;
};

} // namespace Atelier::Vel::Testing
