#include "modelview.h"

#include <utility>

#include <QtCore/QElapsedTimer>
#include <QtCore/QEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QOpenGLContext>
#include <QtGui/QPainter>
#include <QtGui/QWheelEvent>

#include <velgl/opengldevicecontext.h>

#include "shownmodel.h"
#include "viewlabels.h"
#include "viewpainter.h"

namespace Atelier::Vel::Viewer {

namespace {

// The camera rests when it was not moved for this time. The complete frame follows then.
constexpr int kRestMilliseconds = 150;

} // namespace

ModelView::ModelView(const QString& up, QWidget* parent) : QOpenGLWidget(parent), _camera(up) {
    Tool::CameraOptions above;
    above.up = up;
    above.elevation = 90;
    _up = orientation(above).back;
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(160, 120);
    _rest.setSingleShot(true);
    _rest.setInterval(kRestMilliseconds);
    connect(&_rest, &QTimer::timeout, this, [this] {
        _isMoving = false;
        update();
    });
}

ModelView::~ModelView() {
    releaseOpenGL();
}

void ModelView::showModel(std::shared_ptr<ShownModel> model) {
    replaceModel(std::move(model));
    _camera.setModel(_model ? _model->contents().box : ModelBox());
    Q_EMIT cameraMoved();
}

void ModelView::replaceModel(std::shared_ptr<ShownModel> model) {
    _model = std::move(model);
    if (_model) {
        _model->setTextured(_options.has(ViewFeature::Textures));
        _camera.keepFor(_model->contents().box);
    }
    _marks = {};
    // The first frame has to come soon. Where frames are slow, the complete one follows.
    beginMove();
    update();
}

void ModelView::setFeature(ViewFeature feature, bool isShown) {
    _options.set(feature, isShown);
    if (feature == ViewFeature::Textures && _model)
        _model->setTextured(isShown);
    update();
}

void ModelView::setBackground(Background background) {
    _options.background = background;
    update();
}

void ModelView::resetCamera() {
    _camera.reset();
    moved();
}

void ModelView::showFrom(const QString& view) {
    _camera.show(view);
    moved();
}

void ModelView::setProjection(Projection projection) {
    _camera.setProjection(projection);
    moved();
}

void ModelView::frameBox(const ModelBox& box) {
    _camera.frame(box);
    moved();
}

void ModelView::setMarks(const ViewMarks& marks) {
    _marks = marks;
    update();
}

void ModelView::refresh() {
    update();
}

QColor ModelView::backgroundColour() const {
    switch (_options.background) {
    case Background::Light:
        return {245, 246, 248};
    case Background::Dark:
        return {52, 56, 62};
    case Background::Black:
        return Qt::black;
    default:
        return palette().color(QPalette::Window).lightnessF() > 0.5 ? QColor(218, 222, 227)
                                                                    : QColor(38, 41, 46);
    }
}

void ModelView::initializeGL() {
    _hasFailed = false;
    if (!OpenGLDeviceContext::current()) {
        _hasFailed = true;
        Q_EMIT contextFailed(tr("OpenGL 4.3 or later is needed; this display offers none."));
        return;
    }
    _painter = std::make_unique<ViewPainter>();
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &ModelView::releaseOpenGL,
            Qt::DirectConnection);
}

// The framebuffers belong to the context. The window may get another context when it moves.
void ModelView::releaseOpenGL() {
    if (!_painter)
        return;
    disconnect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &ModelView::releaseOpenGL);
    makeCurrent();
    _painter.reset();
    doneCurrent();
}

void ModelView::resizeGL(int width, int height) {
    _camera.setWindow(QSizeF(width, height));
}

void ModelView::paintGL() {
    if (_hasFailed || !_painter)
        return;
    QElapsedTimer timer;
    timer.start();
    paintModel();
    if (!_isMoving || _frameMilliseconds == 0)
        _frameMilliseconds = double(timer.nsecsElapsed()) * 1e-6;
    paintLabels();
    ++_frames;
    Q_EMIT frameDrawn();
}

void ModelView::paintModel() {
    if (_model && _model->prepare())
        update();
    ViewFrame frame;
    frame.model = _model.get();
    frame.camera = _camera.camera();
    frame.up = _up;
    frame.options = _options;
    frame.marks = _marks;
    frame.isSimplified = isSimplified();
    frame.pixelRatio = float(devicePixelRatioF());
    frame.size = QSize(qRound(width() * devicePixelRatioF()), qRound(height() * devicePixelRatioF()));
    frame.background = backgroundColour();
    frame.lines = contrastingColour(frame.background);
    QString error;
    if (_painter->paint(frame, defaultFramebufferObject(), error))
        return;
    _hasFailed = true;
    Q_EMIT paintFailed(tr("OpenGL cannot draw: %1").arg(error));
}

void ModelView::paintLabels() {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (_options.has(ViewFeature::Axes))
        paintAxes(painter, _camera, size());
    QVector<MarkLabel> labels = distanceLabels(_marks);
    if (_model && _options.has(ViewFeature::Box))
        labels += sizeLabels(_model->contents().box);
    for (const MarkLabel& label : labels)
        if (const QPointF at = _camera.windowPoint(label.at); !at.isNull())
            paintLabel(painter, label.text, at);
    if (!_model)
        paintHint(painter, tr("Open an OBJ file with Ctrl+O, or drop one here."),
                  contrastingColour(backgroundColour()), rect());
}

bool ModelView::isSimplified() const {
    return _isMoving && _frameMilliseconds > kMaxMovingMilliseconds;
}

void ModelView::beginMove() {
    _isMoving = true;
    _rest.start();
}

void ModelView::moved() {
    Q_EMIT cameraMoved();
    update();
}

void ModelView::mousePressEvent(QMouseEvent* event) {
    if (_dragging.action() == DragAction::None)
        _dragging.press(event->button(), event->modifiers(), event->localPos());
}

void ModelView::mouseMoveEvent(QMouseEvent* event) {
    if (_dragging.action() != DragAction::None)
        drag(event->localPos());
}

void ModelView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != _dragging.button())
        return;
    if (_dragging.isClick() && _dragging.action() == DragAction::Orbit)
        Q_EMIT clicked(hitAt(_dragging.start()));
    _dragging.release();
}

void ModelView::mouseDoubleClickEvent(QMouseEvent* event) {
    const std::optional<PickHit> hit = hitAt(event->localPos());
    if (event->button() != Qt::LeftButton || !hit)
        return;
    _camera.centreOn(hit->point);
    moved();
}

std::optional<PickHit> ModelView::hitAt(const QPointF& at) const {
    return _model ? _model->pick(_camera.rayAt(at)) : std::nullopt;
}

void ModelView::drag(const QPointF& to) {
    const QPointF from = _dragging.moveTo(to);
    if (_dragging.isClick())
        return;
    if (_dragging.action() == DragAction::Orbit)
        _camera.orbit(from, to);
    else if (_dragging.action() == DragAction::Pan)
        _camera.pan(from, to);
    else
        _camera.zoom(dragZoom(to.y() - from.y()), _dragging.start());
    beginMove();
    moved();
}

void ModelView::wheelEvent(QWheelEvent* event) {
    const double factor = event->pixelDelta().isNull() ? wheelZoom(event->angleDelta().y())
                                                       : scrollZoom(event->pixelDelta().y());
    _camera.zoom(factor, event->position());
    beginMove();
    moved();
    event->accept();
}

void ModelView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange)
        update();
    QOpenGLWidget::changeEvent(event);
}

} // namespace Atelier::Vel::Viewer
