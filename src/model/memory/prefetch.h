#pragma once

namespace Atelier::Vel {

/// Asks memory for what lies at `address`, which may be anything.
inline void prefetch(const void* address) {
    __builtin_prefetch(address);
    // Compilers take a function that does nothing but this for one without effect and drop its calls. An
    // empty statement that they may not drop keeps them.
    __asm__ volatile("" : : "r"(address));
}

} // namespace Atelier::Vel
