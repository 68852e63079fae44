#include "memory/scratchblock.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "memory/hugepages.h"

namespace Atelier::Vel {

namespace {

#if defined(__linux__)
constexpr std::size_t kHugePage = std::size_t{2} << 20;

std::size_t wholePages(std::size_t bytes) {
    return (bytes + kHugePage - 1) / kHugePage * kHugePage;
}

/// The first byte of the first large page that lies inside a mapping.
char* firstPageOf(void* address) {
    const std::size_t misaligned = reinterpret_cast<std::uintptr_t>(address) % kHugePage;
    return static_cast<char*>(address) + (misaligned == 0 ? 0 : kHugePage - misaligned);
}
#endif

/// The innermost ScratchReuse of this thread.
thread_local ScratchReuse* currentReuse = nullptr;

#if defined(__linux__)
/// Null if there is no memory.
void* map(std::size_t bytes) {
    void* const address = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return address == MAP_FAILED ? nullptr : address;
}
#endif

void unmap(void* address, std::size_t bytes) {
#if defined(__linux__)
    if (bytes != 0)
        munmap(address, bytes);
#else
    static_cast<void>(address);
    static_cast<void>(bytes);
#endif
}

} // namespace

ScratchReuse::ScratchReuse() : _outer(currentReuse) {
    currentReuse = this;
}

ScratchReuse::~ScratchReuse() {
    currentReuse = _outer;
    unmapAll();
}

void ScratchReuse::unmapAll() {
    for (Mapping& mapping : _kept) {
        if (mapping.address != nullptr)
            unmap(mapping.address, mapping.bytes);
        mapping = Mapping();
    }
}

bool ScratchReuse::keep(const Mapping& mapping) {
    const auto free =
        std::find_if(_kept.begin(), _kept.end(), [](const Mapping& kept) { return kept.address == nullptr; });
    if (free == _kept.end())
        return false;
    *free = mapping;
    return true;
}

ScratchReuse::Mapping ScratchReuse::take(std::size_t bytes) {
    Mapping* smallest = nullptr;
    for (Mapping& kept : _kept)
        if (kept.bytes >= bytes && (smallest == nullptr || kept.bytes < smallest->bytes))
            smallest = &kept;
    return smallest == nullptr ? Mapping() : std::exchange(*smallest, Mapping());
}

ScratchBlock::ScratchBlock(std::size_t bytes, Content content) {
#if defined(__linux__)
    // A mapping that begins on a large page needs one page fault, while heap memory needs hundreds.
    if (bytes >= kHugePage / 2) {
        const std::size_t mapped = wholePages(bytes) + kHugePage;
        if (content == Content::Unspecified && currentReuse != nullptr)
            _mapping = currentReuse->take(mapped);
        const bool isFresh = _mapping.address == nullptr;
        if (isFresh) {
            _mapping = {map(mapped), mapped};
            if (_mapping.address == nullptr && currentReuse != nullptr) {
                currentReuse->unmapAll();
                _mapping.address = map(_mapping.bytes);
            }
            if (_mapping.address == nullptr)
                throw std::bad_alloc();
        }
        _begin = firstPageOf(_mapping.address);
        if (isFresh)
            adviseHugePages(_begin, wholePages(bytes));
        return;
    }
#endif
    const std::size_t size = bytes == 0 ? 1 : bytes;
    _begin = content == Content::Zeros ? std::calloc(size, 1) : std::malloc(size);
    if (_begin == nullptr)
        throw std::bad_alloc();
}

ScratchBlock::~ScratchBlock() {
    if (_mapping.address == nullptr)
        std::free(_begin);
    else if (currentReuse == nullptr || !currentReuse->keep(_mapping))
        unmap(_mapping.address, _mapping.bytes);
}

bool ScratchBlock::grow(std::size_t bytes) {
#if defined(__linux__)
    if (_mapping.address == nullptr)
        return false;
    auto* const begin = static_cast<char*>(_begin);
    const auto before = static_cast<std::size_t>(begin - static_cast<char*>(_mapping.address));
    const std::size_t usable = _mapping.bytes - kHugePage;
    const std::size_t wanted = wholePages(bytes);
    if (wanted <= usable)
        return true;
    const ScratchReuse::Mapping mapping{map(wanted + kHugePage), wanted + kHugePage};
    if (mapping.address == nullptr)
        return false;
    char* const target = firstPageOf(mapping.address);
    if (mremap(begin, usable, wanted, MREMAP_MAYMOVE | MREMAP_FIXED, target) == MAP_FAILED) {
        unmap(mapping.address, mapping.bytes);
        return false;
    }
    // Unmaps the two remaining parts of the old mapping separately, because another thread may already use
    // the addresses between them.
    unmap(_mapping.address, before);
    unmap(begin + usable, _mapping.bytes - before - usable);
    _mapping = mapping;
    _begin = target;
    return true;
#else
    static_cast<void>(bytes);
    return false;
#endif
}

} // namespace Atelier::Vel
