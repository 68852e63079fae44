#pragma once

namespace Atelier::Vel {

struct Mesh;

/// The attributes for which faces have an index that does not exist.
struct IndexFaults {
    bool positions = false; ///< or none at all
    bool normals = false;
    bool texCoords = false;

    bool any() const { return positions || normals || texCoords; }
};

/// Requires: a complete mesh of a file.
/// Cost:     one pass over the tuples of the corners if these were merged as they arrived, otherwise over the
///           corners; one more over the corners if some of them have no normal or no texture coordinate.
IndexFaults findIndexFaults(Mesh& mesh);

} // namespace Atelier::Vel
