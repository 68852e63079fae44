#include "progressbar.h"

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

TEST(ProgressLineTest, GrowsWithTheShareThatIsDone) {
    EXPECT_EQ(progressLine("cow.obj", 0, 100, 80), "[                              ]   0 % cow.obj");
    EXPECT_EQ(progressLine("cow.obj", 50, 100, 80), "[###############               ]  50 % cow.obj");
    EXPECT_EQ(progressLine("cow.obj", 100, 100, 80), "[##############################] 100 % cow.obj");
}

TEST(ProgressLineTest, NeverLeavesItsWidthOrItsLine) {
    EXPECT_EQ(progressLine(QString(200, 'x'), 1, 3, 50).size(), 50);
    EXPECT_EQ(progressLine("a\nb", 1, 3, 80), "[##########                    ]  33 % a\\x0ab");
}

TEST(ProgressLineTest, OddNumbersStayBetweenNothingAndAll) {
    EXPECT_TRUE(progressLine("a", 200, 100, 80).contains(" 100 %"));
    EXPECT_TRUE(progressLine("a", -5, 100, 80).contains("   0 %"));
    EXPECT_TRUE(progressLine("a", 0, 0, 80).contains(" 100 %"));
}

} // namespace

} // namespace Atelier::Vel::Tool
