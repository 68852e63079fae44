#pragma once

#include <memory>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include "camera.h"

namespace Atelier::Vel {
class Program;
}

namespace Atelier::Vel::Tool {

class PictureTarget;

/// What a picture shows besides the model.
struct Scene {
    Camera camera;
    QSize size;
    QColor background; ///< invalid for none
    bool wireframe = false;
};

/// Draws models into pictures, with a light over the camera's shoulder.
class Renderer {
public:
    /// Requires: a current context. Returns: null, and the cause in `error`, when it cannot draw.
    static std::unique_ptr<Renderer> create(QString& error);
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// The picture; null, and the cause in `error`, when the context has no room for it.
    QImage render(GPUModel& model, const Scene& scene, QString& error);

    /// Whether the model covered any part of the last picture.
    bool hasDrawn() const { return _hasDrawn; }

private:
    Renderer();
    // The target for tiles of that size; null when there is no room.
    PictureTarget* targetOf(QSize size, QString& error);
    void drawModel(GPUModel& model, const Scene& scene, QRect tile, bool isTransparentPass);

    std::unique_ptr<Program> _program;
    std::unique_ptr<PictureTarget> _target; // of the last tile; frames and most tiles are alike
    bool _hasDrawn = false;
};

} // namespace Atelier::Vel::Tool
