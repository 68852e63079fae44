#pragma once

#include <QtCore/QString>

namespace Atelier::Vel::Tool {

/// The file that a material refers to by `path`: `path` itself, or, if there is no such file, `path` with
/// slashes instead of the backslashes that other systems write. Returns `path` if neither exists.
QString textureFile(const QString& path);

} // namespace Atelier::Vel::Tool
