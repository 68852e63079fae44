#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "support/guardedmemory.h"

namespace Atelier::Vel::Testing {

/// Bytes that data() returns in guarded memory of exactly their size. New bytes are not zero. If they do not
/// fill the last word, a write to the rest of it also ends the process.
class GuardedBytes {
public:
    ~GuardedBytes() { takeBack(); }

    std::size_t size() const { return _bytes.size(); }
    void resize(std::size_t bytes) {
        takeBack();
        _bytes.resize(bytes, kFiller);
    }
    unsigned char* data() {
        if (!_handedOut) {
            _handedOut = std::make_unique<GuardedMemory>(withTail());
            std::fill(std::copy(_bytes.begin(), _bytes.end(), handedOut()), handedOut() + withTail(),
                      kFiller);
        }
        return handedOut();
    }
    void write(std::size_t first, const void* bytes, std::size_t count) {
        if (count != 0)
            std::memcpy((_handedOut ? handedOut() : _bytes.data()) + first, bytes, count);
    }

private:
    static constexpr unsigned char kFiller = 0xA5;

    // Rounds up to whole words, which have to be aligned.
    std::size_t withTail() const { return (_bytes.size() + 3) / 4 * 4; }
    unsigned char* handedOut() const { return _handedOut->as<unsigned char>(); }
    void takeBack() {
        if (!_handedOut)
            return;
        std::copy_n(handedOut(), _bytes.size(), _bytes.begin());
        if (!std::all_of(handedOut() + _bytes.size(), handedOut() + withTail(),
                         [](unsigned char byte) { return byte == kFiller; })) {
            std::fputs("written behind the end of a stream\n", stderr);
            std::abort();
        }
        _handedOut.reset();
    }

    std::vector<unsigned char> _bytes;
    std::unique_ptr<GuardedMemory> _handedOut; ///< holds the current bytes if it exists
};

} // namespace Atelier::Vel::Testing
