#pragma once

#include <algorithm>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// How the smooth normals of a mesh are generated.
struct GeneratedNormals {
    bool sharePositions = false; ///< vertices with the same position bytes get the same normal
    bool outward = false;        ///< to the side from which a triangle is seen counter-clockwise
    bool onlyMissing = false;    ///< only for vertices whose normal in the input is kMissingNormal
};

/// Each component of a normal that has to be generated, as bits. It is a NaN that no text is read as.
constexpr quint32 kMissingNormal = 0x7FC5A5A5;

/// Whether the three components at `normal` are kMissingNormal. Requires words, not floats, since a compiler
/// may change the bits of a NaN that it takes for a number.
inline bool isMissingNormal(const quint32* normal) {
    return std::all_of(normal, normal + 3, [](quint32 bits) { return bits == kMissingNormal; });
}

} // namespace Atelier::Vel
