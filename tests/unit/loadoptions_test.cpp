#include <velmodel/loadoptions.h>

#include <gtest/gtest.h>

namespace Atelier::Vel {

TEST(LoadOptionsTest, RepairsAreOffByDefaultAndOnInForgivingOptions) {
    const LoadOptions forgiving = LoadOptions::forgiving();
    for (bool LoadRepairs::*const repair :
         {&LoadRepairs::skipMissingLibraries, &LoadRepairs::defineMaterials, &LoadRepairs::matchNames,
          &LoadRepairs::parseMapOptions, &LoadRepairs::joinContinuedLines, &LoadRepairs::dropUnplacedFaces}) {
        EXPECT_FALSE(LoadRepairs().*repair);
        EXPECT_TRUE(forgiving.repairs.*repair);
    }
    EXPECT_EQ(forgiving.files, LoadOptions::Files::Anywhere);
}

} // namespace Atelier::Vel
