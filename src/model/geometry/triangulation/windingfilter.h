#pragma once

#include <limits>

#include <QtCore/QtGlobal>

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

/// The winding of a polygon about its own computed normal; kUndecided if a quick test cannot decide it.
enum class Winding { kCounterClockwise, kClockwise, kUndecided };

/// Computes the sign of the winding sum of a triangle or quadrilateral without a projection.
///
/// Except for rounding, the winding sum is minus the dot product of the doubled area vector A and the normal
/// n. Let u = 2^-24, let D be the maximum distance of a corner from corner 0, and take the offsets, which are
/// floats, as exact. The error of n and of the first axis of the plane is up to 1.01 u. The error of the
/// second axis is up to 4.9 u: 2.83 u from its cross product, 1.01 u from each factor of that, and the rest
/// from its own normalisation. So the error of a projected x is up to 4.1 u D and the error of a projected y
/// up to 8 u D, including the three roundings of a dot product. A term of the sum between two corners other
/// than corner 0 is a product of at most 2 D and 2 D, with an error of up to 60.4 u D². For a term that
/// includes corner 0, the error is up to 15.1 u D². A quadrilateral has two terms of each kind, which makes
/// 151 u D². Their addition contributes 24 u D², and the error of n contributes 2.1 u D². The floats below
/// contribute 8 u D² for A and 6 u D² for its product with n. The total is less than 192 u D², plus some u of
/// the margin. So if that product exceeds 256 u D² = 2^-16 D², its sign is certain.
namespace WindingFilter {

constexpr float kMargin = 0x1p-16F;

// For smaller faces, the error bound would have to include underflow.
constexpr float kMinSquaredSize = 1e-20F;

// Below this, D² is less than 1e31 and its product with |n| is less than 1e25, so nothing has overflowed. If
// a sum of squares has overflowed, the margin is infinite.
constexpr float kMaxMargin = 1e20F;

// A normal with a squared length of up to 1e-12 is null. Between these two limits, floats cannot decide.
constexpr float kSurelyNull = 0.999e-12F;
constexpr float kSurelyNotNull = 1.001e-12F;

/// Three floats side by side in a register. Each lane performs exactly the operations of the scalar code.
using Lanes = float __attribute__((vector_size(16)));

inline Lanes positionOf(const float* positions, int vertex) {
    const float* position = positions + 3 * qint64(vertex);
    return Lanes{position[0], position[1], position[2], position[2]}; // the last lane is not used
}

inline Lanes rotated(const Lanes& v) {
    return __builtin_shufflevector(v, v, 1, 2, 0, 3);
}

/// The cross product in the order (z, x, y).
inline Lanes cross(const Lanes& p, const Lanes& q) {
    return p * rotated(q) - rotated(p) * q;
}

inline float sum(const Lanes& v) {
    return v[0] + v[1] + v[2];
}

/// `normal` is the normal before its normalisation, and `area` is the doubled area vector. The sum of the
/// squared distances replaces D², which is never greater.
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
