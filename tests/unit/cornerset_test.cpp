#include "geometry/cornerset.h"

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include <gmock/gmock.h>

namespace Atelier::Vel {

namespace {

using Key = std::array<quint64, 3>;

/// Corners of which many have the same hash and differ in one word of their keys.
class AlikeKeys {
public:
    AlikeKeys(std::mt19937& random, quint32 cornerCount, unsigned int differentWords) {
        for (quint32 corner = 0; corner < cornerCount; ++corner) {
            _keys.push_back({7, 7, 7});
            _keys.back()[random() % 3] = random() % differentWords;
        }
    }

    const Key& key(quint32 corner) const { return _keys[corner]; }

    void read(quint32 first, quint32 count, quint64* hashes, quint64* keys) const {
        for (quint32 i = first; i < first + count; ++i) {
            *hashes++ = _keys[i][0] % 2;
            if (keys != nullptr)
                keys = std::copy(_keys[i].begin(), _keys[i].end(), keys);
        }
    }
    bool equal(quint32 a, quint32 b) const { return _keys[a] == _keys[b]; }
    void fetchIndices(quint32 corner) const { ASSERT_LT(corner, _keys.size()); }
    void fetchValues(quint32 corner) const { ASSERT_LT(corner, _keys.size()); }

private:
    std::vector<Key> _keys;
};

class CornerSetTest : public testing::TestWithParam<quint32> {};

} // namespace

// Hashes settle nearly everything: without poor ones, no test would see a wrong comparison.
TEST_P(CornerSetTest, CornersWithOneHashAreToldApartByTheirKeys) {
    std::mt19937 random(5);
    for (const quint32 cornerCount : {1U, 32U, 400U})
        for (const unsigned int differentWords : {1U, 8U, 1000U}) {
            const AlikeKeys keys(random, cornerCount, differentWords);
            std::map<Key, quint32> numbers;
            std::vector<quint32> expected;
            for (quint32 corner = 0; corner < cornerCount; ++corner)
                expected.push_back(
                    numbers.emplace(keys.key(corner), static_cast<quint32>(numbers.size())).first->second);

            CornerSet set(cornerCount, GetParam());
            std::vector<quint32> numberOfCorner(cornerCount);
            std::vector<quint32> firstCorner(cornerCount);
            ASSERT_EQ(set.insertAll(keys, cornerCount, numberOfCorner.data(), firstCorner.data()),
                      numbers.size());
            ASSERT_EQ(numberOfCorner, expected);
            for (quint32 number = 0; number < numbers.size(); ++number)
                ASSERT_EQ(firstCorner[number],
                          std::find(expected.begin(), expected.end(), number) - expected.begin());
        }
}

INSTANTIATE_TEST_SUITE_P(WordsThatAreKept, CornerSetTest, testing::Values(0U, 3U));

} // namespace Atelier::Vel
