#include "mesh/mergedcorners.h"

#include <numeric>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include <velmodel/modeldataarray.h>

#include "support/clientstreams.h"
#include "support/streamcontents.h"
#include "testattributes.h"

namespace Atelier::Vel {
namespace {

using Testing::elements;
using testing::ElementsAre;
using Testing::GuardedArray;
using Testing::TestAttribute;

constexpr unsigned int kUnsignedInt = 0x1405;

const QStringList kNames{QStringLiteral("p"), QStringLiteral("n")};

/// Corners with a position and a normal.
class MergedCornersTest : public testing::Test {
protected:
    void make(const QSharedPointer<ModelDataStream>& list) {
        _merged = std::make_unique<MergedCorners>(kNames, list);
    }
    bool add(const std::vector<quint32>& positions, const std::vector<quint32>& normals, quint64 values) {
        const GuardedArray<quint32> first(positions);
        const GuardedArray<quint32> second(normals);
        const GuardedArray<quint32*> lists{first.data(), second.data()};
        return _merged->add(lists.data(), static_cast<quint32>(positions.size()), values);
    }
    std::vector<quint32> unmerged(int attribute) const {
        std::vector<quint32> all;
        _merged->unmerge(attribute, [&all](const quint32* numbers, quint64 count) {
            all.insert(all.end(), numbers, numbers + count);
        });
        return all;
    }
    /// Whether one more corner is accepted after `corners` corners with `tuples` different tuples of
    /// positions below `values`.
    bool takesAnother(quint32 corners, quint32 tuples, quint32 values) {
        make(QSharedPointer<ModelDataArray>::create(kUnsignedInt));
        std::vector<quint32> positions(corners);
        std::vector<quint32> normals(corners);
        for (quint32 i = 0; i < tuples; ++i) {
            positions[i] = i % values;
            normals[i] = i / values;
        }
        EXPECT_TRUE(add(positions, normals, values));
        return add({0}, {0}, values);
    }

    std::unique_ptr<MergedCorners> _merged;
};

TEST_F(MergedCornersTest, ListHasTheTupleOfEachCorner) {
    make(QSharedPointer<Testing::PlainStream>::create(kUnsignedInt, 0U));
    EXPECT_EQ(_merged->attributes(), kNames);
    EXPECT_TRUE(add({0, 1, 0}, {5, 5, 5}, 2));
    EXPECT_TRUE(add({2, 0, 0}, {5, 5, 6}, 3));
    EXPECT_THAT(elements<quint32>(_merged->list()), ElementsAre(0, 1, 0, 2, 0, 3));
    EXPECT_FALSE(_merged->isRefused());
    EXPECT_THAT(unmerged(0), ElementsAre(0, 1, 0, 2, 0, 0));
    EXPECT_THAT(unmerged(1), ElementsAre(5, 5, 5, 5, 5, 6));
}

TEST_F(MergedCornersTest, CornersBeforeTheirPositionAreRejected) {
    make(QSharedPointer<Testing::PlainStream>::create(kUnsignedInt, 0U));
    EXPECT_FALSE(add({0}, {0}, 0));
    EXPECT_TRUE(add({0, 2}, {0, 0}, 3));
    EXPECT_FALSE(add({0, 3}, {0, 9}, 3));
    EXPECT_THAT(elements<quint32>(_merged->list()), ElementsAre(0, 1)) << "nothing is done";
    EXPECT_TRUE(add({0, 3}, {0, 9}, 4));
    EXPECT_THAT(elements<quint32>(_merged->list()), ElementsAre(0, 1, 0, 2));
}

TEST_F(MergedCornersTest, GreatestNumberOfEachAttributeIsKnown) {
    make(QSharedPointer<Testing::PlainStream>::create(kUnsignedInt, 0U));
    EXPECT_TRUE(add({0, 1, 0}, {5, 9, 5}, 2));
    EXPECT_TRUE(_merged->areNumbersBelow(kNames[0], 2));
    EXPECT_FALSE(_merged->areNumbersBelow(kNames[0], 1));
    EXPECT_TRUE(_merged->areNumbersBelow(kNames[1], 10));
    EXPECT_FALSE(_merged->areNumbersBelow(kNames[1], 9));
}

TEST_F(MergedCornersTest, CornersAreUnmergedBlockByBlock) {
    std::mt19937 random(73);
    for (const quint32 count : {0U, 1U, 1023U, 1024U, 1025U, 5000U}) {
        make(QSharedPointer<Testing::PlainStream>::create(kUnsignedInt, 0U));
        std::vector<quint32> positions(count);
        std::vector<quint32> normals(count);
        for (quint32 i = 0; i < count; ++i) {
            positions[i] = static_cast<quint32>(random() % 50);
            normals[i] = static_cast<quint32>(random() % 9);
        }
        ASSERT_TRUE(add(positions, normals, 50));
        EXPECT_EQ(unmerged(0), positions);
        EXPECT_EQ(unmerged(1), normals);
    }
}

/// Accepts only two corners.
class FullList : public Testing::PlainStream {
public:
    FullList() : PlainStream(kUnsignedInt, 0) {}
    void append(quint64 count, const void* src) override {
        if (size() + count <= 2)
            PlainStream::append(count, src);
    }
};

TEST_F(MergedCornersTest, RefusalOfCornersIsPermanent) {
    make(QSharedPointer<FullList>::create());
    EXPECT_TRUE(add({0, 1}, {0, 0}, 2));
    EXPECT_FALSE(_merged->isRefused());
    EXPECT_TRUE(add({0}, {0}, 2));
    EXPECT_TRUE(_merged->isRefused());
    EXPECT_TRUE(add({}, {}, 2));
    EXPECT_TRUE(_merged->isRefused()) << "later success does not hide it";
}

TEST_F(MergedCornersTest, TuplesAreTakenInTheOrderOfTheNames) {
    make(QSharedPointer<Testing::PlainStream>::create(kUnsignedInt, 0U));
    ASSERT_TRUE(add({3, 1, 3, 1}, {0, 2, 0, 1}, 4));
    const TestAttribute normals(std::vector<unsigned char>(8), {}, 4);
    const TestAttribute positions(std::vector<unsigned char>(16), {}, 4);
    const std::vector<CornerAttribute> attributes = {normals.view(), positions.view()};
    const TupleMerging tuples = _merged->take({kNames[1], kNames[0]}, attributes);
    ASSERT_EQ(tuples.tupleCount(), 3U);
    const std::vector<CornerAttribute> corners = tuples.tuples(attributes);
    const auto numbersOf = [](const CornerAttribute& corner) {
        return std::vector<quint64>{corner.valueOf(0), corner.valueOf(1), corner.valueOf(2)};
    };
    EXPECT_THAT(numbersOf(corners[0]), ElementsAre(0, 2, 1));
    EXPECT_THAT(numbersOf(corners[1]), ElementsAre(3, 1, 1));
    EXPECT_EQ(tuples.substitutedCorners(0), 1U) << "there are two normals";
    EXPECT_EQ(tuples.substitutedCorners(1), 0U);
}

TEST_F(MergedCornersTest, SeveralAttributesMayUseTheSameNumbers) {
    make(QSharedPointer<Testing::PlainStream>::create(kUnsignedInt, 0U));
    ASSERT_TRUE(add({1, 0, 1}, {0, 0, 0}, 2));
    const TestAttribute values(std::vector<unsigned char>(8), {}, 4);
    const std::vector<CornerAttribute> attributes(3, values.view());
    const TupleMerging tuples = _merged->take({kNames[1], kNames[0], kNames[0]}, attributes);
    const std::vector<CornerAttribute> corners = tuples.tuples(attributes);
    EXPECT_EQ(corners[0].valueOf(0), 0U);
    EXPECT_EQ(corners[1].valueOf(0), 1U);
    EXPECT_EQ(corners[2].indices, corners[1].indices);
}

// The tuples of one position form a chain: without a limit, time grows with the square of its length.
TEST_F(MergedCornersTest, OnePositionWithManyNormalsIsNotMerged) {
    make(QSharedPointer<ModelDataArray>::create(kUnsignedInt));
    std::vector<quint32> normals(1000);
    std::iota(normals.begin(), normals.end(), 0U);
    const std::vector<quint32> positions(normals.size());
    ASSERT_TRUE(add(positions, normals, 1));
    EXPECT_FALSE(add(positions, normals, 1));
    EXPECT_EQ(_merged->list()->size(), normals.size());
}

TEST_F(MergedCornersTest, SixtyFiveThousandCornersMayAllDiffer) {
    EXPECT_TRUE(takesAnother(65535, 65535, 65535));
    EXPECT_FALSE(takesAnother(65536, 65536, 65536));
}

TEST_F(MergedCornersTest, CornersUpToAnEighthOfTheValuesMayAllDiffer) {
    EXPECT_TRUE(takesAnother(99'999, 99'999, 800'000));
    EXPECT_FALSE(takesAnother(100'000, 100'000, 800'000));
}

TEST_F(MergedCornersTest, LaterOneOfThirtyTwoCornersHasToRepeatATuple) {
    EXPECT_TRUE(takesAnother(65536, 63488, 63488));
    EXPECT_FALSE(takesAnother(65536, 63489, 63489));
}

// A tuple of two numbers takes 24 bytes, and the limit is 16 bytes per expected corner. Expected are 131,072
// corners, twice the number of values, or the number of corners so far, whichever is largest.
TEST_F(MergedCornersTest, BytesOfTuplesAreLimitedByTheExpectedCorners) {
    EXPECT_TRUE(takesAnother(90'300, 87'381, 60'000));
    EXPECT_FALSE(takesAnother(90'300, 87'382, 60'000));
    EXPECT_TRUE(takesAnother(137'700, 133'333, 100'000));
    EXPECT_FALSE(takesAnother(137'700, 133'334, 100'000));
    EXPECT_TRUE(takesAnother(150'000, 100'000, 10'000));
    EXPECT_FALSE(takesAnother(150'000, 100'001, 10'000));
}

} // namespace
} // namespace Atelier::Vel
