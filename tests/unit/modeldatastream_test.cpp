#include <gtest/gtest.h>

#include <velmodel/modeldataarray.h>

namespace Atelier::Vel {
namespace {

TEST(ModelDataStreamTest, TypeSizeIsZeroForCodesThatAreNoScalarType) {
    EXPECT_EQ(ModelDataStream::typeSize(0x1407), 0U);
    EXPECT_EQ(ModelDataStream::typeSize(0x140B), 2U);
    EXPECT_EQ(ModelDataStream::typeSize(0x140A), 8U);
}

} // namespace
} // namespace Atelier::Vel
