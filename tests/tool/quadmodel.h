#pragma once

#include <memory>
#include <vector>

#include <QtGui/QMatrix4x4>

#include <velgl/gpumodel.h>

#include "camera.h"
#include "literalshading.h"

namespace Atelier::Vel::Testing {

/// A square with a material of its own. Its middle, its normal and the plane that it lies in are those of
/// `look`, in view space.
struct Quad {
    Fragment look;
    double halfSide = 1;
};

/// From where a model is seen, and how its instances are placed in the world.
struct Placement {
    Tool::Camera camera;
    QMatrix4x4 model;
    QMatrix4x4 normals;
};

/// A model that shows `quads`, drawn in this order, where `placement` puts it.
/// Requires: a current context; matrices that can be inverted.
std::unique_ptr<GPUModel> quadModel(const std::vector<Quad>& quads, const Placement& placement);

/// The depth in the window, from 0 to 1, of a point in view space.
double windowDepth(const QMatrix4x4& projection, const Triple& point);

} // namespace Atelier::Vel::Testing
