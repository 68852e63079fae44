#include "geometry/merging/vertexmerging.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "testattributes.h"

namespace Atelier::Vel {
namespace {

using Testing::bytesOfCorner;
using Testing::GuardedArray;
using Testing::Merged;
using Testing::TestAttribute;
using Testing::views;

const MergeOptions kOptions{0x5EED, {}, {}};

/// The composition of a random mesh.
struct Recipe {
    std::size_t attributes;
    quint32 corners;
    quint32 values;
    quint32 differentValues; ///< 0 if all values differ
};

std::vector<TestAttribute> randomMesh(std::mt19937& random, const Recipe& recipe) {
    constexpr quint64 kStrides[] = {12, 8, 4, 3, 16, 20};
    std::vector<TestAttribute> attributes;
    for (std::size_t i = 0; i < recipe.attributes; ++i) {
        const quint64 stride = kStrides[i % 6];
        std::vector<unsigned char> values(recipe.values * stride);
        for (quint32 value = 0; value < recipe.values; ++value) {
            const auto number = static_cast<quint16>(
                recipe.differentValues == 0 ? value + 1 : random() % recipe.differentValues);
            std::copy_n(reinterpret_cast<const unsigned char*>(&number), 2, &values[value * stride]);
        }
        std::vector<quint32> list(recipe.corners - random() % 2);
        for (quint32& entry : list)
            entry = static_cast<quint32>(random() % (recipe.values + recipe.values / 50));
        attributes.emplace_back(values, list, stride);
    }
    return attributes;
}

/// The result of a merging, for comparing it with the definition.
struct Outcome {
    Merged merged;
    std::vector<quint64> substituted;
    std::vector<std::string> gathered;
};

Outcome expectedOutcome(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    Outcome outcome;
    outcome.merged = Testing::mergedPlainly(attributes, cornerCount);
    for (const CornerAttribute& attribute : attributes) {
        outcome.substituted.push_back(0);
        for (quint32 corner = 0; corner < cornerCount; ++corner)
            outcome.substituted.back() += attribute.valueOf(corner) == attribute.valueCount ? 1 : 0;
        outcome.gathered.emplace_back();
        for (const quint32 corner : outcome.merged.firstCorner)
            outcome.gathered.back() += bytesOfCorner({attribute}, corner);
    }
    return outcome;
}

void expectOutcome(const VertexMerging& merging, const std::vector<CornerAttribute>& attributes,
                   const quint32* vertexOfCorner, const Outcome& expected) {
    const auto cornerCount = static_cast<std::ptrdiff_t>(expected.merged.vertexOfCorner.size());
    ASSERT_EQ(merging.vertexCount(), expected.merged.firstCorner.size());
    ASSERT_EQ(std::vector<quint32>(vertexOfCorner, vertexOfCorner + cornerCount),
              expected.merged.vertexOfCorner);
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        ASSERT_EQ(merging.substitutedCorners(i), expected.substituted[i]);
        const GuardedArray<unsigned char> out(merging.vertexCount() * attributes[i].stride);
        merging.gather(i, out.data());
        ASSERT_EQ(std::string(out.begin(), out.end()), expected.gathered[i]);
    }
}

/// Some are merged by tuples first, others by bytes at once; in some, each tuple is a vertex.
const Recipe kRecipes[] = {
    {1, 1, 1, 1},         {1, 2, 1, 1},       {2, 3000, 50, 50}, {3, 3000, 50, 3}, {3, 1024, 400, 60},
    {3, 5000, 4000, 900}, {6, 2000, 20, 5},   {7, 900, 9, 4},    {2, 40, 5000, 9}, {1, 2049, 1000, 1000},
    {2, 4000, 60, 60000}, {1, 4000, 1900, 0}, {2, 4000, 1900, 0}};

TEST(VertexMergingTest, CornersWithTheSameBytesAreOneVertex) {
    std::mt19937 random(81);
    for (const Recipe& recipe : kRecipes)
        for (int round = 0; round < 4; ++round) {
            SCOPED_TRACE(testing::Message() << recipe.attributes << " attributes, " << recipe.corners
                                            << " corners, " << recipe.values << " values");
            const std::vector<TestAttribute> attributes = randomMesh(random, recipe);
            const std::vector<CornerAttribute> all = views(attributes);
            const Outcome expected = expectedOutcome(all, recipe.corners);
            const GuardedArray<quint32> vertexOfCorner(recipe.corners);
            const VertexMerging merging(all, recipe.corners, vertexOfCorner.data(), kOptions);
            ASSERT_NO_FATAL_FAILURE(expectOutcome(merging, all, vertexOfCorner.data(), expected));
        }
}

TEST(VertexMergingTest, ListThatIsOverwrittenGivesTheSameVertices) {
    std::mt19937 random(82);
    int otherCalls = 0;
    for (const Recipe& recipe : kRecipes)
        for (std::size_t target = 0; target < recipe.attributes; ++target) {
            const std::vector<TestAttribute> attributes = randomMesh(random, recipe);
            if (attributes[target].indices.size() != recipe.corners)
                continue;
            const std::vector<CornerAttribute> all = views(attributes);
            const Outcome expected = expectedOutcome(all, recipe.corners);
            quint32* const list = attributes[target].indices.data();
            const GuardedArray<quint32> other(recipe.corners);
            bool isOther = false;
            const VertexMerging merging(all, recipe.corners, list, kOptions, [&] {
                isOther = true;
                return other.data();
            });
            ASSERT_EQ(isOther, merging.needsIndices());
            otherCalls += isOther ? 1 : 0;
            ASSERT_NO_FATAL_FAILURE(expectOutcome(merging, all, isOther ? other.data() : list, expected));
        }
    EXPECT_GT(otherCalls, 5);
    EXPECT_LT(otherCalls, 25);
}

TEST(VertexMergingTest, ListsAreNotNeededIfTuplesWereMerged) {
    std::mt19937 random(83);
    for (const quint32 values : {50U, 2000U}) {
        const std::vector<TestAttribute> attributes = randomMesh(random, {2, 3000, values, 9});
        const GuardedArray<quint32> vertexOfCorner(3000);
        const VertexMerging merging(views(attributes), 3000, vertexOfCorner.data(), kOptions);
        EXPECT_EQ(merging.needsIndices(), values == 2000) << values;
    }
}

TEST(VertexMergingTest, ExistingTupleNumbersBecomeVertices) {
    std::mt19937 random(84);
    for (const quint32 differentValues : {4U, 60000U}) {
        std::vector<TestAttribute> attributes = randomMesh(random, {2, 3000, 60, differentValues});
        for (const TestAttribute& attribute : attributes)
            for (quint32& entry : attribute.indices)
                entry %= 61; // the last one names no value
        std::vector<CornerAttribute> all = views(attributes);
        const auto count =
            static_cast<quint32>(std::min(attributes[0].indices.size(), attributes[1].indices.size()));
        const Outcome expected = expectedOutcome(all, count);
        auto numbering = IndexTupleTable::make(2);
        numbering->raiseLimit(61);
        const quint32* const lists[] = {all[1].indices, all[0].indices};
        const GuardedArray<quint32> tuples(count);
        numbering->add(lists, count, tuples.data());
        TupleMerging merged(all, std::move(numbering), {1, 0}, count, tuples.data());
        const VertexMerging merging(all, std::move(merged), count, tuples.data(), kOptions);
        EXPECT_FALSE(merging.needsIndices());
        ASSERT_NO_FATAL_FAILURE(expectOutcome(merging, all, tuples.data(), expected));
    }
}

TEST(VertexMergingTest, SeedOfTheHashesChangesNoVertex) {
    std::mt19937 random(85);
    for (const Recipe& recipe : kRecipes) {
        const std::vector<TestAttribute> attributes = randomMesh(random, recipe);
        const std::vector<CornerAttribute> all = views(attributes);
        const Outcome expected = expectedOutcome(all, recipe.corners);
        for (const quint64 seed : {quint64{0}, quint64{1}, ~quint64{0}, quint64{0x9E3779B97F4A7C15}}) {
            const GuardedArray<quint32> vertexOfCorner(recipe.corners);
            const VertexMerging merging(all, recipe.corners, vertexOfCorner.data(), {seed, {}, {}});
            ASSERT_NO_FATAL_FAILURE(expectOutcome(merging, all, vertexOfCorner.data(), expected));
        }
    }
}

/// Policies that force each way: tuples and filter, tuples and no filter, bytes alone.
std::vector<MergePolicy> forcingPolicies() {
    std::vector<MergePolicy> policies(3);
    policies[0].bytesPerCorner = policies[0].stepsPerCorner = 1U << 20;
    policies[0].cornersPerCandidate = 1;
    policies[1] = policies[0];
    policies[1].maxFilteredCorners = 0;
    policies[2].bytesPerCorner = 0;
    return policies;
}

TEST(VertexMergingTest, EveryMethodGivesTheSameVertices) {
    std::mt19937 random(86);
    for (const Recipe& recipe : kRecipes)
        for (const MergePolicy& policy : forcingPolicies()) {
            const std::vector<TestAttribute> attributes = randomMesh(random, recipe);
            const std::vector<CornerAttribute> all = views(attributes);
            const Outcome expected = expectedOutcome(all, recipe.corners);
            const GuardedArray<quint32> vertexOfCorner(recipe.corners);
            const VertexMerging merging(all, recipe.corners, vertexOfCorner.data(), {1, {}, policy});
            ASSERT_TRUE(merging.needsIndices() || policy.bytesPerCorner != 0 || recipe.corners <= 1024)
                << "tuples of the first block are always numbered";
            ASSERT_NO_FATAL_FAILURE(expectOutcome(merging, all, vertexOfCorner.data(), expected));
        }
}

TEST(VertexMergingTest, WithoutCornersThereAreNoVertices) {
    const TestAttribute attribute(std::vector<unsigned char>(12), {}, 12);
    const VertexMerging merging({attribute.view()}, 0, nullptr, kOptions);
    EXPECT_EQ(merging.vertexCount(), 0U);
    merging.gather(0, nullptr);
}

} // namespace
} // namespace Atelier::Vel
