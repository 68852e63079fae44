#pragma once

namespace Atelier::Vel {

/// The options of a load. The defaults are what the functions without options do.
struct LoadOptions {
    /// Which files a model may name.
    enum class Files {
        Anywhere,    ///< all files
        InOwnFolder, ///< those in the folder of the OBJ file and below it
    };
    /// The material libraries and textures that may be read. Any other one counts as unreadable, after a
    /// warning: a library makes the load fail, and a texture is replaced by a white one. The OBJ file itself
    /// may lie anywhere, and may be a link. Textures are opened later, when they are drawn: see
    /// makeTextureLoader().
    Files files = Files::Anywhere;
};

} // namespace Atelier::Vel
