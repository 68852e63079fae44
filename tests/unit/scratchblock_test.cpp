#include "scratchblock.h"

#include <cstring>
#include <memory>
#include <vector>

#include <gmock/gmock.h>

namespace Atelier::Vel {

namespace {

constexpr std::size_t kLarge = std::size_t{8} << 20;
constexpr auto kUnspecified = ScratchBlock::Content::Unspecified;

void* placeOfABlock(std::size_t bytes) {
    const ScratchBlock block(bytes, kUnspecified);
    std::memset(block.as<char>(), 7, bytes);
    return block.as<void>();
}

} // namespace

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
