#pragma once

#include <velgl/texturemanager.h>

namespace Atelier::Vel {

/// Gives VelGL access to the private part of the texture manager.
struct TextureManagerAccess {
    /// Returns: a number that is 1 or more and grows when the loader is replaced.
    static quint64 loaderRevision(const TextureManager& manager);
};

} // namespace Atelier::Vel
