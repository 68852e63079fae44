#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

class ModelBuilder;
class ModelFiles;

/// Registers the "OBJMaterial" plan; called once, while the library is being loaded.
void registerObjMaterialPlan();

/// Reads an MTL file into material groups of `builder`, in the order in which the file defines them. Groups
/// that exist already stay as they are. A map that is none of `files` is white, after a warning.
/// Returns: false when the file is none of `files` (after a warning), no regular file, or cannot be opened.
bool loadMaterialLibrary(const QString& path, const ModelFiles& files, ModelBuilder& builder);

} // namespace Atelier::Vel
