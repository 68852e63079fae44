#pragma once

#include <cstddef>

#include <QtCore/QtGlobal>

#include "memory/prefetch.h"

namespace Atelier::Vel {

/// One vertex attribute as the corners of a mesh refer to it: corner k uses the value whose number is entry k
/// of the index list. A corner whose entry names no value, or that comes after the end of the list, has a
/// value of zero bytes.
struct CornerAttribute {
    const quint32* indices = nullptr; ///< null: corner k uses value k
    quint64 indexCount = 0;           ///< entries of the index list
    quint64 indexStep = 1;            ///< distance between two entries, in entries
    const unsigned char* values = nullptr;
    quint64 valueCount = 0; ///< whole values
    quint64 stride = 0;     ///< bytes of one value

    /// The number of the value of corner k; valueCount when it has none.
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

} // namespace Atelier::Vel
