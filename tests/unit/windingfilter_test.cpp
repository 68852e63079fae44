#include "geometry/triangulation/fourwindings.h"

#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"
#include "support/scale.h"

namespace Atelier::Vel {
namespace {

using Testing::scaled;
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

TEST(TriangulationWindingTest, SliversAndNumbersOutOfRangeAreNotDecided) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    TestPolygon sliver = triangle(10, 0);
    sliver.positions[7] = 1e-5F;
    EXPECT_EQ(quickWinding(sliver), Winding::kUndecided);
    EXPECT_EQ(quickWinding(triangle(1e30F, 0)), Winding::kUndecided);
    EXPECT_EQ(quickWinding(triangle(kNan, 0)), Winding::kUndecided);
    EXPECT_EQ(quickWinding(triangle(std::numeric_limits<float>::infinity(), 0)), Winding::kUndecided);
}

// The length of the normal is the square of the side.
TEST(TriangulationWindingTest, NormalsAroundTheNullLengthAreNotDecided) {
    const std::pair<double, Winding> rows[] = {{0.9985e-12, Winding::kCounterClockwise},
                                               {0.9995e-12, Winding::kUndecided},
                                               {1.0005e-12, Winding::kUndecided},
                                               {1.0015e-12, Winding::kCounterClockwise}};
    for (const auto& [squaredNormal, expected] : rows)
        EXPECT_EQ(quickWinding(triangle(static_cast<float>(std::pow(squaredNormal, 0.25)), 0)), expected)
            << squaredNormal;
}

TEST(TriangulationWindingTest, FacesWhoseProductsMayOverflowAreNotDecided) {
    EXPECT_EQ(quickWinding(triangle(1.345e6F, 0)), Winding::kCounterClockwise);
    EXPECT_EQ(quickWinding(triangle(1.346e6F, 0)), Winding::kUndecided);
}

TEST(TriangulationWindingTest, FacesWhoseProductsUnderflowAreNotDecided) {
    // Far away on one axis, so that the normal is a rounding error, and a large one.
    std::mt19937 random(50);
    std::uniform_real_distribution<float> number(-1, 1);
    int notNull = 0;
    for (int round = 0; round < scaled(20'000); ++round) {
        TestPolygon tiny;
        tiny.corners = {0, 1, 2, 3};
        for (int k = 0; k < 4; ++k)
            for (float value : {1e30F, 1e-25F * number(random), 1e-25F * number(random)})
                tiny.positions.push_back(value);
        if (Literal::polygonNormal(4, tiny.corners.data(), tiny.positions.data()).length() < 0.5F)
            continue;
        ++notNull;
        ASSERT_EQ(quickWinding(tiny), Winding::kUndecided);
    }
    EXPECT_GT(notNull, scaled(1000));
}

TEST(TriangulationWindingTest, DecidedWindingEqualsTheDefinition) {
    std::mt19937 random(51);
    int decided[3] = {};
    for (int round = 0; round < scaled(400'000); ++round) {
        const TestPolygon polygon = Testing::randomPolygon(3 + round % 2, random);
        const Winding winding = quickWinding(polygon);
        ++decided[static_cast<int>(winding)];
        if (winding == Winding::kUndecided)
            continue;
        ASSERT_EQ(winding == Winding::kCounterClockwise, isCounterClockwiseAsDefined(polygon));
    }
    EXPECT_GT(decided[static_cast<int>(Winding::kCounterClockwise)], scaled(100'000));
    EXPECT_GT(decided[static_cast<int>(Winding::kClockwise)], 100) << "normals that are rounding errors";
    EXPECT_GT(decided[static_cast<int>(Winding::kUndecided)], scaled(1'000));
}

TEST(TriangulationWindingTest, SliversFarFromTheOriginAreNeverDecidedWrongly) {
    std::mt19937 random(52);
    std::uniform_real_distribution<float> number(-1, 1);
    std::uniform_real_distribution<float> exponent(-7, 0);
    int sure = 0;
    for (int round = 0; round < scaled(400'000); ++round) {
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
        if (winding == Winding::kUndecided)
            continue;
        ++sure;
        ASSERT_EQ(winding == Winding::kCounterClockwise, isCounterClockwiseAsDefined(polygon));
    }
    EXPECT_GT(sure, scaled(100'000));
}

Winding windingOf(const FourWindings& windings, unsigned int face) {
    if ((windings.undecided >> face & 1) != 0)
        return Winding::kUndecided;
    return (windings.clockwise >> face & 1) != 0 ? Winding::kClockwise : Winding::kCounterClockwise;
}

TEST(TriangulationWindingTest, FourFacesAtOnceAreDecidedLikeSingleFaces) {
#if !defined(__SSE2__)
    GTEST_SKIP() << "faces are taken one by one";
#endif
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    std::mt19937 random(52);
    int found[3] = {};
    for (int round = 0; round < scaled(100'000); ++round) {
        const int count = 3 + round % 2;
        std::vector<float> positions;
        std::vector<quint32> corners;
        std::vector<Winding> expected;
        for (int face = 0; face < 4; ++face) {
            TestPolygon polygon = Testing::randomPolygon(count, random);
            if (random() % 16 == 0)
                polygon.positions[random() % polygon.positions.size()] = random() % 2 == 0 ? kInfinity : kNan;
            expected.push_back(quickWinding(polygon));
            const auto first = static_cast<quint32>(positions.size() / 3);
            for (int corner : polygon.corners)
                corners.push_back(first + static_cast<quint32>(corner));
            positions.insert(positions.end(), polygon.positions.begin(), polygon.positions.end());
        }
        positions.insert(positions.end(), {0.0F, 0.0F, 0.0F});
        const FourWindings windings = count == 3
                                          ? quickTriangleWindings(corners.data(), positions.data())
                                          : quickQuadrilateralWindings(corners.data(), positions.data());
        for (unsigned int face = 0; face < 4; ++face) {
            ASSERT_EQ(windingOf(windings, face), expected[face]) << "round " << round;
            ++found[static_cast<int>(expected[face])];
        }
    }
    for (int count : found)
        EXPECT_GT(count, 100);
}

} // namespace
} // namespace Atelier::Vel
