#pragma once

#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velgl/gpumodel.h>

namespace Atelier::Vel::Tool {

/// The points that a camera has to show: the positions inside the model's bounds, read back from the GPU.
/// Returns: the corners of the bounds if the positions cannot be read.
QVector<QVector3D> pointsInBounds(GPUModel& model);

/// The eight corners of a box.
QVector<QVector3D> cornersOf(const GPUModel::Bounds& bounds);

} // namespace Atelier::Vel::Tool
