#pragma once

#include <QtCore/QRect>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtGui/QMatrix4x4>
#include <QtGui/QVector3D>

#include <velgl/gpumodel.h>

namespace Atelier::Vel::Tool {

/// Whether distant things look smaller, or as large as near ones.
enum class Projection { Perspective, Orthographic };

/// The position of the camera. Angles are in degrees.
struct CameraOptions {
    QString up = QStringLiteral("+Y"); ///< one of upDirections()
    double azimuth = 30;   ///< around the up direction, counter-clockwise from above; 0 is the front
    double elevation = 20; ///< above the horizon
    double zoom = 1;       ///< 1 fills the picture with the model, 2 shows it twice as large
    Projection projection = Projection::Perspective;
};

/// The names of the six axes: "+X", "-X", "+Y" and so on.
QStringList upDirections();

/// The names of the usual views: "front", "back", "left", "right", "top", "bottom" and "iso", which is from
/// the right, above the front, at the same angle to all three axes.
QStringList viewNames();

/// Sets azimuth and elevation to those of a view.
/// Requires: `view` is one of viewNames().
void turnTo(const QString& view, CameraOptions& options);

/// The axes of the camera: three unit vectors at right angles. `back` points from the model to the camera.
struct Orientation {
    QVector3D right;
    QVector3D up;
    QVector3D back;
};

Orientation orientation(const CameraOptions& options);

/// The transformations that a picture is drawn with. A position p of the model is first mapped to
/// (p - centre) * scale, which puts any model into a cube from -1 to 1.
struct Camera {
    QVector3D centre;
    float scale = 1;
    QMatrix4x4 view;
    QMatrix4x4 projection;
};

/// Makes cameras that show all of `points` in a picture of `size` and fill it with them. All of them share
/// the distance and the framing, so that a model on a turntable keeps its size and place.
/// Requires: `bounds` holds all points.
/// Returns:  one camera per entry of `azimuths`; `options.azimuth` is ignored.
QVector<Camera> framingCameras(const GPUModel::Bounds& bounds, const QVector<QVector3D>& points,
                               const CameraOptions& options, const QVector<double>& azimuths, QSize size);

/// The projection of one tile of a picture of `size`. `tile` is in pixels from the lower left.
QMatrix4x4 tileProjection(const QMatrix4x4& projection, QSize size, QRect tile);

} // namespace Atelier::Vel::Tool
