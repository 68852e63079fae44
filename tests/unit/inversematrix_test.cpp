#include "geometry/picking/inversematrix.h"

#include <limits>
#include <random>

#include <gmock/gmock.h>

namespace Atelier::Vel {
namespace {

constexpr SpaceMatrix kIdentity = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

} // namespace

TEST(InverseMatrixTest, IdentityIsItsOwnInverse) {
    EXPECT_EQ(inverseOf(kIdentity), kIdentity);
}

TEST(InverseMatrixTest, PermutationIsInverted) {
    const SpaceMatrix rows = {{{0, 0, 2, 0}, {4, 0, 0, 0}, {0, 0, 0, 8}, {0, 1, 0, 0}}};
    const SpaceMatrix inverse = {{{0, 0.25, 0, 0}, {0, 0, 0, 1}, {0.5, 0, 0, 0}, {0, 0, 0.125, 0}}};
    EXPECT_EQ(inverseOf(rows), inverse);
}

TEST(InverseMatrixTest, InverseTakesVectorsBack) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> number(-2, 2);
    for (int round = 0; round < 1000; ++round) {
        SpaceMatrix matrix{};
        for (auto& row : matrix)
            for (double& entry : row)
                entry = number(random);
        const std::array<double, 4> vector = {number(random), number(random), number(random), number(random)};
        const auto back = mapped(inverseOf(matrix).value(), mapped(matrix, vector));
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(back[i], vector[i], 1e-8);
    }
}

TEST(InverseMatrixTest, SingularMatrixHasNone) {
    EXPECT_FALSE(inverseOf({}));
    EXPECT_FALSE(inverseOf({{{1, 2, 3, 4}, {2, 4, 6, 8}, {0, 0, 1, 0}, {0, 0, 0, 1}}}));
}

TEST(InverseMatrixTest, MatrixWithNumbersThatAreNotFiniteHasNone) {
    for (const double wrong :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
        for (std::size_t i = 0; i < 16; ++i) {
            SpaceMatrix matrix = kIdentity;
            matrix[i / 4][i % 4] = wrong;
            EXPECT_FALSE(inverseOf(matrix)) << i;
        }
}

} // namespace Atelier::Vel
