#pragma once

#include <cstddef>

#include <sys/mman.h>

namespace Atelier::Vel::Testing {

/// An array of zeros that uses memory only for the pages that are accessed: for index products that need 64
/// bits.
template<typename T>
class SparseArray {
public:
    explicit SparseArray(std::size_t count)
        : _bytes(count * sizeof(T)),
          _mapping(mmap(nullptr, _bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE,
                        -1, 0)) {}
    SparseArray(const SparseArray&) = delete;
    SparseArray& operator=(const SparseArray&) = delete;
    ~SparseArray() {
        if (isThere())
            munmap(_mapping, _bytes);
    }

    /// False if the system cannot provide the range of addresses.
    bool isThere() const { return _mapping != MAP_FAILED; }
    T* data() const { return static_cast<T*>(_mapping); }
    T& operator[](std::size_t i) const { return data()[i]; }

private:
    std::size_t _bytes;
    void* _mapping;
};

} // namespace Atelier::Vel::Testing
