#include "geometry/triangulation/convexity.h"

#include <algorithm>
#include <limits>

namespace Atelier::Vel {

namespace {

// Let C be the minimum cross product of the two edges at a corner, D the diameter and u = 2^-24. In a convex
// polygon, along a chain of corners, the distance from the line through two corners is minimal at an end of
// the chain. So every triangle of three corners has a doubled area of at least C, and the sine of each of its
// angles is at least C / D². A float cross product of normalised float offsets has an error below 6 u: two
// roundings of each direction and one of the products, because the offset of each factor is rounded before it
// is normalised. So if C / D² exceeds 16 u, every defined test of three corners gives their true orientation:
// each corner is convex, and every other corner lies beyond the side opposite to it.
constexpr double kMinSine = 0x1p-20;

// Offsets of up to 1e-6 normalise to zero. The distance between two corners is at least C / D.
constexpr double kMinSquaredDistance = 1.01e-12;

// Above this the difference of two floats may be infinite.
constexpr double kMaxSquaredDiameter = 1e76;

struct Bounds {
    PlanePoint low;
    PlanePoint high;

    void include(const PlanePoint& point) {
        low = {std::min(low.x, point.x), std::min(low.y, point.y)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y)};
    }
    double squaredDiagonal() const {
        const double width = double(high.x) - double(low.x);
        const double height = double(high.y) - double(low.y);
        return width * width + height * height;
    }
};

struct Edge {
    double x;
    double y;

    Edge(const PlanePoint& from, const PlanePoint& to)
        : x(double(to.x) - double(from.x)), y(double(to.y) - double(from.y)) {}

    /// Whether the direction is in the right half of all directions. Exactly one of the two vertical
    /// directions belongs to that half.
    bool pointsRight() const { return x > 0 || (x == 0 && y > 0); }
};

} // namespace

bool isClearlyConvex(int count, const PlanePoint* points, bool clockwise) {
    const double sign = clockwise ? -1 : 1;
    double minCross = std::numeric_limits<double>::infinity();
    int revolutions = 0;
    Bounds bounds = {points[0], points[0]};
    Edge previous(points[count - 2], points[count - 1]);
    for (int k = 0; k < count; ++k) {
        const Edge edge(points[k == 0 ? count - 1 : k - 1], points[k]);
        const double cross = sign * (previous.x * edge.y - previous.y * edge.x);
        if (!(cross > 0))
            return false;
        minCross = std::min(minCross, cross);
        // Every turn is less than half a revolution and in the same direction, so no revolution is missed.
        revolutions += edge.pointsRight() && !previous.pointsRight() ? 1 : 0;
        bounds.include(points[k]);
        previous = edge;
    }
    const double squaredDiameter = bounds.squaredDiagonal();
    return revolutions == 1 && squaredDiameter <= kMaxSquaredDiameter &&
           minCross > kMinSine * squaredDiameter &&
           minCross * minCross > kMinSquaredDistance * squaredDiameter;
}

} // namespace Atelier::Vel
