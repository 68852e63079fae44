#pragma once

#include <QtCore/QSize>
#include <QtCore/QString>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class ModelFiles;
class Texture;

/// Loads the image file at `path` into a mipmapped, repeating texture, with the bottom row first.
/// Requires: a current OpenGLDeviceContext.
/// Returns:  the same object for the same path. It is never deleted, and must not be deleted. Null if the
///           file is not a readable image, if it is an SVG, which could refer to further files, or if it is
///           too large: more than 1 GiB decoded, or a side above the limit of the driver.
/// Threads:  one thread at a time, that of the context.
/// Cost:     linear in the pixels; a hash look-up if the path was loaded before.
VELMODEL_EXPORT Texture* LoadTexture(const QString& path);

/// The same for a file that is one of `files`; null for any other file. If `files` are those of one folder,
/// only image formats that contain all their pixels are read; docs/velmodel.md lists them.
VELMODEL_EXPORT Texture* loadTextureFrom(const ModelFiles& files, const QString& path);

/// Reads the size of an image in pixels from the header of its file, without decoding it.
/// Returns: an invalid size if the file is not a readable image or not one of `files`.
/// Threads: any thread, without a context.
VELMODEL_EXPORT QSize readTextureSize(const ModelFiles& files, const QString& path);

} // namespace Atelier::Vel
