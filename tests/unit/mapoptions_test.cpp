#include "import/mtl/mapoptions.h"

#include <gtest/gtest.h>

namespace Atelier::Vel {

TEST(MapOptionsTest, OptionsTakeTheirNumbersOrTheirWord) {
    for (const char* options : {"-s 2",           "-s 2 2",    "-s 2 2 1",   "-o 0.5 -1 1e-3",
                                "-t 1 1 1",       "-mm 0 1",   "-bm 0.5",    "-boost 2",
                                "-texres 512",    "-clamp on", "-clamp off", "-blendu off",
                                "-blendv on",     "-cc on",    "-imfchan r", "-type sphere",
                                "-type cube_top", "-S 1 1 1",  "-CLAMP ON",  "-s 1 1 1 -o 0 0 0 -clamp on",
                                "-clamp",         "-s"})
        EXPECT_EQ(withoutMapOptions(QString::fromLatin1(options) + " tex/my wood.png"), "tex/my wood.png")
            << options;
}

TEST(MapOptionsTest, NumberBeyondThoseOfAnOptionBeginsTheName) {
    EXPECT_EQ(withoutMapOptions("-s 1 1 1 2 wood.png"), "2 wood.png");
    EXPECT_EQ(withoutMapOptions("-bm 1 2 wood.png"), "2 wood.png");
    EXPECT_EQ(withoutMapOptions("-mm 0 1 2.png"), "2.png");
}

TEST(MapOptionsTest, WordThatAnOptionDoesNotKnowBeginsTheName) {
    EXPECT_EQ(withoutMapOptions("-clamp wood one.png"), "wood one.png");
    EXPECT_EQ(withoutMapOptions("-imfchan rg wood.png"), "rg wood.png");
    EXPECT_EQ(withoutMapOptions("-blendu o wood.png"), "o wood.png");
}

TEST(MapOptionsTest, LastWordIsNeverAnOption) {
    EXPECT_EQ(withoutMapOptions("-s 1 1 1"), "1");
    EXPECT_EQ(withoutMapOptions("-s 1 1 1  "), "1  ");
    EXPECT_EQ(withoutMapOptions("-clamp on"), "on");
    EXPECT_EQ(withoutMapOptions("-type sphere"), "sphere");
    EXPECT_EQ(withoutMapOptions("-s"), "-s");
    EXPECT_EQ(withoutMapOptions("-s 2 -s"), "-s");
}

TEST(MapOptionsTest, NamesWithoutOptionsAreKept) {
    for (const char* name : {"wood.png", "my wood.png", "-x wood.png", "-sx 1.png", "1 2 3.png", ""})
        EXPECT_EQ(withoutMapOptions(name), name);
    EXPECT_EQ(withoutMapOptions("wood.png -s 1 1 1"), "wood.png -s 1 1 1");
}

} // namespace Atelier::Vel
