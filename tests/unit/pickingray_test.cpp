#include "geometry/picking/pickingray.h"

#include <cmath>
#include <limits>
#include <random>

#include <QtCore/QString>

#include <gmock/gmock.h>

#include "pickingmeshes.h"
#include "support/scale.h"

namespace Atelier::Vel {
namespace {

using testing::DoubleEq;
using testing::ElementsAre;
using Testing::scaled;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr TriangleCorners kTriangle = {{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}};

PickingRay rayOf(const SpaceVector& origin, const SpaceVector& direction) {
    const double length = std::hypot(direction[0], direction[1], direction[2]);
    return PickingRay::make(origin, direction, length).value();
}

std::optional<TriangleHit> hitOf(const SpaceVector& origin, const SpaceVector& direction,
                                 const TriangleCorners& corners = kTriangle) {
    TriangleHit hit;
    return rayOf(origin, direction).meets(corners, hit) ? std::optional(hit) : std::nullopt;
}

} // namespace

TEST(PickingRayTest, HitHasItsDistanceWeightsAndPoint) {
    const auto hit = hitOf({1, 2, 10}, {0, 0, -5});
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->distance, 10);
    EXPECT_THAT(hit->weights, ElementsAre(0.25, 0.25, 0.5));
    EXPECT_THAT(hit->point, ElementsAre(1, 2, 0));
}

TEST(PickingRayTest, ObliqueRayIsMeasuredAlongItself) {
    const auto hit = hitOf({1, 1, -3}, {0, 1, 3});
    ASSERT_TRUE(hit);
    EXPECT_THAT(hit->distance, DoubleEq(std::sqrt(10)));
    EXPECT_THAT(hit->point, ElementsAre(1, DoubleEq(2), 0));
}

TEST(PickingRayTest, TrianglesAreHitFromBothSides) {
    EXPECT_TRUE(hitOf({1, 1, 1}, {0, 0, -1}));
    EXPECT_TRUE(hitOf({1, 1, -1}, {0, 0, 1}));
}

TEST(PickingRayTest, NothingBehindTheOriginIsHit) {
    EXPECT_FALSE(hitOf({1, 1, 1}, {0, 0, 1}));
    // Its box is passed, its plane lies behind.
    EXPECT_FALSE(hitOf({1, 1, 0.6}, {0, 0, 1}, {{{0, 0, 0}, {4, 0, 1}, {0, 4, 1}}}));
}

TEST(PickingRayTest, OriginOnATriangleHitsItAtOnce) {
    for (const double z : {1.0, -1.0}) {
        const auto hit = hitOf({1, 1, 0}, {0, 0, z});
        ASSERT_TRUE(hit);
        EXPECT_EQ(hit->distance, 0);
    }
}

TEST(PickingRayTest, CornersAndEdgesBelongToTheTriangle) {
    for (const SpaceVector& point :
         {SpaceVector{0, 0, 1}, {4, 0, 1}, {0, 4, 1}, {2, 0, 1}, {0, 3, 1}, {1, 3, 1}})
        EXPECT_TRUE(hitOf(point, {0, 0, -1})) << point[0] << " " << point[1];
    for (const SpaceVector& point : {SpaceVector{-1e-9, 1, 1}, {1, -1e-9, 1}, {2, 2 + 1e-9, 1}})
        EXPECT_FALSE(hitOf(point, {0, 0, -1})) << point[0] << " " << point[1];
}

TEST(PickingRayTest, TriangleSeenEdgeOnIsNotHit) {
    EXPECT_FALSE(hitOf({-1, 1, 0}, {1, 0, 0}));
    EXPECT_FALSE(hitOf({1, 1, 0}, {1, 1, 0}));
    EXPECT_FALSE(hitOf({-1, 0, 0}, {1, 0, 0})) << "along an edge";
}

TEST(PickingRayTest, InvalidNumbersMakeNoRay) {
    EXPECT_FALSE(PickingRay::make({0, 0, 0}, {0, 0, 0}, 1));
    for (const double wrong : {double(kNaN), double(kInfinity), -double(kInfinity)})
        for (std::size_t axis = 0; axis < 3; ++axis) {
            SpaceVector vector = {1, 2, 3};
            vector[axis] = wrong;
            EXPECT_FALSE(PickingRay::make(vector, {1, 0, 0}, 1));
            EXPECT_FALSE(PickingRay::make({0, 0, 0}, vector, 1));
        }
    EXPECT_FALSE(PickingRay::make({0, 0, 0}, {1, 0, 0}, 0));
    EXPECT_FALSE(PickingRay::make({0, 0, 0}, {0, 1e-310, 0}, 1)) << "distances would be infinite";
    EXPECT_FALSE(PickingRay::make({0, 0, 0}, {1, 0, 0}, double(kNaN)));
}

TEST(PickingRayTest, LengthOfTheDirectionDoesNotMatter) {
    for (const double length : {1e-45, 1e-20, 1.0, 1e20, 3e38}) {
        const auto hit = hitOf({1, 1, 2}, {0, 0, -length});
        ASSERT_TRUE(hit) << length;
        EXPECT_EQ(hit->distance, 2) << length;
    }
}

TEST(PickingRayTest, AxisParallelRayMayTouchABox) {
    const float low[3] = {0, 0, 0};
    const float high[3] = {1, 2, 4};
    const auto passes = [&](const SpaceVector& origin, const SpaceVector& direction) {
        return !rayOf(origin, direction).within(low, high).isEmpty();
    };
    EXPECT_TRUE(passes({0, 0, -1}, {0, 0, 1}));
    EXPECT_TRUE(passes({1, 2, -1}, {0, 0, 1}));
    EXPECT_TRUE(passes({1, 2, -1}, {-0.0, -0.0, 1}));
    EXPECT_FALSE(passes({1.001, 2, -1}, {0, 0, 1}));
    EXPECT_FALSE(passes({1, -0.001, -1}, {0, 0, 1}));
    EXPECT_FALSE(passes({0.5, 1, 5}, {0, 0, 1})) << "behind";
    EXPECT_TRUE(passes({0.5, 1, 3}, {0, 0, 1})) << "from inside";
    EXPECT_EQ(rayOf({0.5, 1, 3}, {0, 0, 1}).within(low, high).near, 0);
    EXPECT_TRUE(passes({0, 2, -1}, {1e-320, -1e-320, 1})) << "nearly parallel, within";
    EXPECT_FALSE(passes({1.001, 2, -1}, {-1e-320, 0, 1})) << "nearly parallel, outside";
}

// This makes the search in a tree of boxes exact.
TEST(PickingRayTest, IntervalOfABoxContainsThoseOfTheBoxesInside) {
    std::mt19937 random(3);
    const auto number = [&] {
        constexpr float kNumbers[] = {0, 1, -1, 1e-30F, -1e-38F, 3e38F, -3e38F, 0.1F};
        return random() % 3 == 0 ? kNumbers[random() % 8]
                                 : std::uniform_real_distribution<float>(-2, 2)(random);
    };
    int passed = 0;
    for (int round = 0; round < scaled(200'000); ++round) {
        float inner[2][3];
        float outer[2][3];
        SpaceVector origin{};
        SpaceVector direction{};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            float bounds[4] = {number(), number(), number(), number()};
            std::sort(bounds, bounds + 4);
            outer[0][axis] = bounds[0];
            inner[0][axis] = bounds[random() % 2];
            outer[1][axis] = bounds[3];
            inner[1][axis] = bounds[3 - random() % 2];
            origin[axis] = double(random() % 4 == 0 ? inner[random() % 2][axis] : number());
            direction[axis] = random() % 4 == 0 ? 0 : double(number());
        }
        const auto ray = PickingRay::make(origin, direction, 1);
        if (!ray)
            continue;
        const RayInterval inside = ray->within(inner[0], inner[1]);
        const RayInterval all = ray->within(outer[0], outer[1]);
        if (inside.isEmpty())
            continue;
        ++passed;
        EXPECT_LE(all.near, inside.near);
        EXPECT_GE(all.far, inside.far);
    }
    EXPECT_GT(passed, scaled(20'000));
}

TEST(PickingRayTest, HitLiesInTheIntervalOfItsBox) {
    std::mt19937 random(4);
    int hits = 0;
    for (int round = 0; round < scaled(100'000); ++round) {
        const TriangleCorners corners = Testing::randomTriangle(random);
        const auto [origin, direction] = Testing::randomLine(random);
        const auto hit = hitOf(origin, direction, corners);
        if (!hit)
            continue;
        ++hits;
        float low[3];
        float high[3];
        for (int axis = 0; axis < 3; ++axis) {
            low[axis] = std::min({corners.at[0][axis], corners.at[1][axis], corners.at[2][axis]});
            high[axis] = std::max({corners.at[0][axis], corners.at[1][axis], corners.at[2][axis]});
        }
        const RayInterval box = rayOf(origin, direction).within(low, high);
        EXPECT_LE(box.near, hit->distance);
        EXPECT_GE(box.far, hit->distance);
    }
    EXPECT_GT(hits, scaled(3'000));
}

// Moeller and Trumbore's method with long doubles. Near edges the two may differ.
TEST(PickingRayTest, AgreesWithAnotherMethod) {
    std::mt19937 random(5);
    int hits = 0;
    for (int round = 0; round < scaled(100'000); ++round) {
        const TriangleCorners corners = Testing::randomTriangle(random);
        const auto [origin, direction] = Testing::randomLine(random);
        const Testing::LiteralHit literal = Testing::literalHit(origin, direction, corners);
        if (literal.margin < 1e-9)
            continue;
        const auto hit = hitOf(origin, direction, corners);
        ASSERT_EQ(hit.has_value(), literal.isHit);
        if (!hit)
            continue;
        ++hits;
        EXPECT_NEAR(hit->distance, literal.distance, 1e-9 * (1 + literal.distance));
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(hit->point[i],
                        origin[i] + direction[i] * hit->distance /
                                        std::hypot(direction[0], direction[1], direction[2]),
                        1e-9 * (1 + literal.distance));
    }
    EXPECT_GT(hits, scaled(3'000));
}

} // namespace Atelier::Vel
