#pragma once

#include <functional>
#include <memory>

#include <QtGui/QImage>

#include <velgl/texture.h>
#include <velmodel/textureloader.h>

namespace Atelier::Vel {

/// The limit of the driver for the sides of a texture, in pixels; 0 without a context.
int largestSide();

/// Describes a texture for an image of this size; makes no OpenGL call.
std::unique_ptr<Texture> describeTexture(const QSize& size, const TextureOptions& options);

/// Stores an image of readImage() in the bound texture, with its smaller levels. The unpack alignment is 1
/// afterwards.
void fill(const Texture& texture, const QImage& image, const TextureOptions& options);

/// Makes a function that fills a texture with the image that `read` returns.
/// Returns: one that fails if the image is null or has another size than the texture.
Texture::Refill refillFrom(std::function<QImage()> read, const TextureOptions& options);

} // namespace Atelier::Vel
