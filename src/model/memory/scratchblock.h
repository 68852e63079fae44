#pragma once

#include <array>
#include <cstddef>

namespace Atelier::Vel {

/// While one lives, large blocks without zeros that its thread gives back are kept for those that it needs
/// next: memory fresh from the system costs far more, since the system has to find it and to fill it with
/// zeros.
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

    /// Gives everything that is kept back to the system.
    void giveBack();
    /// Returns: whether it was kept.
    bool keep(const Mapping& mapping);
    /// The smallest one of at least so many bytes; null where there is none.
    Mapping take(std::size_t bytes);

    std::array<Mapping, 16> _kept;
    ScratchReuse* _outer;
};

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

    /// Makes a large block larger. Its pages move to other addresses and are not copied; what is new holds
    /// zeros, or unspecified bytes in a block of such.
    /// Returns: false, with nothing changed, for a small block and when there are no addresses.
    bool grow(std::size_t bytes);

    template<typename T>
    T* as() const {
        return static_cast<T*>(_begin);
    }

private:
    void* _begin = nullptr;
    ScratchReuse::Mapping _mapping; ///< null when the block comes from the heap
};

} // namespace Atelier::Vel
