#include "geometry/smoothing/cornernormals.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <QtCore/QString>

#include <gmock/gmock.h>

#include "cornerfaces.h"
#include "geometry/smoothing/facedirections.h"
#include "support/scale.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;
using Testing::kMissing;
using Testing::TestFaces;

constexpr float kTolerance = 1e-5F;

/// Three floats for each corner.
std::vector<float> normalsOf(TestFaces& faces, const CornerNormalRule& rule,
                             const MergeOptions& merging = {}) {
    const GuardedArray<quint32> numbers(faces->cornerCount, kMissing);
    const CornerNormals made = makeCornerNormals(*faces, rule, {numbers.data(), kMissing, 0}, merging);
    std::vector<float> result;
    for (const quint32 number : numbers)
        result.insert(result.end(), made.normals.begin() + number * 3, made.normals.begin() + number * 3 + 3);
    return result;
}

Direction at(const std::vector<float>& normals, std::size_t corner) {
    return {double(normals[3 * corner]), double(normals[3 * corner + 1]), double(normals[3 * corner + 2])};
}

void expectDirection(const Direction& actual, const Direction& expected) {
    EXPECT_NEAR(lengthOf(actual - expected), 0, kTolerance) << actual.x << ' ' << actual.y << ' ' << actual.z;
}

/// The direction from the centre of the cube to a corner of its faces.
Direction cubeDiagonal(std::size_t corner) {
    const std::vector<float> positions = Testing::cubePositions();
    return unitDirection(at(positions, Testing::cubeFaces()[corner / 4][corner % 4]));
}

TEST(CornerNormalsTest, CubeIsFlatBelowItsAngleAndRoundAboveIt) {
    TestFaces cube(Testing::cubePositions(), Testing::cubeFaces());
    const FaceDirections directions(*cube, [](quint32) {});
    for (const float angle : {0.0F, 30.0F, 89.0F}) {
        const std::vector<float> normals = normalsOf(cube, {angle, true});
        for (quint32 corner = 0; corner < 24; ++corner)
            expectDirection(at(normals, corner), directions.normalOf(corner));
    }
    for (const float angle : {90.0F, 91.0F, 179.0F, 180.0F, 1000.0F}) {
        const std::vector<float> normals = normalsOf(cube, {angle, true});
        for (std::size_t corner = 0; corner < 24; ++corner)
            expectDirection(at(normals, corner), cubeDiagonal(corner));
    }
}

TEST(CornerNormalsTest, AngleThatIsNegativeOrNotANumberCountsAsZero) {
    TestFaces cube(Testing::cubePositions(), Testing::cubeFaces());
    const std::vector<float> flat = normalsOf(cube, {0, true});
    for (const float angle :
         {-30.0F, -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
        EXPECT_EQ(normalsOf(cube, {angle, true}), flat);
    expectDirection(at(normalsOf(cube, {std::numeric_limits<float>::infinity(), true}), 0), cubeDiagonal(0));
}

TEST(CornerNormalsTest, InwardIsTheOppositeWithoutNegativeZeros) {
    TestFaces cube(Testing::cubePositions(), Testing::cubeFaces());
    for (const float angle : {30.0F, 91.0F}) {
        const std::vector<float> outward = normalsOf(cube, {angle, true});
        const std::vector<float> inward = normalsOf(cube, {angle, false});
        for (std::size_t i = 0; i < outward.size(); ++i) {
            EXPECT_EQ(inward[i], -outward[i]);
            EXPECT_FALSE(inward[i] == 0 && std::signbit(inward[i]));
        }
    }
}

/// A fan of triangles around the origin with the given heights at its rim.
TestFaces fan(const std::vector<float>& heights) {
    std::vector<float> positions = {0, 0, 0};
    std::vector<std::vector<quint32>> faces;
    const auto count = static_cast<quint32>(heights.size());
    for (quint32 i = 0; i < count; ++i) {
        const double angle = 2 * kPi * i / count;
        positions.insert(positions.end(), {float(std::cos(angle)), float(std::sin(angle)), heights[i]});
        faces.push_back({0, 1 + i, 1 + (i + 1) % count});
    }
    return {positions, faces};
}

TEST(CornerNormalsTest, NormalsAreWeightedByTheAngleAndNotByTheNumberOfFaces) {
    // The side of the roof in the direction of x consists of four triangles.
    TestFaces roof(
        {0, 0, 0, 0, 1, 0, 1, 1, -1, 1, 0.5F, -1, 1, 0, -1, 1, -1, -1, 0, -1, 0, -1, -1, -1, -1, 1, -1},
        {{0, 2, 1}, {0, 3, 2}, {0, 4, 3}, {0, 5, 4}, {0, 6, 5}, {0, 1, 8, 7, 6}});
    expectDirection(at(normalsOf(roof, {180, true}), 0), {0, 0, 1});
}

TEST(CornerNormalsTest, CreaseComparesFacesAndNotTheirNeighbours) {
    // Five faces, each 20 degrees steeper than the last one, all at the origin.
    std::vector<float> positions = {0, 0, 0, 0, 1, 0};
    std::vector<std::vector<quint32>> faces;
    std::vector<Direction> normals;
    for (quint32 i = 0; i < 5; ++i) {
        const double angle = kPi / 9 * i;
        positions.insert(positions.end(), {float(std::cos(angle)), 0, float(std::sin(angle))});
        faces.push_back({0, 2 + i, 1});
        normals.push_back({-std::sin(angle), 0, std::cos(angle)});
    }
    TestFaces steps(positions, faces);
    const std::vector<float> made = normalsOf(steps, {21, true});
    expectDirection(at(made, 0), unitDirection(normals[0] + normals[1]));
    expectDirection(at(made, 6), unitDirection(normals[1] + normals[2] + normals[3]));
    expectDirection(at(made, 12), unitDirection(normals[3] + normals[4]));
}

TEST(CornerNormalsTest, OnlyMissingNormalsAreMade) {
    TestFaces faces({0, 0, 0, 1, 0, 0, 0, 1, 0}, {{0, 1, 2}});
    const GuardedArray<quint32> numbers{7, kMissing, 9};
    const CornerNormals made = makeCornerNormals(*faces, {30, true}, {numbers.data(), kMissing, 40}, {});
    EXPECT_THAT(numbers.items(), ElementsAre(7, 40, 9));
    EXPECT_THAT(made.normals, ElementsAre(0, 0, 1));
}

TEST(CornerNormalsTest, CornersWithANormalStillAddTheirFace) {
    TestFaces cube(Testing::cubePositions(), Testing::cubeFaces());
    const GuardedArray<quint32> numbers(24, 5);
    numbers[0] = kMissing;
    const CornerNormals made = makeCornerNormals(*cube, {91, true}, {numbers.data(), kMissing, 0}, {});
    expectDirection(at(made.normals, 0), cubeDiagonal(0));
    EXPECT_EQ(made.normals.size(), 3U);
    EXPECT_EQ(std::count(numbers.begin(), numbers.end(), 5U), 23) << "two of them at the same position";
}

TEST(CornerNormalsTest, SmoothPositionHasOneNormalForAllItsCorners) {
    TestFaces disc = fan(std::vector<float>(100, 0.0F));
    const GuardedArray<quint32> numbers(300, kMissing);
    const CornerNormals made = makeCornerNormals(*disc, {1, true}, {numbers.data(), kMissing, 0}, {});
    EXPECT_EQ(made.normals.size(), 3U) << "the same one follows itself";
}

TEST(CornerNormalsTest, SeamsAndEqualBytesMakeOnePosition) {
    TestFaces roof({0, 0, 1, 0, 1, 1, -1, 0, 0, 0, 0, 1, 0, 1, 1, 1, 0, 0}, {{0, 1, 2}, {4, 3, 5}});
    expectDirection(at(normalsOf(roof, {180, true}), 0), {0, 0, 1});
    TestFaces zeros({0, 0, 0, 1, 0, 0, 0, 1, 0, -0.0F, 0, 0, 0, 0, 1}, {{0, 1, 2}, {3, 2, 4}});
    expectDirection(at(normalsOf(zeros, {180, true}), 0), {0, 0, 1});
}

TEST(CornerNormalsTest, FaceWithoutAnAreaTakesTheSumAndAddsNothing) {
    TestFaces cube(Testing::cubePositions(), Testing::cubeFaces());
    std::vector<std::vector<quint32>> faces = Testing::cubeFaces();
    faces.push_back({0, 0, 7});
    TestFaces withEdge(Testing::cubePositions(), faces);
    const std::vector<float> normals = normalsOf(withEdge, {30, true});
    const std::vector<float> before = normalsOf(cube, {30, true});
    EXPECT_TRUE(std::equal(before.begin(), before.end(), normals.begin()));
    expectDirection(at(normals, 24), cubeDiagonal(0));
    TestFaces alone({0, 0, 0, 1, 0, 0, 2, 0, 0}, {{0, 1, 2}});
    EXPECT_EQ(normalsOf(alone, {180, true}), std::vector<float>(9));
}

TEST(CornerNormalsTest, SumOfZeroGivesTheNormalOfTheFace) {
    TestFaces sheet({0, 0, 0, 1, 0, 0, 0, 1, 0}, {{0, 1, 2}, {2, 1, 0}});
    const std::vector<float> normals = normalsOf(sheet, {180, true});
    expectDirection(at(normals, 0), {0, 0, 1});
    expectDirection(at(normals, 3), {0, 0, -1});
}

TEST(CornerNormalsTest, SumThatIsZeroExceptForRoundingGivesTheNormalOfTheFace) {
    // Three sheets around the axis of z, 120 degrees apart.
    std::vector<float> positions = {0, 0, 0, 0, 0, 1};
    for (const double degrees : {10, 130, 250})
        positions.insert(positions.end(),
                         {float(std::cos(degrees / 180 * kPi)), float(std::sin(degrees / 180 * kPi)), 0});
    TestFaces sheets(positions, {{0, 2, 1}, {0, 3, 1}, {0, 4, 1}});
    const FaceDirections directions(*sheets, [](quint32) {});
    const std::vector<float> normals = normalsOf(sheets, {180, true});
    for (const quint32 corner : {0U, 3U, 6U})
        expectDirection(at(normals, corner), directions.normalOf(corner));
}

TEST(CornerNormalsTest, HalfATurnSmoothsOppositeFaces) {
    // The upper side has a right angle at the origin, the lower one half of it.
    TestFaces sheets({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}, {{0, 1, 2}, {0, 3, 1}});
    expectDirection(at(normalsOf(sheets, {180, true}), 3), {0, 0, 1});
    expectDirection(at(normalsOf(sheets, {179, true}), 3), {0, 0, -1});
}

TEST(CornerNormalsTest, NormalsAreFiniteForAnyPositions) {
    std::mt19937 random(5);
    const float nasty[] = {0.0F,
                           -0.0F,
                           1e-45F,
                           -1e-20F,
                           1.0F,
                           -1.0F,
                           3e38F,
                           -3e38F,
                           1e19F,
                           std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::quiet_NaN()};
    for (int round = 0; round < Testing::scaled(2000); ++round) {
        std::vector<float> positions(random() % 30 * 3);
        for (float& value : positions)
            value = nasty[random() % std::size(nasty)];
        std::vector<std::vector<quint32>> faces(random() % 20);
        std::vector<quint32> groups(faces.size());
        for (std::size_t i = 0; i < faces.size(); ++i) {
            faces[i].resize(random() % 7);
            for (quint32& corner : faces[i])
                corner = random() % 9 == 0 ? static_cast<quint32>(random())
                                           : static_cast<quint32>(random() % (positions.size() / 3 + 1));
            groups[i] = random() % 4;
        }
        TestFaces mesh(positions, faces, round % 2 == 0 ? groups : std::vector<quint32>());
        for (const float value : normalsOf(mesh, {float(random() % 200), round % 3 == 0}))
            ASSERT_TRUE(std::fabs(value) <= 1.0001F) << round;
    }
}

/// The sum over all pairs, with the mathematical library.
std::vector<float> plainNormals(TestFaces& faces, const std::vector<float>& positions,
                                const std::vector<quint32>& corners, float creaseAngle) {
    const FaceDirections directions(*faces, [](quint32) {});
    std::vector<float> result;
    for (quint32 i = 0; i < faces->cornerCount; ++i) {
        Direction sum;
        for (quint32 k = 0; k < faces->cornerCount; ++k) {
            if (std::memcmp(&positions[corners[i] * 3], &positions[corners[k] * 3], 12) != 0)
                continue;
            const double cosine = dotProduct(directions.normalOf(i), directions.normalOf(k));
            if (std::acos(std::clamp(cosine, -1.0, 1.0)) * 180 / kPi <= double(creaseAngle) + 0.1)
                sum = sum + directions.angleOf(k) * directions.normalOf(k);
        }
        const Direction normal = unitDirection(sum);
        result.insert(result.end(), {float(normal.x), float(normal.y), float(normal.z)});
    }
    return result;
}

TEST(CornerNormalsTest, RandomMeshesHaveTheSumsOverAllPairs) {
    std::mt19937 random(6);
    std::uniform_real_distribution<float> coordinate(-1, 1);
    for (int round = 0; round < Testing::scaled(200); ++round) {
        std::vector<float> positions(3 * (5 + random() % 20));
        for (float& value : positions)
            value = coordinate(random);
        std::vector<std::vector<quint32>> faces;
        std::vector<quint32> corners;
        for (int i = 0; i < 40; ++i) {
            const auto a = static_cast<quint32>(random() % (positions.size() / 3));
            faces.push_back(
                {a, (a + 1) % static_cast<quint32>(positions.size() / 3),
                 (a + 2 + static_cast<quint32>(random() % 2)) % static_cast<quint32>(positions.size() / 3)});
            corners.insert(corners.end(), faces.back().begin(), faces.back().end());
        }
        TestFaces mesh(positions, faces);
        const auto angle = float(random() % 170);
        const std::vector<float> made = normalsOf(mesh, {angle, true}, {random(), {}, {}});
        const std::vector<float> expected = plainNormals(mesh, positions, corners, angle);
        for (std::size_t i = 0; i < made.size(); ++i)
            ASSERT_NEAR(made[i], expected[i], 1e-4F) << round << ' ' << i;
    }
}

/// Triangles that share the origin, with random normals.
TestFaces star(quint32 count) {
    std::mt19937 random(9);
    std::uniform_real_distribution<float> coordinate(-1, 1);
    std::vector<float> positions = {0, 0, 0};
    std::vector<std::vector<quint32>> faces;
    for (quint32 i = 0; i < count; ++i) {
        for (int k = 0; k < 6; ++k)
            positions.push_back(coordinate(random));
        faces.push_back({0, 2 * i + 1, 2 * i + 2});
    }
    return {positions, faces};
}

TEST(CornerNormalsTest, ComparisonsAreLinearInTheCornersOfAPosition) {
    for (const quint32 count : {1U, 256U, 257U, 1000U, 50'000U}) {
        TestFaces faces = star(count);
        const GuardedArray<quint32> numbers(faces->cornerCount, kMissing);
        const CornerNormals made = makeCornerNormals(*faces, {40, true}, {numbers.data(), kMissing, 0}, {});
        EXPECT_LE(made.comparisons, quint64{count} * 256 + 2 * count) << count;
        EXPECT_GE(made.comparisons, std::min<quint64>(quint64{count} * count, 100)) << count;
    }
}

TEST(CornerNormalsTest, NormalsOfCrowdedPositionsAreCloseToTheExactOnes) {
    // A cone of 1,000 faces, with slopes of 45 degrees: at the tip, faces of up to 60 degrees add up.
    TestFaces cone = fan(std::vector<float>(1000, -1.0F));
    const FaceDirections directions(*cone, [](quint32) {});
    const std::vector<float> normals = normalsOf(cone, {60, true});
    for (quint32 face = 0; face < 1000; ++face) {
        Direction sum;
        for (quint32 other = 0; other < 1000; ++other)
            if (dotProduct(directions.normalOf(3 * face), directions.normalOf(3 * other)) >= 0.5)
                sum = sum + directions.normalOf(3 * other);
        ASSERT_GT(dotProduct(at(normals, 3 * face), unitDirection(sum)), std::cos(kPi / 9)) << face;
        ASSERT_LT(at(normals, 3 * face).z, 0.98) << "not the sum of all";
    }
    expectDirection(at(normalsOf(cone, {180, true}), 0), {0, 0, 1});
}

TEST(CornerNormalsTest, FacesOfAGroupAreSmoothAndOthersFlat) {
    TestFaces cube(Testing::cubePositions(), Testing::cubeFaces(), {1, 1, 1, 1, 1, 1});
    TestFaces flat(Testing::cubePositions(), Testing::cubeFaces(), {0, 0, 0, 0, 0, 0});
    const std::vector<float> round = normalsOf(cube, {0, true});
    const std::vector<float> facets = normalsOf(flat, {180, true});
    const FaceDirections directions(*cube, [](quint32) {});
    for (quint32 corner = 0; corner < 24; ++corner) {
        expectDirection(at(round, corner), cubeDiagonal(corner));
        expectDirection(at(facets, corner), directions.normalOf(corner));
    }
}

TEST(CornerNormalsTest, EachGroupIsSmoothedByItself) {
    // The sides in the directions of -z and -y belong to one group, -x and the rest to others.
    TestFaces cube(Testing::cubePositions(), Testing::cubeFaces(), {4, 2, 4, 0, 0xFFFFFFFF, 2});
    const std::vector<float> normals = normalsOf(cube, {0, true});
    expectDirection(at(normals, 0), unitDirection(Direction{0, -1, -1}));
    expectDirection(at(normals, 8), unitDirection(Direction{0, -1, -1}));
    expectDirection(at(normals, 1), {0, 0, -1});
    expectDirection(at(normals, 12), {0, 1, 0});
    expectDirection(at(normals, 16), {-1, 0, 0});
    expectDirection(at(normals, 6), unitDirection(Direction{1, 0, 1}));
}

TEST(CornerNormalsTest, MillionCornersOfOnePositionInTheirOwnGroupsAreDone) {
    const quint32 count = static_cast<quint32>(Testing::scaled(300'000));
    std::vector<quint32> groups(count);
    for (quint32 i = 0; i < count; ++i)
        groups[i] = count - i;
    std::vector<std::vector<quint32>> faces(count, {0, 1, 2});
    TestFaces mesh({0, 0, 0, 1, 0, 0, 0, 1, 0}, faces, groups);
    const std::vector<float> normals = normalsOf(mesh, {0, true});
    for (std::size_t i = 2; i < normals.size(); i += 3)
        ASSERT_EQ(normals[i], 1);
}

TEST(CornerNormalsTest, ResultDoesNotDependOnTheSeed) {
    TestFaces faces = star(300);
    const std::vector<float> normals = normalsOf(faces, {40, true});
    EXPECT_EQ(normalsOf(faces, {40, true}, {12345, {}, {}}), normals);
}

struct Stop {};

TEST(CornerNormalsTest, MeterCountsAboutFourTimesAndCancels) {
    TestFaces faces = star(100'000);
    qint64 counted = 0;
    normalsOf(faces, {40, true}, {0, [&counted](int more) { counted += more; }, {}});
    EXPECT_GT(counted, 2 * 300'000 - 2 * 40'000);
    EXPECT_LE(counted, 4 * 300'000);
    const MergeOptions cancelling = {0, [](int) { throw Stop(); }, {}};
    EXPECT_THROW(normalsOf(faces, {40, true}, cancelling), Stop);
}

} // namespace
} // namespace Atelier::Vel
