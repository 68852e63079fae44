#include <velmodel/modeldatastream.h>

#include <vector>

#include <gmock/gmock.h>

#include "support/clientstreams.h"

namespace Atelier::Vel {
namespace {

TEST(ModelDataStreamTest, TypeSizeIsTheSizeOfTheScalarType) {
    const struct {
        unsigned int type;
        quint64 size;
    } rows[] = {{0x1400, 1}, {0x1401, 1}, {0x1402, 2}, {0x1403, 2}, {0x1404, 4},
                {0x1405, 4}, {0x1406, 4}, {0x140A, 8}, {0x140B, 2}};
    for (const auto& row : rows)
        EXPECT_EQ(ModelDataStream::typeSize(row.type), row.size) << row.type;
}

TEST(ModelDataStreamTest, TypeSizeIsZeroForCodesThatAreNoScalarType) {
    for (const unsigned int type : {0U, 0x13FFU, 0x1407U, 0x1408U, 0x1409U, 0x140CU, 0xFFFFFFFFU})
        EXPECT_EQ(ModelDataStream::typeSize(type), 0U) << type;
}

TEST(ModelDataStreamTest, PlainStreamInheritsTheOtherFunctions) {
    Testing::PlainStream stream(0x1403, 0);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(stream.byteCount(), 0U);
    const quint16 three[] = {1, 2, 3};
    stream.append(3, three);
    stream.append(0, nullptr);
    stream.append(1, three);
    EXPECT_FALSE(stream.isEmpty());
    EXPECT_EQ(stream.byteCount(), 8U);
    const auto* const data = static_cast<const quint16*>(stream.data(0));
    EXPECT_THAT(std::vector<quint16>(data, data + stream.size()), testing::ElementsAre(1, 2, 3, 1));
}

TEST(ModelDataStreamTest, NothingIsAppendedIfResizingIsRefused) {
    using Testing::Lie;
    Testing::LyingStream<Testing::PlainStream> stream(Lie::NoResize, 0x1403, 2);
    const quint16 before[] = {1, 2};
    stream.setData(0, 2, before);
    stream.append(2, before);
    EXPECT_EQ(stream.size(), 2U);
    const auto* const data = static_cast<const quint16*>(stream.data(0));
    EXPECT_THAT(std::vector<quint16>(data, data + 2), testing::ElementsAre(1, 2));
}

} // namespace
} // namespace Atelier::Vel
