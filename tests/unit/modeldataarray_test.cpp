#include <velmodel/modeldataarray.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <numeric>
#include <type_traits>
#include <vector>

#include <unistd.h>

#include <gmock/gmock.h>

#include "support/sanitizer.h"
#include "support/scarceaddresses.h"

namespace Atelier::Vel {
namespace {

constexpr unsigned int kUnsignedByte = 0x1401;
constexpr unsigned int kUnsignedShort = 0x1403;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kDouble = 0x140A;
constexpr unsigned int kNoType = 0x1407;

std::vector<quint32> words(ModelDataArray& array) {
    const auto* const data = static_cast<const quint32*>(array.data(0));
    return std::vector<quint32>(data, data + array.size());
}

static_assert(std::is_convertible_v<unsigned int, ModelDataArray>);

/// Repeats a change. Returns: how often the elements moved.
int movesOf(ModelDataArray& array, int changes, const std::function<void()>& change) {
    int moves = 0;
    for (int i = 0; i < changes; ++i) {
        const void* const before = array.data(0);
        change();
        moves += array.data(0) == before ? 0 : 1;
    }
    return moves;
}

/// An array of `bytes` bytes with the value 7.
ModelDataArray sevens(quint64 bytes) {
    const std::vector<unsigned char> values(bytes, 7);
    ModelDataArray array(kUnsignedByte);
    array.append(bytes, values.data());
    return array;
}

bool areSevens(ModelDataArray& array, quint64 count) {
    const auto* const data = static_cast<const unsigned char*>(array.data(0));
    return array.size() >= count &&
           std::all_of(data, data + count, [](unsigned char byte) { return byte == 7; });
}

/// Makes a change with a limited number of further addresses. Ends the process with 0 if it succeeds, 1 if it
/// throws std::bad_alloc, 2 if the array does not keep its `kept` bytes.
[[noreturn]] void changeWithin(ModelDataArray& array, quint64 kept, quint64 addresses,
                               const std::function<void()>& change) {
    Testing::leaveAddresses(addresses);
    int status = 0;
    try {
        change();
    } catch (const std::bad_alloc&) {
        status = 1;
    }
    _exit(areSevens(array, kept) ? status : 2);
}

[[noreturn]] void writeACopyWithin(quint64 bytes, quint64 addresses) {
    ModelDataArray array = sevens(bytes);
    changeWithin(array, bytes, addresses, [&] {
        const unsigned char value = 8;
        ModelDataArray copy(array);
        copy.setData(0, 1, &value);
        if (*static_cast<unsigned char*>(copy.data(0)) != value)
            _exit(3);
    });
}

[[noreturn]] void growWithin(quint64 bytes, quint64 addresses) {
    ModelDataArray array(kUnsignedByte, bytes);
    std::memset(array.data(0), 7, bytes);
    changeWithin(array, bytes, addresses, [&] {
        const std::vector<unsigned char> more(3 << 20, 7);
        array.append(more.size(), more.data());
    });
}

TEST(ModelDataArrayTest, DefaultIsAnEmptyFloatStream) {
    const ModelDataArray array;
    EXPECT_EQ(array.type(), 0x1406U);
    EXPECT_EQ(array.size(), 0U);
    EXPECT_TRUE(array.isEmpty());
    EXPECT_EQ(array.byteCount(), 0U);
}

TEST(ModelDataArrayTest, CountsElementsAndBytes) {
    const ModelDataArray array(kUnsignedShort, 5);
    EXPECT_EQ(array.size(), 5U);
    EXPECT_EQ(array.byteCount(), 10U);
    EXPECT_FALSE(array.isEmpty());
}

TEST(ModelDataArrayTest, SetTypeKeepsTheCountAndTheLeadingBytes) {
    ModelDataArray array(kUnsignedInt, 3);
    const quint32 values[] = {0x04030201, 0x08070605, 0x0C0B0A09};
    array.setData(0, 3, values);
    array.setType(kUnsignedByte);
    EXPECT_EQ(array.type(), kUnsignedByte);
    EXPECT_EQ(array.size(), 3U);
    EXPECT_EQ(array.byteCount(), 3U);
    EXPECT_EQ(std::memcmp(array.data(0), values, 3), 0);
    array.setType(kUnsignedInt);
    EXPECT_EQ(array.size(), 3U);
    EXPECT_EQ(array.byteCount(), 12U);
    EXPECT_EQ(std::memcmp(array.data(0), values, 3), 0);
}

TEST(ModelDataArrayTest, SetTypeToTheSameTypeChangesNothing) {
    ModelDataArray array(kUnsignedInt, 2);
    const quint32 values[] = {7, 8};
    array.setData(0, 2, values);
    array.setType(kUnsignedInt);
    EXPECT_THAT(words(array), testing::ElementsAre(7, 8));
}

TEST(ModelDataArrayTest, AppendsAfterTheLastElement) {
    ModelDataArray array(kDouble);
    const double values[] = {1.0, 2.0};
    array.append(0, nullptr);
    EXPECT_TRUE(array.isEmpty());
    array.append(0, values);
    EXPECT_TRUE(array.isEmpty());
    array.append(2, values);
    EXPECT_EQ(array.byteCount(), 16U);
    EXPECT_EQ(*static_cast<double*>(array.data(1)), 2.0);
}

TEST(ModelDataArrayTest, AppendsByteByByte) {
    ModelDataArray array(kUnsignedByte);
    const unsigned char values[] = {3, 5, 7};
    for (const unsigned char& value : values)
        array.append(1, &value);
    const auto* const data = static_cast<const unsigned char*>(array.data(0));
    EXPECT_THAT(std::vector<int>(data, data + array.size()), testing::ElementsAre(3, 5, 7));
}

TEST(ModelDataArrayTest, AppendsItsOwnElements) {
    ModelDataArray array(kUnsignedInt);
    const quint32 values[] = {1, 2, 3};
    array.append(3, values);
    for (int round = 0; round < 10; ++round)
        array.append(array.size(), array.data(0));
    ASSERT_EQ(array.size(), 3U << 10);
    const std::vector<quint32> all = words(array);
    for (std::size_t i = 0; i < all.size(); ++i)
        ASSERT_EQ(all[i], i % 3 + 1);
}

TEST(ModelDataArrayTest, SetDataOverwritesInPlace) {
    ModelDataArray array(kUnsignedInt, 3);
    const quint32 values[] = {1, 2, 3};
    array.setData(0, 3, values);
    array.setData(1, 1, values);
    array.setData(3, 0, nullptr);
    EXPECT_THAT(words(array), testing::ElementsAre(1, 1, 3));
}

TEST(ModelDataArrayTest, ShrinkingKeepsTheLeadingElements) {
    ModelDataArray array(kUnsignedInt, 3);
    const quint32 values[] = {1, 2, 3};
    array.setData(0, 3, values);
    array.resize(2);
    EXPECT_THAT(words(array), testing::ElementsAre(1, 2));
}

TEST(ModelDataArrayTest, WritingDetachesACopy) {
    ModelDataArray source(kUnsignedInt, 1);
    const quint32 values[] = {1, 2};
    source.setData(0, 1, values);
    ModelDataArray copy(source);
    ModelDataArray assigned;
    assigned = source;
    source.setData(0, 1, values + 1);
    EXPECT_THAT(words(source), testing::ElementsAre(2));
    EXPECT_THAT(words(copy), testing::ElementsAre(1));
    EXPECT_THAT(words(assigned), testing::ElementsAre(1));
    EXPECT_EQ(assigned.type(), kUnsignedInt);
}

TEST(ModelDataArrayTest, StreamOfNoScalarTypeStaysEmpty) {
    ModelDataArray array(kNoType, 4);
    EXPECT_EQ(array.size(), 0U);
    array.resize(7);
    const quint32 value = 1;
    array.append(1, &value);
    array.setData(0, 1, &value);
    EXPECT_TRUE(array.isEmpty());
    EXPECT_NE(array.data(5), nullptr);
    array.setType(kUnsignedInt);
    EXPECT_EQ(array.size(), 0U);
}

TEST(ModelDataArrayTest, SetTypeToNoScalarTypeEmptiesIt) {
    ModelDataArray array(kUnsignedInt, 4);
    array.setType(kNoType);
    EXPECT_EQ(array.byteCount(), 0U);
}

TEST(ModelDataArrayTest, DataBeyondTheCapacityIsRefusedAsAWhole) {
    const quint64 tooMany[] = {0x20000000U, 0x40000000U, 0x4000000000000000U, ~quint64{0}};
    for (const quint64 count : tooMany) {
        SCOPED_TRACE(count);
        EXPECT_TRUE(ModelDataArray(kUnsignedInt, count).isEmpty());
        ModelDataArray array(kUnsignedInt);
        const quint32 value = 42;
        array.append(1, &value);
        array.append(count, &value);
        EXPECT_THAT(words(array), testing::ElementsAre(42));
        array.resize(count);
        EXPECT_THAT(words(array), testing::ElementsAre(42));
    }
}

TEST(ModelDataArrayTest, AppendRefusedForItsLengthChangesNoByte) {
    ModelDataArray array(kUnsignedInt);
    const quint32 value = 42;
    array.append(1, &value);
    array.append(~quint64{0}, &value);
    EXPECT_EQ(array.byteCount(), 4U);
}

TEST(ModelDataArrayTest, KeepsItsElementsWhileItGrows) {
    ModelDataArray array(kUnsignedInt);
    constexpr quint32 kPieces = 2000;
    std::vector<quint32> piece(1000);
    for (quint32 number = 0; number < kPieces; ++number) {
        std::fill(piece.begin(), piece.end(), number);
        array.append(piece.size(), piece.data());
    }
    ASSERT_EQ(array.size(), kPieces * piece.size());
    const auto* const data = static_cast<const quint32*>(array.data(0));
    for (quint64 i = 0; i < array.size(); ++i)
        ASSERT_EQ(data[i], i / piece.size());
}

TEST(ModelDataArrayTest, ReservedCapacityIsFilledInPlace) {
    constexpr float kOne = 1.0F;
    ModelDataArray array(0x1406, 0); // GL_FLOAT
    array.append(1, &kOne);
    array.reserve(1'000'000);
    EXPECT_EQ(array.size(), 1u);
    const void* const begin = array.data(0);
    const std::vector<float> values(999'999, 2.0F);
    array.append(values.size(), values.data());
    EXPECT_EQ(array.data(0), begin);
    EXPECT_EQ(*static_cast<const float*>(array.data(0)), kOne);
    EXPECT_EQ(*static_cast<const float*>(array.data(999'999)), 2.0F);
}

TEST(ModelDataArrayTest, ReservingTooMuchOrTooLittleChangesNothing) {
    constexpr float kOne = 1.0F;
    ModelDataArray array(0x1406, 0); // GL_FLOAT
    array.append(1, &kOne);
    array.reserve(~quint64{0});
    array.reserve(0);
    ASSERT_EQ(array.size(), 1u);
    EXPECT_EQ(*static_cast<const float*>(array.data(0)), kOne);
}

TEST(ModelDataArrayTest, ExistingCapacityIsNotAllocatedAgain) {
    ModelDataArray array(kUnsignedInt, 3);
    const void* const begin = array.data(0);
    array.resize(3);
    array.reserve(3);
    array.resize(1);
    array.resize(3);
    EXPECT_EQ(array.data(0), begin);
}

TEST(ModelDataArrayTest, AppendsRarelyMoveALongArray) {
    const std::vector<quint32> piece(1000, 7);
    ModelDataArray array(kUnsignedInt);
    const int moves = movesOf(array, 20'000, [&] { array.append(piece.size(), piece.data()); });
    EXPECT_EQ(array.byteCount(), 80'000'000U);
    EXPECT_LE(moves, 12);
}

TEST(ModelDataArrayTest, ArrayThatGrowsByOneElementRarelyMoves) {
    ModelDataArray array(kUnsignedInt);
    quint32 number = 0;
    const int moves = movesOf(array, 80'000, [&] {
        array.resize(number + 1);
        array.setData(number, 1, &number);
        ++number;
    });
    EXPECT_LE(moves, 12);
    ASSERT_EQ(array.size(), 80'000U);
    const std::vector<quint32> all = words(array);
    for (quint32 i = 0; i < all.size(); ++i)
        ASSERT_EQ(all[i], i);
}

TEST(ModelDataArrayTest, FirstSizeIsAllocatedExactly) {
    ModelDataArray array(kUnsignedInt);
    array.resize(100);
    const void* const begin = array.data(0);
    array.resize(101);
    EXPECT_NE(array.data(0), begin);
}

TEST(ModelDataArrayTest, ManyLongArraysTakeFewAddresses) {
    const std::vector<quint32> values(200'000, 7);
    std::vector<ModelDataArray> arrays(20, ModelDataArray(kUnsignedInt));
    const quint64 before = Testing::addressesTaken();
    for (ModelDataArray& array : arrays)
        array.append(values.size(), values.data());
    EXPECT_LE(Testing::addressesTaken() - before, quint64{500} << 20);
}

// The write succeeds if there are addresses only for the bytes of the copy.
TEST(ModelDataArrayTest, CopyIsWrittenWithScarceAddresses) {
    if (VELMODEL_ADDRESS_SANITIZER)
        GTEST_SKIP() << "a sanitizer needs the addresses for itself";
    for (const quint64 bytes : {quint64{800'000}, quint64{80'000'000}})
        EXPECT_EXIT(writeACopyWithin(bytes, bytes + (quint64{5} << 20)), testing::ExitedWithCode(0), "")
            << bytes;
    EXPECT_EXIT(writeACopyWithin(80'000'000, 79'000'000), testing::ExitedWithCode(1), "");
}

TEST(ModelDataArrayTest, GrowsWithScarceAddresses) {
    if (VELMODEL_ADDRESS_SANITIZER)
        GTEST_SKIP() << "a sanitizer needs the addresses for itself";
    constexpr quint64 kBytes = 80'000'000;
    EXPECT_EXIT(growWithin(kBytes, kBytes * 5 / 2), testing::ExitedWithCode(0), "")
        << "with much spare capacity";
    EXPECT_EXIT(growWithin(kBytes, kBytes * 7 / 4), testing::ExitedWithCode(0), "")
        << "with little spare capacity";
    EXPECT_EXIT(growWithin(kBytes, kBytes * 5 / 4), testing::ExitedWithCode(0), "")
        << "without spare capacity";
    EXPECT_EXIT(growWithin(kBytes, kBytes * 3 / 4), testing::ExitedWithCode(1), "");
}

TEST(ModelDataArrayTest, LongArrayAppendsItsOwnElements) {
    ModelDataArray array(kUnsignedInt);
    std::vector<quint32> values(300'000);
    std::iota(values.begin(), values.end(), quint32{0});
    array.append(values.size(), values.data());
    for (int round = 0; round < 6; ++round)
        array.append(array.size() - 1, array.data(1));
    const std::vector<quint32> all = words(array);
    for (std::size_t size = values.size(); size < all.size(); size += size - 1)
        ASSERT_EQ(std::memcmp(&all[1], &all[size], (size - 1) * sizeof(quint32)), 0) << size;
}

TEST(ModelDataArrayTest, GrowingKeepsTheElements) {
    ModelDataArray array(kUnsignedInt);
    const quint32 values[] = {1, 2, 3};
    array.append(3, values);
    array.resize(100'000);
    array.reserve(400'000);
    EXPECT_EQ(array.size(), 100'000U);
    array.resize(3);
    EXPECT_THAT(words(array), testing::ElementsAre(1, 2, 3));
}

TEST(ModelDataArrayTest, OverlappingDataIsCopiedCorrectly) {
    ModelDataArray array(kUnsignedInt);
    const quint32 values[] = {1, 2, 3, 4};
    array.append(4, values);
    array.setData(1, 3, array.data(0));
    EXPECT_THAT(words(array), testing::ElementsAre(1, 1, 2, 3));
}

TEST(ModelDataArrayTest, HoldsUpTo2147483647Bytes) {
    const struct {
        unsigned int type;
        quint64 count;
    } rows[] = {{kUnsignedByte, 2147483647},
                {kUnsignedShort, 1073741823},
                {kUnsignedInt, 536870911},
                {kDouble, 268435455}};
    for (const auto& row : rows) {
        EXPECT_TRUE(ModelDataArray::canHold(row.type, row.count));
        EXPECT_FALSE(ModelDataArray::canHold(row.type, row.count + 1));
        const std::unique_ptr<ModelDataStream> stream(ModelDataArrayAllocator().alloc(row.type, row.count));
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(stream->size(), row.count);
        EXPECT_EQ(ModelDataArrayAllocator().alloc(row.type, row.count + 1), nullptr);
    }
    EXPECT_TRUE(ModelDataArray::canHold(kNoType, ~quint64{0}));
}

// Unwritten pages take no memory.
TEST(ModelDataArrayTest, AppendsUpToTheLastByte) {
    constexpr quint64 kMax = 2147483647;
    const unsigned char values[] = {1, 2, 3};
    ModelDataArray array(kUnsignedByte);
    array.reserve(kMax);
    array.resize(kMax - 2);
    array.append(3, values);
    EXPECT_EQ(array.size(), kMax - 2);
    array.append(2, values);
    ASSERT_EQ(array.size(), kMax);
    EXPECT_EQ(*static_cast<unsigned char*>(array.data(kMax - 1)), 2);
    array.append(1, values);
    array.resize(kMax + 1);
    EXPECT_EQ(array.size(), kMax);
    array.setType(kUnsignedShort);
    EXPECT_EQ(array.type(), kUnsignedByte);
    array.resize(kMax / 2);
    array.setType(kUnsignedShort);
    EXPECT_EQ(array.type(), kUnsignedShort);
    EXPECT_EQ(array.byteCount(), kMax - 1);
}

TEST(ModelDataArrayTest, AppendingDetachesACopy) {
    ModelDataArray source(kUnsignedInt);
    const quint32 values[] = {1, 2, 3};
    source.append(1, values);
    ModelDataArray copy(source);
    source.append(1, values + 1);
    copy.append(1, values + 2);
    EXPECT_THAT(words(source), testing::ElementsAre(1, 2));
    EXPECT_THAT(words(copy), testing::ElementsAre(1, 3));
}

TEST(ModelDataArrayTest, SetTypeThatWouldMakeItTooLongIsRefused) {
    ModelDataArray array(kUnsignedByte, 0x10000000);
    array.setType(kDouble);
    EXPECT_EQ(array.type(), kUnsignedByte);
    EXPECT_EQ(array.size(), 0x10000000U);
}

TEST(ModelDataArrayAllocatorTest, MakesArrays) {
    ModelDataArrayAllocator allocator;
    const std::unique_ptr<ModelDataStream> stream(allocator.alloc(kUnsignedShort, 3));
    ASSERT_NE(stream, nullptr);
    EXPECT_NE(dynamic_cast<ModelDataArray*>(stream.get()), nullptr);
    EXPECT_EQ(stream->type(), kUnsignedShort);
    EXPECT_EQ(stream->size(), 3U);
}

TEST(ModelDataArrayAllocatorTest, GivesNullForSizesBeyondTheCapacityOfAStream) {
    ModelDataArrayAllocator allocator;
    EXPECT_EQ(allocator.alloc(kUnsignedInt, 0x20000000), nullptr);
    EXPECT_EQ(allocator.alloc(kDouble, ~quint64{0}), nullptr);
}

} // namespace
} // namespace Atelier::Vel
