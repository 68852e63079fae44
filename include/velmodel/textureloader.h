#pragma once

#include <QtCore/QSize>
#include <QtCore/QString>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class ModelFiles;
class Texture;

/// The image file at `path` as a mipmapped, repeating texture, bottom row first; the same object for the same
/// path. Requires: a current OpenGLDeviceContext. Returns: null when the file is no readable image, also when
/// it is an SVG, which could refer to further files. Never delete the result.
VELMODEL_EXPORT Texture* LoadTexture(const QString& path);

/// The same for one of `files`, and null for any other. With files of one folder, only the image formats
/// count that are known to hold all their pixels themselves.
VELMODEL_EXPORT Texture* loadTextureFrom(const ModelFiles& files, const QString& path);

/// The size in pixels that an image file tells without being decoded; invalid when it is no readable image or
/// none of `files`. Needs no context.
VELMODEL_EXPORT QSize readTextureSize(const ModelFiles& files, const QString& path);

} // namespace Atelier::Vel
