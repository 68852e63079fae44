#include "streams/hugepages.h"

#include <sys/mman.h>

#include <gmock/gmock.h>

#include "mappings.h"

namespace Atelier::Vel {

namespace {

using Testing::Mappings;

constexpr std::size_t kPage = 4096;
constexpr std::size_t kLargePage = std::size_t{2} << 20;

} // namespace

TEST(HugePagesTest, WholeLargePagesInsideABlockAreAskedFor) {
    const Mappings mappings;
    void* const mapped =
        mmap(nullptr, 4 * kLargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(mapped, MAP_FAILED);
    auto* const base = static_cast<char*>(mapped);
    const struct {
        std::size_t first;
        std::size_t bytes;
        std::size_t firstAdvised;
        std::size_t advised;
    } rows[] = {{0, kLargePage - 1, 0, 0},
                {0, kLargePage, 0, kLargePage},
                {0, 2 * kLargePage - 1, 0, kLargePage},
                {0, 2 * kLargePage, 0, 2 * kLargePage},
                {1, 2 * kLargePage - 2, 0, 0},
                {1, 2 * kLargePage - 1, kLargePage, kLargePage},
                {kLargePage - kPage, kLargePage + kPage - 1, 0, 0},
                {kLargePage - kPage, kLargePage + kPage, kLargePage, kLargePage},
                {kPage, 3 * kLargePage, kLargePage, 2 * kLargePage},
                {0, 0, 0, 0}};
    std::vector<Mappings::Range> expected;
    for (const auto& row : rows) {
        adviseHugePages(base + row.first, row.bytes);
        if (row.advised != 0)
            expected.push_back({base + row.firstAdvised, row.advised});
        EXPECT_EQ(Mappings::advised(), expected) << row.first << ' ' << row.bytes;
    }
    munmap(mapped, 4 * kLargePage);
}

} // namespace Atelier::Vel
