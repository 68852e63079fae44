#pragma once

#include <velgl/gpumodel.h>

#include "drawing/modeldrawable.h"

namespace Atelier::Vel {

/// The box around all finite positions that the drawables' commands reach in the stream `attribute`.
GPUModel::Bounds boundsOf(const ModelDrawables& drawables, const QString& attribute);

} // namespace Atelier::Vel
