#include "scratchblock.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include <gmock/gmock.h>

#include "mappings.h"

namespace Atelier::Vel {

namespace {

using Testing::Mappings;

constexpr std::size_t kLarge = std::size_t{8} << 20;
constexpr std::size_t kLargePage = std::size_t{2} << 20;
constexpr auto kUnspecified = ScratchBlock::Content::Unspecified;

void* placeOfABlock(std::size_t bytes) {
    const ScratchBlock block(bytes, kUnspecified);
    std::memset(block.as<char>(), 7, bytes);
    return block.as<void>();
}

/// Whether all bytes are inside.
bool holds(const Mappings::Range& range, const char* begin, std::size_t bytes) {
    return begin >= range.begin && begin + bytes <= range.begin + range.bytes;
}

} // namespace

TEST(ScratchBlockTest, LargeOnesBeginOnALargePageAndLieInsideTheirMapping) {
    for (const std::size_t offset : {std::size_t{0}, std::size_t{4096}, kLargePage - 4096})
        for (const std::size_t bytes : {kLargePage / 2, kLargePage, kLargePage + 1, 2 * kLargePage - 1}) {
            SCOPED_TRACE(testing::Message()
                         << bytes << " bytes, mapped " << offset << " behind a large page");
            const Mappings mappings(offset);
            {
                const ScratchBlock block(bytes, kUnspecified);
                const char* const begin = block.as<char>();
                ASSERT_EQ(Mappings::live().size(), 1U);
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(begin) % kLargePage, 0U);
                EXPECT_TRUE(holds(Mappings::live()[0], begin, bytes));
                ASSERT_EQ(Mappings::advised().size(), 1U);
                const Mappings::Range& advised = Mappings::advised()[0];
                EXPECT_TRUE(holds(advised, begin, bytes)) << "all of it gets large pages";
                EXPECT_TRUE(holds(Mappings::live()[0], advised.begin, advised.bytes));
            }
            EXPECT_TRUE(Mappings::live().empty());
            EXPECT_TRUE(Mappings::wereGivenBackWhole());
        }
}

TEST(ScratchBlockTest, SmallOnesComeFromTheHeap) {
    const Mappings mappings;
    const ScratchBlock small(kLargePage / 2 - 1, kUnspecified);
    const ScratchBlock zeros(kLargePage / 2 - 1);
    const ScratchBlock empty(0);
    EXPECT_TRUE(Mappings::live().empty());
    EXPECT_NE(empty.as<void>(), nullptr);
    const ScratchReuse reuse;
    { const ScratchBlock other(kLargePage / 2 - 1, kUnspecified); }
    EXPECT_TRUE(Mappings::live().empty());
}

TEST(ScratchBlockTest, SmallOnesOfZerosAreZeros) {
    constexpr std::size_t kBytes = 1000;
    for (int round = 0; round < 2; ++round) {
        const ScratchBlock block(kBytes);
        EXPECT_TRUE(
            std::all_of(block.as<char>(), block.as<char>() + kBytes, [](char byte) { return byte == 0; }));
        std::memset(block.as<char>(), 7, kBytes);
    }
}

TEST(ScratchBlockTest, WithoutMemoryItThrows) {
    const Mappings mappings;
    Mappings::refuse(1);
    EXPECT_THROW(ScratchBlock block(kLarge), std::bad_alloc);
    EXPECT_TRUE(Mappings::live().empty());
    EXPECT_THROW(ScratchBlock block(~std::size_t{0} / 4), std::bad_alloc) << "more than there are addresses";
}

TEST(ScratchReuseTest, WhatIsKeptIsGivenBackWhereMemoryIsShort) {
    const Mappings mappings;
    const ScratchReuse reuse;
    placeOfABlock(kLarge);
    ASSERT_EQ(Mappings::live().size(), 1U);
    Mappings::refuse(1);
    {
        const ScratchBlock block(2 * kLarge, kUnspecified);
        ASSERT_EQ(Mappings::live().size(), 1U);
        EXPECT_TRUE(holds(Mappings::live()[0], block.as<char>(), 2 * kLarge));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.as<char>()) % kLargePage, 0U);
    }
    Mappings::refuse(2);
    EXPECT_THROW(ScratchBlock block(4 * kLarge), std::bad_alloc);
    EXPECT_TRUE(Mappings::live().empty());
    EXPECT_TRUE(Mappings::wereGivenBackWhole());
}

TEST(ScratchReuseTest, KeepsSixteenBlocksUntilItsEnd) {
    const Mappings mappings;
    {
        const ScratchReuse reuse;
        std::vector<std::unique_ptr<ScratchBlock>> blocks;
        for (int i = 0; i < 18; ++i)
            blocks.push_back(std::make_unique<ScratchBlock>(kLarge, kUnspecified));
        blocks.clear();
        EXPECT_EQ(Mappings::live().size(), 16U);
        const std::size_t advice = Mappings::advised().size();
        for (int i = 0; i < 16; ++i)
            blocks.push_back(std::make_unique<ScratchBlock>(kLarge, kUnspecified));
        EXPECT_EQ(Mappings::live().size(), 16U) << "all taken again";
        EXPECT_EQ(Mappings::advised().size(), advice);
        const ScratchBlock one(kLarge, kUnspecified);
        EXPECT_EQ(Mappings::live().size(), 17U) << "none is left";
    }
    EXPECT_TRUE(Mappings::live().empty());
    EXPECT_TRUE(Mappings::wereGivenBackWhole());
}

TEST(ScratchReuseTest, BlocksTooSmallAreNotTaken) {
    const Mappings mappings;
    const ScratchReuse reuse;
    placeOfABlock(kLarge);
    const ScratchBlock block(kLarge + 1, kUnspecified);
    EXPECT_EQ(Mappings::live().size(), 2U);
    EXPECT_TRUE(holds(Mappings::live()[1], block.as<char>(), kLarge + 1));
}

TEST(ScratchReuseTest, WithoutOneBlocksAreGivenBackAtOnce) {
    const Mappings mappings;
    placeOfABlock(kLarge);
    EXPECT_TRUE(Mappings::live().empty());
}

TEST(ScratchReuseTest, LargeBlocksAreTakenAgain) {
    const ScratchReuse reuse;
    void* const place = placeOfABlock(kLarge);
    EXPECT_EQ(ScratchBlock(kLarge, kUnspecified).as<void>(), place);
    EXPECT_EQ(ScratchBlock(kLarge / 2, kUnspecified).as<void>(), place) << "by smaller ones, too";
}

TEST(ScratchReuseTest, TheSmallestThatFitsIsTaken) {
    const ScratchReuse reuse;
    auto small = std::make_unique<ScratchBlock>(kLarge, kUnspecified);
    auto great = std::make_unique<ScratchBlock>(2 * kLarge, kUnspecified);
    void* const smallPlace = small->as<void>();
    void* const greatPlace = great->as<void>();
    great.reset();
    small.reset();
    const ScratchBlock first(kLarge, kUnspecified);
    const ScratchBlock second(kLarge, kUnspecified);
    EXPECT_EQ(first.as<void>(), smallPlace);
    EXPECT_EQ(second.as<void>(), greatPlace);
}

TEST(ScratchReuseTest, BlocksOfZerosAreZeros) {
    const ScratchReuse reuse;
    placeOfABlock(kLarge);
    const ScratchBlock block(kLarge, ScratchBlock::Content::Zeros);
    for (std::size_t i = 0; i < kLarge; i += 512)
        ASSERT_EQ(block.as<char>()[i], 0) << i;
}

TEST(ScratchReuseTest, MoreBlocksThanAreKeptAreGivenBack) {
    const ScratchReuse reuse;
    for (int round = 0; round < 2; ++round) {
        std::vector<std::unique_ptr<ScratchBlock>> blocks;
        for (int i = 0; i < 40; ++i) {
            blocks.push_back(std::make_unique<ScratchBlock>(kLarge, kUnspecified));
            *blocks.back()->as<int>() = i;
        }
        for (int i = 0; i < 40; ++i)
            EXPECT_EQ(*blocks[static_cast<std::size_t>(i)]->as<int>(), i);
    }
}

TEST(ScratchReuseTest, OneInsideAnotherKeepsToItself) {
    const ScratchReuse outer;
    void* const outerPlace = placeOfABlock(kLarge);
    {
        const ScratchReuse inner;
        EXPECT_NE(ScratchBlock(kLarge, kUnspecified).as<void>(), outerPlace);
    }
    EXPECT_EQ(ScratchBlock(kLarge, kUnspecified).as<void>(), outerPlace);
}

} // namespace Atelier::Vel
