#include "geometry/shapes/faceshape.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace Atelier::Vel {

namespace {

// A polygon that is thinner than this share of its size has no area for practical purposes.
constexpr double kThinness = 1e-6;

struct Vector {
    double x;
    double y;
    double z;
};

Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

double dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vector at(const float* positions, quint32 vertex) {
    const float* const position = positions + quint64{3} * vertex;
    return {double(position[0]), double(position[1]), double(position[2])};
}

Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

struct Sums {
    Vector low;
    Vector high;
    Vector area = {0, 0, 0};   ///< twice the area, as a vector
    Vector centre = {0, 0, 0}; ///< relative to the first corner
};

void include(Sums& sums, const Vector& point) {
    sums.low = {std::min(sums.low.x, point.x), std::min(sums.low.y, point.y), std::min(sums.low.z, point.z)};
    sums.high = {std::max(sums.high.x, point.x), std::max(sums.high.y, point.y),
                 std::max(sums.high.z, point.z)};
}

// Relative to the first corner, so that a position far from the origin costs no digits.
Sums sumsOf(const float* positions, const quint32* corners, quint32 count) {
    const Vector origin = at(positions, corners[0]);
    Sums sums{origin, origin};
    Vector before = {0, 0, 0};
    for (quint32 i = 1; i < count; ++i) {
        const Vector point = at(positions, corners[i]);
        const Vector offset = point - origin;
        include(sums, point);
        const Vector area = cross(before, offset);
        sums.area = {sums.area.x + area.x, sums.area.y + area.y, sums.area.z + area.z};
        sums.centre.x += offset.x;
        sums.centre.y += offset.y;
        sums.centre.z += offset.z;
        before = offset;
    }
    return sums;
}

double deviationFrom(const FaceShape& shape, const Sums& sums, const float* positions, const quint32* corners,
                     quint32 count) {
    const Vector normal = {shape.normal[0], shape.normal[1], shape.normal[2]};
    const Vector origin = at(positions, corners[0]);
    const double height = dot(normal, sums.centre) / double(count);
    double deviation = 0;
    for (quint32 i = 0; i < count; ++i)
        deviation = std::max(deviation, std::fabs(dot(normal, at(positions, corners[i]) - origin) - height));
    return deviation;
}

// The largest cross product of a corner and its successor, twice the area of their triangle with the first
// corner. The sum of all is zero if parts of a polygon that crosses itself cancel each other out.
Vector widestArea(const float* positions, const quint32* corners, quint32 count) {
    const Vector origin = at(positions, corners[0]);
    Vector widest = {0, 0, 0};
    for (quint32 i = 2; i < count; ++i) {
        const Vector area = cross(at(positions, corners[i - 1]) - origin, at(positions, corners[i]) - origin);
        if (dot(area, area) > dot(widest, widest))
            widest = area;
    }
    return widest;
}

double largestCoordinate(const Vector& point) {
    return std::max({std::fabs(point.x), std::fabs(point.y), std::fabs(point.z)});
}

// Each coordinate is rounded by half of its last bit. An area up to this may be zero.
double thinArea(double size, double largestCoordinate) {
    return size * std::max(size * kThinness, largestCoordinate * double(FLT_EPSILON));
}

void setNormal(FaceShape& shape, const Vector& area, double length) {
    shape.normal[0] = area.x / length;
    shape.normal[1] = area.y / length;
    shape.normal[2] = area.z / length;
}

FaceShape triangleShape(const float* positions, const quint32* corners) {
    const Vector points[] = {at(positions, corners[0]), at(positions, corners[1]), at(positions, corners[2])};
    const Vector a = points[1] - points[0];
    const Vector b = points[2] - points[0];
    const Vector c = b - a;
    const Vector area = cross(a, b);
    const double length = std::sqrt(dot(area, area));
    FaceShape shape;
    shape.isFinite = std::isfinite(length);
    if (!shape.isFinite)
        return shape;
    shape.size = std::sqrt(std::max({dot(a, a), dot(b, b), dot(c, c)}));
    const double largest =
        std::max({largestCoordinate(points[0]), largestCoordinate(points[1]), largestCoordinate(points[2])});
    shape.isDegenerate = !(length > thinArea(shape.size, largest));
    if (!shape.isDegenerate)
        setNormal(shape, area, length);
    return shape;
}

FaceShape polygonShape(const float* positions, const quint32* corners, quint32 count) {
    const Sums sums = sumsOf(positions, corners, count);
    FaceShape shape;
    Vector normal = sums.area;
    double area = std::sqrt(dot(normal, normal));
    shape.isFinite = std::isfinite(area);
    if (!shape.isFinite)
        return shape;
    const Vector diagonal = sums.high - sums.low;
    shape.size = std::sqrt(dot(diagonal, diagonal));
    const double thin =
        thinArea(shape.size, std::max(largestCoordinate(sums.low), largestCoordinate(sums.high)));
    if (!(area > thin)) {
        normal = widestArea(positions, corners, count);
        area = std::sqrt(dot(normal, normal));
    }
    shape.isDegenerate = !(area > thin);
    if (shape.isDegenerate)
        return shape;
    setNormal(shape, normal, area);
    shape.deviation = deviationFrom(shape, sums, positions, corners, count);
    return shape;
}

double dotWith(const FaceShape& shape, const Vector& other) {
    return dot({shape.normal[0], shape.normal[1], shape.normal[2]}, other);
}

Vector toVector(const float* values) {
    return {double(values[0]), double(values[1]), double(values[2])};
}

} // namespace

FaceShape shapeOf(const float* positions, const quint32* corners, quint32 count) {
    return count == 3 ? triangleShape(positions, corners) : polygonShape(positions, corners, count);
}

double cosineTo(const FaceShape& shape, const float* vector) {
    const Vector other = toVector(vector);
    const double squared = dot(other, other);
    if (!(squared > 0))
        return 0;
    return dotWith(shape, other) / std::sqrt(squared);
}

bool isOnSide(const FaceShape& shape, const float* vector, double minCosine) {
    const Vector other = toVector(vector);
    const double product = dotWith(shape, other);
    return product > 0 && product * product > minCosine * minCosine * dot(other, other);
}

} // namespace Atelier::Vel
