#include "geometry/picking/hierarchybuild.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "pickingmeshes.h"

namespace Atelier::Vel {
namespace {

using Testing::PlainMesh;

struct Shape {
    int depth = 0;
    quint32 largestLeaf = 0;
};

bool contains(const TriangleHierarchy::Node& outer, const float* low, const float* high) {
    for (int axis = 0; axis < 3; ++axis)
        if (low[axis] < outer.minimum[axis] || high[axis] > outer.maximum[axis])
            return false;
    return true;
}

/// Checks that each node contains what is below it, and that each triangle is in one leaf.
Shape checkedShape(const PickingMesh& mesh, quint32 triangles) {
    const HierarchyBuild build = buildHierarchy(mesh);
    Shape shape;
    std::set<quint32> numbers;
    std::vector<std::pair<quint32, int>> pending = {{0, 1}};
    std::size_t visited = 0;
    while (!pending.empty()) {
        const auto [number, depth] = pending.back();
        pending.pop_back();
        ++visited;
        shape.depth = std::max(shape.depth, depth);
        const TriangleHierarchy::Node& node = build.nodes[number];
        shape.largestLeaf = std::max(shape.largestLeaf, node.triangles);
        for (quint32 i = node.first; i < node.first + node.triangles; ++i) {
            const auto& triangle = build.triangles[i];
            EXPECT_TRUE(numbers.insert(triangle.number).second);
            EXPECT_TRUE(std::equal(triangle.vertices, triangle.vertices + 3,
                                   mesh.indices + quint64{triangle.number} * 3));
            for (const auto& corner : mesh.positions.cornersOf(triangle.vertices).at)
                EXPECT_TRUE(contains(node, corner, corner));
        }
        if (node.triangles != 0)
            continue;
        for (quint32 child = node.first; child < node.first + 2; ++child) {
            EXPECT_TRUE(contains(node, build.nodes[child].minimum, build.nodes[child].maximum));
            pending.push_back({child, depth + 1});
        }
    }
    EXPECT_EQ(numbers.size(), triangles);
    EXPECT_EQ(build.triangles.size(), triangles);
    EXPECT_EQ(build.nodes.size(), visited);
    return shape;
}

TriangleCorners triangleAt(float x, float size) {
    return {{{x, 0, 0}, {x + size, 0, 0}, {x, size, size}}};
}

} // namespace

TEST(HierarchyBuildTest, SoundMeshMakesAShallowTree) {
    std::mt19937 random(1);
    const PlainMesh mesh = Testing::closedMesh(5, 0.9F, 1, random);
    const Shape shape = checkedShape(mesh.mesh(), quint32(mesh.indices.size() / 3));
    EXPECT_LT(shape.depth, 20);
    EXPECT_LE(shape.largestLeaf, 8U);
}

TEST(HierarchyBuildTest, EqualTrianglesAreDividedIntoHalves) {
    PlainMesh mesh;
    for (int i = 0; i < 10'000; ++i)
        mesh.addTriangle(triangleAt(0, 1));
    const Shape shape = checkedShape(mesh.mesh(), 10'000);
    EXPECT_LE(shape.depth, 13);
    EXPECT_LE(shape.largestLeaf, 8U);
}

// Each plane would part only a few triangles from all others.
TEST(HierarchyBuildTest, DepthIsLimitedWhereSizesGrowExponentially) {
    PlainMesh mesh;
    for (int power = -120; power < 120; ++power)
        for (int copy = 0; copy < 20; ++copy)
            mesh.addTriangle(
                triangleAt(std::ldexp(1.0F + 0.01F * float(copy), power), std::ldexp(1.0F, power - 10)));
    const Shape shape = checkedShape(mesh.mesh(), 240 * 20);
    EXPECT_GT(shape.depth, 32) << "the limit is reached";
    EXPECT_LE(shape.depth, TriangleHierarchy::kMaxDepth);
    EXPECT_LE(shape.largestLeaf, 8U);
}

TEST(HierarchyBuildTest, LargestCoordinatesAreDividedLikeOthers) {
    PlainMesh mesh;
    const float largest = std::numeric_limits<float>::max();
    for (int i = -8; i < 8; ++i)
        mesh.addTriangle(triangleAt(largest / 8 * float(i), largest / 100));
    const Shape shape = checkedShape(mesh.mesh(), 16);
    EXPECT_LE(shape.depth, 6);
    EXPECT_LE(shape.largestLeaf, 2U);
}

TEST(HierarchyBuildTest, SmallestCoordinatesMakeATreeToo) {
    PlainMesh mesh;
    for (int i = 0; i < 100; ++i)
        mesh.addTriangle(triangleAt(std::ldexp(float(i), -140), std::ldexp(1.0F, -145)));
    EXPECT_LE(checkedShape(mesh.mesh(), 100).largestLeaf, 8U);
}

TEST(HierarchyBuildTest, OnlyFiniteTrianglesWithAnAreaCanBeHit) {
    const TriangleCorners sound = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}};
    EXPECT_TRUE(canBeHit(sound));
    EXPECT_TRUE(canBeHit({{{0, 0, 0}, {0, 1, 0}, {0, 0, 1}}}));
    EXPECT_TRUE(canBeHit({{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}}));
    EXPECT_FALSE(canBeHit({{{1, 2, 3}, {2, 4, 6}, {3, 6, 9}}})) << "on a line";
    EXPECT_FALSE(canBeHit({{{1, 2, 3}, {1, 2, 3}, {3, 6, 1}}})) << "two equal corners";
    for (const float wrong :
         {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
        for (int corner = 0; corner < 3; ++corner)
            for (int axis = 0; axis < 3; ++axis) {
                TriangleCorners corners = sound;
                corners.at[corner][axis] = wrong;
                EXPECT_FALSE(canBeHit(corners));
            }
}

} // namespace Atelier::Vel
