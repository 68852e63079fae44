// Replaces the library's scratch blocks in tests of their users: each block ends at a page that cannot be
// accessed, and unspecified content is not zero.
#include "guardedscratchblock.h"

#include <algorithm>
#include <memory>

#include "memory/scratchblock.h"
#include "support/guardedarray.h"

namespace Atelier::Vel {

std::vector<std::size_t>& Testing::scratchBlocks() {
    static std::vector<std::size_t> blocks;
    return blocks;
}

// Reuses nothing and grows nothing, so that every list lies in a block of its own size.
ScratchReuse::ScratchReuse() : _outer(nullptr) {}
ScratchReuse::~ScratchReuse() = default;
bool ScratchBlock::grow(std::size_t /*bytes*/) {
    return false;
}

ScratchBlock::ScratchBlock(std::size_t bytes, Content content) {
    auto memory = std::make_unique<Testing::GuardedMemory>(bytes);
    _begin = memory->as<void>();
    if (content == Content::Unspecified)
        std::fill_n(static_cast<unsigned char*>(_begin), bytes, static_cast<unsigned char>(0xA5));
    _mapping.address = memory.release();
    Testing::scratchBlocks().push_back(bytes);
}

ScratchBlock::~ScratchBlock() {
    delete static_cast<Testing::GuardedMemory*>(_mapping.address);
}

} // namespace Atelier::Vel
