#include "geometry/triangulationwinding.h"

#include <limits>
#include <random>

#include <gmock/gmock.h>

#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"

namespace Atelier::Vel {
namespace {

using Testing::TestPolygon;

Winding quickWinding(const TestPolygon& p) {
    return p.count() == 3 ? quickTriangleWinding(p.corners.data(), p.positions.data())
                          : quickQuadrilateralWinding(p.corners.data(), p.positions.data());
}

bool isCounterClockwiseAsDefined(const TestPolygon& p) {
    const QVector3D normal = Literal::polygonNormal(p.count(), p.corners.data(), p.positions.data());
    return Literal::isCounterClockwise(
        Literal::projectPolygon(normal, p.count(), p.corners.data(), p.positions.data()));
}

TestPolygon triangle(float scale, float offset) {
    const float s = scale;
    return {{offset, offset, offset, offset + s, offset, offset, offset, offset + s, offset}, {0, 1, 2}, {}};
}

TEST(TriangulationWindingTest, OrdinaryFacesAreDecided) {
    EXPECT_EQ(quickWinding(triangle(1, 0)), Winding::kCounterClockwise);
    EXPECT_EQ(quickWinding(triangle(1e-4F, 0)), Winding::kCounterClockwise) << "the normal is not normalised";
    EXPECT_EQ(quickWinding(triangle(1e3F, 10)), Winding::kCounterClockwise);
}

TEST(TriangulationWindingTest, SliversAndNumbersOutOfRangeAreNot) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    TestPolygon sliver = triangle(10, 0);
    sliver.positions[7] = 1e-5F;
    EXPECT_EQ(quickWinding(sliver), Winding::kUnsure);
    EXPECT_EQ(quickWinding(triangle(1e30F, 0)), Winding::kUnsure);
    EXPECT_EQ(quickWinding(triangle(kNan, 0)), Winding::kUnsure);
    EXPECT_EQ(quickWinding(triangle(std::numeric_limits<float>::infinity(), 0)), Winding::kUnsure);
}

TEST(TriangulationWindingTest, FacesWhoseProductsUnderflowAreNotDecided) {
    // Far away on one axis, so that the normal is a rounding error, and a large one.
    std::mt19937 random(50);
    std::uniform_real_distribution<float> number(-1, 1);
    int notNull = 0;
    for (int round = 0; round < 20'000; ++round) {
        TestPolygon tiny;
        tiny.corners = {0, 1, 2, 3};
        for (int k = 0; k < 4; ++k)
            for (float value : {1e30F, 1e-25F * number(random), 1e-25F * number(random)})
                tiny.positions.push_back(value);
        if (Literal::polygonNormal(4, tiny.corners.data(), tiny.positions.data()).length() < 0.5F)
            continue;
        ++notNull;
        ASSERT_EQ(quickWinding(tiny), Winding::kUnsure);
    }
    EXPECT_GT(notNull, 1000);
}

TEST(TriangulationWindingTest, WhatIsDecidedIsTheDefinedWinding) {
    std::mt19937 random(51);
    int decided[3] = {};
    for (int round = 0; round < 400'000; ++round) {
        const TestPolygon polygon = Testing::randomPolygon(3 + round % 2, random);
        const Winding winding = quickWinding(polygon);
        ++decided[static_cast<int>(winding)];
        if (winding == Winding::kUnsure)
            continue;
        ASSERT_EQ(winding == Winding::kCounterClockwise, isCounterClockwiseAsDefined(polygon));
    }
    EXPECT_GT(decided[static_cast<int>(Winding::kCounterClockwise)], 100'000);
    EXPECT_GT(decided[static_cast<int>(Winding::kClockwise)], 100) << "normals that are rounding errors";
    EXPECT_GT(decided[static_cast<int>(Winding::kUnsure)], 1'000);
}

TEST(TriangulationWindingTest, SliversFarFromTheOriginAreDecidedRightOrNotAtAll) {
    std::mt19937 random(52);
    std::uniform_real_distribution<float> number(-1, 1);
    std::uniform_real_distribution<float> exponent(-7, 0);
    int sure = 0;
    for (int round = 0; round < 400'000; ++round) {
        const int count = 3 + round % 2;
        const float height = std::pow(10.0F, exponent(random));
        const float offset = std::pow(10.0F, -exponent(random)) - 1;
        TestPolygon polygon;
        for (int k = 0; k < count; ++k) {
            polygon.corners.push_back(k);
            const float along = number(random);
            for (int axis = 0; axis < 3; ++axis)
                polygon.positions.push_back(offset + along + height * number(random));
        }
        const Winding winding = quickWinding(polygon);
        if (winding == Winding::kUnsure)
            continue;
        ++sure;
        ASSERT_EQ(winding == Winding::kCounterClockwise, isCounterClockwiseAsDefined(polygon));
    }
    EXPECT_GT(sure, 100'000);
}

} // namespace
} // namespace Atelier::Vel
