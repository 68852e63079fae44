#pragma once

namespace Atelier::Vel {

/// Prefetches the data at `address`. Any address is allowed.
inline void prefetch(const void* address) {
    __builtin_prefetch(address);
    // Compilers regard a function that only prefetches as free of effects and remove its calls. This empty
    // statement, which they must keep, prevents that.
    __asm__ volatile("" : : "r"(address));
}

} // namespace Atelier::Vel
