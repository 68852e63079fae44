#pragma once

#include <cmath>

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

/// Angles and directions in double precision. All functions use only operations that IEEE 754 rounds exactly,
/// because the mathematical library of a system may give other bits on another processor.

constexpr double kPi = 3.14159265358979323846;

/// A direction or a difference of positions.
struct Direction {
    double x = 0;
    double y = 0;
    double z = 0;

    friend Direction operator+(const Direction& p, const Direction& q) {
        return {p.x + q.x, p.y + q.y, p.z + q.z};
    }
    friend Direction operator-(const Direction& p, const Direction& q) {
        return {p.x - q.x, p.y - q.y, p.z - q.z};
    }
    friend Direction operator*(double factor, const Direction& p) {
        return {factor * p.x, factor * p.y, factor * p.z};
    }
};

inline Direction fromOrigin(const SpacePoint& p) {
    return {double(p.x), double(p.y), double(p.z)};
}

inline double dotProduct(const Direction& p, const Direction& q) {
    return p.x * q.x + p.y * q.y + p.z * q.z;
}

inline Direction crossProduct(const Direction& p, const Direction& q) {
    return {p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
}

inline double lengthOf(const Direction& p) {
    return std::sqrt(dotProduct(p, p));
}

inline bool isZero(const Direction& p) {
    return p.x == 0 && p.y == 0 && p.z == 0;
}

/// The direction of length 1; zero if `p` has a length up to `shortest` or one that is not finite.
inline Direction unitDirection(const Direction& p, double shortest = 0) {
    const double length = lengthOf(p);
    return length > shortest && std::isfinite(length) ? (1 / length) * p : Direction();
}

/// The arc tangent of a number from 0 to 1, in radians. The error is below 1e-14.
inline double arcTangent(double tangent) {
    // Each step halves the angle. Then it is at most 0.0985, and the term of the 15th power is below 1e-16.
    constexpr int kHalvings = 3;
    for (int i = 0; i < kHalvings; ++i)
        tangent /= 1 + std::sqrt(1 + tangent * tangent);
    const double square = tangent * tangent;
    double series = 0;
    for (int power = 13; power > 0; power -= 2)
        series = 1.0 / power - square * series;
    return (1 << kHalvings) * tangent * series;
}

/// The angle between two directions of length 1, from 0 to pi. It is accurate for small angles as well.
inline double angleBetween(const Direction& p, const Direction& q) {
    const double difference = lengthOf(p - q);
    const double sum = lengthOf(p + q);
    return difference <= sum ? 2 * arcTangent(difference / sum) : kPi - 2 * arcTangent(sum / difference);
}

/// The cosine of an angle from 0 to pi. The error is below 1e-14.
inline double cosineOf(double radians) {
    // The term of the 32nd power is below 1e-19.
    const double square = radians * radians;
    double series = 1;
    for (int power = 30; power > 0; power -= 2)
        series = 1 - square / (power * (power - 1)) * series;
    return series;
}

} // namespace Atelier::Vel
