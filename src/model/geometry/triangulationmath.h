#pragma once

#include <cmath>

#include <QtCore/QtGlobal>
#include <QtGui/QVector3D>

namespace Atelier::Vel {

/// A point or direction in the plane of a polygon.
struct PlanePoint {
    float x;
    float y;

    friend bool operator==(const PlanePoint& p, const PlanePoint& q) { return p.x == q.x && p.y == q.y; }
    friend PlanePoint operator-(const PlanePoint& p, const PlanePoint& q) { return {p.x - q.x, p.y - q.y}; }
    friend PlanePoint operator-(const PlanePoint& p) { return {-p.x, -p.y}; }
};

/// Vectors whose squared length is up to this count as null: qFuzzyIsNull(double).
constexpr double kNullLength = 0.000000000001;

inline double squaredLength(const PlanePoint& p) {
    return double(p.x) * double(p.x) + double(p.y) * double(p.y);
}

/// QVector2D::normalized(), QVector2D::dotProduct() and QVector3D::dotProduct() of Qt 5, operation by
/// operation; Qt's stand in a library of their own, where no compiler can inline them.
inline PlanePoint normalized(const PlanePoint& p) {
    const double squared = squaredLength(p);
    if (std::fabs(squared - 1.0) <= kNullLength)
        return p;
    if (squared <= kNullLength)
        return {0, 0};
    const double length = std::sqrt(squared);
    return {float(double(p.x) / length), float(double(p.y) / length)};
}

inline float dotProduct(const PlanePoint& p, const PlanePoint& q) {
    return p.x * q.x + p.y * q.y;
}

inline float dotProduct(const QVector3D& p, const QVector3D& q) {
    return p.x() * q.x() + p.y() * q.y() + p.z() * q.z();
}

inline float crossProduct(const PlanePoint& p, const PlanePoint& q) {
    return p.x * q.y - p.y * q.x;
}

} // namespace Atelier::Vel
