#pragma once

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#include <QtCore/QtGlobal>

#include "memory/growth.h"
#include "memory/scratchblock.h"

namespace Atelier::Vel {

/// Plain items in one block; items that were never written are zero.
template<typename T>
class GrowingList {
public:
    T* items() const { return _block ? _block->template as<T>() : nullptr; }

    /// Grows to hold `count` items. The first `used` items keep their values, the others become zero if the
    /// list grows. Throws std::bad_alloc and leaves the list unchanged if there is not enough memory.
    void reserve(quint64 count, quint64 used) {
        if (count <= _capacity)
            return;
        if (!_block)
            return moveTo(count, 0);
        growCapacity(count * sizeof(T), std::numeric_limits<quint64>::max(),
                     [&](quint64 bytes) { moveTo(bytes / sizeof(T), used); });
    }

    /// Releases the memory.
    void clear() {
        _block.reset();
        _capacity = 0;
    }

private:
    void moveTo(quint64 capacity, quint64 used) {
        auto block = std::make_unique<ScratchBlock>(capacity * sizeof(T));
        if (_block)
            std::memcpy(block->template as<T>(), items(), std::min(used, _capacity) * sizeof(T));
        _block = std::move(block);
        _capacity = capacity;
    }

    std::unique_ptr<ScratchBlock> _block;
    quint64 _capacity = 0;
};

} // namespace Atelier::Vel
