#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Atelier::Vel::Fuzzing {

/// Reads values from the front of an input. Bytes beyond its end are zero.
class ByteSource {
public:
    ByteSource(const std::uint8_t* data, std::size_t size) : _next(data), _end(data + size) {}

    bool isEmpty() const { return _next == _end; }
    template<typename Number>
    Number take() {
        Number number = 0;
        const std::size_t count = std::min(sizeof number, static_cast<std::size_t>(_end - _next));
        std::memcpy(&number, _next, count);
        _next += count;
        return number;
    }
    /// A number less than `bound`, from one byte.
    unsigned int below(unsigned int bound) { return take<std::uint8_t>() % bound; }

private:
    const std::uint8_t* _next;
    const std::uint8_t* _end;
};

} // namespace Atelier::Vel::Fuzzing
