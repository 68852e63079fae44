#pragma once

#include <memory>
#include <optional>

#include <QtCore/QTimer>
#include <QtWidgets/QOpenGLWidget>

#include "dragging.h"
#include "viewcamera.h"
#include "viewmarks.h"
#include "viewoptions.h"

namespace Atelier::Vel::Viewer {

class ShownModel;
class ViewPainter;

/// Shows a model and lets the user move the camera around it.
class ModelView : public QOpenGLWidget {
    Q_OBJECT
public:
    /// After a frame that took longer, frames have no edges, normals and ambient occlusion, and steps at
    /// their borders while the camera moves.
    static constexpr double kMaxMovingMilliseconds = 30;

    explicit ModelView(const QString& up, QWidget* parent = nullptr);
    ~ModelView() override;

    /// Shows another model; null for none. The camera looks at all of it.
    void showModel(std::shared_ptr<ShownModel> model);
    /// Shows a new version of the model. The camera stays where it is.
    void replaceModel(std::shared_ptr<ShownModel> model);
    const std::shared_ptr<ShownModel>& model() const { return _model; }

    const ViewOptions& options() const { return _options; }
    void setFeature(ViewFeature feature, bool isShown);
    void setBackground(Background background);

    const ViewCamera& camera() const { return _camera; }
    void resetCamera();
    /// From the direction of one of Tool::viewNames().
    void showFrom(const QString& view);
    void setProjection(Projection projection);
    void frameBox(const ModelBox& box);

    const ViewMarks& marks() const { return _marks; }
    void setMarks(const ViewMarks& marks);

    /// The visible surface at a point of the view.
    std::optional<PickHit> hitAt(const QPointF& at) const;

    /// Draws again what has changed in the model, such as the visible parts.
    void refresh();
    /// Milliseconds that the last complete frame took; 0 before the first one.
    double frameMilliseconds() const { return _frameMilliseconds; }
    /// Whether the camera was moved, or the model changed, a moment ago, so that frames may be simplified.
    bool isMoving() const { return _isMoving; }
    /// The number of frames that were drawn.
    int frameCount() const { return _frames; }
    QColor backgroundColour() const;

Q_SIGNALS:
    void cameraMoved();
    /// The user has clicked on the model, or beside it.
    void clicked(const std::optional<PickHit>& hit);
    void frameDrawn();
    /// There is no usable context.
    void contextFailed(const QString& error);
    /// OpenGL cannot draw a frame, for example for lack of memory.
    void paintFailed(const QString& error);

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void releaseOpenGL();
    void paintModel();
    void paintLabels();
    bool isSimplified() const;
    void beginMove();
    void moved();
    void drag(const QPointF& to);

    ViewCamera _camera;
    QVector3D _up;
    ViewOptions _options;
    ViewMarks _marks;
    std::shared_ptr<ShownModel> _model;
    std::unique_ptr<ViewPainter> _painter;
    Dragging _dragging;
    QTimer _rest;
    bool _isMoving = false;
    bool _hasFailed = false;
    double _frameMilliseconds = 0;
    int _frames = 0;
};

} // namespace Atelier::Vel::Viewer
