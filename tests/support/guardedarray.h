#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace Atelier::Vel::Testing {

/// Zeroed memory whose last byte is the last one before a page that cannot be touched: a step beyond the end
/// ends the process, with no sanitizer needed.
class GuardedMemory {
public:
    explicit GuardedMemory(std::size_t bytes) {
        const auto page = static_cast<std::size_t>(getpagesize());
        const std::size_t pages = (bytes + page - 1) / page * page;
        void* const mapping =
            mmap(nullptr, pages + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED)
            throw std::bad_alloc();
        _mapping = mapping;
        _mapped = pages + page;
        _begin = static_cast<unsigned char*>(mapping) + pages - bytes;
        if (mprotect(static_cast<unsigned char*>(mapping) + pages, page, PROT_NONE) != 0)
            throw std::bad_alloc();
    }
    GuardedMemory(GuardedMemory&& other) noexcept
        : _mapping(std::exchange(other._mapping, nullptr)), _mapped(other._mapped), _begin(other._begin) {}
    GuardedMemory& operator=(GuardedMemory&& other) noexcept {
        std::swap(_mapping, other._mapping);
        std::swap(_mapped, other._mapped);
        std::swap(_begin, other._begin);
        return *this;
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory() {
        if (_mapping != nullptr)
            munmap(_mapping, _mapped);
    }

    void* begin() const { return _begin; }

private:
    void* _mapping = nullptr;
    std::size_t _mapped = 0;
    void* _begin = nullptr;
};

/// An array of exactly its size: what lies behind its last item cannot be touched.
template<typename T>
class GuardedArray {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    explicit GuardedArray(std::size_t count) : _memory(count * sizeof(T)), _size(count) {}
    GuardedArray(std::size_t count, const T& value) : GuardedArray(count) {
        std::fill(begin(), end(), value);
    }
    GuardedArray(std::initializer_list<T> items) : GuardedArray(items.size()) {
        std::copy(items.begin(), items.end(), begin());
    }
    explicit GuardedArray(const std::vector<T>& items) : GuardedArray(items.size()) {
        std::copy(items.begin(), items.end(), begin());
    }

    T* data() const { return static_cast<T*>(_memory.begin()); }
    std::size_t size() const { return _size; }
    T* begin() const { return data(); }
    T* end() const { return data() + _size; }
    T& operator[](std::size_t i) const { return data()[i]; }
    std::vector<T> items() const { return std::vector<T>(begin(), end()); }

private:
    GuardedMemory _memory;
    std::size_t _size;
};

/// Room for arrays that come one after the other, each of which ends where it does: cheaper for many than a
/// GuardedArray for each.
template<typename T>
class GuardedRoom {
public:
    /// The items, until the next call.
    T* place(const std::vector<T>& items) {
        if (items.size() > _room.size())
            _room = GuardedArray<T>(2 * items.size());
        return std::copy(items.begin(), items.end(), _room.end() - items.size()) - items.size();
    }

private:
    GuardedArray<T> _room{1024};
};

} // namespace Atelier::Vel::Testing
