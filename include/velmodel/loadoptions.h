#pragma once

#include <QtCore/QStringList>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// How normals are made for corners without one: all corners of a file without "vn" lines, and in other files
/// the corners without a normal index. Normals in the file are never changed.
///
/// Generated normals point inwards: to the side from which a face is seen clockwise. The shader of a client
/// has to expect that, or the client sets `outward`.
struct NormalOptions {
    enum class Kind {
        /// In a file without "vn" lines, a vertex gets the sum of the normals of its triangles, each weighted
        /// by the sine of the angle at the triangle's first corner, then normalised. Vertices with different
        /// texture coordinates are different vertices, so a seam of the texture can be seen. In other files,
        /// corners without a normal get zeros.
        Defined,
        /// The same sum over all triangles at a position, so that seams cannot be seen. Positions are equal
        /// if their bytes are.
        Smooth,
        /// The sum of the normals of the faces at the corner's position that differ from the normal of its
        /// own face by up to `creaseAngle`, each weighted by the angle of the face there. Sharper edges stay
        /// sharp. At a position of more than 256 corners, similar normals are compared together.
        Crease,
        /// The same sum over the faces at the corner's position that belong to its smoothing group ("s").
        /// Faces after "s off" or "s 0" and before the first "s" line are flat; "s on" is group 1.
        SmoothingGroups,
    };

    Kind kind = Kind::Defined;
    /// The maximum angle between the normals of two faces that Crease smooths, in degrees from 0 to 180, with
    /// a tolerance of 0.1. A value that is not a number counts as 0.
    float creaseAngle = 30;
    /// Generated normals point to the side from which a face is seen counter-clockwise, as those of a file
    /// usually do.
    bool outward = false;

    static NormalOptions smooth() { return {Kind::Smooth}; }
    static NormalOptions crease(float degrees) { return {Kind::Crease, degrees}; }
    static NormalOptions smoothingGroups() { return {Kind::SmoothingGroups}; }
};

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
    /// A library or texture that is not where the file names it is looked for: with slashes in place of
    /// backslashes, in another case, and by ever shorter ends of its path, the longest first, down to the
    /// file name alone. Each end is looked for beside the file that names it, beside the OBJ file, and then
    /// in LoadOptions::searchPaths. Otherwise, and if nothing is found, the path of the file stays.
    bool findFiles = false;
    /// A face with a position that does not exist is dropped. Otherwise that corner lies in the origin.
    bool dropUnplacedFaces = false;
    /// In a file with "vn" lines, a corner whose normal does not exist or that has no normal index gets a
    /// normal: that of the load's NormalOptions; if they are Defined, that of NormalOptions::Kind::Smooth,
    /// outwards. Otherwise the corner gets zeros if its normal does not exist, or if the options are Defined.
    bool generateMissingNormals = false;
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
    /// The folders in which LoadRepairs::findFiles also looks for libraries and textures, in this order. A
    /// relative path starts from the current directory. With Files::InOwnFolder, folders elsewhere are
    /// ignored.
    QStringList searchPaths;
    /// Whether materials, the default one included, have the layout "OBJMaterialExtended" in place of
    /// "OBJMaterial". Beyond the members of that, it has "illum" (an integer, 2 without a line), "Pr" and
    /// "Pm" (floats, 1 and 0), "map_offset" and "map_scale" (two floats each, of map_Kd, 0 and 1) and the
    /// textures "map_Pr", "map_Pm" and "norm" (from "norm" or "map_Kn"). "Ke" and "map_Ke" are read, and "Tr"
    /// sets "d" to 1 - Tr in a material without a "d" line, unless it is 1, which programs write that mean
    /// opaque. The first upload of such a material registers the layout.
    bool extendedMaterials = false;
    /// The normals of corners for which the file has none.
    NormalOptions normals;
    /// Whether the colours of vertices are read. A "v" line of six numbers has red, green and blue after the
    /// position, and one of seven also has alpha; '#' at the start of a word begins a comment. A word is a
    /// number if QString::toDouble() reads it. Any other line has no colour, and its vertex is white. The
    /// values are not changed. They become the attribute "va_Color": four floats for each vertex if one has
    /// alpha, else three, and no attribute if no vertex has a colour.
    /// Cost: 12 or 16 bytes for each "v" line.
    bool vertexColours = false;
    /// Whether the parts of a file get commands of their own: one material group for each part and material
    /// that has faces. A part is named by the line "o", or "g" without one, or by both as "o/g": by the whole
    /// rest of the line, without white space around it. A name is valid up to the next line of its kind; an
    /// empty name ends it. A part that comes again is the same part. The groups have ids from 0 in the order
    /// of their first faces. Their name is that of the material, and their object name is that of the part,
    /// or null without one. Faces with an undefined material are treated as without this option.
    bool splitObjects = false;

    /// Options with all repairs, for programs that show whatever a file holds.
    VELMODEL_EXPORT static LoadOptions forgiving();
};

} // namespace Atelier::Vel
