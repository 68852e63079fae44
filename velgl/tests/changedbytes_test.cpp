#include "objects/changedbytes.h"

#include <random>

#include <gmock/gmock.h>

namespace Atelier::Vel {

static bool operator==(const ByteRange& a, const ByteRange& b) {
    return a.begin == b.begin && a.end == b.end;
}

static void PrintTo(const ByteRange& range, std::ostream* out) {
    *out << range.begin << " to " << range.end;
}

} // namespace Atelier::Vel

namespace Atelier::Vel::Testing {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

// `count` ranges of four bytes with `gap` bytes between them.
ChangedBytes ranges(std::size_t count, qint64 gap) {
    ChangedBytes changed;
    for (std::size_t i = 0; i < count; ++i)
        changed.add({qint64(i) * (4 + gap), qint64(i) * (4 + gap) + 4});
    return changed;
}

} // namespace

TEST(ChangedBytesTest, RangesThatTouchOrOverlapAreJoinedInAscendingOrder) {
    ChangedBytes changed;
    EXPECT_TRUE(changed.isEmpty());
    EXPECT_THAT(changed.joined(), IsEmpty());
    changed.add({20, 24});
    changed.add({4, 8});
    changed.add({8, 10});
    changed.add({0, 5});
    changed.add({22, 23});
    EXPECT_FALSE(changed.isEmpty());
    EXPECT_THAT(changed.joined(), ElementsAre(ByteRange{0, 10}, ByteRange{20, 24}));
    EXPECT_THAT(changed.joined(), ElementsAre(ByteRange{0, 10}, ByteRange{20, 24}));
    changed.clear();
    EXPECT_TRUE(changed.isEmpty());
}

TEST(ChangedBytesTest, FewRangesStaySeparate) {
    EXPECT_THAT(ranges(ChangedBytes::kMaxSeparate, 1).joined(), SizeIs(ChangedBytes::kMaxSeparate));
}

TEST(ChangedBytesTest, ManyRangesAreJoinedAcrossSmallGaps) {
    constexpr std::size_t kMany = ChangedBytes::kMaxSeparate + 1;
    EXPECT_THAT(ranges(kMany, ChangedBytes::kMaxGap).joined(),
                ElementsAre(ByteRange{0, 4 * qint64(kMany) + ChangedBytes::kMaxGap * qint64(kMany - 1)}));
    EXPECT_THAT(ranges(kMany, ChangedBytes::kMaxGap + 1).joined(), SizeIs(kMany));
}

TEST(ChangedBytesTest, BytesThatChangeAgainAndAgainTakeNoFurtherMemory) {
    ChangedBytes changed;
    for (int i = 0; i < 100000; ++i)
        changed.add({i % 10 * 100, i % 10 * 100 + 4});
    EXPECT_LT(changed.size(), 100U);
    EXPECT_THAT(changed.joined(), SizeIs(10));
}

TEST(ChangedBytesTest, EachChangedByteIsInOneRange) {
    std::mt19937 random(8);
    for (int round = 0; round < 50; ++round) {
        ChangedBytes changed;
        std::vector<bool> isChanged(4000);
        const int count = int(random() % 200);
        for (int i = 0; i < count; ++i) {
            const qint64 begin = random() % 3900;
            const qint64 end = begin + 1 + random() % 60;
            changed.add({begin, end});
            std::fill(isChanged.begin() + begin, isChanged.begin() + end, true);
        }
        std::vector<int> covered(4000);
        for (const ByteRange& range : changed.joined())
            for (qint64 i = range.begin; i < range.end; ++i)
                ++covered[std::size_t(i)];
        for (std::size_t i = 0; i < covered.size(); ++i) {
            EXPECT_LE(covered[i], 1);
            EXPECT_GE(covered[i], int(isChanged[i]));
        }
    }
}

} // namespace Atelier::Vel::Testing
