#include "geometry/merging/valuegathering.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "testattributes.h"

namespace Atelier::Vel {
namespace {

using Testing::GuardedArray;
using Testing::TestAttribute;

/// Values of random bytes, used by random indices, of which a few name no value.
TestAttribute randomAttribute(std::mt19937& random, quint32 count, quint64 stride) {
    std::vector<unsigned char> values(count * stride);
    std::generate(values.begin(), values.end(), [&] { return static_cast<unsigned char>(random()); });
    std::vector<quint32> list(count);
    std::generate(list.begin(), list.end(), [&] { return static_cast<quint32>(random() % (count + 9)); });
    return {values, list, stride};
}

TEST(ValueGatheringTest, ValuesAreGatheredByteByByte) {
    std::mt19937 random(63);
    for (const quint64 stride : {1U, 3U, 4U, 8U, 12U, 16U, 20U})
        for (const quint32 count : {0U, 1U, 63U, 64U, 65U, 200U}) {
            const TestAttribute attribute = randomAttribute(random, 300, stride);
            std::vector<quint32> list(count);
            for (quint32& corner : list)
                corner = static_cast<quint32>(random() % 300);
            const GuardedArray<quint32> corners(list);
            std::string expected;
            std::string expectedOfFirst;
            for (quint32 i = 0; i < count; ++i) {
                expected += Testing::bytesOfCorner({attribute.view()}, corners[i]);
                expectedOfFirst += Testing::bytesOfCorner({attribute.view()}, i);
            }
            const GuardedArray<unsigned char> out(count * stride);
            gatherValues(attribute.view(), corners.data(), count, out.data());
            ASSERT_EQ(std::string(out.begin(), out.end()), expected) << stride << ", " << count;
            gatherValues(attribute.view(), nullptr, count, out.data());
            ASSERT_EQ(std::string(out.begin(), out.end()), expectedOfFirst) << stride << ", " << count;
        }
}

TEST(ValueGatheringTest, IndicesMayBeScattered) {
    const TestAttribute attribute({10, 11, 12, 13}, {3, 0, 2, 0, 1, 0}, 1);
    CornerAttribute everyOther = attribute.view();
    everyOther.indexCount = 3;
    everyOther.indexStep = 2;
    const GuardedArray<unsigned char> out(3);
    gatherValues(everyOther, nullptr, 3, out.data());
    EXPECT_EQ(out.items(), (std::vector<unsigned char>{13, 12, 11}));
}

} // namespace
} // namespace Atelier::Vel
