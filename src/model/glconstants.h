#pragma once

namespace Atelier::Vel {

constexpr unsigned int kGlUnsignedInt = 0x1405; // GL_UNSIGNED_INT, the type of all index streams
constexpr unsigned int kGlFloat = 0x1406;       // GL_FLOAT

} // namespace Atelier::Vel
