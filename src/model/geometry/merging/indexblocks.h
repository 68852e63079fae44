#pragma once

#include <array>

#include "geometry/merging/cornerattribute.h"

namespace Atelier::Vel {

/// Whether all numbers are below `limit`.
bool allBelow(const quint32* numbers, quint32 count, quint32 limit);

/// Reads an attribute's index list a block at a time, so that what reads the block need not check any index.
class IndexBlock {
public:
    static constexpr quint32 kSize = 1024;

    /// The numbers of the values of `count` corners from `first` on, valueCount for those that have none;
    /// valid until the next call.
    const quint32* read(const CornerAttribute& attribute, quint32 first, quint32 count);

    /// The corners without a value in all blocks so far.
    quint64 substitutedCorners() const { return _substitutedCorners; }

private:
    std::array<quint32, kSize> _numbers;
    quint64 _substitutedCorners = 0;
};

} // namespace Atelier::Vel
