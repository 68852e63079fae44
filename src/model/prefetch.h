#pragma once

#include <cstddef>
#include <cstdint>

namespace Atelier::Vel {

/// Asks memory for what lies at `address`, which may be anything.
inline void prefetch(const void* address) {
    __builtin_prefetch(address);
    // Compilers take a function that does nothing but this for one without effect and drop its calls. An
    // empty statement that they may not drop keeps them.
    __asm__ volatile("" : : "r"(address));
}

/// Asks for what lies so many bytes behind `address`, whether that is still there or not.
inline void prefetchBehind(const void* address, std::size_t bytes) {
    prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(address) + bytes));
}

} // namespace Atelier::Vel
