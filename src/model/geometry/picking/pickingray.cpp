#include "geometry/picking/pickingray.h"

#include <algorithm>
#include <cmath>

namespace Atelier::Vel {

namespace {

bool isFinite(const SpaceVector& vector) {
    return std::all_of(vector.begin(), vector.end(), [](double number) { return std::isfinite(number); });
}

std::size_t largestAxis(const SpaceVector& direction) {
    std::size_t largest = 0;
    for (std::size_t axis = 1; axis < 3; ++axis)
        if (std::fabs(direction[axis]) > std::fabs(direction[largest]))
            largest = axis;
    return largest;
}

// On which side of the edge the origin is: twice the area of the triangle with it.
template<typename Point>
double sideOf(const Point& from, const Point& to) {
    return from.x * to.y - from.y * to.x;
}

} // namespace

std::optional<PickingRay> PickingRay::make(const SpaceVector& origin, const SpaceVector& direction,
                                           double unit) {
    const std::size_t along = largestAxis(direction);
    if (!isFinite(origin) || !isFinite(direction) || !(unit > 0) || !std::isfinite(unit / direction[along]))
        return {};
    PickingRay ray;
    ray._origin = origin;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        ray._inverse[axis] = unit / direction[axis];
        ray._shear[axis] = direction[axis] / direction[along];
        ray._axes[axis] = (along + 1 + axis) % 3;
    }
    return ray;
}

RayInterval PickingRay::within(const TriangleCorners& corners) const {
    float minimum[3];
    float maximum[3];
    for (int axis = 0; axis < 3; ++axis) {
        minimum[axis] = std::min({corners.at[0][axis], corners.at[1][axis], corners.at[2][axis]});
        maximum[axis] = std::max({corners.at[0][axis], corners.at[1][axis], corners.at[2][axis]});
    }
    return within(minimum, maximum);
}

PickingRay::Seen PickingRay::seen(const float* position) const {
    const auto [across, up, along] = _axes;
    const double depth = double(position[along]) - _origin[along];
    return {double(position[across]) - _origin[across] - _shear[across] * depth,
            double(position[up]) - _origin[up] - _shear[up] * depth, depth};
}

bool PickingRay::meets(const TriangleCorners& corners, TriangleHit& hit) const {
    const RayInterval box = within(corners);
    if (box.isEmpty())
        return false;
    const Seen a = seen(corners.at[0]);
    const Seen b = seen(corners.at[1]);
    const Seen c = seen(corners.at[2]);
    const double sides[3] = {sideOf(b, c), sideOf(c, a), sideOf(a, b)};
    const double area = sides[0] + sides[1] + sides[2];
    const bool isInside = sides[0] >= 0 && sides[1] >= 0 && sides[2] >= 0;
    const bool isInsideFromBehind = sides[0] <= 0 && sides[1] <= 0 && sides[2] <= 0;
    if (area == 0 || !(isInside || isInsideFromBehind))
        return false;

    hit.weights = {sides[0] / area, sides[1] / area, sides[2] / area};
    // In this order, triangles in one plane across the ray are equally far.
    const double depth =
        a.depth + (hit.weights[1] * (b.depth - a.depth) + hit.weights[2] * (c.depth - a.depth));
    const double distance = depth * _inverse[_axes[2]];
    if (!(distance >= 0))
        return false;
    hit.distance = std::clamp(distance, box.near, box.far);
    for (std::size_t axis = 0; axis < 3; ++axis)
        hit.point[axis] = hit.weights[0] * double(corners.at[0][axis]) +
                          hit.weights[1] * double(corners.at[1][axis]) +
                          hit.weights[2] * double(corners.at[2][axis]);
    return true;
}

} // namespace Atelier::Vel
