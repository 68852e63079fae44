#include "geometry/merging/bytemerging.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "testattributes.h"

namespace Atelier::Vel {
namespace {

using Testing::GuardedArray;
using Testing::Merged;
using Testing::mergedPlainly;
using Testing::TestAttribute;
using Testing::views;

const MergeOptions kOptions{0x5EED, {}, {}};

/// The lists of a remap, including an identity.
Merged listsOf(const VertexRemap& remap, const GuardedArray<quint32>& vertexOfCorner) {
    if (!remap.isIdentity())
        return {vertexOfCorner.items(), {remap.firstCorner(), remap.firstCorner() + remap.vertexCount()}};
    std::vector<quint32> identity(remap.cornerCount());
    std::iota(identity.begin(), identity.end(), 0U);
    EXPECT_EQ(remap.vertexCount(), remap.cornerCount());
    return {identity, identity};
}

Merged mergedByBytes(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    const GuardedArray<quint32> vertexOfCorner(cornerCount);
    VertexRemap remap(cornerCount, vertexOfCorner.data());
    mergeByBytes(attributes, kOptions, remap);
    EXPECT_FALSE(remap.isIdentity());
    return listsOf(remap, vertexOfCorner);
}

/// `needsList` receives whether the list of first corners was needed.
Merged filtered(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                bool* needsList = nullptr) {
    const GuardedArray<quint32> vertexOfCorner(cornerCount);
    VertexRemap remap(cornerCount, vertexOfCorner.data());
    mergeMostlyDistinct(attributes, kOptions, remap);
    if (needsList != nullptr)
        *needsList = !remap.isIdentity();
    return listsOf(remap, vertexOfCorner);
}

void expectSame(const Merged& merged, const Merged& expected) {
    ASSERT_EQ(merged.vertexOfCorner, expected.vertexOfCorner);
    ASSERT_EQ(merged.firstCorner, expected.firstCorner);
}

/// Corners with a position and a colour, drawn from few or many different values; some have no value.
std::vector<TestAttribute> sparseMesh(std::mt19937& random, quint32 cornerCount, quint32 differentValues) {
    const auto below = [&random](quint32 limit) { return static_cast<quint32>(random() % limit); };
    // Enough values that corners rarely share one by chance: otherwise the filter would remove nothing.
    const quint32 valueCount = cornerCount * 32;
    std::vector<unsigned char> positions(valueCount * 3 * sizeof(float));
    std::vector<unsigned char> colours(valueCount * sizeof(quint32));
    for (quint32 value = 0; value < valueCount; ++value) {
        const quint32 colour = below(4);
        const auto x = static_cast<float>(below(differentValues));
        std::memcpy(&colours[value * sizeof colour], &colour, sizeof colour);
        std::memcpy(&positions[value * 3 * sizeof x], &x, sizeof x);
    }
    std::vector<quint32> lists[2];
    for (quint32 corner = 0; corner < cornerCount; ++corner) {
        const bool isRepeated = corner != 0 && below(30) == 0;
        const quint32 source = below(corner + 1);
        for (std::vector<quint32>& list : lists)
            list.push_back(isRepeated ? list[source % corner] : below(valueCount + 1));
    }
    // The filter uses the first of the attributes with the largest number of values.
    std::vector<TestAttribute> attributes;
    attributes.emplace_back(positions, lists[0], 3 * sizeof(float));
    attributes.emplace_back(colours, lists[1], sizeof(quint32));
    return attributes;
}

/// Values of any width; the list has runs of consecutive values, and random parts between them.
TestAttribute randomAttribute(std::mt19937& random, quint32 cornerCount, quint64 stride,
                              quint32 differentValues) {
    const auto below = [&random](quint32 limit) { return static_cast<quint32>(random() % limit); };
    const quint32 valueCount = cornerCount + 70;
    std::vector<unsigned char> values;
    std::vector<quint32> indices;
    for (quint32 value = 0; value < valueCount; ++value) {
        values.resize(values.size() + stride);
        // Both ends of a value vary: a key has to hold all of it.
        const auto number = static_cast<std::uint16_t>(below(differentValues));
        std::memcpy(&values[value * stride], &number, std::min<std::size_t>(stride, sizeof number));
        values.back() = static_cast<unsigned char>(below(2));
    }
    while (indices.size() < cornerCount - below(2)) {
        const bool isRun = below(3) == 0;
        const quint32 first = below(valueCount + 3);
        for (quint32 i = 0; i < (isRun ? 70 : 20) && indices.size() < cornerCount; ++i)
            indices.push_back(isRun ? first + i : below(valueCount + 3));
    }
    return {values, indices, stride};
}

TEST(ByteMergingTest, CornersWithTheSameBytesAreOneVertex) {
    std::mt19937 random(62);
    for (const std::vector<quint64>& strides : {std::vector<quint64>{1},
                                                {4},
                                                {12},
                                                {3, 5},
                                                {12, 8, 12},
                                                {16, 4},
                                                {20, 12},
                                                {100, 28},
                                                {100, 29},
                                                {300}})
        for (const quint32 differentValues : {2U, 15U, 60000U})
            for (const quint32 cornerCount : {1U, 31U, 33U, 3000U}) {
                std::vector<TestAttribute> attributes;
                for (const quint64 stride : strides)
                    attributes.push_back(randomAttribute(random, cornerCount, stride, differentValues));
                ASSERT_NO_FATAL_FAILURE(expectSame(mergedByBytes(views(attributes), cornerCount),
                                                   mergedPlainly(views(attributes), cornerCount)));
            }
}

TEST(ByteMergingTest, FilteredCornersMergeLikeAllCorners) {
    std::mt19937 random(61);
    for (const quint32 differentValues : {1U, 3U, 1000U, 100000U, 100000000U})
        for (const quint32 cornerCount : {1U, 2U, 40U, 5000U}) {
            SCOPED_TRACE(testing::Message() << cornerCount << " corners, " << differentValues << " values");
            const std::vector<TestAttribute> attributes = sparseMesh(random, cornerCount, differentValues);
            ASSERT_NO_FATAL_FAILURE(expectSame(filtered(views(attributes), cornerCount),
                                               mergedPlainly(views(attributes), cornerCount)));
        }
}

/// Corner k uses value k, which consists of zeros except for the number k at byte `place`.
TestAttribute numberedValues(quint32 count, quint64 stride, quint64 place) {
    std::vector<unsigned char> values(count * stride);
    for (quint32 k = 0; k < count; ++k)
        std::memcpy(&values[k * stride + place], &k, std::min<std::size_t>(sizeof k, stride - place));
    std::vector<quint32> indices(count);
    std::iota(indices.begin(), indices.end(), 0U);
    return {values, indices, stride};
}

// All corners differ except two. Tests all places of these two, because the filter works in blocks.
TEST(ByteMergingTest, TwoEqualCornersAreFoundAtEveryPlace) {
    for (const quint32 count : {8U, 32U, 33U, 65U})
        for (quint32 second = 1; second < count; ++second)
            for (quint32 first = 0; first < second; ++first) {
                const TestAttribute attribute = numberedValues(count, 12, 0);
                attribute.indices[second] = first;
                std::vector<quint32> expected(count);
                std::iota(expected.begin(), expected.end(), 0U);
                expected[second] = first;
                for (quint32 after = second + 1; after < count; ++after)
                    --expected[after];
                ASSERT_EQ(filtered({attribute.view()}, count).vertexOfCorner, expected)
                    << first << " and " << second;
            }
}

// If the hash omitted a byte, all corners would be candidates, and candidates need the list.
TEST(ByteMergingTest, DistinctCornersNeedNoListOfFirstCorners) {
    constexpr quint32 kCount = 3000;
    for (const quint64 stride : {2U, 4U, 8U, 12U, 13U, 16U, 20U, 30U, 33U, 40U})
        for (quint64 place = 0; place + 1 < stride; ++place) {
            bool needsList = true;
            const Merged merged =
                filtered({numberedValues(kCount, stride, place).view()}, kCount, &needsList);
            EXPECT_EQ(merged.firstCorner.size(), kCount);
            EXPECT_FALSE(needsList) << stride << " bytes, different from byte " << place << " on";
        }
}

TEST(ByteMergingTest, AttributeWithMostValuesIsFiltered) {
    constexpr quint32 kCount = 3000;
    const TestAttribute different = numberedValues(kCount, 4, 0);
    const TestAttribute alike(std::vector<unsigned char>(400), std::vector<quint32>(kCount), 4);
    for (const auto& attributes : {std::vector<CornerAttribute>{different.view(), alike.view()},
                                   {alike.view(), different.view()},
                                   {alike.view(), different.view(), alike.view()}}) {
        bool needsList = true;
        filtered(attributes, kCount, &needsList);
        EXPECT_FALSE(needsList);
    }
}

// With so many corners, a slot of the table holds few bits of the hash: some corners share all of them, and
// only their bytes differ. Keys are copied for the first quarter alone, so the others are compared in place.
TEST(ByteMergingTest, ManyCornersWithEqualSlotsAreComparedByTheirBytes) {
    constexpr quint32 kCount = 1 << 19;
    const TestAttribute same(std::vector<unsigned char>(4), std::vector<quint32>(kCount), 4);
    const auto mergeWith = [&same](quint64 stride, quint64 place) {
        const TestAttribute different = numberedValues(kCount, stride, place);
        return mergedByBytes({different.view(), same.view()}, kCount).firstCorner.size();
    };
    EXPECT_EQ(mergeWith(4, 0), kCount);
    for (const quint64 stride : {8U, 12U, 16U}) {
        EXPECT_EQ(mergeWith(stride, 0), kCount) << stride;
        EXPECT_EQ(mergeWith(stride, stride - 4), kCount) << stride;
    }
    const TestAttribute different = numberedValues(kCount, 12, 4);
    EXPECT_EQ(mergedByBytes({same.view(), different.view()}, kCount).firstCorner.size(), kCount);
}

// Lists that resemble a run of consecutive values.
TEST(ByteMergingTest, RunsOfIndicesEndWithTheValues) {
    TestAttribute attribute = numberedValues(100, 12, 0);
    std::iota(attribute.indices.begin(), attribute.indices.end(), 0xFFFFFFF0U);
    ASSERT_NO_FATAL_FAILURE(
        expectSame(mergedByBytes({attribute.view()}, 100), mergedPlainly({attribute.view()}, 100)));
    for (const quint32 first : {1U, 36U, 37U, 68U, 69U, 100U}) {
        std::iota(attribute.indices.begin(), attribute.indices.end(), first);
        ASSERT_NO_FATAL_FAILURE(
            expectSame(mergedByBytes({attribute.view()}, 100), mergedPlainly({attribute.view()}, 100)));
        ASSERT_NO_FATAL_FAILURE(
            expectSame(filtered({attribute.view()}, 100), mergedPlainly({attribute.view()}, 100)));
    }
}

TEST(ByteMergingTest, ScatteredIndicesAreNoRun) {
    const TestAttribute attribute = numberedValues(128, 12, 0);
    CornerAttribute everyOther = attribute.view();
    everyOther.indexCount = 64;
    everyOther.indexStep = 2;
    for (const quint32 cornerCount : {32U, 64U, 66U})
        ASSERT_NO_FATAL_FAILURE(
            expectSame(mergedByBytes({everyOther}, cornerCount), mergedPlainly({everyOther}, cornerCount)));
}

TEST(ByteMergingTest, WithoutAListCornersUseTheValueOfTheirNumber) {
    const TestAttribute attribute = numberedValues(64, 12, 0);
    CornerAttribute itself = attribute.view();
    itself.indices = nullptr;
    for (const quint32 cornerCount : {63U, 64U, 96U}) {
        ASSERT_NO_FATAL_FAILURE(
            expectSame(mergedByBytes({itself}, cornerCount), mergedPlainly({itself}, cornerCount)));
        ASSERT_NO_FATAL_FAILURE(
            expectSame(filtered({itself}, cornerCount), mergedPlainly({itself}, cornerCount)));
    }
}

TEST(ByteMergingTest, AttributesWithoutValuesOrBytesSeparateNoCorners) {
    const TestAttribute different = numberedValues(40, 12, 0);
    CornerAttribute withoutValues = different.view();
    withoutValues.valueCount = 0;
    CornerAttribute withoutBytes = different.view();
    withoutBytes.stride = 0;
    withoutBytes.valueCount = 1000;
    for (const CornerAttribute& empty : {withoutValues, withoutBytes}) {
        EXPECT_THAT(mergedByBytes({empty}, 40).firstCorner, testing::ElementsAre(0));
        EXPECT_THAT(filtered({empty}, 40).firstCorner, testing::ElementsAre(0));
        EXPECT_EQ(mergedByBytes({empty, different.view()}, 40).firstCorner.size(), 40U);
        EXPECT_EQ(filtered({different.view(), empty}, 40).firstCorner.size(), 40U);
    }
}

TEST(ByteMergingTest, CornersWithoutAnyBytesAreOneVertex) {
    EXPECT_THAT(filtered({CornerAttribute()}, 3).vertexOfCorner, testing::ElementsAre(0, 0, 0));
    EXPECT_THAT(filtered({CornerAttribute()}, 0).firstCorner, testing::IsEmpty());
}

} // namespace
} // namespace Atelier::Vel
