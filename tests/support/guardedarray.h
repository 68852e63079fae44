#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <vector>

#include "support/guardedmemory.h"

namespace Atelier::Vel::Testing {

/// An array of exactly its size; memory after its end cannot be accessed.
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

    T* data() const { return _memory.as<T>(); }
    std::size_t size() const { return _size; }
    T* begin() const { return data(); }
    T* end() const { return data() + _size; }
    T& operator[](std::size_t i) const { return data()[i]; }
    std::vector<T> items() const { return std::vector<T>(begin(), end()); }

private:
    GuardedMemory _memory;
    std::size_t _size;
};

/// Reusable memory for one guarded array after the other: cheaper than a GuardedArray for each.
template<typename T>
class GuardedScratch {
public:
    /// Returns: a copy of the items that ends at the guard page, valid until the next call.
    T* place(const std::vector<T>& items) {
        if (items.size() > _memory.size())
            _memory = GuardedArray<T>(2 * items.size());
        return std::copy(items.begin(), items.end(), _memory.end() - items.size()) - items.size();
    }

private:
    GuardedArray<T> _memory{1024};
};

} // namespace Atelier::Vel::Testing
