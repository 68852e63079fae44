#include "geometry/triangulation/earblockers.h"

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"

namespace Atelier::Vel {
namespace {

using Testing::TestPolygon;

PlanePoint direction(const PlanePoint& from, const PlanePoint& to) {
    return normalized(to - from);
}

EarTriangle earTriangle(const PlanePoint& corner, const PlanePoint& after, const PlanePoint& before) {
    return {corner, after, before, direction(corner, after), direction(corner, before)};
}

/// The test of one corner as it is defined, without a filter.
bool blocksAsDefined(const PlanePoint& p, const PlanePoint& corner, const PlanePoint& after,
                     const PlanePoint& before) {
    if (p == corner || p == after || p == before)
        return false;
    return crossProduct(direction(corner, after), direction(corner, p)) >= 0 &&
           crossProduct(direction(after, before), direction(after, p)) >= 0 &&
           crossProduct(direction(before, corner), direction(before, p)) >= 0;
}

std::vector<PlanePoint> randomPoints(int count, std::mt19937& random) {
    const TestPolygon polygon = Testing::randomPolygon(count, random);
    std::vector<PlanePoint> points;
    for (const QVector2D& point :
         Literal::projectPolygon(polygon.normal, count, polygon.corners.data(), polygon.positions.data()))
        points.push_back({point.x(), point.y()});
    return points;
}

TEST(EarTriangleTest, FilterAgreesWithTheDefinedTest) {
    std::mt19937 random(31);
    int blocked = 0;
    for (int round = 0; round < 200'000; ++round) {
        const std::vector<PlanePoint> p = randomPoints(4, random);
        if (!(crossProduct(direction(p[0], p[1]), direction(p[0], p[2])) > 0))
            continue;
        const bool expected = blocksAsDefined(p[3], p[0], p[1], p[2]);
        ASSERT_EQ(earTriangle(p[0], p[1], p[2]).isBlockedBy(p[3]), expected);
        blocked += expected ? 1 : 0;
    }
    EXPECT_GT(blocked, 1000);
}

TEST(EarTriangleTest, FilterAgreesWithTheDefinedTestBesideTheBorder) {
    // Points on the line of a side, moved by a few units in the last place.
    std::mt19937 random(32);
    std::uniform_real_distribution<float> number(-1, 1);
    int found[2] = {};
    for (int round = 0; round < 300'000; ++round) {
        const PlanePoint corner = {number(random), number(random)};
        const PlanePoint after = {number(random), number(random)};
        const PlanePoint before = {number(random), number(random)};
        const float along = 2 * number(random);
        const float off = 3e-7F * number(random);
        const PlanePoint onSide = {after.x + along * (before.x - after.x) + off,
                                   after.y + along * (before.y - after.y) - off};
        if (!(crossProduct(direction(corner, after), direction(corner, before)) > 0))
            continue;
        const bool expected = blocksAsDefined(onSide, corner, after, before);
        ASSERT_EQ(earTriangle(corner, after, before).isBlockedBy(onSide), expected);
        ++found[expected ? 1 : 0];
    }
    EXPECT_GT(found[0], 10'000);
    EXPECT_GT(found[1], 10'000);
}

class EarBlockersTest : public testing::Test {
protected:
    /// Tests random triangles of the polygon's corners and removes some corners after each.
    void compareWithAllCorners(const std::vector<PlanePoint>& points) {
        const int count = static_cast<int>(points.size());
        std::vector<bool> active(count, true);
        _blockers.build(points.data(), count);
        for (int query = 0; query < 60; ++query) {
            const auto any = [this, count] { return static_cast<int>(_random() % count); };
            const int corner = any();
            const int after = query % 2 == 0 ? (corner + 1) % count : any();
            const int before = query % 3 == 0 ? (corner + count - 1) % count : any();
            compare(points, active, points[corner], points[after], points[before]);
            const int removed = any();
            if (active[removed])
                _blockers.remove(removed);
            active[removed] = false;
        }
    }

    int found() const { return _found; }
    std::mt19937& random() { return _random; }

private:
    void compare(const std::vector<PlanePoint>& points, const std::vector<bool>& active, PlanePoint corner,
                 PlanePoint after, PlanePoint before) {
        if (!(crossProduct(direction(corner, after), direction(corner, before)) > 0))
            return;
        bool expected = false;
        for (std::size_t k = 0; k < points.size(); ++k)
            expected = expected || (active[k] && blocksAsDefined(points[k], corner, after, before));
        ASSERT_EQ(_blockers.block(earTriangle(corner, after, before)), expected);
        _found += expected ? 1 : 0;
    }

    EarBlockers _blockers;
    std::mt19937 _random{33};
    int _found = 0;
};

TEST_F(EarBlockersTest, AnswersEqualATestOfAllActiveCorners) {
    for (int round = 0; round < 3'000; ++round)
        compareWithAllCorners(randomPoints(8 + static_cast<int>(random()() % 150), random()));
    EXPECT_GT(found(), 1000);
}

TEST_F(EarBlockersTest, FindCornersThatRoundingPutsInsideAThinTriangle) {
    // All on a line except for rounding: thin triangles whose widened sides never meet again.
    std::uniform_real_distribution<float> number(-1, 1);
    for (int round = 0; round < 1'000; ++round) {
        const float slope = number(random());
        const float noise = std::pow(10.0F, 4 * number(random()) - 7);
        std::vector<PlanePoint> points;
        for (int k = 0; k < 100; ++k) {
            const float x = k % 4 == 0 ? 1e3F * number(random()) : number(random());
            points.push_back({x, slope * x + noise * number(random())});
        }
        compareWithAllCorners(points);
    }
    EXPECT_GT(found(), 1000);
}

TEST_F(EarBlockersTest, FindCornersCloserThanDirectionsReach) {
    // Offsets below 1e-6 have no direction and count as inside.
    std::uniform_real_distribution<float> number(-1, 1);
    for (int round = 0; round < 1'000; ++round) {
        std::vector<PlanePoint> points;
        for (int k = 0; k < 60; ++k) {
            const float centre = static_cast<float>(k % 3) * 2e-6F;
            points.push_back({centre + 1.1e-6F * number(random()),
                              centre * number(random()) / 2 + 1.1e-6F * number(random())});
        }
        compareWithAllCorners(points);
    }
    EXPECT_GT(found(), 1000);
}

TEST_F(EarBlockersTest, CornersAtOnePointBlockUntilTheLastIsRemoved) {
    const std::vector<PlanePoint> points = {{0, 0}, {4, 0}, {0, 4}, {1, 1}, {1, 1}, {9, 9}};
    const EarTriangle triangle = earTriangle(points[0], points[1], points[2]);
    EarBlockers blockers;
    blockers.build(points.data(), 6);
    EXPECT_TRUE(blockers.block(triangle));
    blockers.remove(3);
    EXPECT_TRUE(blockers.block(triangle));
    blockers.remove(4);
    EXPECT_FALSE(blockers.block(triangle));
}

TEST_F(EarBlockersTest, CornersEqualToOneOfTheTriangleDoNotBlock) {
    const std::vector<PlanePoint> points = {{0, 0}, {4, 0}, {0, 4}, {4, 0}, {-0.0F, 0}, {9, 9}};
    EarBlockers blockers;
    blockers.build(points.data(), 6);
    EXPECT_FALSE(blockers.block(earTriangle(points[0], points[1], points[2])));
}

TEST_F(EarBlockersTest, RebuildingRemovesTheOldCorners) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    std::vector<PlanePoint> points = {{0, 0}, {4, 0}, {0, 4}, {1, 1}, {9, 9}, {8, 9}};
    const EarTriangle triangle = earTriangle(points[0], points[1], points[2]);
    EarBlockers blockers;
    blockers.build(points.data(), 6);
    EXPECT_TRUE(blockers.block(triangle));
    blockers.build(points.data(), 3);
    EXPECT_FALSE(blockers.block(triangle));
    points = {{-1, -1}, {-2, -1}, {-3, -1}, {-4, -1}, {1, 1}, {kNan, 1}};
    for (const std::size_t spoilt : {0U, 1U, 2U, 3U, 5U}) {
        std::vector<PlanePoint> some = points;
        some[5] = {7, 7};
        blockers.build(some.data(), 6);
        some[spoilt] = {kNan, 1};
        blockers.build(some.data(), 6);
        blockers.remove(static_cast<int>(spoilt));
        EXPECT_TRUE(blockers.block(triangle)) << "corner " << spoilt << " has no site";
        blockers.remove(4);
        EXPECT_FALSE(blockers.block(triangle));
    }
}

TEST_F(EarBlockersTest, AnswersAfterRebuildingEqualATestOfAllActiveCorners) {
    for (int round = 0; round < 300; ++round)
        compareWithAllCorners(
            randomPoints(5 + static_cast<int>(random()() % (round % 2 == 0 ? 400 : 20)), random()));
    EXPECT_GT(found(), 500);
}

TEST_F(EarBlockersTest, PointsThatAreNotFiniteBlockNothing) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::vector<PlanePoint> points = {{kNan, 0}, {kInfinity, 0}, {1, -kInfinity}};
    EarBlockers blockers;
    blockers.build(points.data(), 3);
    EXPECT_FALSE(blockers.block(earTriangle({0, 0}, {4, 0}, {0, 4})));
    blockers.remove(1);
    blockers.build(nullptr, 0);
    EXPECT_FALSE(blockers.block(earTriangle({0, 0}, {4, 0}, {0, 4})));
}

} // namespace
} // namespace Atelier::Vel
