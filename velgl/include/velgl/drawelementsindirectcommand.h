#pragma once

#include <cstddef>
#include <cstdint>

namespace Atelier::Vel {

/// One indexed draw, laid out as glMultiDrawElementsIndirect reads it from a buffer: five 32-bit words, 20
/// bytes, without padding.
/// Threads: a plain value.
struct DrawElementsIndirectCommand {
    std::uint32_t count = 0;         ///< number of indices to draw
    std::uint32_t instanceCount = 0; ///< number of instances; 0 draws nothing
    std::uint32_t firstIndex = 0;    ///< position of the first index in the index buffer, in indices
    std::uint32_t baseVertex = 0;    ///< added to every index; OpenGL reads it as a signed number
    std::uint32_t baseInstance = 0;  ///< offset of instanced attributes; gl_InstanceID does not include it
};

// The layout is OpenGL's: offsets in bytes.
static_assert(sizeof(DrawElementsIndirectCommand) == 20);
static_assert(offsetof(DrawElementsIndirectCommand, count) == 0);
static_assert(offsetof(DrawElementsIndirectCommand, instanceCount) == 4);
static_assert(offsetof(DrawElementsIndirectCommand, firstIndex) == 8);
static_assert(offsetof(DrawElementsIndirectCommand, baseVertex) == 12);
static_assert(offsetof(DrawElementsIndirectCommand, baseInstance) == 16);

} // namespace Atelier::Vel
