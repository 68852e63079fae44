#include "geometry/merging/tuplemerging.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "testattributes.h"

namespace Atelier::Vel {
namespace {

using Testing::GuardedArray;
using Testing::Merged;
using Testing::TestAttribute;
using Testing::views;

/// An attribute with values of four bytes.
TestAttribute attributeOf(quint32 valueCount, const std::vector<quint32>& indices) {
    return {std::vector<unsigned char>(valueCount * std::size_t{4}), indices, 4};
}

/// The number of tuples is about a quarter of the number of corners. Unless all are valid, some entries name
/// no value.
std::vector<TestAttribute> randomMesh(std::mt19937& random, std::size_t attributeCount, quint32 cornerCount,
                                      bool areValid) {
    std::vector<quint32> tuples(cornerCount);
    for (quint32& tuple : tuples)
        tuple = static_cast<quint32>(random() % std::max(cornerCount / 4, 1U));
    const quint32 limit = std::min(cornerCount / 2, 60U);
    constexpr quint32 kPrimes[] = {7919, 7927, 7933, 7937, 7949, 7951};
    const std::size_t pivot = random() % attributeCount;
    std::vector<TestAttribute> attributes;
    for (std::size_t i = 0; i < attributeCount; ++i) {
        const quint32 values = i == pivot ? limit : 1 + static_cast<quint32>(random() % limit);
        const quint32 end = values + (areValid ? 0 : 3);
        std::vector<quint32> list(cornerCount);
        std::transform(tuples.begin(), tuples.end(), list.begin(),
                       [&](quint32 tuple) { return tuple * kPrimes[i] % end; });
        attributes.push_back(attributeOf(values, list));
    }
    return attributes;
}

std::vector<quint64> substitutedCorners(const std::vector<CornerAttribute>& attributes, quint32 cornerCount) {
    std::vector<quint64> counts;
    for (const CornerAttribute& attribute : attributes) {
        counts.push_back(0);
        for (quint32 corner = 0; corner < cornerCount; ++corner)
            counts.back() += attribute.valueOf(corner) == attribute.valueCount ? 1 : 0;
    }
    return counts;
}

void expectTuples(const TupleMerging& merging, const std::vector<CornerAttribute>& attributes,
                  const Merged& expected, const std::vector<std::vector<quint64>>& tuples) {
    ASSERT_EQ(merging.tupleCount(), expected.firstCorner.size());
    const std::vector<CornerAttribute> corners = merging.tuples(attributes);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        ASSERT_EQ(corners[i].values, attributes[i].values);
        ASSERT_EQ(corners[i].valueCount, attributes[i].valueCount);
        ASSERT_EQ(corners[i].indexCount, merging.tupleCount());
        for (quint32 tuple = 0; tuple < merging.tupleCount(); ++tuple)
            ASSERT_EQ(corners[i].valueOf(tuple), tuples[tuple][i]);
    }
}

/// Merges into the list of attribute `target`, or into a separate list if there is no such attribute.
void expectMerged(const std::vector<TestAttribute>& attributes, quint32 cornerCount, std::size_t target) {
    const std::vector<CornerAttribute> all = views(attributes);
    const Merged expected = Testing::mergedByTuples(all, cornerCount);
    std::vector<std::vector<quint64>> tuples;
    for (const quint32 corner : expected.firstCorner)
        tuples.push_back(Testing::tupleOfCorner(all, corner));
    const std::vector<quint64> substituted = substitutedCorners(all, cornerCount);
    const GuardedArray<quint32> own(cornerCount);
    quint32* const out = target < attributes.size() ? attributes[target].indices.data() : own.data();
    const TupleMerging merging(all, cornerCount, out, {});
    ASSERT_TRUE(merging.isDone());
    ASSERT_EQ(std::vector<quint32>(out, out + cornerCount), expected.vertexOfCorner);
    ASSERT_NO_FATAL_FAILURE(expectTuples(merging, all, expected, tuples));
    for (std::size_t i = 0; i < attributes.size(); ++i)
        ASSERT_EQ(merging.substitutedCorners(i), substituted[i]);
}

TEST(TupleMergingTest, CornersMergeByTheNumbersOfTheirValues) {
    std::mt19937 random(71);
    for (std::size_t attributeCount = 1; attributeCount <= MergePolicy::kMaxTuplePlaces; ++attributeCount)
        for (const quint32 cornerCount : {2U, 1023U, 1024U, 1025U, 5000U})
            for (const bool areValid : {true, false})
                ASSERT_NO_FATAL_FAILURE(expectMerged(
                    randomMesh(random, attributeCount, cornerCount, areValid), cornerCount, random() % 8))
                    << attributeCount << " attributes, " << cornerCount << " corners";
}

TEST(TupleMergingTest, CornersAfterAListUseOneMoreValue) {
    std::vector<TestAttribute> attributes;
    attributes.push_back(attributeOf(10, {0, 1, 0}));
    attributes.push_back(attributeOf(5, std::vector<quint32>(40, 3)));
    expectMerged(attributes, 40, 2);
}

TEST(TupleMergingTest, IsNotTriedWithMoreValuesThanHalfOfTheCorners) {
    const std::vector<quint32> list(100);
    for (const quint32 values : {50U, 51U}) {
        const TestAttribute few = attributeOf(1, list);
        const TestAttribute many = attributeOf(values, list);
        const GuardedArray<quint32> out(100, 77);
        const TupleMerging merging({few.view(), many.view(), few.view()}, 100, out.data(), {});
        EXPECT_EQ(merging.isDone(), values == 50) << values;
        EXPECT_EQ(out[99], values == 50 ? 0U : 77U);
    }
}

TEST(TupleMergingTest, IsNotTriedWithoutAttributesWithoutListsOrWithTooManyAttributes) {
    const TestAttribute attribute = attributeOf(2, std::vector<quint32>(8));
    CornerAttribute withoutList = attribute.view();
    withoutList.indices = nullptr;
    const GuardedArray<quint32> out(8);
    const auto isDone = [&out](const std::vector<CornerAttribute>& attributes) {
        return TupleMerging(attributes, 8, out.data(), {}).isDone();
    };
    EXPECT_FALSE(isDone({}));
    EXPECT_FALSE(isDone({attribute.view(), withoutList}));
    EXPECT_TRUE(isDone(std::vector<CornerAttribute>(6, attribute.view())));
    EXPECT_FALSE(isDone(std::vector<CornerAttribute>(7, attribute.view())));
}

TEST(TupleMergingTest, AttributesThatShareAListAddNoNumbers) {
    std::mt19937 random(74);
    for (const bool areValid : {true, false}) {
        const std::vector<TestAttribute> lists = randomMesh(random, 2, 2000, areValid);
        for (const std::size_t shared : {0U, 1U}) {
            std::vector<CornerAttribute> all = views(lists);
            all.insert(all.begin(), all[shared]);
            const GuardedArray<quint32> out(2000);
            const TupleMerging merging(all, 2000, out.data(), {});
            const TupleMerging without(views(lists), 2000, out.data(), {});
            ASSERT_TRUE(merging.isDone());
            EXPECT_EQ(merging.tupleCount(), without.tupleCount());
            const std::vector<CornerAttribute> tuples = merging.tuples(all);
            EXPECT_EQ(tuples[0].indexStep, 2U) << "numbers per tuple";
            EXPECT_EQ(tuples[0].indices, tuples[shared + 1].indices);
            EXPECT_EQ(merging.substitutedCorners(0), without.substitutedCorners(shared));
            for (const std::size_t i : {0U, 1U})
                EXPECT_EQ(merging.substitutedCorners(i + 1), without.substitutedCorners(i));
        }
    }
}

TEST(TupleMergingTest, AListWithTwoNumbersOfValuesIsReadTwice) {
    const TestAttribute list = attributeOf(4, {0, 1, 2, 3, 3, 2, 1, 0});
    std::vector<CornerAttribute> all(2, list.view());
    all[0].valueCount = 2;
    const GuardedArray<quint32> out(8);
    const TupleMerging merging(all, 8, out.data(), {});
    ASSERT_TRUE(merging.isDone());
    EXPECT_EQ(merging.tupleCount(), 4U);
    EXPECT_EQ(merging.substitutedCorners(0), 4U);
    EXPECT_EQ(merging.substitutedCorners(1), 0U);
}

/// Three attributes over 40,000 corners, nearly all of which use one value of the first, the pivot, and all
/// pairs of values of the others.
std::vector<TestAttribute> oneValueWithManyTuples() {
    constexpr quint32 kCorners = 40'000;
    std::vector<quint32> lists[3];
    for (quint32 corner = 0; corner < kCorners; ++corner) {
        const quint32 pair = corner * 7919 % kCorners;
        lists[0].push_back(corner / 39'990);
        lists[1].push_back(pair % 300);
        lists[2].push_back(corner % 1000 == 999 ? 555 : pair / 300);
    }
    std::vector<TestAttribute> attributes;
    attributes.push_back(attributeOf(301, lists[0]));
    attributes.push_back(attributeOf(300, lists[1]));
    attributes.push_back(attributeOf(300, lists[2]));
    return attributes;
}

TEST(TupleMergingTest, StopsIfOneValueHasVeryManyTuples) {
    const std::vector<TestAttribute> attributes = oneValueWithManyTuples();
    const GuardedArray<quint32> out(40'000);
    EXPECT_FALSE(TupleMerging(views(attributes), 40'000, out.data(), {}).isDone());
    // Only the first block was read: it took half a million steps.
    EXPECT_EQ(out[1023], 1023U);
    EXPECT_EQ(out[1024], 0U);
}

TEST(TupleMergingTest, OverwrittenListIsRestoredWhenMergingStops) {
    for (const std::size_t target : {0U, 1U, 2U}) {
        const std::vector<TestAttribute> attributes = oneValueWithManyTuples();
        std::vector<quint32> expected = attributes[target].indices.items();
        // Invalid ones become the number of values in the blocks that were read.
        if (target == 2)
            expected[999] = 300;
        EXPECT_FALSE(TupleMerging(views(attributes), 40'000, attributes[target].indices.data(), {}).isDone());
        EXPECT_EQ(attributes[target].indices.items(), expected);
    }
}

TEST(TupleMergingTest, ExistingTupleNumbersAreReused) {
    std::mt19937 random(72);
    const std::vector<std::size_t> places = {2, 0, 1};
    for (const quint32 valid : {20U, 19U}) { // with 19, number 19 names no value
        std::vector<TestAttribute> attributes;
        for (int i = 0; i < 3; ++i) {
            std::vector<quint32> list(500);
            for (quint32& entry : list)
                entry = static_cast<quint32>(random() % 20);
            attributes.push_back(attributeOf(i == 1 ? valid : 20, list));
        }
        std::vector<CornerAttribute> all = views(attributes);
        auto numbering = IndexTupleTable::make(3);
        numbering->raiseLimit(20);
        const quint32* const lists[] = {all[1].indices, all[2].indices, all[0].indices};
        const GuardedArray<quint32> tupleOfCorner(500);
        numbering->add(lists, 500, tupleOfCorner.data());
        const TupleMerging merging(all, std::move(numbering), places, 500, tupleOfCorner.data());
        EXPECT_TRUE(merging.isDone());
        const std::vector<CornerAttribute> tuples = merging.tuples(all);
        const std::vector<quint64> substituted = substitutedCorners(all, 500);
        for (std::size_t i = 0; i < 3; ++i) {
            for (quint32 corner = 0; corner < 500; ++corner)
                ASSERT_EQ(tuples[i].valueOf(tupleOfCorner[corner]), all[i].valueOf(corner));
            EXPECT_EQ(merging.substitutedCorners(i), substituted[i]);
        }
        EXPECT_EQ(merging.substitutedCorners(1) != 0, valid == 19);
    }
}

} // namespace
} // namespace Atelier::Vel
