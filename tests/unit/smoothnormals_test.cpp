#include "geometry/smoothing/smoothnormals.h"

#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <QtCore/QString>

#include <gmock/gmock.h>

#include "geometry/normals.h"
#include "support/guardedarray.h"
#include "support/scale.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;

std::vector<float> smoothNormals(const std::vector<float>& positions, const std::vector<quint32>& triangles,
                                 quint32 vertexCount, const MergeOptions& merging = {},
                                 const WorkMeter& meter = {}) {
    const GuardedArray<float> allPositions(positions);
    const GuardedArray<quint32> corners(triangles);
    const GuardedArray<float> result(std::size_t{vertexCount} * 3, 77.0F);
    generateSmoothNormals(
        {allPositions.data(), allPositions.size(), corners.data(), corners.size(), vertexCount},
        result.data(), merging, meter);
    return result.items();
}

std::vector<float> vertexNormals(const std::vector<float>& positions, const std::vector<quint32>& triangles) {
    std::vector<float> result(positions.size());
    generateVertexNormals(positions.data(), positions.size(), triangles.data(), triangles.size(),
                          static_cast<quint32>(positions.size() / 3), result.data());
    return result;
}

TEST(SmoothNormalsTest, VerticesAtOnePositionGetOneNormal) {
    // Two triangles of a roof whose ridge has two vertices at each end.
    const std::vector<float> roof = {0, 0, 1, 0, 1, 1, -1, 0, 0, 0, 0, 1, 0, 1, 1, 1, 0, 0};
    const std::vector<float> normals = smoothNormals(roof, {0, 1, 2, 3, 5, 4}, 6);
    EXPECT_TRUE(std::equal(normals.begin(), normals.begin() + 6, normals.begin() + 9));
    EXPECT_EQ(normals[0], 0);
    EXPECT_NE(vertexNormals(roof, {0, 1, 2, 3, 5, 4})[0], 0) << "alone they follow their own triangles";
}

/// A mesh whose vertices are split at random.
struct SplitMesh {
    std::vector<float> positions;
    std::vector<quint32> triangles;
    std::vector<quint32> original; ///< of each vertex
};

SplitMesh splitAtRandom(const std::vector<float>& positions, const std::vector<quint32>& triangles,
                        std::mt19937& random) {
    SplitMesh mesh;
    std::vector<std::vector<quint32>> copies(positions.size() / 3);
    for (const quint32 vertex : triangles) {
        if (copies[vertex].empty() || random() % 3 == 0) {
            copies[vertex].push_back(static_cast<quint32>(mesh.original.size()));
            mesh.original.push_back(vertex);
            mesh.positions.insert(mesh.positions.end(), positions.begin() + vertex * 3,
                                  positions.begin() + vertex * 3 + 3);
        }
        mesh.triangles.push_back(copies[vertex][random() % copies[vertex].size()]);
    }
    return mesh;
}

TEST(SmoothNormalsTest, SplitVerticesHaveTheBitsOfTheWholeMesh) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> coordinate(-1, 1);
    for (int round = 0; round < Testing::scaled(300); ++round) {
        const quint32 vertexCount = 1 + static_cast<quint32>(random() % 200);
        std::vector<float> positions(std::size_t{vertexCount} * 3);
        for (float& value : positions)
            value = coordinate(random);
        std::vector<quint32> triangles(900);
        for (quint32& vertex : triangles)
            vertex = static_cast<quint32>(random() % vertexCount);
        const std::vector<float> whole = vertexNormals(positions, triangles);
        const SplitMesh split = splitAtRandom(positions, triangles, random);
        const std::vector<float> normals =
            smoothNormals(split.positions, split.triangles, static_cast<quint32>(split.original.size()),
                          {random(), {}, {}});
        for (std::size_t i = 0; i < split.original.size(); ++i)
            ASSERT_EQ(std::memcmp(normals.data() + 3 * i, whole.data() + 3 * split.original[i], 12), 0)
                << round << ' ' << i;
    }
}

TEST(SmoothNormalsTest, PositionsAreEqualByTheirBytes) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT(smoothNormals({0, 0, 0, 1, 0, 0, 0, 1, 0, -0.0F, 0, 0}, {0, 1, 2}, 4),
                ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, 0));
    EXPECT_THAT(smoothNormals({nan, 0, 0, nan, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0}, {2, 3, 4}, 5),
                ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, -1, 0, 0, -1, 0, 0, -1));
}

TEST(SmoothNormalsTest, VerticesThatDoNotExistAreIgnored) {
    EXPECT_THAT(smoothNormals({1, 0, 0, 0, 1, 0}, {0, 1, 0xFFFFFFFF, 0, 1, 3}, 3),
                ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, 0))
        << "the third vertex has no position";
    EXPECT_THAT(smoothNormals({}, {}, 0), ElementsAre());
}

TEST(SmoothNormalsTest, MetersCountVerticesAndTriangles) {
    const std::vector<float> positions(300'000, 1.0F);
    const std::vector<quint32> triangles(300'000, 0);
    int vertices = 0;
    int counted = 0;
    smoothNormals(positions, triangles, 100'000, {0, [&vertices](int more) { vertices += more; }, {}},
                  [&counted](int more) { counted += more; });
    EXPECT_GT(vertices, 0);
    EXPECT_EQ(counted, 100'000);
}

} // namespace
} // namespace Atelier::Vel
