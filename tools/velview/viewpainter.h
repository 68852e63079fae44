#pragma once

#include <memory>

#include <QtCore/QSize>
#include <QtGui/QColor>

#include "camera.h"
#include "pointpainter.h"
#include "surfacemarker.h"
#include "viewmarks.h"
#include "viewoptions.h"

namespace Atelier::Vel::Tool {
class Renderer;
}

namespace Atelier::Vel::Viewer {

class ShownModel;

/// What a frame shows.
struct ViewFrame {
    ShownModel* model = nullptr; ///< null for none; prepared
    Tool::Camera camera;
    QVector3D up;
    ViewOptions options;
    ViewMarks marks;
    QSize size;                ///< in pixels
    bool isSimplified = false; ///< whether the frame has to be fast
    float pixelRatio = 1;
    QColor background;
    QColor lines; ///< the colour of edges and the grid, which differs from the background
};

/// Draws frames. Requires: the context in which it was made, for all functions and the destructor.
class ViewPainter {
public:
    ViewPainter();
    ~ViewPainter();
    ViewPainter(const ViewPainter&) = delete;
    ViewPainter& operator=(const ViewPainter&) = delete;

    /// Draws into the framebuffer of that OpenGL name, and leaves it bound. Waits until OpenGL is done.
    /// Returns: false, and the cause in `error`, if it cannot draw.
    bool paint(const ViewFrame& frame, unsigned int framebuffer, QString& error);

private:
    bool makePainters(const QString& materials, QString& error);
    void makeLines(const ViewFrame& frame);
    void paintMarks(const ViewFrame& frame, const QMatrix4x4& projection);
    void paintOverlay(const ViewFrame& frame, const QMatrix4x4& projection);
    void paintLines(const ViewFrame& frame, const PointBuffer& lines, const QMatrix4x4& projection,
                    PointPainter::Depth depth = PointPainter::Depth::Tested);

    QString _materials; // the layout that the renderer is made for
    std::unique_ptr<Tool::Renderer> _renderer;
    std::unique_ptr<PointPainter> _points;
    std::unique_ptr<SurfaceMarker> _marker;

    // What the lines were made for.
    const void* _linesModel = nullptr;
    QColor _linesColour;
    PointBuffer _grid;
    PointBuffer _box;
    PointBuffer _normals;
    PointBuffer _marks;
    bool _hasNormals = false;
};

} // namespace Atelier::Vel::Viewer
