#include "textures/texturefilling.h"

#include <algorithm>
#include <cstring>

#include <velgl/glentrypoints.h>

#include "glconstants.h"

namespace Atelier::Vel {

namespace {

// Sampling uses five levels, whatever the size of the image.
constexpr int kLastLevel = 4;

// Core since OpenGL 4.6. Older drivers have it under one of two names.
constexpr const char* kAnisotropyExtensions[] = {"GL_EXT_texture_filter_anisotropic",
                                                 "GL_ARB_texture_filter_anisotropic"};

int integer(unsigned int name) {
    int value = 0;
    glEntryPoints().getIntegerv(name, &value);
    return value;
}

bool isAnisotropyExtension(const unsigned char* extension) {
    return extension != nullptr &&
           std::any_of(std::begin(kAnisotropyExtensions), std::end(kAnisotropyExtensions),
                       [extension](const char* known) {
                           return std::strcmp(reinterpret_cast<const char*>(extension), known) == 0;
                       });
}

// Whether OpenGL knows the parameter; a query of one that it does not know is an error.
bool hasAnisotropy() {
    const int major = integer(kGlMajorVersion);
    if (major > 4 || (major == 4 && integer(kGlMinorVersion) >= 6))
        return true;
    const int count = integer(kGlNumExtensions);
    for (int i = 0; i < count; ++i)
        if (isAnisotropyExtension(glEntryPoints().getStringi(kGlExtensions, static_cast<unsigned int>(i))))
            return true;
    return false;
}

void setAnisotropy(int samples) {
    if (samples > 1 && hasAnisotropy())
        glEntryPoints().texParameteri(kGlTexture2D, kGlTextureAnisotropy,
                                      std::min(samples, integer(kGlMaxAnisotropy)));
}

int internalFormat(const TextureOptions& options) {
    return options.colorSpace == TextureOptions::ColorSpace::SRgb ? kGlSrgb8Alpha8 : kGlRgba;
}

} // namespace

int largestSide() {
    return integer(kGlMaxTextureSize);
}

std::unique_ptr<Texture> describeTexture(const QSize& size, const TextureOptions& options) {
    return std::make_unique<Texture>(kGlTexture2D, internalFormat(options), size.width(), size.height(), 0,
                                     nullptr);
}

void fill(const Texture& texture, const QImage& image, const TextureOptions& options) {
    const GLEntryPoints& gl = glEntryPoints();
    // The alignment remains 1 afterwards. This is intentional.
    gl.pixelStorei(kGlUnpackAlignment, 1);
    gl.texParameteri(kGlTexture2D, kGlMinFilter, kGlLinearMipmapLinear);
    gl.texParameteri(kGlTexture2D, kGlMagFilter, kGlLinear);
    gl.texParameteri(kGlTexture2D, kGlWrapS, kGlRepeat);
    gl.texParameteri(kGlTexture2D, kGlWrapT, kGlRepeat);
    gl.texParameteri(kGlTexture2D, kGlBaseLevel, 0);
    gl.texParameteri(kGlTexture2D, kGlMaxLevel, kLastLevel);
    setAnisotropy(options.anisotropy);
    gl.texImage2D(kGlTexture2D, 0, internalFormat(options), image.width(), image.height(), 0, kGlBgra,
                  kGlUnsignedByte, image.constBits());
    gl.generateMipmap(texture.target());
}

Texture::Refill refillFrom(std::function<QImage()> read, const TextureOptions& options) {
    return [read = std::move(read), options](Texture& texture) {
        const QImage image = read();
        const bool isSame = image.size() == QSize(texture.width(), texture.height());
        if (isSame)
            fill(texture, image, options);
        return isSame;
    };
}

} // namespace Atelier::Vel
