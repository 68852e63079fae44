#include "geometry/merging/valuebytes.h"

#include <limits>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "support/guardedarray.h"

namespace Atelier::Vel {
namespace {

using Testing::GuardedArray;

GuardedArray<unsigned char> randomBytes(std::size_t count, std::mt19937& random) {
    GuardedArray<unsigned char> bytes(count);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random());
    return bytes;
}

TEST(ValueBytesTest, OneByteOfAnyStrideChangesHashAndEquality) {
    std::mt19937 random(17);
    for (std::size_t stride = 1; stride <= 40; ++stride)
        withStride(stride, [&](auto value) {
            ASSERT_EQ(value.stride(), stride);
            const GuardedArray<unsigned char> a = randomBytes(stride, random);
            const GuardedArray<unsigned char> b(a.items());
            EXPECT_TRUE(value.equal(a.data(), b.data())) << stride;
            EXPECT_EQ(value.hashed(3, a.data()), value.hashed(3, b.data()));
            EXPECT_NE(value.hashed(3, a.data()), value.hashed(4, a.data()));
            for (std::size_t i = 0; i < stride; ++i) {
                b[i] ^= 0x40;
                EXPECT_FALSE(value.equal(a.data(), b.data())) << stride << ", " << i;
                EXPECT_NE(value.hashed(3, a.data()), value.hashed(3, b.data())) << stride << ", " << i;
                b[i] ^= 0x40;
            }
        });
}

TEST(ValueBytesTest, KeyIsACopyOfTheStride) {
    std::mt19937 random(18);
    for (std::size_t stride = 0; stride <= 40; ++stride)
        withStride(stride, [&](auto value) {
            const GuardedArray<unsigned char> bytes = randomBytes(stride, random);
            const GuardedArray<unsigned char> key(stride);
            value.copy(bytes.data(), key.data());
            EXPECT_EQ(key.items(), bytes.items()) << stride;
        });
}

TEST(ValueBytesTest, ValuesAreEqualByTheirBytes) {
    const auto areEqual = [](float a, float b) {
        return ValueBytes<4>::equal(reinterpret_cast<const unsigned char*>(&a),
                                    reinterpret_cast<const unsigned char*>(&b));
    };
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(areEqual(0.0F, -0.0F));
    EXPECT_TRUE(areEqual(kNan, kNan));
    EXPECT_FALSE(areEqual(kNan, -kNan));
}

} // namespace
} // namespace Atelier::Vel
