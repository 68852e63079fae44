#pragma once

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// The faults of a file that a load repairs, each off by default. What was repaired is in
/// LoadReport::diagnostics.
struct LoadRepairs {
    /// A material library that is missing or unreadable is left out. Otherwise the load fails.
    bool skipMissingLibraries = false;
    /// A material that nothing has defined when its first face comes gets the values of the default material,
    /// and the next id. The first definition that follows replaces these values. Otherwise faces without a
    /// defined material are not drawn.
    bool defineMaterials = false;
    /// Names of materials and libraries may contain spaces and may stand in quotes; '#' begins a comment only
    /// at the start of a line or after white space. Of the whole rest of a line, the rest up to such a '#',
    /// and the first word, the first that names a known material or an existing library is taken; if no
    /// library is named by the whole rest, each of its words names one.
    bool matchNames = false;
    /// The options of a map, such as "-s 2 2 1", are not taken for its file name.
    bool parseMapOptions = false;
    /// A backslash at the end of a line, except in a comment, continues it on the next line.
    bool joinContinuedLines = false;
    /// A face with a position that does not exist is dropped. Otherwise that corner lies in the origin.
    bool dropUnplacedFaces = false;
};

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
    LoadRepairs repairs;
    /// Whether materials, the default one included, have the layout "OBJMaterialExtended" in place of
    /// "OBJMaterial". Beyond the members of that, it has "illum" (an integer, 2 without a line), "Pr" and
    /// "Pm" (floats, 1 and 0), "map_offset" and "map_scale" (two floats each, of map_Kd, 0 and 1) and the
    /// textures "map_Pr", "map_Pm" and "norm" (from "norm" or "map_Kn"). "Ke" and "map_Ke" are read, and "Tr"
    /// sets "d" to 1 - Tr in a material without a "d" line. The first upload of such a material registers the
    /// layout.
    bool extendedMaterials = false;

    /// Options with all repairs, for programs that show whatever a file holds.
    VELMODEL_EXPORT static LoadOptions forgiving();
};

} // namespace Atelier::Vel
