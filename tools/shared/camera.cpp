#include "camera.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QtCore/QtMath>

namespace Atelier::Vel::Tool {

namespace {

constexpr double kFieldOfView = 30;
// The picture is this much larger than the model, so that the model does not touch its borders.
constexpr double kMargin = 1.04;

struct UpDirection {
    const char* name;
    QVector3D up;
    QVector3D front; // towards the camera at azimuth 0
};

const UpDirection* upDirection(const QString& name) {
    static const UpDirection kDirections[] = {
        {"+X", {1, 0, 0}, {0, 0, 1}},  {"-X", {-1, 0, 0}, {0, 0, 1}}, {"+Y", {0, 1, 0}, {0, 0, 1}},
        {"-Y", {0, -1, 0}, {0, 0, 1}}, {"+Z", {0, 0, 1}, {0, -1, 0}}, {"-Z", {0, 0, -1}, {0, -1, 0}},
    };
    for (const UpDirection& direction : kDirections)
        if (name == QLatin1String(direction.name))
            return &direction;
    return &kDirections[2];
}

struct View {
    const char* name;
    double azimuth;
    double elevation;
};

// The elevation of the diagonal of a cube: its tangent is 1 / sqrt(2).
constexpr double kDiagonalElevation = 35.264389682754654;

constexpr View kViews[] = {
    {"front", 0, 0},
    {"back", 180, 0},
    {"left", -90, 0},
    {"right", 90, 0},
    {"top", 0, 90},
    {"bottom", 0, -90},
    {"iso", 45, kDiagonalElevation},
};

double tangentOfHalfField() {
    return std::tan(qDegreesToRadians(kFieldOfView / 2));
}

// The distance of the corners of the cube from its centre.
const double kCubeRadius = std::sqrt(3.0);

// At this distance the whole cube is in view in every orientation.
double viewingDistance() {
    return kCubeRadius / std::sin(qDegreesToRadians(kFieldOfView / 2));
}

QMatrix4x4 viewMatrix(const Orientation& camera) {
    const QVector3D& r = camera.right;
    const QVector3D& u = camera.up;
    const QVector3D& b = camera.back;
    return {r.x(), r.y(), r.z(), 0, u.x(), u.y(), u.z(), 0, b.x(), b.y(), b.z(), -float(viewingDistance()),
            0,     0,     0,     1};
}

QMatrix4x4 projectionMatrix(Projection kind, double aspect) {
    const double nearest = viewingDistance() - kCubeRadius;
    const double farthest = viewingDistance() + kCubeRadius;
    const bool isParallel = kind == Projection::Orthographic;
    const double top = isParallel ? kCubeRadius : nearest * tangentOfHalfField();
    QMatrix4x4 projection;
    if (isParallel)
        projection.ortho(float(-top * aspect), float(top * aspect), float(-top), float(top), float(nearest),
                         float(farthest));
    else
        projection.frustum(float(-top * aspect), float(top * aspect), float(-top), float(top), float(nearest),
                           float(farthest));
    return projection;
}

// The rectangle around the points, as all cameras project them.
class Extent {
public:
    void include(const Camera& camera, const QVector<QVector3D>& points) {
        const QMatrix4x4 seen = camera.projection * camera.view;
        for (const QVector3D& point : points) {
            const QVector3D place = seen.map((point - camera.centre) * camera.scale);
            for (int axis = 0; axis < 2; ++axis) {
                _low[axis] = std::min(_low[axis], place[axis]);
                _high[axis] = std::max(_high[axis], place[axis]);
            }
        }
    }

    /// Moves and enlarges a picture so that the extent fills it.
    QMatrix4x4 crop(double zoom) const {
        const float half = std::max(_high[0] - _low[0], _high[1] - _low[1]) / 2;
        const float factor = half > 0 ? float(zoom / (double(half) * kMargin)) : float(zoom);
        QMatrix4x4 result;
        result.scale(factor, factor, 1);
        result.translate(-(_low[0] + _high[0]) / 2, -(_low[1] + _high[1]) / 2);
        return result;
    }

private:
    float _low[2] = {std::numeric_limits<float>::max(), std::numeric_limits<float>::max()};
    float _high[2] = {std::numeric_limits<float>::lowest(), std::numeric_limits<float>::lowest()};
};

} // namespace

QStringList upDirections() {
    return {QStringLiteral("+X"), QStringLiteral("-X"), QStringLiteral("+Y"),
            QStringLiteral("-Y"), QStringLiteral("+Z"), QStringLiteral("-Z")};
}

QStringList viewNames() {
    QStringList names;
    for (const View& view : kViews)
        names.append(QLatin1String(view.name));
    return names;
}

void turnTo(const QString& view, CameraOptions& options) {
    for (const View& known : kViews)
        if (view == QLatin1String(known.name)) {
            options.azimuth = known.azimuth;
            options.elevation = known.elevation;
        }
}

Orientation orientation(const CameraOptions& options) {
    const UpDirection& axes = *upDirection(options.up);
    const QVector3D side = QVector3D::crossProduct(axes.up, axes.front);
    const double azimuth = qDegreesToRadians(options.azimuth);
    const double elevation = qDegreesToRadians(options.elevation);
    const QVector3D level = axes.front * float(std::cos(azimuth)) + side * float(std::sin(azimuth));
    Orientation result;
    result.back = level * float(std::cos(elevation)) + axes.up * float(std::sin(elevation));
    result.right = QVector3D::crossProduct(axes.up, level);
    result.up = QVector3D::crossProduct(result.back, result.right);
    return result;
}

QVector<Camera> framingCameras(const GPUModel::Bounds& bounds, const QVector<QVector3D>& points,
                               const CameraOptions& options, const QVector<double>& azimuths, QSize size) {
    // Halved before they are added: the sum of two large floats may overflow.
    const QVector3D half = bounds.maximum * 0.5F - bounds.minimum * 0.5F;
    const float largest = std::max({half.x(), half.y(), half.z()});
    const float scale = largest > 0 ? 1 / largest : 1;
    const QMatrix4x4 projection =
        projectionMatrix(options.projection, double(size.width()) / double(size.height()));

    QVector<Camera> cameras;
    Extent extent;
    for (const double azimuth : azimuths) {
        CameraOptions turned = options;
        turned.azimuth = azimuth;
        cameras.append({bounds.minimum * 0.5F + bounds.maximum * 0.5F, scale, viewMatrix(orientation(turned)),
                        projection});
        extent.include(cameras.last(), points);
    }
    for (Camera& camera : cameras)
        camera.projection = extent.crop(options.zoom) * camera.projection;
    return cameras;
}

QMatrix4x4 tileProjection(const QMatrix4x4& projection, QSize size, QRect tile) {
    const double scaleX = double(size.width()) / tile.width();
    const double scaleY = double(size.height()) / tile.height();
    const double middleX = (2.0 * tile.x() + tile.width()) / size.width() - 1;
    const double middleY = (2.0 * tile.y() + tile.height()) / size.height() - 1;
    QMatrix4x4 window;
    window.translate(float(-middleX * scaleX), float(-middleY * scaleY));
    window.scale(float(scaleX), float(scaleY));
    return window * projection;
}

} // namespace Atelier::Vel::Tool
