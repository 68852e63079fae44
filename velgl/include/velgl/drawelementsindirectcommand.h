#pragma once

#include <cstddef>
#include <cstdint>

namespace Atelier::Vel {

/// OpenGL's indirect elements draw command, laid out as glMultiDrawElementsIndirect reads it.
struct DrawElementsIndirectCommand {
    std::uint32_t count = 0;         ///< number of indices to draw
    std::uint32_t instanceCount = 0; ///< number of instances
    std::uint32_t firstIndex = 0;    ///< position of the first index in the index buffer, in elements
    std::uint32_t baseVertex = 0;    ///< added to every index
    std::uint32_t baseInstance = 0;  ///< first instance number
};

static_assert(sizeof(DrawElementsIndirectCommand) == 20);
static_assert(offsetof(DrawElementsIndirectCommand, count) == 0);
static_assert(offsetof(DrawElementsIndirectCommand, instanceCount) == 4);
static_assert(offsetof(DrawElementsIndirectCommand, firstIndex) == 8);
static_assert(offsetof(DrawElementsIndirectCommand, baseVertex) == 12);
static_assert(offsetof(DrawElementsIndirectCommand, baseInstance) == 16);

} // namespace Atelier::Vel
