#include "console.h"

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

TEST(ConsoleTest, OrdinaryTextStaysAsItIs) {
    EXPECT_EQ(onOneLine("models/Gebäude Süd.obj: 100 %"), "models/Gebäude Süd.obj: 100 %");
}

TEST(ConsoleTest, ControlCharactersAreSpelledOut) {
    EXPECT_EQ(onOneLine("a\nb\tc\rd"), "a\\x0ab\\x09c\\x0dd");
    EXPECT_EQ(onOneLine(QString(QChar(0x1B)) + "[31m"), "\\x1b[31m");
    EXPECT_EQ(onOneLine(QString(QChar(0x2028))), "\\x2028");
}

TEST(ConsoleTest, LevelsGoFromMostToFewestMessages) {
    EXPECT_EQ(verbosityLevels(), QStringList({"debug", "info", "warning", "error"}));
}

} // namespace

} // namespace Atelier::Vel::Tool
