#pragma once

#include <QtCore/QString>

#include <velmodel/modelbuilder.h>

namespace Atelier::Vel::Testing {

/// Reads an MTL file into groups with Qt's own calls, line by line. The library has to agree with it.
bool literalLoadMaterialLibrary(const QString& path, ModelBuilder& builder);

} // namespace Atelier::Vel::Testing
