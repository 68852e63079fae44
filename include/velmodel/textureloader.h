#pragma once

#include <QtCore/QSize>
#include <QtCore/QString>

#include <velgl/gpumodel.h>
#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

class ModelFiles;
class ModelSource;
class Texture;

/// How the image of a file becomes a texture. The defaults are those of LoadTexture().
struct TextureOptions {
    /// What the values of red, green and blue in a file mean.
    enum class ColorSpace {
        Linear, ///< GL_RGBA: a shader reads the values of the file
        SRgb,   ///< GL_SRGB8_ALPHA8: OpenGL makes them linear before it filters them. Alpha is linear anyway.
    };
    ColorSpace colorSpace = ColorSpace::Linear;
    /// The number of samples of the anisotropic filter; none up to 1. Above the maximum of the driver it is
    /// that maximum. Without effect if the driver has no such filter.
    int anisotropy = 1;
};

/// Loads the image file at `path` into a mipmapped, repeating texture, with the bottom row first.
///
/// The first upload installs this function as the loader of the TextureManager, unless the program has set
/// one. The texture is filled again, from the file, in each further group of sharing contexts; where the file
/// is gone or its picture has another size, it is white there, after a warning.
///
/// Requires: a current OpenGLDeviceContext.
/// Returns:  the same object for the same path. It is never deleted, and must not be deleted. Null if the
///           file is not a readable image, if it is an SVG, which could refer to further files, or if it is
///           too large: more than 1 GiB decoded, or a side above the limit of the driver.
/// Threads:  one thread at a time, that of the context.
/// Cost:     linear in the pixels; a hash look-up if the path was loaded before.
VELMODEL_EXPORT Texture* LoadTexture(const QString& path);

/// Makes a function for GPUModel::setTextureLoader(): it loads the textures that materials name, as
/// LoadTexture() does, from `files` only, with `options`, and makes a new texture with each call. A path with
/// backslashes that is not there is read with slashes instead. If `files` are those of one folder, only image
/// formats that contain all their pixels are read; docs/velmodel.md lists them.
///
/// The function decodes during the first draw; DecodedTextures in decodedtextures.h decodes before.
///
/// Threads:  the function is called on the thread of the context. It may be copied on any.
VELMODEL_EXPORT GPUModel::TextureLoader makeTextureLoader(const ModelFiles& files,
                                                          const TextureOptions& options = {});

/// The same from a source, of which only image formats that contain all their pixels are read. The content of
/// a device other than a QFileDevice or a QBuffer is held in memory while it is decoded, up to 1 GiB. The
/// function and its textures keep the source, which is also called when a texture is filled again.
///
/// Requires: `source` is not null.
/// Errors:   an exception from the source reaches the caller of the function.
VELMODEL_EXPORT GPUModel::TextureLoader makeTextureLoader(std::shared_ptr<ModelSource> source,
                                                          const TextureOptions& options = {});

/// Reads the size of an image in pixels from the header of its file, without decoding it. Backslashes in
/// `path` are treated as by makeTextureLoader().
/// Returns:  an invalid size if the file is not a readable image or not one of `files`.
/// Threads:  any thread, without a context.
VELMODEL_EXPORT QSize readTextureSize(const ModelFiles& files, const QString& path);

} // namespace Atelier::Vel
