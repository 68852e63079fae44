#include "geometry/normals.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include <QtGui/QVector3D>

#include "literal/literalbuilder.h"
#include "support/guardedarray.h"
#include "support/scale.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;

std::vector<float> normals(const std::vector<float>& positions, const std::vector<quint32>& triangles,
                           quint32 vertexCount) {
    const GuardedArray<float> allPositions(positions);
    const GuardedArray<quint32> corners(triangles);
    const GuardedArray<float> result(std::size_t{vertexCount} * 3, 77.0F);
    generateVertexNormals(allPositions.data(), allPositions.size(), corners.data(), corners.size(),
                          vertexCount, result.data());
    return result.items();
}

TEST(NormalsTest, PointToTheSideWithClockwiseWinding) {
    EXPECT_THAT(normals({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}, 3),
                ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1));
}

TEST(NormalsTest, VertexOfNoTriangleKeepsTheZeroNormal) {
    EXPECT_THAT(normals({0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 5, 5}, {0, 1, 2}, 4),
                ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, 0));
}

TEST(NormalsTest, DegenerateTriangleAddsNothing) {
    EXPECT_THAT(normals({0, 0, 0, 1, 0, 0, 2, 0, 0}, {0, 1, 2, 0, 0, 0}, 3),
                ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(NormalsTest, IncompleteTriangleIsSkipped) {
    EXPECT_THAT(normals({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1}, 3), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(NormalsTest, PositionsAfterTheEndAreZero) {
    // Vertex 1 is (0, 1, 0); the others do not exist. Three times the last one has the lowest bits of 2.
    EXPECT_THAT(normals({1, 0, 0, 0, 1}, {0, 1, 7}, 2), ElementsAre(0, 0, -1, 0, 0, -1));
    EXPECT_THAT(normals({1, 0, 0, 0, 1}, {0, 1, 1431655766U}, 2), ElementsAre(0, 0, -1, 0, 0, -1));
    EXPECT_THAT(normals({}, {0, 1, 2}, 1), ElementsAre(0, 0, 0));
}

quint32 bitsOf(float value) {
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// Whether the bits are equal; all NaNs count as equal.
testing::AssertionResult sameFloats(const std::vector<float>& a, const std::vector<float>& b) {
    if (a.size() != b.size())
        return testing::AssertionFailure() << a.size() << " and " << b.size() << " floats";
    for (std::size_t i = 0; i < a.size(); ++i)
        if (bitsOf(a[i]) != bitsOf(b[i]) && !(std::isnan(a[i]) && std::isnan(b[i])))
            return testing::AssertionFailure() << "float " << i << ": " << a[i] << " and " << b[i];
    return testing::AssertionSuccess();
}

TEST(NormalsTest, EqualTheLiteralStepsBitByBit) {
    std::mt19937 random(7);
    const float nasty[] = {0.0F,
                           -0.0F,
                           1e-6F,
                           1e-7F,
                           1e-20F,
                           1e-45F,
                           3e38F,
                           1e19F,
                           1.0F,
                           std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::quiet_NaN()};
    for (int round = 0; round < Testing::scaled(300); ++round) {
        const quint32 vertexCount = 3 + static_cast<quint32>(random() % 300);
        // Ordinary coordinates, tiny ones whose differences count as zero, and everything odd.
        const float scale = round % 3 == 0 ? 1.0F : round % 3 == 1 ? 1e-6F : 1e6F;
        std::uniform_real_distribution<float> coordinate(-scale, scale);
        std::vector<float> positions;
        for (quint32 i = 0; i < vertexCount * 3; ++i)
            positions.push_back(round % 5 == 0 && random() % 8 == 0 ? nasty[random() % 11]
                                                                    : coordinate(random));
        std::vector<quint32> triangles;
        triangles.reserve(3000);
        for (int i = 0; i < 3000; ++i)
            triangles.push_back(static_cast<quint32>(random() % vertexCount));
        ASSERT_TRUE(sameFloats(normals(positions, triangles, vertexCount),
                               Literal::vertexNormals(positions, triangles)))
            << round;
    }
}

/// The literal normals of a mesh in which vertices and positions may be missing.
std::vector<float> literalNormals(const std::vector<float>& positions, const std::vector<quint32>& triangles,
                                  quint32 vertexCount) {
    std::map<quint32, quint32> numbers;
    std::vector<float> allPositions;
    std::vector<quint32> corners;
    for (std::size_t i = 0; i < triangles.size() / 3 * 3; ++i) {
        const auto number = numbers.emplace(triangles[i], static_cast<quint32>(numbers.size()));
        corners.push_back(number.first->second);
        for (quint64 axis = 0; number.second && axis < 3; ++axis) {
            const quint64 place = quint64{triangles[i]} * 3 + axis;
            allPositions.push_back(place < positions.size() ? positions[place] : 0.0F);
        }
    }
    const std::vector<float> all = Literal::vertexNormals(allPositions, corners);
    std::vector<float> result(std::size_t{vertexCount} * 3);
    for (const auto& [vertex, number] : numbers)
        if (vertex < vertexCount)
            std::copy_n(all.begin() + number * 3, 3, result.begin() + vertex * 3);
    return result;
}

// Small counts: the remainders of the steps that process four at once.
TEST(NormalsTest, SmallMeshesWithMissingVerticesEqualTheLiteralSteps) {
    std::mt19937 random(8);
    const auto below = [&random](quint32 limit) { return static_cast<quint32>(random() % limit); };
    std::uniform_real_distribution<float> coordinate(-1, 1);
    for (int round = 0; round < Testing::scaled(5'000); ++round) {
        const quint32 vertexCount = below(14);
        std::vector<float> positions(std::size_t{vertexCount} * 3 + 3 - below(vertexCount == 0 ? 4 : 7));
        for (float& value : positions)
            value = coordinate(random);
        std::vector<quint32> triangles(below(60));
        const bool hasMissing = round % 3 == 0;
        for (quint32& vertex : triangles)
            vertex = hasMissing && below(12) == 0 ? 0xFFFFFFFF - below(3) : below(vertexCount + 1);
        ASSERT_TRUE(sameFloats(normals(positions, triangles, vertexCount),
                               literalNormals(positions, triangles, vertexCount)))
            << round;
    }
}

} // namespace
} // namespace Atelier::Vel
