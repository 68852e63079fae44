#include "sourceline.h"

#include <gtest/gtest.h>

namespace Atelier::Vel::Tool {

namespace {

struct Shown {
    QString text;
    int mark;

    friend bool operator==(const Shown& a, const Shown& b) { return a.text == b.text && a.mark == b.mark; }
};

void PrintTo(const Shown& shown, std::ostream* stream) {
    *stream << shown.text.toStdString() << " at " << shown.mark;
}

Shown shown(const QString& text, int column, int first = 1, int width = 20) {
    const SourceLine line = sourceLine(text, first, column, width);
    return {line.text, line.mark};
}

TEST(SourceLineTest, MarkIsUnderTheColumn) {
    EXPECT_EQ(shown("v 1 x 2", 5), (Shown{"v 1 x 2", 4}));
    EXPECT_EQ(shown("v 1 x 2", 0), (Shown{"v 1 x 2", -1}));
    EXPECT_EQ(shown("v", 2), (Shown{"v", 1}));
}

TEST(SourceLineTest, TabsReachTheNextStop) {
    EXPECT_EQ(shown("v\t1\tx", 5), (Shown{"v       1       x", 16}));
    EXPECT_EQ(shown("\tv", 1), (Shown{"        v", 0}));
}

TEST(SourceLineTest, LongLinesAreCutAroundTheColumn) {
    const QString text = "0123456789012345678901234567890123456789";
    EXPECT_EQ(shown(text, 1), (Shown{"01234567890123456789...", 0}));
    EXPECT_EQ(shown(text, 21), (Shown{"...01234567890123456789...", 13}));
    EXPECT_EQ(shown(text, 40), (Shown{"...01234567890123456789", 22}));
    EXPECT_EQ(shown("56789", 7, 6), (Shown{"...56789", 4}));
}

TEST(SourceLineTest, ControlCharactersAreEscaped) {
    EXPECT_EQ(shown("a\x1b[31m x", 8), (Shown{"a\\x1b[31m x", 10}));
    EXPECT_EQ(shown(QStringLiteral("a\u202Eb"), 3), (Shown{"a\\x202eb", 7}));
    EXPECT_EQ(printable(QStringLiteral("a\nb\tc\u0085\u2028")), "a\\x0ab\\x09c\\x85\\x2028");
}

TEST(SourceLineTest, WideAndCombiningCharactersMoveTheMark) {
    EXPECT_EQ(shown(QStringLiteral("\u6750\u8CEA x"), 4).mark, 5);
    EXPECT_EQ(shown(QStringLiteral("e\u0301 x"), 4).mark, 2);
    EXPECT_EQ(shown(QStringLiteral("\U0001F600 x"), 4).mark, 3);
}

} // namespace

} // namespace Atelier::Vel::Tool
