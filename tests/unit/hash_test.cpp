#include "geometry/merging/hash.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gmock/gmock.h>

namespace Atelier::Vel {
namespace {

class MixWordsTest : public testing::Test {
protected:
    /// Calls `check` with the results before and after one bit of the hash or of a word is flipped.
    template<typename Check>
    void forEachBit(const Check& check) {
        for (int round = 0; round < 200; ++round)
            for (unsigned int bit = 0; bit < 192; ++bit) {
                quint64 words[3] = {_random(), _random(), _random()};
                const quint64 before = mixWords(words[0], words[1], words[2]);
                words[bit / 64] ^= quint64{1} << bit % 64;
                check(before, mixWords(words[0], words[1], words[2]));
            }
    }

    std::mt19937_64 _random{7};
};

TEST_F(MixWordsTest, EveryBitChangesBothHalves) {
    forEachBit([](quint64 before, quint64 after) {
        ASSERT_NE(before >> 32, after >> 32);
        ASSERT_NE(static_cast<quint32>(before), static_cast<quint32>(after));
    });
}

TEST_F(MixWordsTest, EveryBitChangesAboutHalfOfTheBits) {
    quint64 changed = 0;
    quint64 changes = 0;
    forEachBit([&](quint64 before, quint64 after) {
        for (unsigned int bit = 0; bit < 64; ++bit)
            changed += (before ^ after) >> bit & 1;
        changes += 64;
    });
    EXPECT_GT(changed, changes * 45 / 100);
    EXPECT_LT(changed, changes * 55 / 100);
}

// One factor is zero then, and so is the product.
TEST_F(MixWordsTest, WordsThatMakeAFactorZeroStayApart) {
    const quint64 hash = _random();
    EXPECT_NE(mixWords(hash, hash ^ kGoldenRatio, 1), mixWords(hash, hash ^ kGoldenRatio, 2));
    EXPECT_NE(mixWords(hash, 1, kMixingFactor), mixWords(hash, 2, kMixingFactor));
    EXPECT_NE(mixWords(hash, 1, kMixingFactor) >> 32, mixWords(hash, 2, kMixingFactor) >> 32)
        << "the word is turned";
}

/// Of 4096 parts of a table, how many 3000 similar words fall into, with the worst of 1000 seeds.
template<typename HashOf>
std::size_t minPartsUsed(const HashOf& hashOf) {
    std::mt19937_64 random(8);
    std::size_t fewest = 4096;
    for (int round = 0; round < 1000; ++round) {
        const quint64 seed = random();
        std::vector<bool> isUsed(4096);
        for (quint64 word = 0; word < 3000; ++word)
            isUsed[finishedHash(hashOf(seed, word)) >> 52] = true;
        fewest = std::min<std::size_t>(
            fewest, static_cast<std::size_t>(std::count(isUsed.begin(), isUsed.end(), true)));
    }
    return fewest;
}

// Random words would fall into 2128 parts, with a standard deviation of about 25.
TEST(FinishedHashTest, SimilarWordsSpreadOverTheTableWithEverySeed) {
    EXPECT_GT(minPartsUsed([](quint64 seed, quint64 k) { return mixWords(seed, 0, k); }), 1950U);
    EXPECT_GT(minPartsUsed([](quint64 seed, quint64 k) { return mixWords(seed, k, 0); }), 1950U);
    EXPECT_GT(minPartsUsed([](quint64 seed, quint64 k) { return mixWords(seed, 0, k << 32); }), 1950U);
    EXPECT_GT(minPartsUsed([](quint64 seed, quint64 k) { return mixWords(seed, k << 32, 0); }), 1950U);
    EXPECT_GT(minPartsUsed([](quint64 seed, quint64 k) { return mixWords(mixWords(seed, k, 0), 1, 0); }),
              1950U);
}

} // namespace
} // namespace Atelier::Vel
