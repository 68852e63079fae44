#include "mappings.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Atelier::Vel::Testing {

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

bool isWatching = false;
bool areGivenBackWhole = true;
std::size_t offsetOfMappings = 0;
int refusalsLeft = 0;
std::vector<Mappings::Range> liveRanges;
std::vector<Mappings::Range> advisedRanges;

void* mapAnywhere(void* address, std::size_t bytes, int protection, int flags, int file, off_t offset) {
    return reinterpret_cast<void*>(syscall(SYS_mmap, address, bytes, protection, flags, file, offset));
}

void* mapAtOffset(std::size_t bytes, int protection, int flags) {
    const std::size_t spare = 2 * kLargePage;
    void* const mapped = mapAnywhere(nullptr, bytes + spare, protection, flags, -1, 0);
    if (mapped == MAP_FAILED)
        return mapped;
    auto* const begin = static_cast<char*>(mapped);
    const std::size_t behind = reinterpret_cast<std::uintptr_t>(begin) % kLargePage;
    const std::size_t before = (kLargePage - behind) % kLargePage + offsetOfMappings;
    if (before != 0)
        syscall(SYS_munmap, begin, before);
    if (before != spare)
        syscall(SYS_munmap, begin + before + bytes, spare - before);
    liveRanges.push_back({begin + before, bytes});
    return begin + before;
}

} // namespace

} // namespace Atelier::Vel::Testing

// NOLINTBEGIN: the C library's names and its declarations
extern "C" {
void* mmap(void* address, size_t bytes, int protection, int flags, int file, off_t offset) noexcept {
    using namespace Atelier::Vel::Testing;
    if (!isWatching || address != nullptr || (flags & MAP_ANONYMOUS) == 0)
        return mapAnywhere(address, bytes, protection, flags, file, offset);
    if (refusalsLeft-- > 0) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return mapAtOffset(bytes, protection, flags);
}
int munmap(void* begin, size_t bytes) noexcept {
    using namespace Atelier::Vel::Testing;
    if (isWatching) {
        const Mappings::Range range = {static_cast<char*>(begin), bytes};
        const auto known = std::find(liveRanges.begin(), liveRanges.end(), range);
        if (known != liveRanges.end())
            liveRanges.erase(known);
        else
            areGivenBackWhole = false;
    }
    return static_cast<int>(syscall(SYS_munmap, begin, bytes));
}
int madvise(void* begin, size_t bytes, int advice) noexcept {
    using namespace Atelier::Vel::Testing;
    if (isWatching && advice == MADV_HUGEPAGE)
        advisedRanges.push_back({static_cast<char*>(begin), bytes});
    return static_cast<int>(syscall(SYS_madvise, begin, bytes, advice));
}
}
// NOLINTEND

namespace Atelier::Vel::Testing {

Mappings::Mappings(std::size_t offset) {
    liveRanges.clear();
    advisedRanges.clear();
    areGivenBackWhole = true;
    refusalsLeft = 0;
    offsetOfMappings = offset;
    isWatching = true;
}

Mappings::~Mappings() {
    isWatching = false;
}

const std::vector<Mappings::Range>& Mappings::live() {
    return liveRanges;
}

bool Mappings::wereGivenBackWhole() {
    return areGivenBackWhole;
}

const std::vector<Mappings::Range>& Mappings::advised() {
    return advisedRanges;
}

void Mappings::refuse(int count) {
    refusalsLeft = count;
}

} // namespace Atelier::Vel::Testing
