#pragma once

#include <cstddef>

namespace Atelier::Vel {

/// A block of memory, large ones backed by large pages. Pages of a large block are only taken from the system
/// when they are first touched, so a generous size costs nothing by itself.
class ScratchBlock {
public:
    enum class Content { Zeros, Unspecified };

    /// Throws std::bad_alloc when there is no memory.
    explicit ScratchBlock(std::size_t bytes, Content content = Content::Zeros);
    ~ScratchBlock();
    ScratchBlock(const ScratchBlock&) = delete;
    ScratchBlock& operator=(const ScratchBlock&) = delete;

    template<typename T>
    T* as() const {
        return static_cast<T*>(_begin);
    }

private:
    void* _begin = nullptr;
    void* _mapping = nullptr; ///< null when the block comes from the heap
    std::size_t _mappingBytes = 0;
};

} // namespace Atelier::Vel
