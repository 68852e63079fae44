#include "import/mtl/mapoptions.h"

#include <gtest/gtest.h>

namespace Atelier::Vel {

namespace {

QString nameIn(const QString& text) {
    return parseMapOptions(text).name;
}

} // namespace

TEST(MapOptionsTest, OptionsTakeTheirNumbersOrTheirWord) {
    for (const char* options : {"-s 2",           "-s 2 2",    "-s 2 2 1",   "-o 0.5 -1 1e-3",
                                "-t 1 1 1",       "-mm 0 1",   "-bm 0.5",    "-boost 2",
                                "-texres 512",    "-clamp on", "-clamp off", "-blendu off",
                                "-blendv on",     "-cc on",    "-imfchan r", "-type sphere",
                                "-type cube_top", "-S 1 1 1",  "-CLAMP ON",  "-s 1 1 1 -o 0 0 0 -clamp on",
                                "-clamp",         "-s"})
        EXPECT_EQ(nameIn(QString::fromLatin1(options) + " tex/my wood.png"), "tex/my wood.png") << options;
}

TEST(MapOptionsTest, NumberBeyondThoseOfAnOptionBeginsTheName) {
    EXPECT_EQ(nameIn("-s 1 1 1 2 wood.png"), "2 wood.png");
    EXPECT_EQ(nameIn("-bm 1 2 wood.png"), "2 wood.png");
    EXPECT_EQ(nameIn("-mm 0 1 2.png"), "2.png");
}

TEST(MapOptionsTest, WordThatAnOptionDoesNotKnowBeginsTheName) {
    EXPECT_EQ(nameIn("-clamp wood one.png"), "wood one.png");
    EXPECT_EQ(nameIn("-imfchan rg wood.png"), "rg wood.png");
    EXPECT_EQ(nameIn("-blendu o wood.png"), "o wood.png");
}

TEST(MapOptionsTest, LastWordIsNeverAnOption) {
    EXPECT_EQ(nameIn("-s 1 1 1"), "1");
    EXPECT_EQ(nameIn("-s 1 1 1  "), "1  ");
    EXPECT_EQ(nameIn("-clamp on"), "on");
    EXPECT_EQ(nameIn("-type sphere"), "sphere");
    EXPECT_EQ(nameIn("-s"), "-s");
    EXPECT_EQ(nameIn("-s 2 -s"), "-s");
}

TEST(MapOptionsTest, NamesWithoutOptionsAreKept) {
    for (const char* name : {"wood.png", "my wood.png", "-x wood.png", "-sx 1.png", "1 2 3.png", ""})
        EXPECT_EQ(nameIn(name), name);
    EXPECT_EQ(nameIn("wood.png -s 1 1 1"), "wood.png -s 1 1 1");
}

TEST(MapOptionsTest, OffsetAndScaleAreRead) {
    const MapOptions none = parseMapOptions("wood.png");
    EXPECT_EQ(none.offset[0], 0);
    EXPECT_EQ(none.offset[1], 0);
    EXPECT_EQ(none.scale[0], 1);
    EXPECT_EQ(none.scale[1], 1);
    const MapOptions all = parseMapOptions("-s 2 3 4 -bm 7 -t 8 8 8 -mm 5 6 -o 0.5 -1 9 wood.png");
    EXPECT_EQ(all.scale[0], 2);
    EXPECT_EQ(all.scale[1], 3);
    EXPECT_EQ(all.offset[0], 0.5F);
    EXPECT_EQ(all.offset[1], -1);
    const MapOptions one = parseMapOptions("-s 2 -o 3 wood.png");
    EXPECT_EQ(one.scale[0], 2);
    EXPECT_EQ(one.scale[1], 1) << "a number that is left out keeps its default";
    EXPECT_EQ(one.offset[0], 3);
    EXPECT_EQ(one.offset[1], 0);
}

} // namespace Atelier::Vel
