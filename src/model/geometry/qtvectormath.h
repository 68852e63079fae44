#pragma once

#include <cmath>

namespace Atelier::Vel {

/// The float arithmetic of the triangulation: operation by operation the same as QVector2D and QVector3D of
/// Qt 5. Qt's own products and normalisations are compiled into its library, so that a compiler cannot inline
/// them.

/// A point or direction in the plane of a polygon.
struct PlanePoint {
    float x;
    float y;

    friend bool operator==(const PlanePoint& p, const PlanePoint& q) { return p.x == q.x && p.y == q.y; }
    friend PlanePoint operator-(const PlanePoint& p, const PlanePoint& q) { return {p.x - q.x, p.y - q.y}; }
    friend PlanePoint operator-(const PlanePoint& p) { return {-p.x, -p.y}; }
};

/// A point or direction in space.
struct SpacePoint {
    float x;
    float y;
    float z;

    friend SpacePoint operator+(const SpacePoint& p, const SpacePoint& q) {
        return {p.x + q.x, p.y + q.y, p.z + q.z};
    }
    friend SpacePoint operator-(const SpacePoint& p, const SpacePoint& q) {
        return {p.x - q.x, p.y - q.y, p.z - q.z};
    }
};

/// A squared length up to this counts as zero. A squared length that differs from one by up to this counts as
/// one. This is the limit of qFuzzyIsNull(double).
constexpr double kNullLength = 0.000000000001;

inline double squaredLength(const PlanePoint& p) {
    return double(p.x) * double(p.x) + double(p.y) * double(p.y);
}

inline double squaredLength(const SpacePoint& p) {
    return double(p.x) * double(p.x) + double(p.y) * double(p.y) + double(p.z) * double(p.z);
}

inline PlanePoint divided(const PlanePoint& p, double divisor) {
    return {float(double(p.x) / divisor), float(double(p.y) / divisor)};
}

inline SpacePoint divided(const SpacePoint& p, double divisor) {
    return {float(double(p.x) / divisor), float(double(p.y) / divisor), float(double(p.z) / divisor)};
}

/// Like normalized() of Qt's vectors: a vector of null length becomes zero.
template<typename Point>
Point normalized(const Point& p) {
    const double squared = squaredLength(p);
    if (std::fabs(squared - 1.0) <= kNullLength)
        return p;
    if (squared <= kNullLength)
        return {};
    return divided(p, std::sqrt(squared));
}

/// Like normalize() of Qt's vectors: a vector of null length is unchanged.
template<typename Point>
void normalize(Point& p) {
    const double squared = squaredLength(p);
    if (std::fabs(squared - 1.0) <= kNullLength || squared <= kNullLength)
        return;
    p = divided(p, std::sqrt(squared));
}

inline float dotProduct(const PlanePoint& p, const PlanePoint& q) {
    return p.x * q.x + p.y * q.y;
}

inline float dotProduct(const SpacePoint& p, const SpacePoint& q) {
    return p.x * q.x + p.y * q.y + p.z * q.z;
}

inline float crossProduct(const PlanePoint& p, const PlanePoint& q) {
    return p.x * q.y - p.y * q.x;
}

inline SpacePoint crossProduct(const SpacePoint& p, const SpacePoint& q) {
    return {p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
}

} // namespace Atelier::Vel
