#pragma once

#include <memory>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QMatrix4x4>

#include <velgl/drawfilter.h>

#include "camera.h"

namespace Atelier::Vel {
class GPUModel;
class Program;
} // namespace Atelier::Vel

namespace Atelier::Vel::Viewer {

/// Draws commands of a model once more in one colour, over what is there: the edges of their triangles, or
/// their surfaces.
class SurfaceMarker {
public:
    enum class Style { Edges, Surfaces };

    /// Requires: a current context. Returns: null, and the cause in `error`, if it cannot draw.
    static std::unique_ptr<SurfaceMarker> create(QString& error);
    ~SurfaceMarker();
    SurfaceMarker(const SurfaceMarker&) = delete;
    SurfaceMarker& operator=(const SurfaceMarker&) = delete;

    void draw(GPUModel& model, const DrawFilter& filter, Style style, const QColor& colour,
              const Tool::Camera& camera, const QMatrix4x4& projection);

private:
    SurfaceMarker() = default;

    std::unique_ptr<Program> _program;
};

} // namespace Atelier::Vel::Viewer
