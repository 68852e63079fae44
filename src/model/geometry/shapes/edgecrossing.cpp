#include "geometry/shapes/edgecrossing.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Atelier::Vel {

namespace {

// A smaller crossing may come from the rounding of a corner that lies on an edge.
constexpr double kTouch = 1e-6;

struct Point {
    double x;
    double y;
};

struct Edge {
    Point from;
    Point to;
    double low;  ///< of the x
    double high; ///< of the x
    int number;
};

// The two axes that remain. The coordinates stay exact.
struct Axes {
    int x;
    int y;
};

Axes axesAcross(const double (&normal)[3]) {
    int largest = 0;
    for (int axis = 1; axis < 3; ++axis)
        if (std::fabs(normal[axis]) > std::fabs(normal[largest]))
            largest = axis;
    return {(largest + 1) % 3, (largest + 2) % 3};
}

std::vector<Edge> edgesOf(const float* positions, const quint32* corners, int count, const Axes& axes) {
    const auto point = [&](int corner) {
        const float* const position = positions + quint64{3} * corners[corner];
        return Point{double(position[axes.x]), double(position[axes.y])};
    };
    std::vector<Edge> edges;
    edges.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const Point from = point(i);
        const Point to = point(i + 1 == count ? 0 : i + 1);
        edges.push_back({from, to, std::min(from.x, to.x), std::max(from.x, to.x), i});
    }
    return edges;
}

double sizeOf(const std::vector<Edge>& edges) {
    Point low = edges.front().from;
    Point high = low;
    for (const Edge& edge : edges) {
        low = {std::min(low.x, edge.from.x), std::min(low.y, edge.from.y)};
        high = {std::max(high.x, edge.from.x), std::max(high.y, edge.from.y)};
    }
    return std::max(high.x - low.x, high.y - low.y);
}

// The distance of a point from the line of an edge, positive to its left; 0 for an edge without a length.
double distance(const Edge& edge, const Point& point) {
    const double x = edge.to.x - edge.from.x;
    const double y = edge.to.y - edge.from.y;
    const double length = std::hypot(x, y);
    return length > 0 ? (x * (point.y - edge.from.y) - y * (point.x - edge.from.x)) / length : 0;
}

bool separates(const Edge& edge, const Edge& other, double tolerance) {
    const double from = distance(edge, other.from);
    const double to = distance(edge, other.to);
    return (from > tolerance && to < -tolerance) || (from < -tolerance && to > tolerance);
}

bool areApart(const Edge& edge, const Edge& other) {
    const auto [low, high] = std::minmax(edge.from.y, edge.to.y);
    const auto [otherLow, otherHigh] = std::minmax(other.from.y, other.to.y);
    return high <= otherLow || otherHigh <= low;
}

bool cross(const Edge& edge, const Edge& other, double tolerance) {
    return !areApart(edge, other) && separates(edge, other, tolerance) && separates(other, edge, tolerance);
}

} // namespace

EdgeCrossing findEdgeCrossing(const float* positions, const quint32* corners, int count,
                              const double (&normal)[3], qint64& comparisons) {
    std::vector<Edge> edges = edgesOf(positions, corners, count, axesAcross(normal));
    const double tolerance = sizeOf(edges) * kTouch;
    std::stable_sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.low < b.low; });
    std::vector<Edge> active; // those that reach the current x
    for (const Edge& edge : edges) {
        active.erase(std::remove_if(active.begin(), active.end(),
                                    [&edge](const Edge& other) { return other.high <= edge.low; }),
                     active.end());
        comparisons -= static_cast<qint64>(active.size());
        if (comparisons < 0)
            return {-1, -1, true};
        for (const Edge& other : active)
            if (cross(edge, other, tolerance))
                return {std::min(edge.number, other.number), std::max(edge.number, other.number), false};
        active.push_back(edge);
    }
    return {};
}

} // namespace Atelier::Vel
