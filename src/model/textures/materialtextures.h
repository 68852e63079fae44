#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

class Texture;

/// LoadTexture() for a path as a material names it: one with backslashes that is not there is read with
/// slashes instead.
Texture* loadMaterialTexture(const QString& path);

} // namespace Atelier::Vel
