#include "scratchblock.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "streams/hugepages.h"

namespace Atelier::Vel {

ScratchBlock::ScratchBlock(std::size_t bytes, Content content) {
#if defined(__linux__)
    constexpr std::size_t kHugePage = std::size_t{2} << 20;
    // A mapping that begins on a large page takes one page fault where heap memory takes hundreds.
    if (bytes >= kHugePage / 2) {
        const std::size_t wholePages = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        _mappingBytes = wholePages + kHugePage;
        void* const mapping =
            mmap(nullptr, _mappingBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED)
            throw std::bad_alloc();
        _mapping = mapping;
        const std::size_t misaligned = reinterpret_cast<std::uintptr_t>(mapping) % kHugePage;
        _begin = static_cast<char*>(mapping) + (misaligned == 0 ? 0 : kHugePage - misaligned);
        adviseHugePages(_begin, wholePages);
        return;
    }
#endif
    const std::size_t size = bytes == 0 ? 1 : bytes;
    _begin = content == Content::Zeros ? std::calloc(size, 1) : std::malloc(size);
    if (_begin == nullptr)
        throw std::bad_alloc();
}

ScratchBlock::~ScratchBlock() {
#if defined(__linux__)
    if (_mapping != nullptr) {
        munmap(_mapping, _mappingBytes);
        return;
    }
#endif
    std::free(_begin);
}

} // namespace Atelier::Vel
