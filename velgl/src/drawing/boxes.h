#pragma once

#include <algorithm>
#include <cmath>

#include <velgl/gpumodel.h>

namespace Atelier::Vel {

inline bool isFinite(const QVector3D& position) {
    return std::isfinite(position.x()) && std::isfinite(position.y()) && std::isfinite(position.z());
}

/// Makes `bounds` the box around both boxes.
inline void include(GPUModel::Bounds& bounds, const GPUModel::Bounds& box) {
    if (!box.isValid)
        return;
    if (!bounds.isValid)
        bounds = box;
    for (int i = 0; i < 3; ++i) {
        bounds.minimum[i] = std::min(bounds.minimum[i], box.minimum[i]);
        bounds.maximum[i] = std::max(bounds.maximum[i], box.maximum[i]);
    }
}

/// Makes `bounds` the box around itself and a position, unless that is not finite.
inline void include(GPUModel::Bounds& bounds, const QVector3D& position) {
    if (isFinite(position))
        include(bounds, {position, position, true});
}

} // namespace Atelier::Vel
