#pragma once

#include <QtCore/QString>

namespace Atelier::Vel::Viewer {

/// The OBJ file that is `steps` places after `path` among those of its folder, in the order in which people
/// count ("part2" before "part10"). After the last one comes the first. `path` need not exist any more.
/// Returns: null if the folder has no other OBJ file.
QString neighbourOf(const QString& path, int steps);

} // namespace Atelier::Vel::Viewer
