#pragma once

#include <array>
#include <limits>
#include <optional>

#include <QtCore/QtGlobal>

#include "geometry/picking/pickingmesh.h"

namespace Atelier::Vel {

/// A point or a direction in space, in double precision.
using SpaceVector = std::array<double, 3>;

/// The part of a ray that passes a box, by its distances from the origin. Empty if `near` is above `far`.
struct RayInterval {
    double near = 0;
    double far = 0;

    bool isEmpty() const { return !(near <= far); }
};

/// Where a ray meets a triangle.
struct TriangleHit {
    quint32 number = std::numeric_limits<quint32>::max(); ///< of the triangle; the initial value is none
    double distance = std::numeric_limits<double>::infinity();
    SpaceVector weights{}; ///< of the three corners; their sum is 1
    SpaceVector point{};

    bool isHit() const { return number != std::numeric_limits<quint32>::max(); }
    /// Of two hits at the same distance, that of the lower number is the nearer one.
    bool isNearerThan(const TriangleHit& other) const {
        return distance < other.distance || (distance == other.distance && number < other.number);
    }
};

/// A ray, prepared for tests against boxes and triangles.
///
/// The tests are consistent: a hit on a triangle lies in the interval of the triangle's box, and the interval
/// of a box contains that of each box inside. This holds for the rounded results, so leaving out boxes never
/// changes which triangle is nearest.
///
/// The tests are watertight: for each edge, both triangles compute the same products, and rounding never
/// changes the sign of their difference, except to zero, which counts as a hit. So no ray passes between two
/// triangles that share the bytes of two positions. The method is that of Woop, Benthin and Wald, "Watertight
/// Ray/Triangle Intersection" (2013), with doubles from the start.
class PickingRay {
public:
    /// A ray whose distances are in units of `unit` divided by the length of `direction`: give that length
    /// for distances in the units of the positions. Returns: none if a number is not finite, if the direction
    /// is zero, or if `unit` is not positive.
    static std::optional<PickingRay> make(const SpaceVector& origin, const SpaceVector& direction,
                                          double unit);

    /// The interval in the box, a little longer than computed.
    RayInterval within(const float* minimum, const float* maximum) const;

    /// Sets the distance, the weights and the point of `hit` if the ray meets the triangle, from either side.
    /// Requires: the positions are finite. Returns: whether it does; false if the triangle is seen edge-on.
    bool meets(const TriangleCorners& corners, TriangleHit& hit) const;

private:
    // How much longer intervals are, relative to their distances. Intervals of true hits that share only a
    // point, such as those of a triangle in an axis-parallel plane, differ by a few roundings of 2^-53.
    static constexpr double kMargin = 1.0 / (1LL << 46);

    // A position relative to the origin, moved along the ray to a plane in which the ray is the point 0, 0.
    struct Seen {
        double x;
        double y;
        double depth;
    };

    PickingRay() = default;
    RayInterval within(const TriangleCorners& corners) const;
    Seen seen(const float* position) const;

    SpaceVector _origin{};
    SpaceVector _inverse{}; // of the direction, times the unit; infinite where the direction is zero
    SpaceVector _shear{};   // moves points along the ray to its origin's plane
    std::array<std::size_t, 3> _axes{}; // the last one is that of the largest part of the direction
};

inline RayInterval PickingRay::within(const float* minimum, const float* maximum) const {
    RayInterval result{0, std::numeric_limits<double>::infinity()};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double low = double(minimum[axis]) - _origin[axis];
        const double high = double(maximum[axis]) - _origin[axis];
        const double inverse = _inverse[axis];
        // Zero times infinity, for a ray in a plane of the box, is not a number and changes nothing.
        const double near = (inverse > 0 ? low : high) * inverse;
        const double far = (inverse > 0 ? high : low) * inverse;
        result.near = near > result.near ? near : result.near;
        result.far = far < result.far ? far : result.far;
    }
    return {result.near * (1 - kMargin), result.far * (1 + kMargin)};
}

} // namespace Atelier::Vel
