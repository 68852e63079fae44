#pragma once

#include <array>

#include "geometry/merging/cornerattribute.h"

namespace Atelier::Vel {

/// Reads an attribute's index list a block at a time and checks the indices, so that users of a block need
/// not.
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
