#pragma once

#include <cstddef>

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

/// Memory whose last byte lies right before a page that cannot be touched: a read or a write beyond it ends
/// the process. Zeros to begin with.
class GuardedMemory {
public:
    explicit GuardedMemory(std::size_t bytes) {
        const auto page = static_cast<std::size_t>(getpagesize());
        const std::size_t usable = (bytes + page - 1) / page * page;
        _mappedBytes = usable + page;
        _mapped = mmap(nullptr, _mappedBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        EXPECT_NE(_mapped, MAP_FAILED);
        EXPECT_EQ(mprotect(static_cast<char*>(_mapped) + usable, page, PROT_NONE), 0);
        _begin = static_cast<char*>(_mapped) + usable - bytes;
    }
    ~GuardedMemory() { munmap(_mapped, _mappedBytes); }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    template<typename T>
    T* as() const {
        return reinterpret_cast<T*>(_begin);
    }

private:
    void* _mapped = nullptr;
    std::size_t _mappedBytes = 0;
    char* _begin = nullptr;
};

} // namespace Atelier::Vel::Testing
