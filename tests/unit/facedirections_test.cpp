#include "geometry/smoothing/facedirections.h"

#include <limits>

#include <gmock/gmock.h>

#include "cornerfaces.h"

namespace Atelier::Vel {
namespace {

using Testing::TestFaces;

constexpr float kTolerance = 1e-6F;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

void ignoreCount(quint32 /*corners*/) {}

void expectDirection(const Direction& actual, const Direction& expected) {
    EXPECT_NEAR(lengthOf(actual - expected), 0, kTolerance) << actual.x << ' ' << actual.y << ' ' << actual.z;
}

TEST(FaceDirectionsTest, NormalPointsToTheSideWithCounterClockwiseWinding) {
    TestFaces faces({0, 0, 0, 2, 0, 0, 0, 3, 0}, {{0, 1, 2}, {0, 2, 1}});
    const FaceDirections directions(*faces, ignoreCount);
    expectDirection(directions.normalOf(0), {0, 0, 1});
    expectDirection(directions.normalOf(2), {0, 0, 1});
    expectDirection(directions.normalOf(3), {0, 0, -1});
    EXPECT_EQ(directions.faceOf(2), 0U);
    EXPECT_EQ(directions.faceOf(3), 1U);
}

TEST(FaceDirectionsTest, AngleIsThatOfEachCorner) {
    TestFaces faces({0, 0, 0, 1, 0, 0, 0, 2, 0}, {{0, 1, 2}});
    const FaceDirections directions(*faces, ignoreCount);
    EXPECT_NEAR(directions.angleOf(0), kPi / 2, kTolerance);
    EXPECT_NEAR(directions.angleOf(1), std::atan(2.0), kTolerance);
    EXPECT_NEAR(directions.angleOf(2), std::atan(0.5), kTolerance);
}

TEST(FaceDirectionsTest, ReflexCornerHasMoreThanHalfATurn) {
    TestFaces faces({0, 0, 0, 4, 0, 0, 1, 1, 0, 0, 4, 0}, {{0, 1, 2, 3}, {3, 2, 1, 0}});
    const FaceDirections directions(*faces, ignoreCount);
    double sum = 0;
    for (quint32 corner = 0; corner < 4; ++corner)
        sum += directions.angleOf(corner);
    EXPECT_NEAR(sum, 2 * kPi, kTolerance);
    EXPECT_GT(directions.angleOf(2), kPi);
    EXPECT_GT(directions.angleOf(5), kPi) << "also if it is wound clockwise";
}

TEST(FaceDirectionsTest, PolygonThatIsNotPlanarHasNewellsNormal) {
    const std::vector<float> positions = {0, 0, 0, 2, 0, 1, 2, 2, -1, 1, 3, 5, 0, 2, 2};
    TestFaces faces(positions, {{0, 1, 2, 3, 4}});
    Direction sum;
    for (std::size_t i = 0; i < 5; ++i) {
        const float* const p = positions.data() + 3 * i;
        const float* const q = positions.data() + 3 * ((i + 1) % 5);
        sum = sum + Direction{double((p[1] - q[1]) * (p[2] + q[2])), double((p[2] - q[2]) * (p[0] + q[0])),
                              double((p[0] - q[0]) * (p[1] + q[1]))};
    }
    expectDirection(FaceDirections(*faces, ignoreCount).normalOf(0), unitDirection(sum));
}

TEST(FaceDirectionsTest, FaceFarFromTheOriginKeepsItsNormal) {
    constexpr float kFar = 1 << 22;
    TestFaces faces({kFar, kFar, kFar, kFar + 1, kFar, kFar + 1, kFar, kFar + 1, kFar}, {{0, 1, 2}});
    expectDirection(FaceDirections(*faces, ignoreCount).normalOf(0), unitDirection(Direction{-1, 0, 1}));
}

TEST(FaceDirectionsTest, LargestAndSmallestFacesHaveNormals) {
    for (const float size : {3e38F, 1e-45F}) {
        TestFaces faces({0, 0, 0, size, 0, 0, 0, size, 0}, {{0, 1, 2}});
        const FaceDirections directions(*faces, ignoreCount);
        expectDirection(directions.normalOf(0), {0, 0, 1});
        EXPECT_NEAR(directions.angleOf(0), kPi / 2, kTolerance);
    }
}

TEST(FaceDirectionsTest, FacesWithoutAnAreaHaveNeitherNormalsNorAngles) {
    const std::vector<std::vector<float>> degenerate = {
        {0, 0, 0, 1, 0, 0, 2, 0, 0},
        {1, 1, 1, 1, 1, 1, 1, 1, 1},
        {0, 0, 0, 1, 0, 0, 0, kInfinity, 0},
        {0, 0, 0, 1, 0, 0, 0, std::numeric_limits<float>::quiet_NaN(), 0},
        {kInfinity, 0, 0, 1, 0, 0, 0, 1, 0}};
    for (const auto& positions : degenerate) {
        TestFaces faces(positions, {{0, 1, 2}, {0, 1}, {2}, {}});
        const FaceDirections directions(*faces, ignoreCount);
        for (quint32 corner = 0; corner < 6; ++corner) {
            EXPECT_TRUE(isZero(directions.normalOf(corner)));
            EXPECT_EQ(directions.angleOf(corner), 0);
        }
    }
}

TEST(FaceDirectionsTest, CornerAtThePositionOfItsNeighbourHasNoAngle) {
    TestFaces faces({0, 0, 0, 1, 0, 0, 0, 1, 0}, {{0, 0, 1, 2}});
    const FaceDirections directions(*faces, ignoreCount);
    expectDirection(directions.normalOf(0), {0, 0, 1});
    EXPECT_EQ(directions.angleOf(0), 0);
    EXPECT_EQ(directions.angleOf(1), 0);
    EXPECT_NEAR(directions.angleOf(2), kPi / 4, kTolerance);
}

TEST(FaceDirectionsTest, PositionsThatDoNotExistAreZero) {
    TestFaces faces({1, 0, 0, 0, 1, 0}, {{0, 1, 2}, {0, 1, 0xFFFFFFFF}, {0, 1, 0x7FFFFFFF}});
    const FaceDirections directions(*faces, ignoreCount);
    for (quint32 corner = 0; corner < 9; ++corner)
        expectDirection(directions.normalOf(corner), {0, 0, 1});
}

TEST(FaceDirectionsTest, CornersOutsideOfFacesHaveNoNormal) {
    TestFaces faces({0, 0, 0, 1, 0, 0, 0, 1, 0}, {{0, 1, 2}, {0, 1, 2}});
    faces->cornerCount = 5;
    const FaceDirections cut(*faces, ignoreCount);
    expectDirection(cut.normalOf(2), {0, 0, 1});
    EXPECT_TRUE(isZero(cut.normalOf(4))) << "two corners of three";
    faces->cornerCount = 6;
    faces->faceCount = 1;
    const FaceDirections extra(*faces, ignoreCount);
    EXPECT_TRUE(isZero(extra.normalOf(3)));
    EXPECT_EQ(extra.faceOf(3), 1U) << "the number of faces";
}

TEST(FaceDirectionsTest, UniformFacesNeedNoCounts) {
    TestFaces faces({0, 0, 0, 1, 0, 0, 0, 1, 0}, {{0, 1, 2}, {2, 1, 0}});
    faces->cornerCounts = nullptr;
    faces->uniformCorners = 3;
    std::vector<quint32> counted;
    const FaceDirections directions(*faces, [&counted](quint32 corners) { counted.push_back(corners); });
    expectDirection(directions.normalOf(2), {0, 0, 1});
    expectDirection(directions.normalOf(3), {0, 0, -1});
    EXPECT_THAT(counted, testing::ElementsAre(3, 3));
}

} // namespace
} // namespace Atelier::Vel
