#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include <QtCore/QtGlobal>

#include "memory/scratchblock.h"

namespace Atelier::Vel {

/// Plain items in one block, zeros where none was written. Room that is never touched costs nothing, so a
/// long list gets plenty at a time.
template<typename T>
class GrowingList {
public:
    T* items() const { return _block ? _block->template as<T>() : nullptr; }

    /// Makes room for `count` items, of which those before `used` stay what they are.
    void makeRoom(quint64 count, quint64 used) {
        if (count <= _room)
            return;
        const bool isLong = _room >= kLong;
        const quint64 room = std::max({count, 4 * _room, isLong ? kRoomForLong : 0});
        try {
            moveTo(room, used);
        } catch (const std::bad_alloc&) {
            if (!isLong)
                throw;
            moveTo(count + count / 2, used); // where addresses are scarce
        }
    }

    void clear() {
        _block.reset();
        _room = 0;
    }

private:
    static constexpr quint64 kLong = (quint64{512} << 10) / sizeof(T);
    static constexpr quint64 kRoomForLong = (quint64{16} << 20) / sizeof(T);

    void moveTo(quint64 room, quint64 used) {
        auto block = std::make_unique<ScratchBlock>(room * sizeof(T));
        if (_block)
            std::memcpy(block->template as<T>(), items(), std::min(used, _room) * sizeof(T));
        _block = std::move(block);
        _room = room;
    }

    std::unique_ptr<ScratchBlock> _block;
    quint64 _room = 0;
};

} // namespace Atelier::Vel
