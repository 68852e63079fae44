#pragma once

#include <QtCore/QStringList>

#include <velmodel/loadreport.h>

namespace Atelier::Vel::Viewer {

/// The files that a model is made of: the OBJ file, its libraries and textures, and the paths where they were
/// looked for.
QStringList sourcesOf(const QString& path, const LoadReport& report);

} // namespace Atelier::Vel::Viewer
