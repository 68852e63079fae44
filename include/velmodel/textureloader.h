#pragma once

#include <QtCore/QString>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class Texture;

/// The image file at `path` as a mipmapped, repeating texture, bottom row first; the same object for the same
/// path. Requires: a current OpenGLDeviceContext. Returns: null when the file is no readable image. Never
/// delete the result.
VELMODEL_EXPORT Texture* LoadTexture(const QString& path);

} // namespace Atelier::Vel
