#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

class ModelBuilder;

/// Registers the "OBJMaterial" plan; called once, while the library is being loaded.
void registerObjMaterialPlan();

/// Reads an MTL file into material groups of `builder`, in the order in which the file defines them. Groups
/// that exist already stay as they are. Returns: false when the file is no regular file or cannot be opened.
bool loadMaterialLibrary(const QString& path, ModelBuilder& builder);

} // namespace Atelier::Vel
