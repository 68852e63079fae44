#include "geometry/smoothing/angles.h"

#include <random>

#include <QtCore/QString>

#include <gmock/gmock.h>

#include "support/scale.h"

namespace Atelier::Vel {
namespace {

TEST(AnglesTest, ArcTangentIsThatOfTheStandardLibrary) {
    for (int i = 0; i <= 10'000; ++i)
        ASSERT_NEAR(arcTangent(i / 10'000.0), std::atan(i / 10'000.0), 1e-14) << i;
}

TEST(AnglesTest, CosineIsThatOfTheStandardLibrary) {
    for (int i = 0; i <= 10'000; ++i)
        ASSERT_NEAR(cosineOf(kPi * i / 10'000), std::cos(kPi * i / 10'000), 1e-14) << i;
}

TEST(AnglesTest, AngleBetweenDirectionsIsAccurateAtBothEnds) {
    for (const double angle : {0.0, 1e-12, 1e-6, 0.5, kPi / 2, 2.0, kPi - 1e-6, kPi})
        EXPECT_NEAR(angleBetween({1, 0, 0}, {std::cos(angle), std::sin(angle), 0}), angle, 1e-14) << angle;
}

TEST(AnglesTest, UnitDirectionHasLengthOne) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> component(-1, 1);
    for (int round = 0; round < Testing::scaled(1000); ++round) {
        const Direction direction = {component(random), component(random), component(random)};
        const Direction unit = unitDirection(direction);
        ASSERT_NEAR(lengthOf(unit), 1, 1e-15);
        ASSERT_NEAR(lengthOf(crossProduct(unit, direction)), 0, 1e-15);
        ASSERT_GT(dotProduct(unit, direction), 0);
    }
}

TEST(AnglesTest, DirectionThatIsTooShortOrNotFiniteBecomesZero) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(isZero(unitDirection({0, 0, 0})));
    EXPECT_TRUE(isZero(unitDirection({kInfinity, 0, 0})));
    EXPECT_TRUE(isZero(unitDirection({0, std::nan(""), 0})));
    EXPECT_TRUE(isZero(unitDirection({0.5, 0, 0}, 0.5)));
    EXPECT_FALSE(isZero(unitDirection({0.51, 0, 0}, 0.5)));
}

} // namespace
} // namespace Atelier::Vel
