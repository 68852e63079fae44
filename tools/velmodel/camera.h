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

/// From where a picture is taken. Angles are in degrees.
struct CameraOptions {
    QString up = QStringLiteral("+Y"); ///< one of upDirections()
    double azimuth = 30;   ///< around the up direction, counter-clockwise seen from above; 0 is the front
    double elevation = 20; ///< above the horizon
    double zoom = 1;       ///< 1 fills the picture with the model, 2 shows it twice as large
};

/// The words for the six axes: "+X", "-X", "+Y" and so on.
QStringList upDirections();

/// Where the camera stands: three unit vectors at right angles. `back` points from the model to the camera.
struct Orientation {
    QVector3D right;
    QVector3D up;
    QVector3D back;
};

Orientation orientation(const CameraOptions& options);

/// What a picture is drawn with. Positions p of the model go through (p - centre) * scale first, which puts
/// the model into a cube from -1 to 1, wherever and however large it is.
struct Camera {
    QVector3D centre;
    float scale = 1;
    QMatrix4x4 view;
    QMatrix4x4 projection;
};

/// Cameras that have all of `points` in a picture of `size` and fill it with them, one per azimuth; for a
/// turntable, the points keep their size and place. Requires: `bounds` holds all points.
/// Returns: one camera per entry of `azimuths`; `options.azimuth` is not looked at.
QVector<Camera> framingCameras(const GPUModel::Bounds& bounds, const QVector<QVector3D>& points,
                               const CameraOptions& options, const QVector<double>& azimuths, QSize size);

/// The part of a projection for a picture of `size` that `tile` (in pixels from the lower left) shows.
QMatrix4x4 tileProjection(const QMatrix4x4& projection, QSize size, QRect tile);

} // namespace Atelier::Vel::Tool
