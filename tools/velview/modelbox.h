#pragma once

#include <velmodel/drawdata.h>

namespace Atelier::Vel::Viewer {

/// A box in the units of the model.
using ModelBox = DrawData::Box;

/// The box around both; that of the other one if one is not valid.
ModelBox united(const ModelBox& one, const ModelBox& other);
QVector3D centreOf(const ModelBox& box);
QVector3D sizeOf(const ModelBox& box);

} // namespace Atelier::Vel::Viewer
