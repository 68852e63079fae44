#include "memory/growinglist.h"

#include <algorithm>
#include <new>
#include <vector>

#include <unistd.h>

#include <gmock/gmock.h>

#include "support/sanitizer.h"
#include "support/scarceaddresses.h"

namespace Atelier::Vel {

namespace {

using List = GrowingList<quint32>;

constexpr quint64 kMebibyte = (quint64{1} << 20) / sizeof(quint32);

/// Whether the capacity of the list is exactly `count` items. Grows the list beyond it by one item.
bool hasCapacityFor(List& list, quint64 count) {
    const quint32* const items = list.items();
    list.reserve(count, 0);
    const bool isEnough = list.items() == items;
    list.reserve(count + 1, 0);
    return isEnough && list.items() != items;
}

/// Ends the process with 0 if a list of `used` items grows to twice and then three times its size with
/// addresses for `bytes` more bytes, 1 if it throws and stays unchanged, 2 if an item is lost.
[[noreturn]] void growWithin(quint64 used, quint64 bytes) {
    List list;
    list.reserve(used, 0);
    std::fill_n(list.items(), used, 7);
    Testing::leaveAddresses(bytes);
    int status = 0;
    try {
        list.reserve(2 * used, used);
        status = list.items()[2 * used - 1] == 0 ? 0 : 2;
        list.reserve(3 * used, 2 * used);
    } catch (const std::bad_alloc&) {
        status = 1;
    }
    _exit(std::all_of(list.items(), list.items() + used, [](quint32 item) { return item == 7; }) ? status
                                                                                                 : 2);
}

} // namespace

TEST(GrowingListTest, ItemsAreZerosAndKeepTheirValues) {
    List list;
    EXPECT_EQ(list.items(), nullptr);
    list.reserve(3, 0);
    EXPECT_THAT(std::vector<quint32>(list.items(), list.items() + 3), testing::Each(0));
    list.items()[2] = 5;
    list.reserve(2 * kMebibyte, 3);
    EXPECT_EQ(list.items()[2], 5u);
    EXPECT_EQ(list.items()[2 * kMebibyte - 1], 0u);
    list.clear();
    EXPECT_EQ(list.items(), nullptr);
}

TEST(GrowingListTest, ShortListsGrowToFourTimesTheirSize) {
    List list;
    list.reserve(10, 0);
    EXPECT_TRUE(hasCapacityFor(list, 10)) << "an empty list allocates exactly the requested capacity";
    EXPECT_TRUE(hasCapacityFor(list, 44));
    EXPECT_TRUE(hasCapacityFor(list, 180));
    list.reserve(10'000, 0);
    EXPECT_TRUE(hasCapacityFor(list, 40'000));
}

TEST(GrowingListTest, LongListsGrowToTwiceTheirSize) {
    List list;
    list.reserve(kMebibyte / 2 - 1, 0);
    EXPECT_TRUE(hasCapacityFor(list, kMebibyte / 2 - 1));
    EXPECT_TRUE(hasCapacityFor(list, 2 * kMebibyte)) << "of half a mebibyte at most, four times";
    EXPECT_TRUE(hasCapacityFor(list, 16 * kMebibyte)) << "of more, at least 16 MiB";
    EXPECT_TRUE(hasCapacityFor(list, 2 * (16 * kMebibyte + 1)));
}

TEST(GrowingListTest, OnlyItemsInUseAreKept) {
    List list;
    list.reserve(4, 0);
    std::fill_n(list.items(), 4, 9);
    list.reserve(5, 3);
    EXPECT_THAT(std::vector<quint32>(list.items(), list.items() + 5), testing::ElementsAre(9, 9, 9, 0, 0));
    list.reserve(1000, 500);
    EXPECT_THAT(std::vector<quint32>(list.items(), list.items() + 5), testing::ElementsAre(9, 9, 9, 0, 0));
}

TEST(GrowingListTest, ClearedListHasNoCapacity) {
    List list;
    list.reserve(100, 0);
    list.items()[0] = 1;
    list.clear();
    list.reserve(50, 50);
    EXPECT_EQ(list.items()[0], 0U);
    EXPECT_TRUE(hasCapacityFor(list, 50)) << "the old capacity is released";
}

// Then there are no addresses for four times the capacity, but for one and a half times the request.
TEST(GrowingListTest, ScarceAddressesReduceTheSpareCapacity) {
    if (VELMODEL_ADDRESS_SANITIZER)
        GTEST_SKIP() << "a sanitizer needs the addresses for itself";
    constexpr quint64 kLong = 10 * kMebibyte;
    EXPECT_EXIT(growWithin(kLong, quint64{36} << 20), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(growWithin(kLong, quint64{16} << 20), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(growWithin(kMebibyte / 3, 0), testing::ExitedWithCode(1), "") << "a short one tries once";
}

} // namespace Atelier::Vel
