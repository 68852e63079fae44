#pragma once

#include <array>
#include <limits>

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

/// The defined test of one side of a candidate triangle is the sign of a float cross product of two
/// normalised float vectors. With u = 2^-24, each component is rounded by u, each product is rounded by u,
/// and the last subtraction keeps the sign. So the computed value differs from that of exact arithmetic on
/// the same two vectors by less than 4 u: two roundings of directions and one of products are 3.01 u
/// together, and one of them does not occur if the side is already a unit vector. If the exact value is
/// further from zero, its sign decides, without a square root.
constexpr double kCrossMargin = 0x1p-22;

/// One side of a candidate triangle, and the test whether a point counts as inside it.
class EarSide {
public:
    /// From `start` along `direction`, which is normalised already.
    static EarSide alongUnit(const PlanePoint& start, const PlanePoint& direction) {
        return {start, direction, 1.0, true};
    }

    /// From `start` along any vector. If the vector normalises to zero, every point counts as inside.
    static EarSide along(const PlanePoint& start, const PlanePoint& vector) {
        const double squared = squaredLength(vector);
        return {start, vector, squared > kNullLength ? squared : std::numeric_limits<double>::infinity(),
                false};
    }

    /// Whether cross(direction, direction of (point − start)) >= 0, computed in floats, as defined.
    bool hasInside(const PlanePoint& point) const {
        const PlanePoint offset = point - _start;
        const double cross = double(_vector.x) * double(offset.y) - double(_vector.y) * double(offset.x);
        const double squared = squaredLength(offset);
        if (squared > kNullLength && cross * cross > _margin * squared)
            return cross > 0;
        return crossProduct(_isUnit ? _vector : normalized(_vector), normalized(offset)) >= 0;
    }

    const PlanePoint& start() const { return _start; }
    const PlanePoint& vector() const { return _vector; }
    /// The square of the vector's length; infinite for a vector that normalises to zero.
    double squaredVectorLength() const { return _margin / (kCrossMargin * kCrossMargin); }

private:
    EarSide(const PlanePoint& start, const PlanePoint& vector, double squared, bool isUnit)
        : _start(start), _vector(vector), _margin(kCrossMargin * kCrossMargin * squared), _isUnit(isUnit) {}

    PlanePoint _start;
    PlanePoint _vector;
    double _margin; // of the squared cross product, per squared length of the offset
    bool _isUnit;   // normalising a rounded unit vector again would change it
};

/// The candidate triangle of a convex corner: the corner, the one after it, the one before it.
class EarTriangle {
public:
    /// `toAfter` and `toBefore` are the normalised directions from the corner to the two others.
    EarTriangle(const PlanePoint& corner, const PlanePoint& after, const PlanePoint& before,
                const PlanePoint& toAfter, const PlanePoint& toBefore)
        : _sides{{EarSide::along(after, before - after), EarSide::alongUnit(corner, toAfter),
                  EarSide::alongUnit(before, -toBefore)}} {}

    /// The side opposite the corner comes first, because it excludes nearly every point.
    const std::array<EarSide, 3>& sides() const { return _sides; }

    /// Whether a corner at `point` prevents the triangle from being clipped: the point is inside the triangle
    /// or on its border, and it is not equal to a corner of the triangle.
    bool isBlockedBy(const PlanePoint& point) const {
        return _sides[0].hasInside(point) && _sides[1].hasInside(point) && _sides[2].hasInside(point) &&
               !(point == _sides[0].start() || point == _sides[1].start() || point == _sides[2].start());
    }

private:
    std::array<EarSide, 3> _sides;
};

} // namespace Atelier::Vel
