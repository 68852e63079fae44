#include "geometry/triangulation/projection.h"

#include <cmath>
#include <limits>
#include <random>

#include <gmock/gmock.h>

#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"
#include "planepoints.h"

namespace Atelier::Vel {
namespace {

using Testing::planePoints;
using Testing::TestPolygon;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

bool same(float a, float b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool isCounterClockwise(const std::vector<PlanePoint>& points) {
    return IsCounterClockwise(static_cast<int>(points.size()), points.data());
}

TEST(PolygonNormalTest, PointsToTheSideWithCounterClockwiseWinding) {
    const float positions[] = {0, 0, 5, 2, 0, 5, 0, 3, 5};
    const int corners[] = {0, 1, 2};
    const SpacePoint normal = PolygonNormal(3, corners, positions);
    EXPECT_EQ(normal.x, 0);
    EXPECT_EQ(normal.y, 0);
    EXPECT_EQ(normal.z, 1);
}

TEST(PolygonNormalTest, ZeroSumStaysZero) {
    const float positions[] = {1, 1, 1, 2, 2, 2, 3, 3, 3};
    const int corners[] = {0, 1, 2};
    const SpacePoint normal = PolygonNormal(3, corners, positions);
    EXPECT_EQ(squaredLength(normal), 0);
}

TEST(PolygonNormalTest, TinySumIsUnchanged) {
    const float positions[] = {0, 0, 0, 1e-4F, 0, 0, 0, 1e-4F, 0};
    const int corners[] = {0, 1, 2};
    EXPECT_EQ(PolygonNormal(3, corners, positions).z, 1e-4F * 1e-4F);
}

TEST(PolygonNormalTest, EqualsTheLiteralStep) {
    std::mt19937 random(21);
    for (int round = 0; round < 50'000; ++round) {
        const TestPolygon p = Testing::randomPolygon(3 + round % 20, random);
        const SpacePoint actual = PolygonNormal(p.count(), p.corners.data(), p.positions.data());
        const QVector3D expected = Literal::polygonNormal(p.count(), p.corners.data(), p.positions.data());
        ASSERT_TRUE(same(actual.x, expected.x()) && same(actual.y, expected.y()) &&
                    same(actual.z, expected.z()));
    }
}

TEST(ProjectPolygonTest, FirstPointIsTheOrigin) {
    const float positions[] = {kNan, 1, 2, 3, 4, 5};
    const int corners[] = {0, 1};
    PlanePoint points[2];
    ProjectPolygon({0, 0, 1}, 2, corners, positions, points);
    EXPECT_EQ(points[0], (PlanePoint{0, 0}));
    EXPECT_TRUE(std::isnan(points[1].x));
}

TEST(ProjectPolygonTest, UpIsTheYAxisUnlessTheNormalIsCloseToIt) {
    const float positions[] = {0, 0, 0, 1, 2, 3};
    const int corners[] = {0, 1};
    PlanePoint points[2];
    ProjectPolygon({0, 0, 1}, 2, corners, positions, points);
    EXPECT_EQ(points[1], (PlanePoint{1, 2}));
    ProjectPolygon({0, 1, 0}, 2, corners, positions, points);
    EXPECT_EQ(points[1], (PlanePoint{-1, 3}));
    ProjectPolygon({0, -1, 0}, 2, corners, positions, points);
    EXPECT_EQ(points[1], (PlanePoint{1, 3}));
}

TEST(ProjectPolygonTest, LimitOfTheUpVectorIsTheFloatNineTenths) {
    // Below the limit the second axis has a part along y, above it the first one lies in the plane of x and
    // y.
    const float positions[] = {0, 0, 0, 0, 0, 1};
    const int corners[] = {0, 1};
    PlanePoint points[2];
    ProjectPolygon({0.43588989F, 0.9F, 0}, 2, corners, positions, points);
    EXPECT_EQ(points[1], (PlanePoint{-1, 0}));
    ProjectPolygon({0.43588989F, std::nextafter(0.9F, 1.0F), 0}, 2, corners, positions, points);
    EXPECT_EQ(points[1].x, 0);
    EXPECT_GT(points[1].y, 0.9F);
}

TEST(ProjectPolygonTest, EqualsTheLiteralStep) {
    std::mt19937 random(22);
    std::vector<PlanePoint> points(64);
    for (int round = 0; round < 30'000; ++round) {
        const TestPolygon p = Testing::randomPolygon(3 + round % 20, random);
        ProjectPolygon({p.normal.x(), p.normal.y(), p.normal.z()}, p.count(), p.corners.data(),
                       p.positions.data(), points.data());
        const QVector<QVector2D> expected =
            Literal::projectPolygon(p.normal, p.count(), p.corners.data(), p.positions.data());
        for (int k = 0; k < p.count(); ++k)
            ASSERT_TRUE(same(points[k].x, expected[k].x()) && same(points[k].y, expected[k].y()));
    }
}

TEST(IsCounterClockwiseTest, DetectsTheWinding) {
    EXPECT_TRUE(isCounterClockwise(planePoints({0, 0, 1, 0, 0, 1})));
    EXPECT_FALSE(isCounterClockwise(planePoints({0, 0, 0, 1, 1, 0})));
}

TEST(IsCounterClockwiseTest, ZeroAreaIsCounterClockwise) {
    EXPECT_TRUE(isCounterClockwise(planePoints({0, 0, 1, 1, 2, 2})));
    EXPECT_TRUE(isCounterClockwise(planePoints({3, 3, 3, 3, 3, 3})));
}

TEST(IsCounterClockwiseTest, SumThatIsNotANumberIsClockwise) {
    EXPECT_FALSE(isCounterClockwise(planePoints({0, 0, 1, 0, kNan, 1})));
}

} // namespace
} // namespace Atelier::Vel
