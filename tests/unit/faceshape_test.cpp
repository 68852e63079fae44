#include "geometry/shapes/faceshape.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace Atelier::Vel {

namespace {

constexpr quint32 kInOrder[] = {0, 1, 2, 3};

TEST(FaceShapeTest, NormalPointsToTheCounterClockwiseSide) {
    const float positions[] = {0, 0, 0, 2, 0, 0, 0, 3, 0};
    const FaceShape shape = shapeOf(positions, kInOrder, 3);
    EXPECT_FALSE(shape.isDegenerate);
    EXPECT_EQ(shape.normal[0], 0);
    EXPECT_EQ(shape.normal[1], 0);
    EXPECT_EQ(shape.normal[2], 1);
    EXPECT_EQ(shape.deviation, 0);
}

TEST(FaceShapeTest, DeviationIsTheDistanceFromTheMeanPlane) {
    const float positions[] = {0, 0, 1, 1, 0, -1, 1, 1, 1, 0, 1, -1};
    const FaceShape shape = shapeOf(positions, kInOrder, 4);
    EXPECT_NEAR(shape.deviation, 1, 1e-12);
    EXPECT_NEAR(shape.size, std::sqrt(6.0), 1e-12);
}

TEST(FaceShapeTest, PlanarFaceFarFromTheOriginHasNoDeviation) {
    const float positions[] = {1e6F, 1e6F, 5, 1e6F + 8, 1e6F, 5, 1e6F + 8, 1e6F + 8, 5, 1e6F, 1e6F + 8, 5};
    const FaceShape shape = shapeOf(positions, kInOrder, 4);
    EXPECT_FALSE(shape.isDegenerate);
    EXPECT_EQ(shape.deviation, 0);
    EXPECT_EQ(shape.normal[2], 1);
}

TEST(FaceShapeTest, ThinFacesAreDegenerate) {
    const auto isDegenerate = [](float height, float x) {
        const float positions[] = {x, 0, 0, x + 1, 0, 0, x + 0.5F, height, 0};
        return shapeOf(positions, kInOrder, 3).isDegenerate;
    };
    EXPECT_TRUE(isDegenerate(0, 0));
    EXPECT_TRUE(isDegenerate(0.9e-6F, 0));
    EXPECT_FALSE(isDegenerate(1.2e-6F, 0));
    EXPECT_TRUE(isDegenerate(1e-4F, 1024)); // a float there has steps of 1.2e-4
    EXPECT_FALSE(isDegenerate(2e-4F, 1024));
}

TEST(FaceShapeTest, EqualCornersAreDegenerate) {
    const float positions[] = {1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3};
    EXPECT_TRUE(shapeOf(positions, kInOrder, 3).isDegenerate);
    EXPECT_TRUE(shapeOf(positions, kInOrder, 4).isDegenerate);
}

TEST(FaceShapeTest, CoordinatesThatAreNotFiniteAreDetected) {
    for (const float value :
         {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
        for (int at = 0; at < 12; ++at) {
            float positions[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
            positions[at] = value;
            EXPECT_FALSE(shapeOf(positions, kInOrder, 4).isFinite) << at;
            if (at < 9) {
                EXPECT_FALSE(shapeOf(positions, kInOrder, 3).isFinite) << at;
            }
        }
}

TEST(FaceShapeTest, CosineIsThatOfTheAngleToTheNormal) {
    const float positions[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const FaceShape shape = shapeOf(positions, kInOrder, 3);
    const float along[] = {0, 0, 5};
    const float across[] = {3, 4, 0};
    const float against[] = {0, 1, -1};
    const float zero[] = {0, 0, 0};
    EXPECT_DOUBLE_EQ(cosineTo(shape, along), 1);
    EXPECT_EQ(cosineTo(shape, across), 0);
    EXPECT_DOUBLE_EQ(cosineTo(shape, against), -std::sqrt(0.5));
    EXPECT_EQ(cosineTo(shape, zero), 0);
}

} // namespace

} // namespace Atelier::Vel
