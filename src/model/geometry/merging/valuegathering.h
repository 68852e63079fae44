#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Calls `take` with the number, from 0, and the bytes of the value of each of `count` corners, in their
/// order. `cornerAt` gives the corners. The values of a mesh in no order lie anywhere: a block of them is
/// prefetched before it is used. `meter` counts corners.
template<typename CornerAt, typename Take>
void forValues(const CornerAttribute& attribute, quint64 stride, quint32 count, const CornerAt& cornerAt,
               const WorkMeter& meter, const Take& take) {
    constexpr quint32 kCornersPerReport = 1 << 15; // about a millisecond
    constexpr std::size_t kBlock = 64;             // more than one core fetches at a time
    const std::vector<unsigned char> zeros(std::max<quint64>(stride, 1)); // a place even for no bytes
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

/// Copies the value of each of the given corners, or of the first `count` if those are null, to `out`, one
/// after the other. `meter` counts values.
void gatherValues(const CornerAttribute& attribute, const quint32* corners, quint32 count, unsigned char* out,
                  const WorkMeter& meter = {});

} // namespace Atelier::Vel
