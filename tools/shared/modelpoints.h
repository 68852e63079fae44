#pragma once

#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velgl/drawfilter.h>
#include <velgl/gpumodel.h>

namespace Atelier::Vel::Tool {

/// The points that a camera has to show: the positions inside the model's bounds, read back from the GPU.
/// Returns: the corners of the bounds if the positions cannot be read.
QVector<QVector3D> pointsInBounds(GPUModel& model);

/// What a camera has to show.
struct ShownPoints {
    GPUModel::Bounds bounds;
    QVector<QVector3D> points; ///< all lie in `bounds`
};

/// The points of the commands that pass `filter`, read back from the GPU. Without a filter, the model's
/// bounds and the points in them.
/// Returns: invalid bounds if there is no finite point.
ShownPoints shownPoints(GPUModel& model, const DrawFilter& filter);

/// The eight corners of a box.
QVector<QVector3D> cornersOf(const GPUModel::Bounds& bounds);

} // namespace Atelier::Vel::Tool
