#pragma once

#include <algorithm>
#include <new>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

// From here on a list lies in pages of its own: capacity that is never used takes addresses and no memory.
constexpr quint64 kLongListBytes = quint64{512} << 10;

// The smallest capacity that a long list grows to. Fewer steps on the way to a large list save copies.
constexpr quint64 kMinLongCapacity = quint64{16} << 20;

/// The capacity, in bytes, of a list that has outgrown its block and holds `bytes` bytes now.
/// Requires: `bytes` is at most `maxBytes`, which the result never exceeds.
constexpr quint64 generousCapacity(quint64 bytes, quint64 maxBytes) {
    const quint64 wanted = bytes <= kLongListBytes ? 4 * bytes : std::max(2 * bytes, kMinLongCapacity);
    return std::min(wanted, maxBytes);
}

/// Grows a list to hold `bytes` bytes: calls `grow(capacity)`, in bytes, with a generous capacity first. Each
/// std::bad_alloc from it is followed by a call with less: half more than needed, then what is needed.
/// Throws what the last call throws.
template<typename Grow>
void growCapacity(quint64 bytes, quint64 maxBytes, const Grow& grow) {
    for (const quint64 capacity :
         {generousCapacity(bytes, maxBytes), std::min(bytes + bytes / 2, maxBytes)}) {
        try {
            grow(capacity);
            return;
        } catch (const std::bad_alloc&) {
        }
    }
    grow(bytes);
}

} // namespace Atelier::Vel
