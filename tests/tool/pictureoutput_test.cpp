#include "pictureoutput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

QImage smallPicture() {
    QImage picture(3, 2, QImage::Format_RGBA8888);
    picture.fill(QColor(10, 20, 30, 40));
    return picture;
}

TEST(PictureOutputTest, FormatFollowsTheEndingOfTheName) {
    EXPECT_TRUE(canWritePicture("a.png"));
    EXPECT_TRUE(canWritePicture("a.b.PNG"));
    EXPECT_TRUE(canWritePicture("a.jpg"));
    EXPECT_TRUE(canWritePicture("-"));
    EXPECT_FALSE(canWritePicture("a"));
    EXPECT_FALSE(canWritePicture("png"));
    EXPECT_FALSE(canWritePicture("a.txt"));
    EXPECT_FALSE(canWritePicture(""));
}

TEST(PictureOutputTest, PngKeepsColoursAndOpacity) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.png");
    EXPECT_EQ(writePicture(smallPicture(), path), QString());
    EXPECT_EQ(QImage(path).convertToFormat(QImage::Format_RGBA8888), smallPicture());
}

TEST(PictureOutputTest, OldPictureIsReplaced) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.png");
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write(QByteArray(100000, 'x'));
    old.close();
    EXPECT_EQ(writePicture(smallPicture(), path), QString());
    EXPECT_EQ(QImage(path).size(), QSize(3, 2));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("a.png"));
}

TEST(PictureOutputTest, MissingFolderIsTheCause) {
    EXPECT_EQ(writePicture(smallPicture(), "/nonexistent/a.png"), "No such file or directory");
}

TEST(PictureOutputTest, FolderInPlaceOfAFileIsAFailure) {
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkdir("a.png"));
    EXPECT_FALSE(writePicture(smallPicture(), folder.filePath("a.png")).isEmpty());
    EXPECT_TRUE(QDir(folder.filePath("a.png")).exists());
}

TEST(PictureOutputTest, PipeIsWrittenToAndStaysAPipe) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("pipe.png");
    ASSERT_EQ(mkfifo(qPrintable(path), 0600), 0);
    const int reader = open(qPrintable(path), O_RDWR | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(writePicture(smallPicture(), path), QString());
    QByteArray bytes(4096, '\0');
    const ssize_t count = read(reader, bytes.data(), static_cast<std::size_t>(bytes.size()));
    close(reader);
    bytes.truncate(int(count));
    EXPECT_EQ(QImage::fromData(bytes, "PNG").size(), QSize(3, 2));
    struct stat information = {};
    ASSERT_EQ(stat(qPrintable(path), &information), 0);
    EXPECT_TRUE(S_ISFIFO(information.st_mode));
}

TEST(PictureOutputTest, DeviceIsWrittenToAndItsFailureReported) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("full.png");
    ASSERT_TRUE(QFile::link("/dev/full", path));
    EXPECT_EQ(writePicture(smallPicture(), path), "No space left on device");
    EXPECT_EQ(QFile::symLinkTarget(path), "/dev/full");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
              QStringList("full.png"));
}

TEST(PictureOutputTest, EndingsInCapitalsNameTheirFormat) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("A.BMP");
    EXPECT_EQ(writePicture(smallPicture(), path), QString());
    EXPECT_EQ(QImage(path, "BMP").size(), QSize(3, 2));
}

TEST(PictureOutputTest, PictureThatCannotBeEncodedLeavesNoFile) {
    const QTemporaryDir folder;
    EXPECT_EQ(writePicture(QImage(), folder.filePath("a.png")), "Image is empty");
    EXPECT_EQ(writePicture(smallPicture(), folder.filePath("a.xyz")), "Unsupported image format");
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
}

TEST(PictureOutputTest, FramesAreNumberedBeforeTheEnding) {
    EXPECT_EQ(framePath("turn.png", 7, 90), "turn-007.png");
    EXPECT_EQ(framePath("/a.b/turn.round.jpg", 0, 1), "/a.b/turn.round-000.jpg");
    EXPECT_EQ(framePath("t.png", 999, 1000), "t-999.png");
    EXPECT_EQ(framePath("t.png", 12, 1001), "t-0012.png");
    EXPECT_EQ(framePath("t.png", 1000, 1001), "t-1000.png");
    EXPECT_EQ(framePath("t.png", 9999, 10000), "t-9999.png");
    EXPECT_EQ(framePath("t.png", 0, 10001), "t-00000.png");
    EXPECT_EQ(framePath("t.png", 99999, 100000), "t-99999.png");
}

} // namespace

} // namespace Atelier::Vel::Tool
