#include <epoxy/gl.h>

#include "viewpainter.h"

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>

#include "renderer.h"
#include "shownmodel.h"

namespace Atelier::Vel::Viewer {

namespace {

const QColor kNormalColour(40, 120, 220);
const QColor kSelectionColour(255, 150, 30, 90);
const QColor kSelectionEdges(255, 150, 30, 200);

// All materials of a load have one layout.
QString materialPlan(const GPUModel& model) {
    const bool hasMaterials = model.drawableCount() > 0 && model.materials(0) != nullptr;
    return hasMaterials ? model.materials(0)->name() : QStringLiteral("OBJMaterial");
}

// Whether a costly feature is drawn.
bool shows(const ViewFrame& frame, ViewFeature feature) {
    return frame.options.has(feature) && !frame.isSimplified;
}

QColor withAlpha(QColor colour, int alpha) {
    colour.setAlpha(alpha);
    return colour;
}

} // namespace

ViewPainter::ViewPainter() = default;
ViewPainter::~ViewPainter() = default;

bool ViewPainter::paint(const ViewFrame& frame, unsigned int framebuffer, QString& error) {
    GPUModel* const model = frame.model != nullptr ? &frame.model->gpu() : nullptr;
    if (!makePainters(model != nullptr ? materialPlan(*model) : _materials, error))
        return false;
    makeLines(frame);
    Tool::Scene scene;
    scene.camera = frame.camera;
    scene.size = frame.size;
    scene.background = frame.background;
    scene.ambientOcclusion = shows(frame, ViewFeature::AmbientOcclusion);
    scene.samples = frame.isSimplified || model == nullptr ? 0 : Tool::PictureTarget::kSamples;
    if (frame.model != nullptr)
        scene.passes = frame.model->passes();
    const auto overlay = [&](const QMatrix4x4& projection) { paintOverlay(frame, projection); };
    const bool isPainted = _renderer->present(model, scene, framebuffer, overlay, error);
    glFinish(); // so that the time of the frame is known
    return isPainted;
}

bool ViewPainter::makePainters(const QString& materials, QString& error) {
    if (!_points)
        _points = PointPainter::create(error);
    if (!_marker)
        _marker = SurfaceMarker::create(error);
    if (!_renderer || materials != _materials) {
        _materials = materials.isNull() ? QStringLiteral("OBJMaterial") : materials;
        _renderer = Tool::Renderer::create(error, _materials);
    }
    return _points && _marker && _renderer;
}

void ViewPainter::makeLines(const ViewFrame& frame) {
    const bool isSame = _linesModel == frame.model && _linesColour == frame.lines;
    if (!isSame) {
        _linesModel = frame.model;
        _linesColour = frame.lines;
        _hasNormals = false;
        const ModelBox box = frame.model != nullptr ? frame.model->contents().box : ModelBox();
        _grid.setPoints(box.isValid ? gridLines(box, frame.up, frame.lines) : PointList());
        _box.setPoints(box.isValid ? boxLines(box, frame.lines) : PointList());
    }
    if (frame.options.has(ViewFeature::Normals) && !_hasNormals && frame.model != nullptr) {
        _hasNormals = true;
        _normals.setPoints(normalLines(frame.model->read().data, frame.model->contents().box, kNormalColour));
    }
}

void ViewPainter::paintMarks(const ViewFrame& frame, const QMatrix4x4& projection) {
    if (frame.model == nullptr || frame.marks.isEmpty())
        return;
    const QVector3D size = sizeOf(frame.model->contents().box);
    _marks.setPoints(markLines(frame.marks, size.length()));
    paintLines(frame, _marks, projection, PointPainter::Depth::Ignored);
}

void ViewPainter::paintOverlay(const ViewFrame& frame, const QMatrix4x4& projection) {
    if (frame.model != nullptr && shows(frame, ViewFeature::Edges))
        _marker->draw(frame.model->gpu(), frame.model->filter(), SurfaceMarker::Style::Edges,
                      withAlpha(frame.lines, 150), frame.camera, projection);
    if (frame.model != nullptr && frame.model->hasSelection()) {
        const DrawFilter& selected = frame.model->selection();
        _marker->draw(frame.model->gpu(), selected, SurfaceMarker::Style::Surfaces, kSelectionColour,
                      frame.camera, projection);
        _marker->draw(frame.model->gpu(), selected, SurfaceMarker::Style::Edges, kSelectionEdges,
                      frame.camera, projection);
    }
    if (shows(frame, ViewFeature::Normals))
        paintLines(frame, _normals, projection);
    if (frame.options.has(ViewFeature::Box))
        paintLines(frame, _box, projection);
    if (frame.options.has(ViewFeature::Grid))
        paintLines(frame, _grid, projection);
    paintMarks(frame, projection);
}

void ViewPainter::paintLines(const ViewFrame& frame, const PointBuffer& lines, const QMatrix4x4& projection,
                             PointPainter::Depth depth) {
    _points->draw(lines, PointPainter::Shape::Lines, depth, frame.camera, projection, frame.pixelRatio);
}

} // namespace Atelier::Vel::Viewer
