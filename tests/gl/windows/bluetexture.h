#pragma once

#include <memory>

#include <velgl/autobinder.h>
#include <velgl/glentrypoints.h>
#include <velgl/texture.h>

namespace Atelier::Vel::Testing {

/// Gives a bound texture one blue texel, and a filter that reads only that.
inline void fillBlue(const Texture& texture) {
    constexpr unsigned int kMinFilter = 0x2801;    // GL_TEXTURE_MIN_FILTER
    constexpr int kNearest = 0x2600;               // GL_NEAREST
    constexpr unsigned int kRgba = 0x1908;         // GL_RGBA
    constexpr unsigned int kUnsignedByte = 0x1401; // GL_UNSIGNED_BYTE
    constexpr unsigned char kBlue[] = {0, 0, 255, 255};
    glEntryPoints().texParameteri(texture.target(), kMinFilter, kNearest);
    glEntryPoints().texImage2D(texture.target(), 0, texture.internalFormat(), 1, 1, 0, kRgba, kUnsignedByte,
                               kBlue);
}

/// A texture of one blue texel. Requires: a current context.
inline std::shared_ptr<Texture> blueTexture() {
    constexpr unsigned int kTexture2D = 0x0DE1; // GL_TEXTURE_2D
    constexpr int kRgba = 0x1908;               // GL_RGBA
    auto texture = std::make_shared<Texture>(kTexture2D, kRgba, 1, 1, 0, nullptr);
    const AutoBinder binder(texture.get());
    fillBlue(*texture);
    return texture;
}

} // namespace Atelier::Vel::Testing
