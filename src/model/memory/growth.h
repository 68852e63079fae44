#pragma once

#include <algorithm>
#include <new>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

// From this size on, a list has its own pages. Unused capacity then needs addresses but no memory.
constexpr quint64 kLongListBytes = quint64{512} << 10;

// The minimum capacity to which a long list grows. Fewer steps to a large list save copies.
constexpr quint64 kMinLongCapacity = quint64{16} << 20;

/// The capacity, in bytes, of a list that has outgrown its block and holds `bytes` bytes now.
/// Requires: `bytes` is at most `maxBytes`, which the result never exceeds.
constexpr quint64 generousCapacity(quint64 bytes, quint64 maxBytes) {
    const quint64 wanted = bytes <= kLongListBytes ? 4 * bytes : std::max(2 * bytes, kMinLongCapacity);
    return std::min(wanted, maxBytes);
}

/// Grows a list to hold `bytes` bytes. Calls `grow(capacity)`, in bytes, first with a generous capacity.
/// After a std::bad_alloc, it tries 1.5 times the needed capacity, and then the needed capacity. An exception
/// of the last call is passed on.
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
