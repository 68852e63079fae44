#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

namespace Atelier::Vel::Testing {

/// Zeroed memory that ends directly before an inaccessible page: an access beyond its end crashes the
/// process, even without a sanitizer.
class GuardedMemory {
public:
    explicit GuardedMemory(std::size_t bytes) {
        const auto page = static_cast<std::size_t>(getpagesize());
        const std::size_t usable = (bytes + page - 1) / page * page;
        void* const mapped =
            mmap(nullptr, usable + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
            throw std::bad_alloc();
        _mapped = static_cast<char*>(mapped);
        _mappedBytes = usable + page;
        _begin = _mapped + usable - bytes;
        if (mprotect(_mapped + usable, page, PROT_NONE) != 0)
            throw std::bad_alloc();
    }
    GuardedMemory(GuardedMemory&& other) noexcept
        : _mapped(std::exchange(other._mapped, nullptr)),
          _mappedBytes(other._mappedBytes),
          _begin(other._begin) {}
    GuardedMemory& operator=(GuardedMemory&& other) noexcept {
        std::swap(_mapped, other._mapped);
        std::swap(_mappedBytes, other._mappedBytes);
        std::swap(_begin, other._begin);
        return *this;
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory() {
        if (_mapped != nullptr)
            munmap(_mapped, _mappedBytes);
    }

    /// The first byte.
    template<typename T>
    T* as() const {
        return reinterpret_cast<T*>(_begin);
    }

private:
    char* _mapped = nullptr;
    std::size_t _mappedBytes = 0;
    char* _begin = nullptr;
};

} // namespace Atelier::Vel::Testing
