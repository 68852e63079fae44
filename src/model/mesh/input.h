#pragma once

namespace Atelier::Vel {

/// What happens to the input of a mesh when draw data are made from it.
enum class Input {
    Kept,     ///< it can be extended and read afterwards
    Consumed, ///< its memory is released or reused as early as possible
};

} // namespace Atelier::Vel
