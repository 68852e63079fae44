#include "geometry/normals.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <gmock/gmock.h>

#include <QtGui/QVector3D>

#include "literal/literalbuilder.h"
#include "support/scale.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;

std::vector<float> normals(const std::vector<float>& positions, const std::vector<quint32>& triangles,
                           quint32 vertexCount) {
    std::vector<float> result(std::size_t{vertexCount} * 3, 77.0F);
    generateVertexNormals(positions.data(), positions.size(), triangles.data(), triangles.size(), vertexCount,
                          result.data());
    return result;
}

TEST(NormalsTest, PointAwayFromTheSideThatIsSeenCounterClockwise) {
    EXPECT_THAT(normals({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}, 3),
                ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1));
}

TEST(NormalsTest, VertexOfNoTriangleKeepsTheZeroNormal) {
    EXPECT_THAT(normals({0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 5, 5}, {0, 1, 2}, 4),
                ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, 0));
}

TEST(NormalsTest, TriangleWithoutAreaAddsNothing) {
    EXPECT_THAT(normals({0, 0, 0, 1, 0, 0, 2, 0, 0}, {0, 1, 2, 0, 0, 0}, 3),
                ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(NormalsTest, UnfinishedTriangleIsPassedOver) {
    EXPECT_THAT(normals({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1}, 3), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(NormalsTest, PositionsAndVerticesBehindTheEndAreNotTouched) {
    EXPECT_THAT(normals({1, 0, 0, 0, 1}, {0, 1, 7, 4000000000U, 0, 1}, 2), testing::SizeIs(6));
    EXPECT_THAT(normals({}, {0, 1, 2}, 1), ElementsAre(0, 0, 0));
}

quint32 bitsOf(float value) {
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// The same bits, except that one NaN is as good as another.
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

} // namespace
} // namespace Atelier::Vel
