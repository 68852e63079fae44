#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Calls `take(i, bytes)` for each of `count` corners in order. i counts from 0, and `bytes` is the value of
/// the corner `cornerAt(i)`. The values of an unordered mesh may be anywhere in memory, so a block of them is
/// prefetched before it is used. `meter` counts corners.
template<typename CornerAt, typename Take>
void forValues(const CornerAttribute& attribute, quint64 stride, quint32 count, const CornerAt& cornerAt,
               const WorkMeter& meter, const Take& take) {
    constexpr quint32 kCornersPerReport = 1 << 15; // about a millisecond
    constexpr std::size_t kBlock = 64;             // more fetches than one core has in flight at a time
    const std::vector<unsigned char> zeros(std::max<quint64>(stride, 1)); // never empty
    std::array<const unsigned char*, kBlock> values;
    for (quint32 first = 0; first < count;) {
        const quint32 end = first + std::min<quint32>(values.size(), count - first);
        for (quint32 i = first; i < end; ++i) {
            const quint64 value = attribute.valueOf(cornerAt(i));
            values[i - first] =
                value == attribute.valueCount ? zeros.data() : attribute.values + value * stride;
            prefetch(values[i - first]);
        }
        for (const unsigned char* const* value = values.data(); first < end; ++first, ++value)
            take(first, *value);
        if (first % kCornersPerReport == 0 && meter)
            meter(kCornersPerReport);
    }
}

/// Copies the values of the given corners to `out`, one after the other. If `corners` is null, copies the
/// values of the first `count` corners. `meter` counts values.
void gatherValues(const CornerAttribute& attribute, const quint32* corners, quint32 count, unsigned char* out,
                  const WorkMeter& meter = {});

} // namespace Atelier::Vel
