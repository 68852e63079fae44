#include "geometry/picking/trianglehierarchy.h"

#include <array>
#include <cmath>
#include <limits>
#include <random>

#include <QtCore/QString>

#include <gmock/gmock.h>

#include "pickingmeshes.h"
#include "support/scale.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::PlainMesh;
using Testing::scaled;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr TriangleCorners kSquare = {{{-1, -1, 0}, {3, -1, 0}, {-1, 3, 0}}};

TriangleHit nearest(const TriangleHierarchy& hierarchy, const PickingRay& ray,
                    const TriangleFilter& accepts = {}) {
    TriangleHit hit;
    hierarchy.findNearer(ray, accepts, hit);
    return hit;
}

PickingRay downAt(double x, double y) {
    return *PickingRay::make({x, y, 10}, {0, 0, -1}, 1);
}

void expectSame(const TriangleHit& hit, const TriangleHit& expected) {
    EXPECT_EQ(hit.number, expected.number);
    EXPECT_EQ(hit.distance, expected.distance);
    EXPECT_EQ(hit.weights, expected.weights);
    EXPECT_EQ(hit.point, expected.point);
}

/// Compares rays with a search through all triangles. Returns: the number of hits.
int compareWithAll(const PlainMesh& plain, int rays, std::mt19937& random) {
    const PickingMesh mesh = plain.mesh();
    const TriangleHierarchy hierarchy(mesh);
    int hits = 0;
    for (int i = 0; i < rays; ++i) {
        const auto [origin, direction] = Testing::randomLine(random);
        const PickingRay ray = *PickingRay::make(origin, direction, 1);
        const auto left = static_cast<quint32>(random() % 3);
        const TriangleFilter filters[2] = {{}, [left](quint32 number) { return number % 3 != left; }};
        for (const TriangleFilter& accepts : filters) {
            const TriangleHit expected = Testing::nearestOfAll(mesh, ray, accepts);
            expectSame(nearest(hierarchy, ray, accepts), expected);
            hits += expected.isHit() ? 1 : 0;
        }
    }
    return hits;
}

TriangleCorners scaledBy(TriangleCorners corners, float factor, const std::array<float, 3>& offset = {}) {
    for (auto& corner : corners.at)
        for (std::size_t axis = 0; axis < 3; ++axis)
            corner[axis] = corner[axis] * factor + offset[axis];
    return corners;
}

} // namespace

TEST(TriangleHierarchyTest, EmptyMeshIsNeverHit) {
    EXPECT_FALSE(nearest(TriangleHierarchy({}), downAt(0, 0)).isHit());
    EXPECT_FALSE(nearest(TriangleHierarchy(PlainMesh().mesh()), downAt(0, 0)).isHit());
}

TEST(TriangleHierarchyTest, NearestOfRandomTrianglesIsThatOfAll) {
    std::mt19937 random(1);
    int hits = 0;
    for (int round = 0; round < scaled(100); ++round) {
        PlainMesh mesh;
        const auto count = static_cast<quint32>(1 + random() % 200);
        for (quint32 i = 0; i < count; ++i)
            mesh.addTriangle(Testing::randomTriangle(random));
        hits += compareWithAll(mesh, 50, random);
    }
    EXPECT_GT(hits, scaled(2'000));
}

TEST(TriangleHierarchyTest, NearestOfSmallTrianglesIsThatOfAll) {
    std::mt19937 random(2);
    std::uniform_real_distribution<float> place(-1, 1);
    PlainMesh mesh;
    for (int i = 0; i < 20'000; ++i)
        mesh.addTriangle(
            scaledBy(Testing::randomTriangle(random), 0.03F, {place(random), place(random), place(random)}));
    EXPECT_GT(compareWithAll(mesh, scaled(200), random), scaled(10));
}

TEST(TriangleHierarchyTest, NearestOfAClosedMeshIsThatOfAll) {
    std::mt19937 random(3);
    // Few of these rays hit the mesh, so their number is not scaled.
    EXPECT_GT(compareWithAll(Testing::closedMesh(5, 0.7F, 1, random), 500, random), 50);
}

// Sizes from 1e-38 to 1e38 side by side.
TEST(TriangleHierarchyTest, NearestOfTrianglesOfAllSizesIsThatOfAll) {
    std::mt19937 random(4);
    PlainMesh mesh;
    for (int i = 0; i < 2'000; ++i)
        mesh.addTriangle(scaledBy(Testing::randomTriangle(random),
                                  std::pow(10.0F, std::uniform_real_distribution<float>(-38, 38)(random))));
    EXPECT_GT(compareWithAll(mesh, scaled(500), random), scaled(250));
}

TEST(TriangleHierarchyTest, DamagedTrianglesAreLeftOut) {
    std::mt19937 random(5);
    PlainMesh mesh;
    for (int i = 0; i < 3'000; ++i)
        mesh.addTriangle(Testing::randomTriangle(random));
    for (int i = 0; i < 1'000; ++i) {
        constexpr float kWrong[] = {kNaN, kInfinity, -kInfinity};
        mesh.positions[random() % mesh.positions.size()] = kWrong[random() % 3];
        mesh.indices[random() % mesh.indices.size()] = static_cast<quint32>(random());
    }
    mesh.indices.pop_back();
    EXPECT_GT(compareWithAll(mesh, scaled(300), random), scaled(100));
}

TEST(TriangleHierarchyTest, TrianglesWithoutAnAreaAreNeverHit) {
    PlainMesh mesh;
    mesh.addTriangle({{{0, 0, 1}, {0, 0, 1}, {1, 1, 1}}});
    mesh.addTriangle({{{-1, -1, 2}, {1, 1, 2}, {3, 3, 2}}});
    mesh.addTriangle({{{0, 0, 3}, {0, 0, 3}, {0, 0, 3}}});
    EXPECT_EQ(TriangleHierarchy(mesh.mesh()).byteCount(), 0U);
    mesh.addTriangle(kSquare);
    EXPECT_EQ(nearest(TriangleHierarchy(mesh.mesh()), downAt(0, 0)).number, 3U);
}

TEST(TriangleHierarchyTest, LowestNumberOfEqualTrianglesIsHit) {
    PlainMesh mesh;
    for (int i = 0; i < 100; ++i)
        mesh.addTriangle(kSquare);
    const TriangleHierarchy hierarchy(mesh.mesh());
    EXPECT_EQ(nearest(hierarchy, downAt(0.3, 0.1)).number, 0U);
    EXPECT_EQ(nearest(hierarchy, downAt(0.3, 0.1), [](quint32 number) { return number >= 42; }).number, 42U);
}

TEST(TriangleHierarchyTest, TrianglesInAPlaneAcrossTheRayAreEquallyFar) {
    PlainMesh mesh;
    mesh.addTriangle({{{-1, -1, 0.1F}, {2, -1, 0.1F}, {-1, 2, 0.1F}}});
    mesh.addTriangle({{{5, -3, 0.1F}, {0.1F, 7, 0.1F}, {-4, -2, 0.1F}}});
    const TriangleHierarchy hierarchy(mesh.mesh());
    EXPECT_EQ(nearest(hierarchy, downAt(0.123, 0.456)).number, 0U);
    EXPECT_EQ(nearest(hierarchy, downAt(0.123, 0.456)).distance,
              nearest(hierarchy, downAt(0.123, 0.456), [](quint32 number) { return number == 1; }).distance);
}

TEST(TriangleHierarchyTest, OnlyWhatIsNearerReplacesAHit) {
    PlainMesh mesh;
    mesh.addTriangle(kSquare);
    const TriangleHierarchy hierarchy(mesh.mesh());
    TriangleHit hit;
    hit.number = 7;
    hit.distance = 9;
    hierarchy.findNearer(downAt(0, 0), {}, hit);
    EXPECT_EQ(hit.number, 7U);
    hit.distance = 10;
    hierarchy.findNearer(downAt(0, 0), {}, hit);
    EXPECT_EQ(hit.number, 0U) << "equally far, with a lower number";
}

TEST(TriangleHierarchyTest, TrianglesAreNumberedThroughAllRanges) {
    PlainMesh plain;
    for (int i = 0; i < 4; ++i)
        plain.addTriangle(scaledBy(kSquare, 1, {0, 0, float(i)}));
    PickingMesh mesh = plain.mesh();
    mesh.ranges = {{9, 1}, {0, 2}, {3, 2}, {12, 1}};
    const TriangleHierarchy hierarchy(mesh);
    const PickingRay up = *PickingRay::make({0.5, 0.5, 1.5}, {0, 0, -1}, 1);
    EXPECT_EQ(nearest(hierarchy, up).number, 2U) << "the second triangle of the second range";
    EXPECT_EQ(nearest(hierarchy, up, [](quint32 number) { return number == 3; }).number, 3U)
        << "the same one in the third range";
}

// A ray from inside meets the surface, wherever it goes.
TEST(TriangleHierarchyTest, NoRayPassesAClosedMesh) {
    std::mt19937 random(6);
    for (const float inner : {0.2F, 0.9F, 1.0F}) {
        const PlainMesh mesh = Testing::closedMesh(3, inner, 1, random);
        const TriangleHierarchy hierarchy(mesh.mesh());
        const auto vertex = [&](quint32 i) { return &mesh.positions[std::size_t(i) * 3]; };
        const auto isHit = [&](const SpaceVector& origin, const SpaceVector& target) {
            const SpaceVector direction = {target[0] - origin[0], target[1] - origin[1],
                                           target[2] - origin[2]};
            return nearest(hierarchy, *PickingRay::make(origin, direction, 1)).isHit();
        };
        for (int round = 0; round < scaled(20); ++round) {
            SpaceVector origin{};
            for (double& number : origin)
                number = round == 0 ? 0 : std::uniform_real_distribution<double>(-0.05, 0.05)(random);
            for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
                for (int weight = 0; weight < 4; ++weight) {
                    // A corner, and points of the edge to the next one.
                    const float* const a = vertex(mesh.indices[i]);
                    const float* const b = vertex(mesh.indices[i + 1]);
                    const double part = weight * 0.3;
                    SpaceVector target{};
                    for (std::size_t axis = 0; axis < 3; ++axis)
                        target[axis] = (1 - part) * double(a[axis]) + part * double(b[axis]);
                    ASSERT_TRUE(isHit(origin, target)) << inner << ", triangle " << i / 3 << ", " << part;
                }
        }
    }
}

// From a distance, at a corner of four equal squares, in axis-parallel and oblique directions.
TEST(TriangleHierarchyTest, NoRayPassesBetweenTheTrianglesOfAPlane) {
    PlainMesh mesh;
    constexpr int kSide = 20;
    for (int y = 0; y <= kSide; ++y)
        for (int x = 0; x <= kSide; ++x)
            mesh.positions.insert(mesh.positions.end(), {float(x) * 0.1F, float(y) * 0.1F, 0.3F});
    for (quint32 y = 0; y < kSide; ++y)
        for (quint32 x = 0; x < kSide; ++x) {
            const quint32 at = y * (kSide + 1) + x;
            mesh.indices.insert(mesh.indices.end(),
                                {at, at + 1, at + kSide + 2, at, at + kSide + 2, at + kSide + 1});
        }
    const TriangleHierarchy hierarchy(mesh.mesh());
    std::mt19937 random(7);
    for (int round = 0; round < scaled(50'000); ++round) {
        const auto vertex = (1 + random() % (kSide - 1)) * (kSide + 1) + 1 + random() % (kSide - 1);
        const float* const at = &mesh.positions[vertex * 3];
        auto [origin, direction] = Testing::randomLine(random);
        if (direction[2] == 0)
            continue;
        const double distance = std::pow(10, std::uniform_real_distribution<double>(-3, 6)(random));
        for (std::size_t axis = 0; axis < 3; ++axis)
            origin[axis] = double(at[axis]) - distance * direction[axis];
        ASSERT_TRUE(nearest(hierarchy, *PickingRay::make(origin, direction, 1)).isHit()) << round;
    }
}

} // namespace Atelier::Vel
