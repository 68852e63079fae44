#include "geometry/merging/indextupletable.h"

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "support/guardedarray.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;

using Tuple = std::vector<quint32>;

/// Compares the numbers of tuples with their definition.
class IndexTupleTableTest : public testing::Test {
protected:
    void make(std::size_t places) {
        _tuples = IndexTupleTable::make(places);
        _expected.clear();
    }
    void raiseLimit(quint64 limit) { _tuples->raiseLimit(limit); }
    bool isWorthwhile(quint64 added, quint64 expected) const {
        return MergePolicy().isTupleTableWorthwhile(_tuples->cost(), added, expected);
    }
    /// Adds the corners at once. The result overwrites the list of place `target`, if there is such a place.
    void add(const std::vector<Tuple>& corners, std::size_t target = MergePolicy::kMaxTuplePlaces) {
        std::vector<GuardedArray<quint32>> lists;
        for (std::size_t place = 0; place < _tuples->places(); ++place) {
            lists.emplace_back(corners.size());
            std::transform(corners.begin(), corners.end(), lists.back().begin(),
                           [place](const Tuple& tuple) { return tuple[place]; });
        }
        std::vector<const quint32*> numbers;
        for (const GuardedArray<quint32>& list : lists)
            numbers.push_back(list.data());
        const GuardedArray<quint32> own(corners.size());
        quint32* const out = target < lists.size() ? lists[target].data() : own.data();
        const GuardedArray<const quint32*> guardedNumbers(numbers);
        _tuples->add(guardedNumbers.data(), static_cast<quint32>(corners.size()), out);
        for (std::size_t i = 0; i < corners.size(); ++i)
            ASSERT_EQ(out[i], expectedNumber(corners[i])) << "corner " << i;
        ASSERT_EQ(_tuples->tupleCount(), _expected.size());
    }
    quint64 distinct() const { return _expected.size(); }
    /// Compares the stored tuples with the distinct ones in the order of their numbers.
    void expectTuples() const {
        for (std::size_t place = 0; place < _tuples->places(); ++place) {
            quint32 greatest = 0;
            for (const auto& [tuple, number] : _expected) {
                ASSERT_EQ(_tuples->numbersAt(place)[number * _tuples->places()], tuple[place]);
                greatest = std::max(greatest, tuple[place]);
            }
            ASSERT_EQ(_tuples->greatest(place), greatest);
        }
    }
    IndexTupleTable& tuples() { return *_tuples; }

private:
    quint32 expectedNumber(const Tuple& tuple) {
        return _expected.emplace(tuple, static_cast<quint32>(_expected.size())).first->second;
    }

    std::unique_ptr<IndexTupleTable> _tuples;
    std::map<Tuple, quint32> _expected;
};

TEST_F(IndexTupleTableTest, TuplesAreNumberedAsTheyAppear) {
    std::mt19937 random(91);
    const auto below = [&random](quint32 limit) { return static_cast<quint32>(random() % limit); };
    for (std::size_t places = 1; places <= MergePolicy::kMaxTuplePlaces; ++places)
        for (const quint32 firsts : {1U, 7U, 900U})
            for (const quint32 others : {1U, 3U, 40U}) {
                make(places);
                ASSERT_EQ(tuples().places(), places);
                for (const std::size_t count : {0U, 1U, 23U, 24U, 25U, 300U, 1U}) {
                    raiseLimit(firsts);
                    std::vector<Tuple> corners;
                    for (std::size_t i = 0; i < count; ++i) {
                        corners.push_back({below(firsts)});
                        while (corners.back().size() < places)
                            corners.back().push_back(below(others));
                    }
                    ASSERT_NO_FATAL_FAILURE(add(corners, below(7)));
                }
                ASSERT_NO_FATAL_FAILURE(expectTuples());
                tuples().finish();
                ASSERT_NO_FATAL_FAILURE(expectTuples()) << "the stored tuples are unchanged";
            }
}

TEST_F(IndexTupleTableTest, TuplesThatDifferInOnePlaceAreDifferent) {
    for (std::size_t places = 1; places <= MergePolicy::kMaxTuplePlaces; ++places) {
        make(places);
        raiseLimit(10);
        std::vector<Tuple> corners = {Tuple(places, 5)};
        for (std::size_t place = 0; place < places; ++place)
            for (const quint32 number : {6U, 4U}) {
                corners.push_back(Tuple(places, 5));
                corners.back()[place] = number;
            }
        add(corners);
        EXPECT_EQ(distinct(), 2 * places + 1);
        expectTuples();
    }
}

TEST_F(IndexTupleTableTest, WithoutCornersThereAreNoTuples) {
    make(3);
    raiseLimit(4);
    add({});
    EXPECT_EQ(tuples().tupleCount(), 0U);
    EXPECT_EQ(tuples().numbersAt(0), nullptr);
    EXPECT_EQ(tuples().greatest(2), 0U);
}

TEST_F(IndexTupleTableTest, SmallerLimitKeepsAllTuples) {
    make(2);
    raiseLimit(1000);
    add({{999, 1}, {0, 2}, {999, 3}});
    raiseLimit(10);
    add({{999, 3}, {999, 1}});
    raiseLimit(1'000'000);
    add({{999, 1}, {0, 2}, {999'999, 2}, {999, 3}});
    EXPECT_EQ(distinct(), 4U);
    expectTuples();
}

/// Different tuples of `places` numbers that begin with the same number.
std::vector<Tuple> withEqualFirstNumbers(quint32 count, std::size_t places) {
    std::vector<Tuple> corners;
    for (quint32 i = 0; i < count; ++i) {
        corners.push_back(Tuple(places, 0));
        corners.back().back() = i;
    }
    return corners;
}

TEST_F(IndexTupleTableTest, AllowsEightStepsPerCornerPlusSixtyFourThousand) {
    constexpr quint64 kEnough = 1'000'000;
    make(2);
    raiseLimit(1);
    // Each tuple is compared with all before it: 369 * 368 / 2 = 8 * 295 + 65536 steps.
    add(withEqualFirstNumbers(369, 2));
    EXPECT_TRUE(isWorthwhile(296, kEnough));
    EXPECT_TRUE(isWorthwhile(295, kEnough));
    EXPECT_FALSE(isWorthwhile(294, kEnough));
    add({{0, 0}});
    EXPECT_TRUE(isWorthwhile(295, kEnough)) << "the first one of a chain is found without a step";
    add({{0, 1}});
    EXPECT_FALSE(isWorthwhile(295, kEnough));
}

TEST_F(IndexTupleTableTest, EachWidthCountsItsSteps) {
    for (std::size_t places = 2; places <= MergePolicy::kMaxTuplePlaces; ++places) {
        make(places);
        raiseLimit(1);
        add(withEqualFirstNumbers(362, places));
        EXPECT_TRUE(isWorthwhile(0, 1'000'000)) << places;
        add(withEqualFirstNumbers(363, places));
        EXPECT_FALSE(isWorthwhile(0, 1'000'000)) << places;
    }
}

TEST_F(IndexTupleTableTest, AllowsSixteenBytesPerExpectedCorner) {
    // Per tuple: its numbers, and the larger one of its slot and the memory for merging it.
    constexpr quint64 kBytesOfATuple[] = {4 + 16, 8 + 16, 12 + 16, 16 + 20, 20 + 24, 24 + 28};
    for (std::size_t places = 1; places <= MergePolicy::kMaxTuplePlaces; ++places) {
        make(places);
        raiseLimit(32);
        std::vector<Tuple> corners;
        for (quint32 first = 0; first < 32; ++first)
            corners.push_back(Tuple(places, first));
        add(corners);
        const quint64 expected = 2 * kBytesOfATuple[places - 1];
        EXPECT_TRUE(isWorthwhile(0, expected)) << places;
        EXPECT_FALSE(isWorthwhile(0, expected - 1)) << places;
    }
}

} // namespace
} // namespace Atelier::Vel
