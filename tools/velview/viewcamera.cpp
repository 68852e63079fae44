#include "viewcamera.h"

#include <algorithm>
#include <cmath>

#include <QtCore/QtMath>

#include "modelpoints.h"

namespace Atelier::Vel::Viewer {

namespace {

constexpr double kFieldOfView = 30; // in degrees, of the height of the window
// A framed box leaves this much of the window free.
constexpr double kMargin = 1.08;
// All that is drawn lies within this distance of the middle of the cube, the grid included.
constexpr double kSceneRadius = 4;
constexpr double kMinDistance = 1e-4;
constexpr double kMaxDistance = 1e3;

double tangentOfHalfField() {
    return std::tan(qDegreesToRadians(kFieldOfView / 2));
}

QVector<QVector3D> cornersOf(const ModelBox& box) {
    return Tool::cornersOf({box.minimum, box.maximum, box.isValid});
}

} // namespace

ViewCamera::ViewCamera(const QString& up) {
    _options.up = up;
}

void ViewCamera::setModel(const ModelBox& box) {
    _box = box;
    const QVector3D half = sizeOf(box) * 0.5F;
    const float largest = std::max({half.x(), half.y(), half.z()});
    _centre = centreOf(box);
    _scale = largest > 0 && std::isfinite(largest) ? 1 / largest : 1;
    reset();
}

void ViewCamera::keepFor(const ModelBox& box) {
    _box = box;
}

void ViewCamera::setWindow(const QSizeF& size) {
    _window = size.expandedTo({1, 1});
}

void ViewCamera::reset() {
    _options.azimuth = Tool::CameraOptions().azimuth;
    _options.elevation = Tool::CameraOptions().elevation;
    frame(_box);
}

void ViewCamera::show(const QString& view) {
    Tool::turnTo(view, _options);
    frame(_box);
}

void ViewCamera::frame(const ModelBox& box) {
    if (!box.isValid)
        return;
    _target = (centreOf(box) - _centre) * _scale;
    const Tool::Orientation axes = orientation(_options);
    const double tangent = tangentOfHalfField();
    // In the orthographic view, what is nearer is not larger.
    const double nearer = projection() == Projection::Perspective ? 1 : 0;
    double distance = 0;
    for (const QVector3D& corner : cornersOf(box)) {
        const QVector3D offset = (corner - _centre) * _scale - _target;
        const double x = std::abs(QVector3D::dotProduct(offset, axes.right));
        const double y = std::abs(QVector3D::dotProduct(offset, axes.up));
        const double z = QVector3D::dotProduct(offset, axes.back);
        distance = std::max(distance, kMargin * std::max(y, x / aspect()) / tangent + nearer * z);
    }
    _distance = std::clamp(distance > 0 ? distance : 1, kMinDistance, kMaxDistance);
}

void ViewCamera::centreOn(const QVector3D& point) {
    _target = (point - _centre) * _scale;
}

void ViewCamera::orbit(const QPointF& from, const QPointF& to) {
    const QPointF degrees = (to - from) * (180 / _window.height());
    _options.azimuth = std::fmod(_options.azimuth - degrees.x(), 360);
    _options.elevation = std::clamp(_options.elevation + degrees.y(), -90.0, 90.0);
}

void ViewCamera::pan(const QPointF& from, const QPointF& to) {
    _target -= offsetAt(to) - offsetAt(from);
}

void ViewCamera::zoom(double factor, const QPointF& at) {
    const QVector3D before = offsetAt(at);
    _distance = std::clamp(_distance / factor, kMinDistance, kMaxDistance);
    _target += before - offsetAt(at);
}

QVector3D ViewCamera::target() const {
    return _centre + _target / _scale;
}

double ViewCamera::visibleHeight() const {
    return 2 * halfHeight() / double(_scale);
}

Tool::Camera ViewCamera::camera() const {
    return {_centre, _scale, viewMatrix(), projectionMatrix()};
}

PickRay ViewCamera::rayAt(const QPointF& at) const {
    const Tool::Orientation axes = orientation(_options);
    const QVector3D onPlane = _target + offsetAt(at);
    const QVector3D eye = _target + axes.back * float(_distance);
    // Orthographic rays are parallel. They start outside of all that is drawn.
    const bool isPerspective = projection() == Projection::Perspective;
    const QVector3D origin =
        isPerspective ? eye : onPlane + axes.back * float(kSceneRadius + _target.length());
    return {_centre + origin / _scale, (onPlane - origin) / _scale};
}

QPointF ViewCamera::windowPoint(const QVector3D& point) const {
    const QVector4D seen = projectionMatrix() * (viewMatrix() * QVector4D((point - _centre) * _scale, 1));
    if (seen.w() <= 0)
        return {};
    return {(1 + double(seen.x() / seen.w())) / 2 * _window.width(),
            (1 - double(seen.y() / seen.w())) / 2 * _window.height()};
}

double ViewCamera::halfHeight() const {
    return _distance * tangentOfHalfField();
}

double ViewCamera::aspect() const {
    return _window.width() / _window.height();
}

QVector3D ViewCamera::offsetAt(const QPointF& at) const {
    const Tool::Orientation axes = orientation(_options);
    const double perPixel = 2 * halfHeight() / _window.height();
    return axes.right * float((at.x() - _window.width() / 2) * perPixel) +
           axes.up * float((_window.height() / 2 - at.y()) * perPixel);
}

QMatrix4x4 ViewCamera::viewMatrix() const {
    const Tool::Orientation axes = orientation(_options);
    const QVector3D& r = axes.right;
    const QVector3D& u = axes.up;
    const QVector3D& b = axes.back;
    const QMatrix4x4 turn(r.x(), r.y(), r.z(), 0, u.x(), u.y(), u.z(), 0, b.x(), b.y(), b.z(), 0, 0, 0, 0, 1);
    QMatrix4x4 view;
    view.translate(0, 0, -float(_distance));
    view *= turn;
    view.translate(-_target);
    return view;
}

QMatrix4x4 ViewCamera::projectionMatrix() const {
    const double half = halfHeight();
    // The middle of the cube is this far in front of the eye.
    const double middle = _distance + QVector3D::dotProduct(_target, orientation(_options).back);
    QMatrix4x4 matrix;
    if (projection() == Projection::Orthographic) {
        matrix.ortho(-float(half * aspect()), float(half * aspect()), -float(half), float(half),
                     float(middle - kSceneRadius), float(middle + kSceneRadius));
        return matrix;
    }
    const double nearest = std::max(middle - kSceneRadius, 0.01 * _distance);
    const double furthest = std::max(middle + kSceneRadius, 2 * nearest);
    const double top = nearest * tangentOfHalfField();
    matrix.frustum(-float(top * aspect()), float(top * aspect()), -float(top), float(top), float(nearest),
                   float(furthest));
    return matrix;
}

} // namespace Atelier::Vel::Viewer
