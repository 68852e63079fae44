#pragma once

#include <memory>
#include <vector>

#include <QtGui/QMatrix4x4>

#include <velgl/gpumodel.h>

#include "camera.h"
#include "literalshading.h"

namespace Atelier::Vel::Testing {

/// A square with its own material. `look` defines its middle, its normal and its plane, in view space.
struct Quad {
    Fragment look;
    double halfSide = 1;
};

/// The view of a model, and the placement of its instances in the world.
struct Placement {
    Tool::Camera camera;
    QMatrix4x4 model;
    QMatrix4x4 normals;
};

/// A model that shows `quads`, drawn in this order, at `placement`.
/// Requires: a current context; matrices that can be inverted.
std::unique_ptr<GPUModel> quadModel(const std::vector<Quad>& quads, const Placement& placement);

/// The depth in the window, from 0 to 1, of a point in view space.
double windowDepth(const QMatrix4x4& projection, const Triple& point);

} // namespace Atelier::Vel::Testing
