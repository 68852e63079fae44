#pragma once

#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velgl/gpumodel.h>

namespace Atelier::Vel::Tool {

/// The positions inside the model's bounds, read back from the GPU: what a camera has to have in view. The
/// corners of the bounds when the positions cannot be read.
QVector<QVector3D> pointsInBounds(GPUModel& model);

/// The eight corners of a box.
QVector<QVector3D> cornersOf(const GPUModel::Bounds& bounds);

} // namespace Atelier::Vel::Tool
