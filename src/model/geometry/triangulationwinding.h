#pragma once

#include <QtCore/QtGlobal>

#include "geometry/triangulationmath.h"

namespace Atelier::Vel {

/// How a polygon is wound about its own computed normal, as far as that can be told quickly.
enum class Winding { kCounterClockwise, kClockwise, kUnsure };

/// Tells the sign of a triangle's or quadrilateral's winding sum without normalising or projecting anything.
///
/// The winding sum is minus the dot product of the doubled area vector A and the normal n, up to rounding.
/// With u = 2^-24, D the greatest distance of a corner from corner 0 and offsets taken as the floats that
/// they are: n, and the axes of the plane, are off by up to 1.01 u (n, first axis) and 4.9 u (second
/// axis: 2.83 u from its cross product, 1.01 u each from its two factors and its own normalising is
/// included); so a projected x is off by up to 4.1 u D and a y by 8 u D, three roundings of the dot product
/// included. A term of the sum between two corners other than 0 is a product of at most 2 D and 2 D, off
/// by 60.4 u D² at most, one that touches corner 0 by 15.1 u D²; a quadrilateral has two of each, 151 u D².
/// Adding up gives 24 u D², the error of n 2.1 u D². All in all less than 178 u D², so that a dot product
/// beyond 256 u D² = 2^-16 D² has the sign for certain. The limits on D keep the float products of the sum
/// from overflowing, and make underflow small beside u D².
namespace WindingFilter {

constexpr double kMargin = 0x1p-16;
constexpr double kLeastSquaredSize = 1e-30;
constexpr double kMostSquaredSize = 1e36;
constexpr double kMostSquaredNormal = 1e78; // larger ones come from overflow

struct Vector {
    double x;
    double y;
    double z;
};

inline Vector offsetOf(const float* position, const float* origin) {
    return {double(position[0] - origin[0]), double(position[1] - origin[1]),
            double(position[2] - origin[2])};
}

inline Vector cross(const Vector& p, const Vector& q) {
    return {p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
}

inline Vector sum(const Vector& p, const Vector& q) {
    return {p.x + q.x, p.y + q.y, p.z + q.z};
}

inline double dot(const Vector& p, const Vector& q) {
    return p.x * q.x + p.y * q.y + p.z * q.z;
}

/// Adds what the edge from p to q gives to the polygon's normal, in floats as it is defined.
inline void addToNormal(float* normal, const float* p, const float* q) {
    normal[0] += p[1] * q[2] - p[2] * q[1];
    normal[1] += p[2] * q[0] - p[0] * q[2];
    normal[2] += p[0] * q[1] - p[1] * q[0];
}

/// `normal` is the sum before it is normalised, `area` the doubled area vector, `squaredSize` D².
inline Winding winding(const Vector& normal, const Vector& area, double squaredSize) {
    const double squaredNormal = dot(normal, normal);
    // A normal this small is not normalised, its plane has null axes, and all finite offsets project to zero.
    if (squaredNormal <= kNullLength && squaredSize <= kMostSquaredSize)
        return Winding::kCounterClockwise;
    if (!(squaredSize >= kLeastSquaredSize && squaredSize <= kMostSquaredSize &&
          squaredNormal <= kMostSquaredNormal))
        return Winding::kUnsure;
    const double projected = dot(area, normal);
    if (!(projected * projected > kMargin * kMargin * squaredSize * squaredSize * squaredNormal))
        return Winding::kUnsure;
    return projected > 0 ? Winding::kCounterClockwise : Winding::kClockwise;
}

} // namespace WindingFilter

inline Winding quickTriangleWinding(const int* corners, const float* positions) {
    using namespace WindingFilter;
    const float* p0 = positions + 3 * qint64(corners[0]);
    const float* p1 = positions + 3 * qint64(corners[1]);
    const float* p2 = positions + 3 * qint64(corners[2]);
    float normal[3] = {};
    addToNormal(normal, p2, p0);
    addToNormal(normal, p0, p1);
    addToNormal(normal, p1, p2);
    const Vector d1 = offsetOf(p1, p0);
    const Vector d2 = offsetOf(p2, p0);
    return winding({normal[0], normal[1], normal[2]}, cross(d1, d2), dot(d1, d1) + dot(d2, d2));
}

inline Winding quickQuadrilateralWinding(const int* corners, const float* positions) {
    using namespace WindingFilter;
    const float* p0 = positions + 3 * qint64(corners[0]);
    const float* p1 = positions + 3 * qint64(corners[1]);
    const float* p2 = positions + 3 * qint64(corners[2]);
    const float* p3 = positions + 3 * qint64(corners[3]);
    float normal[3] = {};
    addToNormal(normal, p3, p0);
    addToNormal(normal, p0, p1);
    addToNormal(normal, p1, p2);
    addToNormal(normal, p2, p3);
    const Vector d1 = offsetOf(p1, p0);
    const Vector d2 = offsetOf(p2, p0);
    const Vector d3 = offsetOf(p3, p0);
    // The sum of the squared distances stands in for the greatest: it is never less.
    return winding({normal[0], normal[1], normal[2]}, sum(cross(d1, d2), cross(d2, d3)),
                   dot(d1, d1) + dot(d2, d2) + dot(d3, d3));
}

} // namespace Atelier::Vel
