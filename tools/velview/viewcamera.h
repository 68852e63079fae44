#pragma once

#include <QtCore/QPointF>
#include <QtCore/QSizeF>
#include <QtCore/QString>
#include <QtGui/QVector3D>

#include <velmodel/picking.h>

#include "camera.h"
#include "modelbox.h"

namespace Atelier::Vel::Viewer {

using Tool::Projection;

/// The camera that a user moves. It looks at a target point, from a distance and a direction that has an
/// azimuth and an elevation. Points of the window are in logical pixels from its upper left corner.
///
/// Internally, the box of the model is scaled to a cube from -1 to 1, so that models of any size have the
/// same precision.
class ViewCamera {
public:
    explicit ViewCamera(const QString& up = QStringLiteral("+Y"));

    /// Sets the box that the cube is scaled to. The position and direction are reset.
    void setModel(const ModelBox& box);
    /// The same box scale as before where the model stays about the same: the camera stays where it is.
    void keepFor(const ModelBox& box);
    /// The size of the window, in logical pixels.
    void setWindow(const QSizeF& size);

    /// Looks at the whole model from the first direction.
    void reset();
    /// Looks at the whole model from the direction of one of Tool::viewNames().
    void show(const QString& view);
    /// Looks at a box from the present direction, so that it fills the window.
    void frame(const ModelBox& box);
    /// Moves the target to a point, without turning.
    void centreOn(const QVector3D& point);

    /// Turns around the target. A whole window height is half a turn.
    void orbit(const QPointF& from, const QPointF& to);
    /// Moves the target, so that what was at `from` in the plane of the target is at `to`.
    void pan(const QPointF& from, const QPointF& to);
    /// Enlarges by `factor`. What is at `at` in the plane of the target stays there.
    void zoom(double factor, const QPointF& at);

    void setProjection(Projection projection) { _options.projection = projection; }
    Projection projection() const { return _options.projection; }

    double azimuth() const { return _options.azimuth; }
    double elevation() const { return _options.elevation; }
    QVector3D target() const;
    /// The height of the visible part of the plane of the target, in the units of the model.
    double visibleHeight() const;

    /// The transformations that a picture of the window is drawn with.
    Tool::Camera camera() const;
    /// The ray through a point of the window, in the units of the model.
    PickRay rayAt(const QPointF& at) const;
    /// The point of the window at which a point of the model is drawn. Null if it is behind the camera.
    QPointF windowPoint(const QVector3D& point) const;

private:
    double halfHeight() const; // of the visible part of the plane of the target
    double aspect() const;
    // The offset of a point of the window from the middle, in the plane of the target.
    QVector3D offsetAt(const QPointF& at) const;
    QMatrix4x4 viewMatrix() const;
    QMatrix4x4 projectionMatrix() const;

    Tool::CameraOptions _options;
    QSizeF _window{1, 1};
    ModelBox _box;
    QVector3D _centre; // of the cube, in the units of the model
    float _scale = 1;  // from the units of the model to those of the cube
    QVector3D _target; // in the cube, as the distance
    double _distance = 1;
};

} // namespace Atelier::Vel::Viewer
