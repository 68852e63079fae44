#pragma once

#include <cstddef>

namespace Atelier::Vel {

/// A zeroed block of working memory. Pages of a large block are only taken from the system when they are
/// first touched, so a generous size costs nothing by itself.
class ScratchBlock {
public:
    /// Throws std::bad_alloc when there is no memory.
    explicit ScratchBlock(std::size_t bytes);
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
