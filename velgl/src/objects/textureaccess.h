#pragma once

#include <velgl/texture.h>

#include "context/contextgl.h"

namespace Atelier::Vel {

/// Gives VelGL access to the GL names of a texture.
struct TextureAccess {
    /// Returns: the name of `texture` in the current context `gl`, which is made and filled if need be; 0
    /// where Texture::bind() would fail. Several threads may ask for the same texture, each with its own
    /// context: shared textures, such as solid colours, are drawn in all of them.
    static unsigned int nameIn(const ContextGL& gl, Texture& texture);
    /// Returns: a number that grows whenever a texture of the process is destroyed or gets a GL name. While
    /// it stays, so do all names.
    static quint64 revision();
};

/// Whether level 0 of the texture that is bound to `target` has no image, for example because there was no
/// memory for it. False for other targets than GL_TEXTURE_2D.
/// Requires: a context is current.
bool lacksImage(unsigned int target);

} // namespace Atelier::Vel
