#pragma once

#include <velgl/gpumodel.h>

#include "drawing/modeldrawable.h"

namespace Atelier::Vel {

/// Returns: the box around all finite positions that the drawables' commands draw from the stream
/// `attribute`. The boxes of index ranges are kept in the drawables as long as their buffers have the same
/// content.
GPUModel::Bounds boundsOf(const ModelDrawables& drawables, const QString& attribute);

} // namespace Atelier::Vel
