#include "geometry/merging/duplicatefilter.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <random>

#include <gmock/gmock.h>

#include "testattributes.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;
using testing::IsEmpty;
using Testing::TestAttribute;

/// Corners that use the given values of 8 bytes, one after the other.
TestAttribute attributeOf(const std::vector<quint64>& values) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(values.data());
    std::vector<quint32> list(values.size());
    std::iota(list.begin(), list.end(), 0U);
    return {std::vector<unsigned char>(bytes, bytes + values.size() * 8), list, 8};
}

std::vector<quint32> candidatesOf(const std::vector<quint64>& values, quint64 seed = 0x5EED) {
    const TestAttribute attribute = attributeOf(values);
    const auto count = static_cast<quint32>(values.size());
    const GuardedArray<quint32> capacity(values.size());
    return duplicateCandidates(attribute.view(), count, seed, capacity.data(), {});
}

std::vector<quint64> distinctValues(quint32 count) {
    std::vector<quint64> values(count);
    std::mt19937_64 random(3);
    std::generate(values.begin(), values.end(), std::ref(random));
    return values;
}

TEST(DuplicateFilterTest, EveryCornerWithADuplicateIsACandidateInTheirOrder) {
    for (const quint32 count : {2U, 31U, 32U, 33U, 64U, 65U, 1000U}) {
        std::vector<quint64> values = distinctValues(count);
        values.back() = values.front();
        const std::vector<quint32> candidates = candidatesOf(values);
        EXPECT_TRUE(std::is_sorted(candidates.begin(), candidates.end()));
        ASSERT_GE(candidates.size(), 2U);
        EXPECT_EQ(candidates.front(), 0U) << count;
        EXPECT_EQ(candidates.back(), count - 1);
    }
}

TEST(DuplicateFilterTest, EqualCornersAreAllCandidates) {
    EXPECT_THAT(candidatesOf({7, 7, 7, 7}), ElementsAre(0, 1, 2, 3));
}

TEST(DuplicateFilterTest, AtMostOneOfFiftyDistinctCornersIsACandidate) {
    for (const quint64 seed : {quint64{1}, quint64{0xFEDCBA9876543210}})
        EXPECT_LT(candidatesOf(distinctValues(100'000), seed).size(), 2000U) << seed;
}

TEST(DuplicateFilterTest, OneCornerOrNoneHasNoDuplicate) {
    EXPECT_THAT(candidatesOf({5}), IsEmpty());
    EXPECT_THAT(candidatesOf({}), IsEmpty());
}

TEST(DuplicateFilterTest, CornersAreCountedOnce) {
    const TestAttribute attribute = attributeOf(distinctValues(1 << 17));
    const GuardedArray<quint32> capacity(1 << 17);
    int counted = 0;
    duplicateCandidates(attribute.view(), 1 << 17, 1, capacity.data(),
                        [&](int corners) { counted += corners; });
    EXPECT_EQ(counted, 1 << 17);
}

} // namespace
} // namespace Atelier::Vel
