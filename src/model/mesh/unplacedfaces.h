#pragma once

#include <vector>

#include <QtCore/QString>

namespace Atelier::Vel {

struct Mesh;

/// Removes the faces of which a corner has no value in the attribute `positions`, with their corners.
/// Requires: the mesh consumes its input, and nothing is added to it afterwards.
/// Returns:  the numbers that the removed faces had, ascending.
/// Cost:     one pass over the corners, and several if there is such a face.
std::vector<quint32> removeUnplacedFaces(Mesh& mesh, const QString& positions);

} // namespace Atelier::Vel
