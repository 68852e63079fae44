#include "memory/hugepages.h"

#include <gmock/gmock.h>

#include <sys/mman.h>

#include "mappingwatch.h"

namespace Atelier::Vel {
namespace {

using Testing::kLargePage;
using Testing::MappingWatch;

/// A block and the expected advice, both relative to the start of a large page.
struct Row {
    std::size_t begin;
    std::size_t bytes;
    std::size_t advisedBegin;
    std::size_t advisedBytes; ///< 0 for no advice
};

TEST(HugePagesTest, WholeLargePagesInsideABlockAreAdvised) {
    constexpr std::uintptr_t kSomewhere = 100 * kLargePage; // not accessed
    const Row rows[] = {
        {0, kLargePage, 0, kLargePage},
        {0, kLargePage - 1, 0, 0},
        {0, 2 * kLargePage - 1, 0, kLargePage},
        {0, 3 * kLargePage, 0, 3 * kLargePage},
        {1, kLargePage, 0, 0},
        {4096, 2 * kLargePage - 4096, kLargePage, kLargePage},
        {4096, 2 * kLargePage - 4097, 0, 0},
        {4096, 5 * kLargePage, kLargePage, 4 * kLargePage},
        {kLargePage - 1, kLargePage + 1, kLargePage, kLargePage},
        {kLargePage - 1, kLargePage, 0, 0},
        {0, 0, 0, 0},
        {4096, 0, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.bytes << " bytes from " << row.begin << " on");
        const MappingWatch watch;
        adviseHugePages(reinterpret_cast<void*>(kSomewhere + row.begin), row.bytes);
        ASSERT_EQ(watch.advices().size(), row.advisedBytes == 0 ? 0U : 1U);
        for (const Testing::Advice& advice : watch.advices()) {
            EXPECT_EQ(advice.begin, kSomewhere + row.advisedBegin);
            EXPECT_EQ(advice.bytes, row.advisedBytes);
            EXPECT_EQ(advice.advice, MADV_HUGEPAGE);
        }
    }
}

} // namespace
} // namespace Atelier::Vel
