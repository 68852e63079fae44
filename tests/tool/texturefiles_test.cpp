#include "texturefiles.h"

#include <QtCore/QDir>

#include <gmock/gmock.h>

#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Tool {

namespace {

using Testing::TemporaryFolder;

TEST(TextureFilesTest, ExistingFileKeepsItsPath) {
    const TemporaryFolder folder;
    const QString path = folder.write("a.png", "");
    EXPECT_EQ(textureFile(path), path);
}

TEST(TextureFilesTest, BackslashesAreReadAsSlashesIfThatFileExists) {
    const TemporaryFolder folder;
    ASSERT_TRUE(QDir(folder.path("")).mkpath("maps/wood"));
    const QString path = folder.write("maps/wood/a.png", "");
    EXPECT_EQ(textureFile(folder.path("maps\\wood\\a.png")), path);
    EXPECT_EQ(textureFile(folder.path("maps\\wood/a.png")), path);
}

TEST(TextureFilesTest, BackslashMayBePartOfAName) {
    const TemporaryFolder folder;
    ASSERT_TRUE(QDir(folder.path("")).mkpath("maps"));
    folder.write("maps/a.png", "");
    const QString path = folder.write("maps\\a.png", "");
    EXPECT_EQ(textureFile(path), path);
}

TEST(TextureFilesTest, MissingFileKeepsItsSpelling) {
    const TemporaryFolder folder;
    EXPECT_EQ(textureFile(folder.path("maps\\a.png")), folder.path("maps\\a.png"));
}

} // namespace

} // namespace Atelier::Vel::Tool
