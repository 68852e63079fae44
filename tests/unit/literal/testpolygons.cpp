#include "literal/testpolygons.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace Atelier::Vel::Testing {

namespace {

constexpr double kTurn = 6.283185307179586;

double uniform(std::mt19937& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}

int below(std::mt19937& random, int end) {
    return std::uniform_int_distribution<int>(0, end - 1)(random);
}

bool chance(std::mt19937& random, int oneIn) {
    return below(random, oneIn) == 0;
}

template<typename Value, std::size_t count>
Value pick(std::mt19937& random, const Value (&values)[count]) {
    return values[below(random, static_cast<int>(count))];
}

std::vector<double> sortedAngles(int count, std::mt19937& random) {
    std::vector<double> angles(count);
    for (double& angle : angles)
        angle = uniform(random, 0, kTurn);
    std::sort(angles.begin(), angles.end());
    return angles;
}

PlaneShape randomConvex(int count, std::mt19937& random) {
    const double height = pick(random, {1.0, 1.0, 0.1, 1e-3, 1e-6, 1e-7});
    PlaneShape shape;
    for (double angle : sortedAngles(count, random))
        shape.add(std::cos(angle), height * std::sin(angle));
    return shape;
}

PlaneShape regular(int count, std::mt19937& random) {
    const double start = chance(random, 2) ? 0 : uniform(random, 0, kTurn);
    PlaneShape shape;
    for (int k = 0; k < count; ++k)
        shape.add(std::cos(start + kTurn * k / count), std::sin(start + kTurn * k / count));
    return shape;
}

PlaneShape starShaped(int count, std::mt19937& random) {
    const double least = pick(random, {0.9, 0.3, 0.01});
    PlaneShape shape;
    for (double angle : sortedAngles(count, random)) {
        const double radius = uniform(random, least, 1);
        shape.add(radius * std::cos(angle), radius * std::sin(angle));
    }
    return shape;
}

PlaneShape scattered(int count, std::mt19937& random) {
    PlaneShape shape;
    for (int k = 0; k < count; ++k)
        shape.add(uniform(random, -1, 1), uniform(random, -1, 1));
    return shape;
}

PlaneShape onGrid(int count, std::mt19937& random) {
    const int side = pick(random, {2, 3, 4, 8});
    PlaneShape shape;
    for (int k = 0; k < count; ++k)
        shape.add(below(random, side), below(random, side));
    return shape;
}

/// A closed walk along grid lines: straight corners, exact ties, and some crossings.
PlaneShape staircase(int count, std::mt19937& random) {
    PlaneShape shape;
    int x = 0;
    int y = 0;
    for (int k = 0; k + 1 < count; ++k) {
        shape.add(x, y);
        (chance(random, 2) ? x : y) += 1;
    }
    shape.add(chance(random, 2) ? x : 0, chance(random, 2) ? 0 : y);
    return shape;
}

PlaneShape nearLine(int count, std::mt19937& random) {
    const double noise = pick(random, {0.0, 1e-8, 1e-7, 1e-6, 1e-4});
    PlaneShape shape;
    for (int k = 0; k < count; ++k)
        shape.add(uniform(random, -1, 1), noise * uniform(random, -1, 1));
    if (chance(random, 2))
        std::sort(shape.x.begin(), shape.x.end());
    if (chance(random, 2))
        shape.y[0] = 1;
    return shape;
}

PlaneShape clustered(int count, std::mt19937& random) {
    const double spread = pick(random, {1e-5, 1.5e-6, 1e-6, 1e-7, 1e-8});
    PlaneShape shape = starShaped(std::max(3, count / 4), random);
    const int clusters = shape.count();
    PlaneShape result;
    for (int k = 0; k < count; ++k) {
        const int cluster = static_cast<int>(static_cast<long long>(k) * clusters / count);
        result.add(shape.x[cluster] + spread * uniform(random, -1, 1),
                   shape.y[cluster] + spread * uniform(random, -1, 1));
    }
    return result;
}

void repeatPoints(PlaneShape& shape, std::mt19937& random) {
    for (int times = 1 + below(random, shape.count()); times > 0; --times) {
        const int from = below(random, shape.count());
        const int to = chance(random, 2) ? (from + 1) % shape.count() : below(random, shape.count());
        shape.x[to] = shape.x[from];
        shape.y[to] = shape.y[from];
    }
}

PlaneShape randomShape(int count, std::mt19937& random) {
    using Maker = PlaneShape (*)(int, std::mt19937&);
    constexpr Maker kMakers[] = {randomConvex, regular,   starShaped, starShaped, scattered,
                                 onGrid,       staircase, nearLine,   clustered};
    PlaneShape shape = pick(random, kMakers)(count, random);
    if (count >= 8 && chance(random, 8)) {
        constexpr PlaneShape (*kSizedMakers[])(int) = {convexShape, combShape, starShape, spiralShape};
        shape = pick(random, kSizedMakers)(count);
    }
    if (chance(random, 5))
        repeatPoints(shape, random);
    if (chance(random, 4)) {
        std::reverse(shape.x.begin(), shape.x.end());
        std::reverse(shape.y.begin(), shape.y.end());
    }
    return shape;
}

struct Frame {
    QVector3D u;
    QVector3D w;
    QVector3D normal;
};

Frame randomFrame(std::mt19937& random) {
    constexpr float kAxes[6][3] = {{0, 0, 1}, {0, 0, -1}, {0, 1, 0}, {0, -1, 0}, {1, 0, 0}, {-1, 0, 0}};
    const auto number = [&random] { return static_cast<float>(uniform(random, -1, 1)); };
    QVector3D normal(number(), number(), number());
    if (chance(random, 2)) {
        const float* axis = kAxes[below(random, 6)];
        normal = QVector3D(axis[0], axis[1], axis[2]);
    } else if (chance(random, 4)) {
        normal.setY(
            static_cast<float>(2.065 * std::hypot(normal.x(), normal.z()))); // about 0.9 of its length
    }
    normal.normalize();
    const QVector3D up = std::fabs(normal.y()) > 0.9F ? QVector3D(0, 0, 1) : QVector3D(0, 1, 0);
    const QVector3D u = QVector3D::crossProduct(up, normal).normalized();
    return {u, QVector3D::crossProduct(normal, u), normal};
}

QVector3D randomNormal(const QVector3D& right, std::mt19937& random) {
    const auto number = [&random] { return static_cast<float>(uniform(random, -1, 1)); };
    switch (below(random, 8)) {
    case 0:
        return -right;
    case 1:
        return {number(), number(), number()};
    case 2:
        return {};
    case 3:
        return right * pick(random, {1e-7F, 1e-3F, 10.0F, 1e20F});
    default:
        return right;
    }
}

float randomBits(std::mt19937& random) {
    const auto bits = static_cast<std::uint32_t>(random());
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void spoil(std::vector<float>& positions, std::mt19937& random) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kOdd[] = {
        std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity, 3e38F, -3e38F, 1e-45F, -0.0F};
    for (int times = 1 + below(random, 3); times > 0; --times)
        positions[below(random, static_cast<int>(positions.size()))] = pick(random, kOdd);
}

std::vector<float> placed(const PlaneShape& shape, const Frame& frame, std::mt19937& random) {
    constexpr double kScales[] = {1,     1,   1,   1,    1e-3, 1e-5, 1e-6, 1e-9,
                                  1e-20, 100, 1e7, 1e15, 1e18, 1e20, 3e37, 2e38};
    constexpr double kOffsets[] = {0, 0, 0, 1, 10, 1e3, 1e5, 1e7};
    const double scale = pick(random, kScales);
    const double offset = scale * pick(random, kOffsets);
    const double origin[] = {offset * uniform(random, -1, 1), offset * uniform(random, -1, 1),
                             offset * uniform(random, -1, 1)};
    const double bulge = chance(random, 3) ? 0.05 * scale : 0;
    std::vector<float> positions;
    for (int k = 0; k < shape.count(); ++k)
        for (int axis = 0; axis < 3; ++axis)
            positions.push_back(static_cast<float>(origin[axis] + scale * shape.x[k] * double(frame.u[axis]) +
                                                   scale * shape.y[k] * double(frame.w[axis]) +
                                                   bulge * uniform(random, -1, 1)));
    return positions;
}

/// Gives corner k the k-th position, as a vertex of some other number.
TestPolygon numbered(const std::vector<float>& positions, int firstVertex, std::mt19937& random) {
    const int count = static_cast<int>(positions.size() / 3);
    TestPolygon polygon;
    for (int k = 0; k < count; ++k)
        polygon.corners.push_back(firstVertex + k);
    std::shuffle(polygon.corners.begin(), polygon.corners.end(), random);
    polygon.positions.resize(3 * static_cast<std::size_t>(firstVertex + count));
    for (int k = 0; k < count; ++k)
        for (int axis = 0; axis < 3; ++axis)
            polygon.positions[3 * std::size_t(polygon.corners[k]) + axis] =
                positions[3 * std::size_t(k) + axis];
    return polygon;
}

} // namespace

PlaneShape convexShape(int count) {
    PlaneShape shape;
    for (int k = 0; k < count; ++k)
        shape.add(std::cos(kTurn * k / count), std::sin(kTurn * k / count));
    return shape;
}

PlaneShape combShape(int count) {
    PlaneShape shape;
    const int teeth = count - 2;
    for (int k = 0; k < teeth; ++k)
        shape.add(k, k % 2 == 0 ? 10 : 1);
    shape.add(teeth - 1, 0);
    shape.add(0, 0);
    return shape;
}

PlaneShape starShape(int count) {
    PlaneShape shape;
    for (int k = 0; k < count; ++k) {
        const double radius = k % 2 == 0 ? 1 : 0.5;
        shape.add(radius * std::cos(kTurn * k / count), radius * std::sin(kTurn * k / count));
    }
    return shape;
}

PlaneShape spiralShape(int count) {
    const int half = count / 2;
    const auto point = [half](int k, double width) {
        const double turns = 20.0 * k / half;
        const double radius = 1 + turns + width;
        return std::make_pair(radius * std::cos(kTurn * turns), radius * std::sin(kTurn * turns));
    };
    PlaneShape shape;
    for (int k = 0; k < count - half; ++k)
        shape.add(point(k, 0.5).first, point(k, 0.5).second);
    for (int k = half; k > 0; --k)
        shape.add(point(k - 1, 0).first, point(k - 1, 0).second);
    return shape;
}

TestPolygon flatPolygon(const PlaneShape& shape) {
    TestPolygon polygon;
    polygon.normal = QVector3D(0, 0, 1);
    for (int k = 0; k < shape.count(); ++k) {
        polygon.corners.push_back(k);
        for (double value : {shape.x[k], shape.y[k], 0.0})
            polygon.positions.push_back(static_cast<float>(value));
    }
    return polygon;
}

TestPolygon randomPolygon(int count, std::mt19937& random) {
    const Frame frame = randomFrame(random);
    std::vector<float> positions = placed(randomShape(count, random), frame, random);
    if (chance(random, 12))
        spoil(positions, random);
    if (chance(random, 50))
        std::generate(positions.begin(), positions.end(), [&random] { return randomBits(random); });
    TestPolygon polygon = numbered(positions, below(random, 20), random);
    polygon.normal = randomNormal(frame.normal, random);
    return polygon;
}

} // namespace Atelier::Vel::Testing
