#include "geometry/allbelow.h"

#include <gmock/gmock.h>

#include "support/guardedarray.h"

namespace Atelier::Vel {
namespace {

using Testing::GuardedArray;

TEST(AllBelowTest, OneNumberAtOrAboveTheLimitIsDetectedAtEveryPlace) {
    for (const quint32 limit : {1U, 2U, 0x7FFFFFFFU, 0x80000000U, 0x80000001U, 0xFFFFFFFFU})
        for (quint32 count = 0; count <= 13; ++count) {
            const GuardedArray<quint32> numbers(count, limit - 1);
            EXPECT_TRUE(allBelow(numbers.data(), count, limit)) << limit << ", " << count;
            for (quint32 i = 0; i < count; ++i)
                for (const quint32 above : {limit, limit + (0xFFFFFFFFU - limit) / 2, 0xFFFFFFFFU}) {
                    numbers[i] = above;
                    EXPECT_FALSE(allBelow(numbers.data(), count, limit)) << limit << ", " << i;
                    numbers[i] = 0;
                }
        }
}

TEST(AllBelowTest, NoNumberIsBelowZero) {
    const GuardedArray<quint32> numbers{0, 0, 0, 0, 0};
    for (quint32 count = 1; count <= 5; ++count)
        EXPECT_FALSE(allBelow(numbers.data(), count, 0)) << count;
    EXPECT_TRUE(allBelow(nullptr, 0, 0));
}

} // namespace
} // namespace Atelier::Vel
