#pragma once

namespace Atelier::Vel {

/// The minimum version of OpenGL, times ten.
constexpr int kMinVersion = 43;

/// Returns: the OpenGL version of the natively current context, times ten; 0 for OpenGL ES.
int currentVersion();

} // namespace Atelier::Vel
