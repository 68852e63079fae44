#pragma once

#include <array>

#include "geometry/merging/cornerattribute.h"

namespace Atelier::Vel {

/// Reads the index list of an attribute block by block and checks the indices, so that callers do not have
/// to.
class IndexBlock {
public:
    static constexpr quint32 kSize = 1024;

    /// The value numbers of `count` corners, starting at `first`. The number is valueCount for a corner
    /// without a value. Valid until the next call.
    const quint32* read(const CornerAttribute& attribute, quint32 first, quint32 count);

    /// The number of corners without a value in all blocks so far.
    quint64 substitutedCorners() const { return _substitutedCorners; }

private:
    std::array<quint32, kSize> _numbers;
    quint64 _substitutedCorners = 0;
};

} // namespace Atelier::Vel
