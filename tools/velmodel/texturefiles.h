#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {
class ModelFiles;
}

namespace Atelier::Vel::Tool {

/// The file that a material means by `path`: itself, or, when there is no such file, the one with slashes in
/// place of the backslashes that other systems write. `path` when neither exists.
QString textureFile(const QString& path);

/// Makes the TextureManager load textures from the files that materials mean, as far as they are among
/// `files`.
void installTextureLoader(const ModelFiles& files);

} // namespace Atelier::Vel::Tool
