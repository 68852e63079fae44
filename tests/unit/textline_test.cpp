#include "import/text/textline.h"

#include <gtest/gtest.h>

namespace Atelier::Vel {

namespace {

int columnOf(const char* part, const char* line) {
    return TextLine{"file", 1, QString::fromUtf8(line)}.columnOf(QString::fromUtf8(part));
}

} // namespace

TEST(TextLineTest, ColumnIsThatOfTheWordBehindTheKeyword) {
    EXPECT_EQ(columnOf("red", "usemtl red"), 8);
    EXPECT_EQ(columnOf("b.mtl", "mtllib ab.mtl b.mtlx b.mtl"), 22);
    EXPECT_EQ(columnOf("f", " \tf 1 2 f"), 9);
    EXPECT_EQ(columnOf("f", "f"), 1);
    EXPECT_EQ(columnOf("my red", "usemtl \"my red\" # my red"), 9);
    EXPECT_EQ(columnOf("it's", "newmtl it's"), 8);
}

TEST(TextLineTest, ColumnOfTextThatIsNoWordIsThatOfTheOperands) {
    EXPECT_EQ(columnOf("", "usemtl  red"), 9);
    EXPECT_EQ(columnOf("red", "usemtl\tdark_red"), 8);
    EXPECT_EQ(columnOf("", "  usemtl  "), 3) << "without operands, that of the keyword";
}

TEST(TextLineTest, ColumnCountsCharacters) {
    EXPECT_EQ(columnOf("x", "map_Kd \xC3\xA9\xE8\xB5\xA4\xF0\x9F\x98\x80 x"), 12);
    EXPECT_EQ(columnOf("x", "map_Kd\t\xC2\xA0x"), 9);
}

TEST(TextLineTest, LineWithoutTextHasNoColumn) {
    EXPECT_EQ(TextLine({"file"}).columnOf("file"), 0);
}

} // namespace Atelier::Vel
