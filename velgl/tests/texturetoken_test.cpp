#include <velgl/texturetoken.h>

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

} // namespace Atelier::Vel::Testing
