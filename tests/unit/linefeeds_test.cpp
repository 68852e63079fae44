#include "import/text/linefeeds.h"

#include <algorithm>
#include <random>

#include <QtCore/QByteArray>

#include <gtest/gtest.h>

namespace Atelier::Vel {

TEST(LineFeedsTest, AllAreCountedAtAnyPlace) {
    std::mt19937 random(3);
    for (const int size : {0, 1, 15, 16, 17, 31, 32, 100, 4079, 4080, 4081, 4096, 20'000}) {
        QByteArray text(size + 16, '\n');
        for (int i = 0; i < 16; ++i) {
            const char* const first = text.constData() + i;
            ASSERT_EQ(countLineFeeds(first, first + size), size) << "only line feeds";
        }
        for (char& byte : text)
            byte = "\n\r\v a\x8A"[random() % 6];
        for (int i = 0; i < 16; ++i) {
            const char* const first = text.constData() + i;
            ASSERT_EQ(countLineFeeds(first, first + size), std::count(first, first + size, '\n')) << size;
        }
    }
}

} // namespace Atelier::Vel
