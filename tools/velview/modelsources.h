#pragma once

#include <QtCore/QStringList>

#include <velmodel/drawdata.h>

namespace Atelier::Vel::Viewer {

/// The files that a model is made of: the OBJ file, the libraries that it names, all libraries of its folder,
/// and its textures. They need not exist.
/// Cost: reads the OBJ file line by line.
QStringList sourcesOf(const QString& path, const DrawData& data);

} // namespace Atelier::Vel::Viewer
