#include "memory/scratchblock.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include <gmock/gmock.h>

#include "mappingwatch.h"
#include "support/scarceaddresses.h"

namespace Atelier::Vel {

namespace {

using Testing::kLargePage;
using Testing::MappingWatch;

constexpr std::size_t kLarge = std::size_t{8} << 20;
constexpr auto kUnspecified = ScratchBlock::Content::Unspecified;
constexpr auto kZeros = ScratchBlock::Content::Zeros;

void* placeOfABlock(std::size_t bytes) {
    const ScratchBlock block(bytes, kUnspecified);
    std::memset(block.as<char>(), 7, bytes);
    return block.as<void>();
}

bool areAll(const char* bytes, std::size_t count, char value) {
    return std::all_of(bytes, bytes + count, [value](char byte) { return byte == value; });
}

bool areZeros(const ScratchBlock& block, std::size_t bytes) {
    return areAll(block.as<char>(), bytes, 0);
}

std::uintptr_t placeOf(const ScratchBlock& block) {
    return reinterpret_cast<std::uintptr_t>(block.as<void>());
}

/// Grows a block of `size` bytes whose n-th large part holds the number n, from 1 on. Expects those parts,
/// and zeros after them.
void growByALargePart(ScratchBlock& block, std::size_t size) {
    EXPECT_TRUE(block.grow(size + kLarge));
    EXPECT_EQ(placeOf(block) % kLargePage, 0U);
    for (std::size_t part = 0; part < size / kLarge; ++part)
        EXPECT_TRUE(areAll(block.as<char>() + part * kLarge, kLarge, static_cast<char>(part + 1))) << part;
    EXPECT_TRUE(areAll(block.as<char>() + size, kLarge, 0));
}

} // namespace

TEST(ScratchBlockTest, SmallBlocksComeFromTheHeap) {
    const MappingWatch watch;
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{1}, kLargePage / 2 - 1})
        for (const auto content : {kZeros, kUnspecified}) {
            const ScratchBlock block(bytes, content);
            EXPECT_NE(block.as<void>(), nullptr);
            std::memset(block.as<char>(), 7, bytes);
        }
    EXPECT_EQ(watch.made(), 0);
}

TEST(ScratchBlockTest, LargeBlocksBeginOnALargePageInsideOneMapping) {
    for (const std::size_t behind : {std::size_t{0}, std::size_t{4096}, kLargePage - 4096})
        for (const std::size_t bytes :
             {kLargePage / 2, kLargePage - 1, kLargePage, kLargePage + 1, 3 * kLargePage - 1}) {
            SCOPED_TRACE(testing::Message() << bytes << " bytes, mapped " << behind << " behind a page");
            MappingWatch watch;
            watch.placeBehindLargePages(behind);
            const std::size_t whole = (bytes + kLargePage - 1) / kLargePage * kLargePage;
            {
                const ScratchBlock block(bytes);
                ASSERT_EQ(watch.mappings().size(), 1U);
                const auto [mapping, mapped] = *watch.mappings().begin();
                EXPECT_EQ(placeOf(block), mapping + (behind == 0 ? 0 : kLargePage - behind));
                EXPECT_EQ(mapped, whole + kLargePage);
                ASSERT_EQ(watch.advices().size(), 1U);
                EXPECT_EQ(watch.advices()[0].begin, placeOf(block));
                EXPECT_EQ(watch.advices()[0].bytes, whole);
                std::memset(block.as<char>(), 7, bytes);
            }
            EXPECT_TRUE(watch.mappings().empty());
        }
}

TEST(ScratchBlockTest, ZeroedBlocksOverwriteOldContent) {
    for (const std::size_t bytes : {std::size_t{24}, std::size_t{1000}, kLargePage / 4, kLarge}) {
        placeOfABlock(bytes);
        EXPECT_TRUE(areZeros(ScratchBlock(bytes), bytes)) << bytes;
    }
}

TEST(ScratchBlockTest, FailedMappingThrowsBadAlloc) {
    MappingWatch watch;
    watch.fail(1);
    EXPECT_THROW(ScratchBlock block(kLarge), std::bad_alloc);
    EXPECT_EQ(watch.made(), 0) << "no retry without kept mappings";
}

TEST(ScratchBlockTest, GrowingMovesThePagesToALargePage) {
    for (const std::size_t behind : {std::size_t{0}, std::size_t{4096}, kLargePage - 4096}) {
        SCOPED_TRACE(testing::Message() << "mapped " << behind << " behind a page");
        MappingWatch watch;
        watch.placeBehindLargePages(behind);
        {
            ScratchBlock block(kLarge);
            for (std::size_t size = kLarge; size < 4 * kLarge; size += kLarge) {
                std::memset(block.as<char>() + size - kLarge, static_cast<int>(size / kLarge), kLarge);
                growByALargePart(block, size);
                ASSERT_EQ(watch.mappings().size(), 1U);
                EXPECT_EQ(watch.mappings().begin()->second, size + kLarge + kLargePage);
            }
        }
        EXPECT_EQ(watch.made(), 4);
        EXPECT_EQ(watch.moves(), 3);
        EXPECT_TRUE(watch.mappings().empty());
    }
}

TEST(ScratchBlockTest, GrowingReleasesTheOldAddresses) {
    ScratchBlock block(kLarge);
    const quint64 before = Testing::addressesTaken();
    for (std::size_t size = 2 * kLarge; size <= 8 * kLarge; size += kLarge)
        ASSERT_TRUE(block.grow(size));
    // The heap may have grown as well.
    EXPECT_LT(Testing::addressesTaken() - before, 7 * kLarge + kLargePage);
}

TEST(ScratchBlockTest, GrowingWithinThePagesMovesNothing) {
    ScratchBlock block(kLarge - 1);
    const std::uintptr_t place = placeOf(block);
    const MappingWatch watch;
    EXPECT_TRUE(block.grow(kLarge));
    EXPECT_TRUE(block.grow(1));
    EXPECT_EQ(placeOf(block), place);
    EXPECT_EQ(watch.made(), 0);
    EXPECT_TRUE(block.grow(kLarge + 1));
    EXPECT_NE(placeOf(block), place);
}

TEST(ScratchBlockTest, SmallBlocksDoNotGrow) {
    ScratchBlock block(100);
    const std::uintptr_t place = placeOf(block);
    EXPECT_FALSE(block.grow(kLarge));
    EXPECT_EQ(placeOf(block), place);
}

TEST(ScratchBlockTest, BlockThatCannotGrowIsUnchanged) {
    MappingWatch watch;
    ScratchBlock block(kLarge);
    std::memset(block.as<char>(), 7, kLarge);
    const std::uintptr_t place = placeOf(block);
    watch.fail(1);
    EXPECT_FALSE(block.grow(2 * kLarge));
    watch.failMoves(1);
    EXPECT_FALSE(block.grow(2 * kLarge));
    EXPECT_EQ(watch.mappings().size(), 1U);
    EXPECT_EQ(placeOf(block), place);
    EXPECT_TRUE(areAll(block.as<char>(), kLarge, 7));
}

TEST(ScratchReuseTest, GrownBlocksAreTakenAgain) {
    const ScratchReuse reuse;
    const MappingWatch watch;
    std::uintptr_t place = 0;
    {
        ScratchBlock block(kLarge, kUnspecified);
        ASSERT_TRUE(block.grow(2 * kLarge));
        place = placeOf(block);
    }
    EXPECT_EQ(placeOf(ScratchBlock(2 * kLarge, kUnspecified)), place);
    EXPECT_EQ(watch.made(), 2);
}

TEST(ScratchReuseTest, LargeBlocksAreTakenAgain) {
    const ScratchReuse reuse;
    const MappingWatch watch;
    void* const place = placeOfABlock(kLarge);
    EXPECT_EQ(ScratchBlock(kLarge, kUnspecified).as<void>(), place);
    EXPECT_EQ(ScratchBlock(kLarge / 2, kUnspecified).as<void>(), place) << "by smaller ones, too";
    EXPECT_EQ(ScratchBlock(kLarge, kUnspecified).as<void>(), place);
    EXPECT_EQ(watch.made(), 1);
    EXPECT_EQ(watch.advices().size(), 1U);
}

TEST(ScratchReuseTest, LargerBlocksGetANewMapping) {
    const ScratchReuse reuse;
    const MappingWatch watch;
    placeOfABlock(kLarge);
    const ScratchBlock block(kLarge + 1, kUnspecified);
    EXPECT_EQ(watch.made(), 2);
    EXPECT_EQ(watch.bytesMapped(), 2 * kLarge + 3 * kLargePage);
}

TEST(ScratchReuseTest, SmallestBlockThatFitsIsTaken) {
    for (const bool isSmallFirst : {false, true}) {
        const ScratchReuse reuse;
        auto small = std::make_unique<ScratchBlock>(kLarge, kUnspecified);
        auto great = std::make_unique<ScratchBlock>(2 * kLarge, kUnspecified);
        void* const smallPlace = small->as<void>();
        void* const greatPlace = great->as<void>();
        (isSmallFirst ? small : great).reset();
        (isSmallFirst ? great : small).reset();
        const ScratchBlock first(kLarge, kUnspecified);
        const ScratchBlock second(kLarge, kUnspecified);
        EXPECT_EQ(first.as<void>(), smallPlace);
        EXPECT_EQ(second.as<void>(), greatPlace);
    }
}

TEST(ScratchReuseTest, BlocksOfZerosAreZeros) {
    const ScratchReuse reuse;
    placeOfABlock(kLarge);
    EXPECT_TRUE(areZeros(ScratchBlock(kLarge, kZeros), kLarge));
}

TEST(ScratchReuseTest, BlocksBeyondTheLimitAreReleased) {
    const MappingWatch watch;
    {
        const ScratchReuse reuse;
        for (int round = 0; round < 2; ++round) {
            std::vector<std::unique_ptr<ScratchBlock>> blocks;
            for (int i = 0; i < 40; ++i) {
                blocks.push_back(std::make_unique<ScratchBlock>(kLarge, kUnspecified));
                *blocks.back()->as<int>() = i;
            }
            for (int i = 0; i < 40; ++i)
                EXPECT_EQ(*blocks[static_cast<std::size_t>(i)]->as<int>(), i);
            blocks.clear();
            EXPECT_EQ(watch.mappings().size(), 16U);
        }
        EXPECT_EQ(watch.made(), 40 + 24);
    }
    EXPECT_TRUE(watch.mappings().empty()) << "including the kept ones";
}

TEST(ScratchReuseTest, WithoutReuseBlocksAreUnmappedAtOnce) {
    const MappingWatch watch;
    { const ScratchReuse reuse; }
    placeOfABlock(kLarge);
    EXPECT_TRUE(watch.mappings().empty());
}

TEST(ScratchReuseTest, NestedScopesAreIndependent) {
    const MappingWatch watch;
    const ScratchReuse outer;
    void* const outerPlace = placeOfABlock(kLarge);
    {
        const ScratchReuse inner;
        EXPECT_NE(ScratchBlock(kLarge, kUnspecified).as<void>(), outerPlace);
        EXPECT_EQ(watch.mappings().size(), 2U);
    }
    EXPECT_EQ(watch.mappings().size(), 1U);
    EXPECT_EQ(ScratchBlock(kLarge, kUnspecified).as<void>(), outerPlace);
}

TEST(ScratchReuseTest, KeptMappingsAreReleasedWhenAMappingFails) {
    const ScratchReuse reuse;
    MappingWatch watch;
    placeOfABlock(kLarge);
    watch.fail(1);
    {
        const ScratchBlock block(2 * kLarge, kUnspecified);
        std::memset(block.as<char>(), 7, 2 * kLarge);
        EXPECT_EQ(watch.mappings().size(), 1U);
        EXPECT_EQ(watch.made(), 2);
        EXPECT_EQ(watch.advices().size(), 2U) << "the new mapping is advised, too";
    }
    watch.fail(2);
    EXPECT_THROW(ScratchBlock block(3 * kLarge), std::bad_alloc);
    EXPECT_TRUE(watch.mappings().empty());
}

} // namespace Atelier::Vel
