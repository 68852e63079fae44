#include "geometry/merging/indexblocks.h"

#include <limits>
#include <vector>

#include <gmock/gmock.h>

#include "support/guardedarray.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;

class IndexBlockTest : public testing::Test {
protected:
    static CornerAttribute attribute(const GuardedArray<quint32>& indices, quint64 valueCount) {
        CornerAttribute result{indices.data(), indices.size()};
        result.valueCount = valueCount;
        return result;
    }
    std::vector<quint32> read(const CornerAttribute& attribute, quint32 first, quint32 count) {
        const quint32* const numbers = _block.read(attribute, first, count);
        return {numbers, numbers + count};
    }
    IndexBlock _block;
};

TEST_F(IndexBlockTest, ValidListIsReadInPlace) {
    const GuardedArray<quint32> indices{4, 2, 0, 1, 3};
    EXPECT_EQ(_block.read(attribute(indices, 5), 0, 5), indices.data());
    EXPECT_EQ(_block.read(attribute(indices, 5), 3, 2), indices.data() + 3);
    EXPECT_EQ(_block.substitutedCorners(), 0U);
}

TEST_F(IndexBlockTest, EntriesThatNameNoValueBecomeTheNumberOfValues) {
    const GuardedArray<quint32> indices{4, 5, 0xFFFFFFFF, 1};
    EXPECT_THAT(read(attribute(indices, 5), 0, 4), ElementsAre(4, 5, 5, 1));
    EXPECT_EQ(_block.substitutedCorners(), 2U);
    EXPECT_EQ(indices[2], 0xFFFFFFFF) << "the list itself stays";
}

TEST_F(IndexBlockTest, CornersAfterTheListHaveNoValue) {
    const GuardedArray<quint32> indices{1, 0};
    EXPECT_THAT(read(attribute(indices, 2), 1, 3), ElementsAre(0, 2, 2));
    EXPECT_THAT(read(attribute(indices, 2), 7, 2), ElementsAre(2, 2));
    EXPECT_EQ(_block.substitutedCorners(), 4U) << "of all blocks together";
}

TEST_F(IndexBlockTest, CornerNumbersDoNotWrapToTheFirst) {
    const GuardedArray<quint32> indices{1, 0, 1, 0};
    constexpr quint32 kLast = std::numeric_limits<quint32>::max();
    EXPECT_THAT(read(attribute(indices, 2), kLast - 1, 4), ElementsAre(2, 2, 2, 2));
}

TEST_F(IndexBlockTest, WithoutAListCornersUseTheValueOfTheirNumber) {
    CornerAttribute itself;
    itself.indexCount = 4;
    itself.valueCount = 3;
    EXPECT_THAT(read(itself, 0, 4), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(read(itself, 1, 4), ElementsAre(1, 2, 3, 3));
    EXPECT_EQ(_block.substitutedCorners(), 3U);
}

TEST_F(IndexBlockTest, EntriesAreReadWithTheirStep) {
    const GuardedArray<quint32> indices{3, 9, 1, 9, 0};
    CornerAttribute stepped{indices.data(), 3, 2};
    stepped.valueCount = 10;
    EXPECT_THAT(read(stepped, 0, 3), ElementsAre(3, 1, 0));
}

TEST_F(IndexBlockTest, WithoutValuesNoCornerHasOne) {
    const GuardedArray<quint32> indices{0, 1};
    EXPECT_THAT(read(attribute(indices, 0), 0, 2), ElementsAre(0, 0));
    EXPECT_EQ(_block.substitutedCorners(), 2U);
}

TEST_F(IndexBlockTest, WholeBlockIsCopied) {
    GuardedArray<quint32> indices(IndexBlock::kSize);
    indices[IndexBlock::kSize - 1] = 7;
    std::vector<quint32> expected(IndexBlock::kSize);
    expected.back() = 1;
    EXPECT_EQ(read(attribute(indices, 1), 0, IndexBlock::kSize), expected);
}

} // namespace
} // namespace Atelier::Vel
