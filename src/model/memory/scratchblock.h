#pragma once

#include <array>
#include <cstddef>

namespace Atelier::Vel {

/// During the lifetime of this object, large blocks of unspecified content that its thread releases are kept
/// for later blocks of that thread. New memory from the system is far more expensive, because the system has
/// to find it and to fill it with zeros.
class ScratchReuse {
public:
    ScratchReuse();
    ~ScratchReuse();
    ScratchReuse(const ScratchReuse&) = delete;
    ScratchReuse& operator=(const ScratchReuse&) = delete;

private:
    friend class ScratchBlock;

    struct Mapping {
        void* address = nullptr;
        std::size_t bytes = 0;
    };

    /// Returns all kept mappings to the system.
    void unmapAll();
    /// Keeps a mapping for later use. Returns: false if there is no free entry.
    bool keep(const Mapping& mapping);
    /// Takes the smallest kept mapping of at least `bytes` bytes; null if there is none.
    Mapping take(std::size_t bytes);

    std::array<Mapping, 16> _kept;
    ScratchReuse* _outer;
};

/// A block of memory. A large block is backed by large pages. The system provides the pages of a large block
/// only when they are first touched, so unused size costs nothing.
class ScratchBlock {
public:
    enum class Content { Zeros, Unspecified };

    /// Throws std::bad_alloc if there is no memory.
    explicit ScratchBlock(std::size_t bytes, Content content = Content::Zeros);
    ~ScratchBlock();
    ScratchBlock(const ScratchBlock&) = delete;
    ScratchBlock& operator=(const ScratchBlock&) = delete;

    /// Makes a large block larger. Its pages move to other addresses without a copy. The new part contains
    /// zeros, or unspecified bytes in a block of unspecified content.
    /// Returns: false, without any change, for a small block or if no addresses are available.
    bool grow(std::size_t bytes);

    template<typename T>
    T* as() const {
        return static_cast<T*>(_begin);
    }

private:
    void* _begin = nullptr;
    ScratchReuse::Mapping _mapping; ///< null if the block comes from the heap
};

} // namespace Atelier::Vel
