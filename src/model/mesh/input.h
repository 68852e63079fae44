#pragma once

namespace Atelier::Vel {

/// What becomes of the input of a mesh when draw data are made of it.
enum class Input {
    Kept,     ///< more can be added, and it can be asked for, afterwards
    Consumed, ///< its memory is given back or used again as early as possible
};

} // namespace Atelier::Vel
