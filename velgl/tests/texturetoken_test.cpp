#include <velgl/texturetoken.h>

#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

TEST(TextureTokenTest, EachTokenIsDifferent) {
    const TextureToken first;
    const TextureToken second;
    const TextureToken copy =
        first; // NOLINT(performance-unnecessary-copy-initialization): the copy is the test
    EXPECT_NE(first, second);
    EXPECT_EQ(first, copy);
    EXPECT_EQ(first.value(), copy.value());
}

TEST(TextureTokenTest, TokensOfSeveralThreadsAreDifferent) {
    constexpr std::size_t kThreadCount = 4;
    constexpr int kTokenCount = 100000;
    std::vector<std::set<quint64>> values(kThreadCount);
    std::vector<std::thread> threads;
    for (std::set<quint64>& own : values)
        threads.emplace_back([&own] {
            for (int i = 0; i < kTokenCount; ++i)
                own.insert(own.end(), TextureToken().value());
        });
    for (std::thread& thread : threads)
        thread.join();
    std::set<quint64> all;
    for (const std::set<quint64>& own : values)
        all.insert(own.begin(), own.end());
    EXPECT_EQ(all.size(), kThreadCount * kTokenCount);
    EXPECT_EQ(all.count(0), 0U);
}

} // namespace Atelier::Vel::Testing
