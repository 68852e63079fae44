#include "growinglist.h"

#include <algorithm>
#include <fstream>
#include <new>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "mappings.h"
#include "support/sanitizer.h"

namespace Atelier::Vel {

namespace {

using List = GrowingList<quint32>;

constexpr quint64 kMebibyte = (quint64{1} << 20) / sizeof(quint32);

/// From now on, this process gets addresses for so many more bytes.
void leaveAddresses(quint64 bytes) {
    quint64 pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const quint64 limit = pages * static_cast<quint64>(getpagesize()) + bytes;
    const rlimit limits = {limit, limit};
    setrlimit(RLIMIT_AS, &limits);
}

/// Ends the process with 0 if a list of so many items makes room for twice as many with addresses for so many
/// more bytes, 1 if it says that it cannot and stays as it is, 2 if an item is lost.
[[noreturn]] void growWithin(quint64 used, quint64 bytes) {
    List list;
    list.makeRoom(used, 0);
    std::fill_n(list.items(), used, 7);
    leaveAddresses(bytes);
    int status = 0;
    try {
        list.makeRoom(2 * used, used);
        status = list.items()[2 * used - 1] == 0 ? 0 : 2;
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
    list.makeRoom(3, 0);
    EXPECT_THAT(std::vector<quint32>(list.items(), list.items() + 3), testing::Each(0));
    list.items()[2] = 5;
    list.makeRoom(2 * kMebibyte, 3);
    EXPECT_EQ(list.items()[2], 5u);
    EXPECT_EQ(list.items()[2 * kMebibyte - 1], 0u);
    list.clear();
    EXPECT_EQ(list.items(), nullptr);
    list.makeRoom(2, 0);
    EXPECT_THAT(std::vector<quint32>(list.items(), list.items() + 2), testing::Each(0));
}

TEST(GrowingListTest, MovesOnlyWhereRoomIsShort) {
    List list;
    list.makeRoom(3, 0);
    const quint32* const first = list.items();
    list.makeRoom(3, 3);
    list.makeRoom(1, 1);
    EXPECT_EQ(list.items(), first);
    list.makeRoom(4, 3);
    const quint32* const second = list.items();
    EXPECT_NE(second, first);
    list.makeRoom(12, 4);
    EXPECT_EQ(list.items(), second) << "four times the room";
    list.makeRoom(13, 12);
    EXPECT_NE(list.items(), second);
}

TEST(GrowingListTest, LongListGetsMegabytesAtATime) {
    const Testing::Mappings mappings;
    List list;
    list.makeRoom(kMebibyte / 2, 0);
    list.makeRoom(kMebibyte / 2 + 1, 0);
    ASSERT_EQ(Testing::Mappings::live().size(), 1U);
    EXPECT_GE(Testing::Mappings::live()[0].bytes, std::size_t{16} << 20);
    const quint32* const place = list.items();
    list.makeRoom(16 * kMebibyte, kMebibyte);
    EXPECT_EQ(list.items(), place);
    List shorter;
    shorter.makeRoom(kMebibyte / 2 - 1, 0);
    shorter.makeRoom(kMebibyte / 2, 0);
    ASSERT_EQ(Testing::Mappings::live().size(), 2U);
    EXPECT_LT(Testing::Mappings::live()[1].bytes, std::size_t{8} << 20);
}

TEST(GrowingListTest, OnlyItemsInUseAreMoved) {
    List list;
    list.makeRoom(4, 0);
    std::fill_n(list.items(), 4, 7);
    list.makeRoom(5, 2);
    EXPECT_THAT(std::vector<quint32>(list.items(), list.items() + 5), testing::ElementsAre(7, 7, 0, 0, 0));
}

// Four times the room has no addresses then; one and a half times what is asked for has.
TEST(GrowingListTest, WhereAddressesAreScarceThereIsLessRoomToSpare) {
    if (VELMODEL_ADDRESS_SANITIZER)
        GTEST_SKIP() << "a sanitizer needs the addresses for itself";
    constexpr quint64 kLong = 10 * kMebibyte;
    EXPECT_EXIT(growWithin(kLong, quint64{36} << 20), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(growWithin(kLong, quint64{16} << 20), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(growWithin(kMebibyte / 3, 0), testing::ExitedWithCode(1), "") << "a short one tries once";
}

} // namespace Atelier::Vel
