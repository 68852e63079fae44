#pragma once

#include <memory>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include "camera.h"
#include "surfacepasses.h"

namespace Atelier::Vel {
class Program;
}

namespace Atelier::Vel::Tool {

class PictureTarget;

/// The camera and the look of a picture.
struct Scene {
    Camera camera;
    QSize size;
    QColor background; ///< invalid for none
    bool wireframe = false;
    SurfacePasses passes = {};
};

/// Draws models into pictures, lit from the camera.
class Renderer {
public:
    /// Requires: a current context. Returns: null, and the cause in `error`, if it cannot draw.
    static std::unique_ptr<Renderer> create(QString& error,
                                            const QString& materials = QStringLiteral("OBJMaterial"));
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// The picture; null, and the cause in `error`, if there is not enough memory for it.
    QImage render(GPUModel& model, const Scene& scene, QString& error);

    /// Whether the model covered any part of the last picture.
    bool hasDrawn() const { return _hasDrawn; }

private:
    enum class Pass { Opaque, Transparent };

    Renderer();
    // The target for tiles of that size; null if there is not enough memory.
    PictureTarget* targetOf(QSize size, QString& error);
    void draw(GPUModel& model, const Scene& scene, QRect tile, Pass pass);

    std::unique_ptr<Program> _program;
    std::unique_ptr<PictureTarget> _target; // of the last tile; most tiles have the same size
    bool _hasDrawn = false;
};

} // namespace Atelier::Vel::Tool
