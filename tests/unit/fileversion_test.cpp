#include "files/fileversion.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

namespace Atelier::Vel {

namespace {

class FileVersionTest : public testing::Test {
protected:
    QString path(const char* name) const { return _directory.filePath(QString::fromLatin1(name)); }
    QString write(const char* name, const QByteArray& content) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path(name);
    }
    static FileVersion version(const QString& name) {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return versionOf(file).value_or(FileVersion());
    }

private:
    QTemporaryDir _directory;
};

} // namespace

TEST_F(FileVersionTest, MatchesTheFilesSystemMetadata) {
    const QString name = write("a", "content");
    const timespec times[] = {{1, 2}, {1'000'000'003, 4}};
    ASSERT_EQ(utimensat(AT_FDCWD, qPrintable(name), times, 0), 0);
    struct stat status {};
    ASSERT_EQ(stat(qPrintable(name), &status), 0);
    EXPECT_EQ(version(name), FileVersion(status.st_dev, status.st_ino, 7, 1'000'000'003, 4,
                                         status.st_ctim.tv_sec, status.st_ctim.tv_nsec));
}

TEST_F(FileVersionTest, FileThatIsNotOpenHasNone) {
    QFile file(write("a", "content"));
    EXPECT_FALSE(versionOf(file).has_value());
    QFile resource(":/missing");
    EXPECT_FALSE(versionOf(resource).has_value());
}

} // namespace Atelier::Vel
