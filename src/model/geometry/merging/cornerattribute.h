#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include <QtCore/QtGlobal>

#include "memory/prefetch.h"

namespace Atelier::Vel {

/// One vertex attribute and its index list. Corner k uses the value whose number is entry k of the list. If
/// that entry is not a valid number, or if the corner is beyond the end of the list, its value consists of
/// zero bytes.
struct CornerAttribute {
    const quint32* indices = nullptr; ///< null: corner k uses value k
    quint64 indexCount = 0;           ///< entries of the index list
    quint64 indexStep = 1;            ///< distance between two entries, in entries
    const unsigned char* values = nullptr;
    quint64 valueCount = 0; ///< complete values
    quint64 stride = 0;     ///< bytes of one value

    /// The number of the value of corner k; valueCount if it has none.
    quint64 valueOf(quint64 corner) const {
        if (corner >= indexCount)
            return valueCount;
        const quint64 index = indices == nullptr ? corner : indices[corner * indexStep];
        return index < valueCount ? index : valueCount;
    }

    /// Prefetches the index entry of corner k.
    void prefetchIndex(quint64 corner) const {
        if (indices != nullptr && corner < indexCount)
            prefetch(indices + corner * indexStep);
    }
};

/// The number of the attribute with the most values, the first of several; 0 if there are no attributes. Its
/// values are used by the fewest corners each, so they separate the corners best.
inline std::size_t largestAttribute(const std::vector<CornerAttribute>& attributes) {
    const auto hasFewer = [](const CornerAttribute& a, const CornerAttribute& b) {
        return a.valueCount < b.valueCount;
    };
    const auto largest = std::max_element(attributes.begin(), attributes.end(), hasFewer);
    return static_cast<std::size_t>(largest - attributes.begin());
}

} // namespace Atelier::Vel
