#pragma once

#include <array>
#include <limits>

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

/// The defined test of one side of a candidate triangle is the sign of a float cross product of two
/// normalised float vectors. With u = 2^-24, normalising rounds each component by u and each product by u,
/// and the last subtraction keeps the sign: so the computed value differs from that of exact arithmetic on
/// the same two vectors by less than 4 u (two roundings of directions and one of products, 3.01 u together,
/// of which one falls away where the side is a unit vector already). Where the exact value is further from
/// zero its sign decides, without a square root.
constexpr double kCrossMargin = 0x1p-22;

/// One side of a candidate triangle, and the test on which side of it a point counts as lying.
class EarSide {
public:
    /// From `start` along `direction`, which is normalised already.
    static EarSide alongUnit(const PlanePoint& start, const PlanePoint& direction) {
        return {start, direction, 1.0, true};
    }

    /// From `start` along any vector. One that normalises to zero has every point on its inner side.
    static EarSide along(const PlanePoint& start, const PlanePoint& vector) {
        const double squared = squaredLength(vector);
        return {start, vector, squared > kNullLength ? squared : std::numeric_limits<double>::infinity(),
                false};
    }

    /// Whether cross(direction, direction of (point − start)) >= 0, all in floats, as it is defined.
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

    /// The side opposite the corner comes first: it is the one that turns away nearly every point.
    const std::array<EarSide, 3>& sides() const { return _sides; }

    /// Whether a corner at `point` keeps the triangle from being clipped: inside it or on its border, and
    /// not equal to one of its corners.
    bool isBlockedBy(const PlanePoint& point) const {
        return _sides[0].hasInside(point) && _sides[1].hasInside(point) && _sides[2].hasInside(point) &&
               !(point == _sides[0].start() || point == _sides[1].start() || point == _sides[2].start());
    }

private:
    std::array<EarSide, 3> _sides;
};

} // namespace Atelier::Vel
