#include <limits>
#include <vector>

#include <gmock/gmock.h>

#include <velmodel/triangulation.h>

#include "support/guardedarray.h"

namespace Atelier::Vel {
namespace {

using Testing::GuardedArray;

class DegenerateTriangleTest : public testing::Test {
protected:
    static int find(const std::vector<float>& positions, const std::vector<unsigned int>& indices,
                    int start = 0) {
        const GuardedArray<float> guardedPositions(positions);
        const GuardedArray<unsigned int> guardedIndices(indices);
        return FindDegenerateTriangle(static_cast<int>(indices.size()), guardedIndices.data(),
                                      guardedPositions.data(), start);
    }
};

TEST_F(DegenerateTriangleTest, CollinearTriangleIsFound) {
    EXPECT_EQ(find({0, 0, 1, 0, 2, 0}, {0, 1, 2}), 0);
    EXPECT_EQ(find({0, 0, 1, 0, 0, 1}, {0, 1, 2}), -1);
}

TEST_F(DegenerateTriangleTest, SearchBeginsAtStart) {
    const std::vector<float> points = {0, 0, 1, 0, 2, 0};
    EXPECT_EQ(find(points, {0, 1, 2, 0, 1, 2}, 3), 3);
    EXPECT_EQ(find(points, {0, 1, 2, 0, 1, 2}, 0), 0);
    EXPECT_EQ(find({0, 0, 1, 0, 2, 0, 0, 1}, {0, 1, 2, 0, 1, 3}, 3), -1);
}

TEST_F(DegenerateTriangleTest, StartNeedNotBeAMultipleOfThree) {
    EXPECT_EQ(find({0, 0, 1, 0, 2, 0, 0, 1}, {3, 0, 1, 2}, 1), 1);
}

TEST_F(DegenerateTriangleTest, StartAtOrAfterTheEndFindsNothing) {
    EXPECT_EQ(find({0, 0, 1, 0, 2, 0}, {0, 1, 2}, 3), -1);
    EXPECT_EQ(find({0, 0, 1, 0, 2, 0}, {0, 1, 2}, std::numeric_limits<int>::max()), -1);
    EXPECT_EQ(FindDegenerateTriangle(0, nullptr, nullptr, 0), -1);
}

TEST_F(DegenerateTriangleTest, NegativeStartCountsAsZero) {
    EXPECT_EQ(find({0, 0, 1, 0, 2, 0}, {0, 1, 2}, -7), 0);
}

TEST_F(DegenerateTriangleTest, IncompleteTriangleIsIgnored) {
    EXPECT_EQ(find({0, 0, 1, 0, 0, 1, 2, 0}, {0, 1, 2, 0, 1}), -1);
}

TEST_F(DegenerateTriangleTest, TwoEqualCornersAreFoundThreeAreNot) {
    EXPECT_EQ(find({0, 0, 1, 0, 1, 0}, {0, 1, 2}), 0);
    EXPECT_EQ(find({1, 1, 1, 1, 1, 1}, {0, 1, 2}), -1);
}

TEST_F(DegenerateTriangleTest, EveryPairOfEdgesCounts) {
    const std::vector<float> points = {0, 0, 1, 0, 2, 1e-4F};
    EXPECT_EQ(find(points, {0, 1, 2}), 0);
    EXPECT_EQ(find(points, {1, 2, 0}), 0);
    EXPECT_EQ(find(points, {2, 0, 1}), 0);
}

TEST_F(DegenerateTriangleTest, PointsThatAreNotNumbersAreNotDegenerate) {
    EXPECT_EQ(find({0, 0, 1, 0, std::numeric_limits<float>::quiet_NaN(), 0}, {0, 1, 2}), -1);
}

} // namespace
} // namespace Atelier::Vel
