#pragma once

namespace Atelier::Vel {

/// The least version that VelGL works with, times ten.
constexpr int kMinVersion = 43;

/// The version of what is natively current times ten, 0 for OpenGL ES.
int currentVersion();

} // namespace Atelier::Vel
