#include "geometry/merging/vertextable.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "geometry/merging/hash.h"
#include "guardedscratchblock.h"
#include "support/guardedarray.h"
#include "testattributes.h"

namespace Atelier::Vel {

namespace {

using Testing::GuardedArray;
using Testing::Merged;

using Key = std::array<quint64, 3>;

/// Corners with any keys and hashes. Counts the comparisons of two corners.
class TestKeys {
public:
    void add(quint64 hash, const Key& key) {
        _hashes.push_back(hash);
        _keys.push_back(key);
    }

    quint32 count() const { return static_cast<quint32>(_keys.size()); }
    const Key& key(quint32 corner) const { return _keys[corner]; }
    int comparisons() const { return _comparisons; }

    void read(quint32 first, quint32 count, quint64* hashes, quint64* keys) const {
        for (quint32 i = first; i < first + count; ++i) {
            *hashes++ = _hashes[i];
            if (keys != nullptr)
                keys = std::copy(_keys[i].begin(), _keys[i].end(), keys);
        }
    }
    bool equal(quint32 a, quint32 b) const {
        ++_comparisons;
        return _keys[a] == _keys[b];
    }
    void prefetchIndices(quint32 corner) const { ASSERT_LT(corner, _keys.size()); }
    void prefetchValues(quint32 corner) const { ASSERT_LT(corner, _keys.size()); }

private:
    std::vector<quint64> _hashes;
    std::vector<Key> _keys;
    mutable int _comparisons = 0;
};

Merged inserted(const TestKeys& keys, quint32 keyWords) {
    VertexTable set(keys.count(), keyWords);
    const GuardedArray<quint32> numberOfCorner(keys.count());
    const GuardedArray<quint32> firstCorner(keys.count());
    const quint32 numbers = set.insertAll(keys, keys.count(), numberOfCorner.data(), firstCorner.data());
    return {numberOfCorner.items(), {firstCorner.begin(), firstCorner.begin() + numbers}};
}

void expectNumbers(const TestKeys& keys, quint32 keyWords) {
    const Merged expected =
        Testing::numbered(keys.count(), [&keys](quint32 corner) { return keys.key(corner); });
    const Merged merged = inserted(keys, keyWords);
    ASSERT_EQ(merged.vertexOfCorner, expected.vertexOfCorner);
    ASSERT_EQ(merged.firstCorner, expected.firstCorner);
}

class VertexTableTest : public testing::TestWithParam<quint32> {};

// Hashes whose slots are the first, the last (from which probing wraps to the first), and one between.
constexpr quint64 kPlaces[] = {0, 1, 0xFFFFFFFF00000000, 0xFFFFFFFFFFFFFFFF, 0x8000000000000000};

} // namespace

// Good hashes decide nearly everything: only poor ones reveal a wrong comparison.
TEST_P(VertexTableTest, CornersWithEqualHashesAreComparedByTheirKeys) {
    std::mt19937 random(5);
    for (const quint32 cornerCount : {1U, 2U, 3U, 4U, 7U, 8U, 31U, 32U, 33U, 64U, 400U})
        for (const unsigned int differentWords : {1U, 8U, 1000U})
            for (const quint64 place : kPlaces) {
                TestKeys keys;
                for (quint32 corner = 0; corner < cornerCount; ++corner) {
                    Key key = {7, 7, 7};
                    key[random() % 3] = random() % differentWords;
                    keys.add(place, key);
                }
                ASSERT_NO_FATAL_FAILURE(expectNumbers(keys, GetParam()));
            }
}

TEST_P(VertexTableTest, EveryCornerOfAFullSetHasItsOwnNumber) {
    for (quint32 cornerCount = 1; cornerCount <= 150; ++cornerCount)
        for (const quint64 place : kPlaces) {
            TestKeys keys;
            for (quint32 corner = 0; corner < cornerCount; ++corner)
                keys.add(place, {corner, 0, 0});
            ASSERT_NO_FATAL_FAILURE(expectNumbers(keys, GetParam())) << cornerCount;
        }
}

TEST_P(VertexTableTest, CornersInEveryOrderKeepTheirNumbers) {
    std::mt19937 random(6);
    for (int round = 0; round < 300; ++round) {
        TestKeys keys;
        const quint32 cornerCount = static_cast<quint32>(random() % 500);
        const quint64 values = 1 + random() % 400;
        for (quint32 corner = 0; corner < cornerCount; ++corner) {
            const quint64 value = random() % values;
            keys.add(mixWords(0, value, 0), {value, value + 1, ~value});
        }
        ASSERT_NO_FATAL_FAILURE(expectNumbers(keys, GetParam())) << round;
    }
}

INSTANTIATE_TEST_SUITE_P(WordsThatAreKept, VertexTableTest, testing::Values(0U, 3U));

// The part of the hash in a slot avoids comparisons with other corners on the way.
TEST(VertexTableStepsTest, CornersWithOtherHashesAreNotCompared) {
    constexpr quint64 kSamePlace = quint64{5} << 32;
    TestKeys keys;
    for (quint64 corner = 0; corner < 1000; ++corner)
        keys.add(kSamePlace | corner << 10,
                 {corner, 0, 0}); // numbers up to 1000 take the lowest ten bits of a slot
    ASSERT_NO_FATAL_FAILURE(expectNumbers(keys, 0));
    EXPECT_EQ(keys.comparisons(), 0);
}

TEST(VertexTableStepsTest, EqualCornersAreComparedOnce) {
    TestKeys keys;
    for (quint64 corner = 0; corner < 1000; ++corner)
        keys.add(mixWords(0, corner % 10, 0), {corner % 10, 0, 0});
    ASSERT_NO_FATAL_FAILURE(expectNumbers(keys, 0));
    EXPECT_EQ(keys.comparisons(), 990);
}

TEST(VertexTableStepsTest, KeysOfAQuarterOfTheCornersAreKept) {
    for (const quint64 values : {24U, 25U, 26U}) {
        TestKeys keys;
        for (quint64 corner = 0; corner < 100; ++corner)
            keys.add(mixWords(0, corner % values, 0), {corner % values, 0, 0});
        ASSERT_NO_FATAL_FAILURE(expectNumbers(keys, 3));
        // Corners with numbers from 25 on are compared in place.
        const int beyond = values == 26 ? 2 : 0;
        EXPECT_EQ(keys.comparisons(), beyond) << values;
    }
}

TEST(VertexTableStepsTest, TableHasTwoSlotsForEachCornerAndKeysForAQuarter) {
    for (const quint32 capacity : {0U, 1U, 3U, 4U, 1000U})
        for (const quint32 keyWords : {0U, 5U}) {
            Testing::scratchBlocks().clear();
            const VertexTable set(capacity, keyWords);
            EXPECT_THAT(Testing::scratchBlocks(),
                        testing::ElementsAre((2 * capacity + 1) * 4, capacity / 4 * keyWords * 8));
        }
}

} // namespace Atelier::Vel
