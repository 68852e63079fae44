#include "folderfiles.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Viewer::Testing {

class FolderFilesTest : public ::testing::Test {
public:
    void make(const QString& name) const {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    QString neighbour(const QString& name, int steps) const {
        return QFileInfo(neighbourOf(folder.filePath(name), steps)).fileName();
    }

    QTemporaryDir folder;
};

TEST_F(FolderFilesTest, FilesFollowInTheOrderOfTheirNumbers) {
    for (const char* name : {"part10.obj", "Part2.OBJ", "part1.obj", "part3.mtl", "notes.txt"})
        make(name);
    EXPECT_EQ(neighbour("part1.obj", 1), "Part2.OBJ");
    EXPECT_EQ(neighbour("Part2.OBJ", 1), "part10.obj");
    EXPECT_EQ(neighbour("part10.obj", 1), "part1.obj") << "after the last one comes the first";
    EXPECT_EQ(neighbour("part1.obj", -1), "part10.obj");
    EXPECT_EQ(neighbour("part1.obj", -5), "Part2.OBJ");
}

TEST_F(FolderFilesTest, NamesAreOrderedByCaseOnlyWhenTheyAreEqual) {
    const QStringList order{"A.obj",  "a.obj",   "a1.obj", "a1b.obj", "a01c.obj",
                            "a9.obj", "a10.obj", "B.obj",  "b.obj"};
    for (const QString& name : order)
        make(name);
    for (int file = 0; file < order.size(); ++file)
        EXPECT_EQ(neighbour(order[file], 1), order[(file + 1) % order.size()]) << order[file].toStdString();
}

TEST_F(FolderFilesTest, ADeletedFileStillHasAPlace) {
    make("a.obj");
    make("c.obj");
    EXPECT_EQ(neighbour("b.obj", 1), "c.obj");
    EXPECT_EQ(neighbour("b.obj", -1), "a.obj");
}

TEST_F(FolderFilesTest, ALoneFileHasNoNeighbour) {
    make("a.obj");
    QDir(folder.path()).mkdir("folder.obj");
    EXPECT_TRUE(neighbourOf(folder.filePath("a.obj"), 1).isNull());
}

} // namespace Atelier::Vel::Viewer::Testing
