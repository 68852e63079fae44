#include "memory/hugepages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace Atelier::Vel {

void adviseHugePages(void* begin, std::size_t bytes) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::size_t kHugePage = std::size_t{2} << 20;
    // Only whole large pages inside the block: the pages at its ends may be shared with other blocks.
    const std::size_t before = (kHugePage - reinterpret_cast<std::uintptr_t>(begin) % kHugePage) % kHugePage;
    if (bytes < before + kHugePage)
        return;
    const std::size_t inside = (bytes - before) / kHugePage * kHugePage;
    madvise(static_cast<char*>(begin) + before, inside, MADV_HUGEPAGE);
#else
    static_cast<void>(begin);
    static_cast<void>(bytes);
#endif
}

} // namespace Atelier::Vel
