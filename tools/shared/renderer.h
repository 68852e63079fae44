#pragma once

#include <functional>
#include <memory>

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include "brightness.h"
#include "camera.h"
#include "picturetarget.h"
#include "shaders.h"
#include "surfacepasses.h"

namespace Atelier::Vel {
class Program;
}

namespace Atelier::Vel::Tool {

class Occlusion;

/// The camera and the look of a picture.
struct Scene {
    Camera camera;
    QSize size;
    QColor background; ///< invalid for none
    bool wireframe = false;
    SurfacePasses passes = {};
    MaterialColours colours = MaterialColours::SRgb;
    double exposure = 0;           ///< in stops: each doubles the light
    bool ambientOcclusion = false; ///< ignored in wireframes
    /// A picture is drawn in tiles of up to this side, which limits its GPU memory. Tiles of 2048 take about
    /// 200 bytes for each pixel with eight samples: 850 MB, and 100 MB more with ambient occlusion.
    int tileSide = 2048;
    /// Samples of each pixel, or the maximum of the driver if that is less; 0 for edges with steps.
    int samples = PictureTarget::kSamples;
};

/// Gets the number of tiles of a picture that are drawn, and the number of all its tiles.
using DrawingProgress = std::function<void(int done, int total)>;

/// Draws models into pictures, lit from the camera.
class Renderer {
public:
    /// Requires: a current context. Returns: null, and the cause in `error`, if it cannot draw.
    static std::unique_ptr<Renderer> create(QString& error,
                                            const QString& materials = QStringLiteral("OBJMaterial"));
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// Calls `progress`, if there is one, after each tile.
    /// Returns: the picture; null, and the cause in `error`, if there is not enough memory for it.
    QImage render(GPUModel& model, const Scene& scene, QString& error, const DrawingProgress& progress = {});

    /// Draws something else after the opaque surfaces, with the projection of a tile.
    using Overlay = std::function<void(const QMatrix4x4& projection)>;

    /// Draws into the framebuffer of that OpenGL name, from its lower left corner. `model` may be null.
    /// Returns: false, and the cause in `error`, if there is not enough memory.
    bool present(GPUModel* model, const Scene& scene, unsigned int framebuffer, const Overlay& overlay,
                 QString& error);

    /// Whether the model covered any part of the last picture.
    bool hasDrawn() const { return _hasDrawn; }
    /// How dark the model is in the last picture.
    const Brightness& brightness() const { return _brightness; }

private:
    enum class Pass { Depth, Opaque, Transparent };

    Renderer();
    // The target for tiles of that size; null if there is not enough memory.
    PictureTarget* targetOf(QSize size, int samples, QString& error);
    // The ambient occlusion of that scene; null if there is not enough memory.
    Occlusion* occlusionOf(const Scene& scene, QString& error);
    bool computeOcclusion(GPUModel& model, const Scene& scene, QRect tile, QString& error);
    bool drawTile(GPUModel& model, const Scene& scene, QRect tile, QImage& picture, QString& error);
    void draw(GPUModel& model, const Scene& scene, QRect tile, Pass pass);
    void setLook(const Scene& scene, Pass pass);

    QString _materials; // the plan of the materials
    std::unique_ptr<Program> _program;
    std::unique_ptr<Program> _depthProgram; // made when it is first used
    std::unique_ptr<Occlusion> _occlusion;  // of the last picture that has it
    std::unique_ptr<PictureTarget> _target; // of the last tile; most tiles have the same size
    bool _hasDrawn = false;
    Brightness _brightness;
};

} // namespace Atelier::Vel::Tool
