#include "geometry/triangulation/convexity.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"

namespace Atelier::Vel {
namespace {

using Testing::PlaneShape;
using Testing::TestPolygon;

bool isClearlyConvex(const std::vector<PlanePoint>& points, bool clockwise = false) {
    return isClearlyConvex(static_cast<int>(points.size()), points.data(), clockwise);
}

TEST(TriangulationConvexityTest, RegularPolygonIsClearlyConvexOneWayRound) {
    std::vector<PlanePoint> points = {{0, 0}, {2, 0}, {3, 2}, {1, 3}, {-1, 2}};
    EXPECT_TRUE(isClearlyConvex(points));
    EXPECT_FALSE(isClearlyConvex(points, true));
    std::reverse(points.begin(), points.end());
    EXPECT_TRUE(isClearlyConvex(points, true));
}

TEST(TriangulationConvexityTest, ReflexStraightAndRepeatedCornersAreNot) {
    EXPECT_FALSE(isClearlyConvex({{0, 0}, {2, 0}, {1, 1}, {1, 3}, {-1, 2}}));
    EXPECT_FALSE(isClearlyConvex({{0, 0}, {1, 0}, {2, 0}, {1, 3}, {-1, 2}}));
    EXPECT_FALSE(isClearlyConvex({{0, 0}, {2, 0}, {2, 0}, {1, 3}, {-1, 2}}));
}

TEST(TriangulationConvexityTest, PolygonThatGoesRoundTwiceIsNot) {
    // A five-pointed star: it turns left at every corner.
    EXPECT_FALSE(isClearlyConvex({{0, 0}, {10, 7}, {-2, 7}, {8, 0}, {4, 11}}));
    // A square walked twice, with edges along the axes.
    EXPECT_FALSE(isClearlyConvex({{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}, {1, 0}, {1, 1}, {0, 1}}));
}

TEST(TriangulationConvexityTest, CornersWithinReachOfRoundingAreNot) {
    EXPECT_FALSE(isClearlyConvex({{0, 0}, {1, -1e-6F}, {2, 0}, {2, 2}, {0, 2}}));
    EXPECT_TRUE(isClearlyConvex({{0, 0}, {1, -1e-3F}, {2, 0}, {2, 2}, {0, 2}}));
    EXPECT_FALSE(isClearlyConvex({{0, 0}, {2e-6F, 0}, {3e-6F, 2e-6F}, {1e-6F, 3e-6F}, {-1e-6F, 2e-6F}}));
}

std::vector<PlanePoint> square(float side) {
    return {{0, 0}, {side, 0}, {side, side}, {0, side}};
}

// Sines above 2^-20, distances above 1e-6, diameters below 1e38.
TEST(TriangulationConvexityTest, LimitsMatchTheProof) {
    const auto withNearlyStraightCorner = [](float height) {
        return std::vector<PlanePoint>{{0, 0}, {1, -height}, {2, 0}, {2, 2}, {0, 2}};
    };
    EXPECT_FALSE(isClearlyConvex(withNearlyStraightCorner(3.81e-6F)));
    EXPECT_TRUE(isClearlyConvex(withNearlyStraightCorner(3.82e-6F)));
    EXPECT_FALSE(isClearlyConvex(square(1.421e-6F)));
    EXPECT_TRUE(isClearlyConvex(square(1.422e-6F)));
    EXPECT_TRUE(isClearlyConvex(square(7.07e37F)));
    EXPECT_FALSE(isClearlyConvex(square(7.08e37F)));
}

TEST(TriangulationConvexityTest, SizeThatOverflowsDifferencesIsNot) {
    const std::vector<PlanePoint> points = {
        {-2e38F, -2e38F}, {2e38F, -2e38F}, {3e38F, 0}, {2e38F, 2e38F}, {-2e38F, 2e38F}};
    EXPECT_FALSE(isClearlyConvex(points));
}

/// Whether every corner of the polygon is an ear by the defined test.
bool allAreEars(const QVector<QVector2D>& points) {
    const int count = points.size();
    std::vector<Literal::Corner> corners(count);
    for (int k = 0; k < count; ++k)
        corners[k] = {(k + 1) % count, (k + count - 1) % count, 0, 0, true, false};
    for (int k = 0; k < count; ++k)
        Literal::updateEar(corners, points, k);
    return std::all_of(corners.begin(), corners.end(), [](const Literal::Corner& c) { return c.ear; });
}

TEST(TriangulationConvexityTest, EverySubsetOfAClearlyConvexPolygonIsAllEars) {
    std::mt19937 random(41);
    std::uniform_real_distribution<double> angle(0, 6.283185307179586);
    std::uniform_real_distribution<double> exponent(-6, 0);
    int convex = 0;
    for (int round = 0; round < 60'000; ++round) {
        std::vector<double> angles(5 + random() % 5);
        for (double& value : angles)
            value = angle(random);
        std::sort(angles.begin(), angles.end());
        const double height = std::pow(10.0, exponent(random));
        const double size = std::pow(10.0, exponent(random));
        std::vector<PlanePoint> points(angles.size());
        std::transform(angles.begin(), angles.end(), points.begin(), [size, height](double value) {
            return PlanePoint{static_cast<float>(size * std::cos(value)),
                              static_cast<float>(size * height * std::sin(value))};
        });
        if (!isClearlyConvex(points))
            continue;
        ++convex;
        QVector<QVector2D> left;
        for (const PlanePoint& point : points)
            left.append(QVector2D(point.x, point.y));
        for (; left.size() > 3; left.remove(static_cast<int>(random() % left.size())))
            ASSERT_TRUE(allAreEars(left)) << "height " << height << ", size " << size;
    }
    EXPECT_GT(convex, 1000);
}

TEST(TriangulationConvexityTest, NearlyStraightCornersOfClearlyConvexPolygonsAreEars) {
    std::mt19937 random(42);
    std::uniform_real_distribution<float> number(-1, 1);
    std::uniform_real_distribution<float> exponent(-8, -4);
    int convex = 0;
    for (int round = 0; round < 100'000; ++round) {
        const float along = 0.5F + 0.4F * number(random);
        const float turn = number(random);
        const float beyond = std::pow(10.0F, exponent(random));
        const PlanePoint end = {1, turn};
        const std::vector<PlanePoint> points = {
            {0, 0}, {along + beyond * turn, along * turn - beyond}, end, {1 - turn, turn + 1}, {-turn, 1}};
        if (!isClearlyConvex(points))
            continue;
        ++convex;
        QVector<QVector2D> left;
        for (const PlanePoint& point : points)
            left.append(QVector2D(point.x, point.y));
        ASSERT_TRUE(allAreEars(left)) << "turn " << turn << ", beyond " << beyond;
    }
    EXPECT_GT(convex, 10'000);
    EXPECT_LT(convex, 90'000);
}

} // namespace
} // namespace Atelier::Vel
