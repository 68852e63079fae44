#include "mappingwatch.h"

#include <cerrno>
#include <iterator>
#include <numeric>

#include <sys/mman.h>

extern "C" {
// NOLINTBEGIN(readability-identifier-naming)
void* __real_mmap(void* address, std::size_t bytes, int protection, int flags, int file, long offset);
void* __real_mremap(void* address, std::size_t bytes, std::size_t newBytes, int flags, ...);
int __real_munmap(void* address, std::size_t bytes);
int __real_madvise(void* address, std::size_t bytes, int advice);
// NOLINTEND(readability-identifier-naming)
}

namespace Atelier::Vel::Testing {

namespace {

MappingWatch* theWatch = nullptr;

} // namespace

MappingWatch::MappingWatch() {
    theWatch = this;
}

MappingWatch::~MappingWatch() {
    theWatch = nullptr;
}

MappingWatch* MappingWatch::current() {
    return theWatch;
}

std::size_t MappingWatch::bytesMapped() const {
    return std::accumulate(_mappings.begin(), _mappings.end(), std::size_t{0},
                           [](std::size_t sum, const auto& mapping) { return sum + mapping.second; });
}

void* MappingWatch::map(void* address, std::size_t bytes, int protection, int flags, int file, long offset) {
    if (_failures > 0) {
        --_failures;
        errno = ENOMEM;
        return MAP_FAILED;
    }
    // Reserve enough to choose the place within a large page; release the rest.
    const std::size_t reserved = bytes + 2 * kLargePage;
    void* const room = __real_mmap(address, reserved, protection, flags, file, offset);
    if (room == MAP_FAILED)
        return room;
    auto* const first = static_cast<char*>(room);
    const std::size_t before = kLargePage - reinterpret_cast<std::uintptr_t>(room) % kLargePage + _offset;
    __real_munmap(first, before);
    __real_munmap(first + before + bytes, reserved - before - bytes);
    _mappings.emplace(reinterpret_cast<std::uintptr_t>(first + before), bytes);
    ++_made;
    return first + before;
}

void* MappingWatch::move(void* address, std::size_t bytes, std::size_t newBytes, int flags, void* target) {
    if (_moveFailures > 0) {
        --_moveFailures;
        errno = ENOMEM;
        return MAP_FAILED;
    }
    ++_moves;
    // The old mapping of moved pages no longer exists.
    const auto behind = _mappings.upper_bound(reinterpret_cast<std::uintptr_t>(address));
    if (behind != _mappings.begin())
        _mappings.erase(std::prev(behind));
    return __real_mremap(address, bytes, newBytes, flags, target);
}

int MappingWatch::unmap(void* address, std::size_t bytes) {
    const auto mapping = _mappings.find(reinterpret_cast<std::uintptr_t>(address));
    // Only whole mappings count as removed.
    if (mapping != _mappings.end() && mapping->second == bytes)
        _mappings.erase(mapping);
    return __real_munmap(address, bytes);
}

int MappingWatch::advise(void* address, std::size_t bytes, int advice) {
    _advices.push_back({reinterpret_cast<std::uintptr_t>(address), bytes, advice});
    return 0;
}

} // namespace Atelier::Vel::Testing

using Atelier::Vel::Testing::MappingWatch;

extern "C" {
// NOLINTBEGIN(readability-identifier-naming)
void* __wrap_mmap(void* address, std::size_t bytes, int protection, int flags, int file, long offset) {
    MappingWatch* const watch = MappingWatch::current();
    return watch != nullptr ? watch->map(address, bytes, protection, flags, file, offset)
                            : __real_mmap(address, bytes, protection, flags, file, offset);
}

void* __wrap_mremap(void* address, std::size_t bytes, std::size_t newBytes, int flags, void* target) {
    MappingWatch* const watch = MappingWatch::current();
    return watch != nullptr ? watch->move(address, bytes, newBytes, flags, target)
                            : __real_mremap(address, bytes, newBytes, flags, target);
}

int __wrap_munmap(void* address, std::size_t bytes) {
    MappingWatch* const watch = MappingWatch::current();
    return watch != nullptr ? watch->unmap(address, bytes) : __real_munmap(address, bytes);
}

int __wrap_madvise(void* address, std::size_t bytes, int advice) {
    MappingWatch* const watch = MappingWatch::current();
    return watch != nullptr ? watch->advise(address, bytes, advice) : __real_madvise(address, bytes, advice);
}
// NOLINTEND(readability-identifier-naming)
}
