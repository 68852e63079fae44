#pragma once

#include <limits>

#include <QtCore/QtGlobal>

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

/// How a polygon is wound about its own computed normal, as far as that can be told quickly.
enum class Winding { kCounterClockwise, kClockwise, kUndecided };

/// Tells the sign of a triangle's or quadrilateral's winding sum without projecting anything.
///
/// The winding sum is minus the dot product of the doubled area vector A and the normal n, up to rounding.
/// With u = 2^-24, D the greatest distance of a corner from corner 0 and offsets taken as the floats that
/// they are: n and the first axis of the plane are off by up to 1.01 u, the second axis by 4.9 u (2.83 u from
/// its cross product, 1.01 u from each factor of that, the rest from its own normalising); so a projected x
/// is off by up to 4.1 u D and a y by 8 u D, the three roundings of a dot product included. A term of the sum
/// between two corners other than 0 is a product of at most 2 D and 2 D, off by up to 60.4 u D²; one that
/// touches corner 0 by 15.1 u D². A quadrilateral has two of each, 151 u D²; adding them up makes 24 u D²,
/// the error of n 2.1 u D². The floats below add 8 u D² for A and 6 u D² for its product with n: less than
/// 192 u D² in all, and some u of the margin. So where that product is beyond 256 u D² = 2^-16 D², its sign
/// is certain.
namespace WindingFilter {

constexpr float kMargin = 0x1p-16F;

// For smaller faces underflow would have to be counted.
constexpr float kMinSquaredSize = 1e-20F;

// Below this D² is less than 1e31 and its product with |n| less than 1e25, so that nothing has overflown.
// Where a sum of squares has, the margin is infinite.
constexpr float kMaxMargin = 1e20F;

// A normal with a squared length up to 1e-12 is null. In between, floats cannot tell.
constexpr float kSurelyNull = 0.999e-12F;
constexpr float kSurelyNotNull = 1.001e-12F;

/// Three floats side by side in a register. Each lane's operations are those of the scalars, one by one.
using Lanes = float __attribute__((vector_size(16)));

inline Lanes positionOf(const float* positions, int vertex) {
    const float* position = positions + 3 * qint64(vertex);
    return Lanes{position[0], position[1], position[2], position[2]}; // the last lane is not used
}

inline Lanes rotated(const Lanes& v) {
    return __builtin_shufflevector(v, v, 1, 2, 0, 3);
}

/// The cross product with its z in front: (z, x, y).
inline Lanes cross(const Lanes& p, const Lanes& q) {
    return p * rotated(q) - rotated(p) * q;
}

inline float sum(const Lanes& v) {
    return v[0] + v[1] + v[2];
}

/// `normal` is the sum that makes it, not normalised yet; `area` the doubled area vector; the sum of the
/// squared distances stands in for D², which is never more.
inline Winding winding(const Lanes& normal, const Lanes& area, const Lanes& squaredSizes) {
    const float squaredNormal = sum(normal * normal);
    const float squaredSize = sum(squaredSizes);
    // A null normal is not normalised, its plane has null axes, and all finite offsets project to zero.
    if (squaredNormal <= kSurelyNull && squaredSize <= std::numeric_limits<float>::max())
        return Winding::kCounterClockwise;
    const float margin = kMargin * squaredSize * std::sqrt(squaredNormal);
    const float projected = sum(area * normal);
    if (!(std::fabs(projected) > margin && squaredNormal >= kSurelyNotNull &&
          squaredSize >= kMinSquaredSize && margin <= kMaxMargin))
        return Winding::kUndecided;
    return projected > 0 ? Winding::kCounterClockwise : Winding::kClockwise;
}

} // namespace WindingFilter

inline Winding quickTriangleWinding(const int* corners, const float* positions) {
    using namespace WindingFilter;
    const Lanes p0 = positionOf(positions, corners[0]);
    const Lanes p1 = positionOf(positions, corners[1]);
    const Lanes p2 = positionOf(positions, corners[2]);
    const Lanes normal = cross(p2, p0) + cross(p0, p1) + cross(p1, p2);
    const Lanes d1 = p1 - p0;
    const Lanes d2 = p2 - p0;
    return winding(normal, cross(d1, d2), d1 * d1 + d2 * d2);
}

inline Winding quickQuadrilateralWinding(const int* corners, const float* positions) {
    using namespace WindingFilter;
    const Lanes p0 = positionOf(positions, corners[0]);
    const Lanes p1 = positionOf(positions, corners[1]);
    const Lanes p2 = positionOf(positions, corners[2]);
    const Lanes p3 = positionOf(positions, corners[3]);
    const Lanes normal = cross(p3, p0) + cross(p0, p1) + cross(p1, p2) + cross(p2, p3);
    const Lanes d1 = p1 - p0;
    const Lanes d2 = p2 - p0;
    const Lanes d3 = p3 - p0;
    return winding(normal, cross(d1, d2) + cross(d2, d3), d1 * d1 + d2 * d2 + d3 * d3);
}

} // namespace Atelier::Vel
