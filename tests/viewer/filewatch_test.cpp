#include "filewatch.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

namespace Atelier::Vel::Viewer::Testing {

class FileWatchTest : public ::testing::Test {
public:
    FileWatchTest() {
        QObject::connect(&watch, &FileWatch::changed, [this] { ++changes; });
    }

    void write(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    QString path(const QString& name) const { return folder.filePath(name); }

    static void handleEvents(int milliseconds) {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < milliseconds)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    bool waitForChange() {
        QElapsedTimer timer;
        timer.start();
        while (changes == 0 && timer.elapsed() < 10'000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return changes > 0;
    }

    QTemporaryDir folder;
    FileWatch watch;
    int changes = 0;
};

TEST_F(FileWatchTest, ReportsAFileThatWasWritten) {
    write("a.obj", "one");
    watch.setFiles({path("a.obj")});
    handleEvents(50);
    write("a.obj", "other");
    EXPECT_TRUE(waitForChange());
}

TEST_F(FileWatchTest, WaitsUntilFilesAreQuiet) {
    write("a.obj", "one");
    watch.setFiles({path("a.obj")});
    QElapsedTimer sinceLastWrite;
    for (int step = 0; step < 4; ++step) {
        write("a.obj", QByteArray(step + 10, 'x'));
        sinceLastWrite.start();
        handleEvents(FileWatch::kQuietMilliseconds / 2);
    }
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(waitForChange());
    EXPECT_GE(sinceLastWrite.elapsed(), FileWatch::kQuietMilliseconds - 5);
    handleEvents(2 * FileWatch::kQuietMilliseconds);
    EXPECT_EQ(changes, 1);
}

TEST_F(FileWatchTest, FollowsFilesThatAreReplacedByRenaming) {
    write("a.obj", "one");
    watch.setFiles({path("a.obj")});
    for (int round = 0; round < 3; ++round) {
        changes = 0;
        write("new", QByteArray(round + 5, 'y'));
        ASSERT_TRUE(QFile::remove(path("a.obj")) && QFile::rename(path("new"), path("a.obj")));
        EXPECT_TRUE(waitForChange()) << "round " << round;
        changes = 0;
        write("a.obj", QByteArray(round + 20, 'z')); // which changes nothing in the folder
        EXPECT_TRUE(waitForChange()) << "round " << round;
    }
}

TEST_F(FileWatchTest, ReportsEachOfSeveralFiles) {
    const QStringList names{"a.obj", "a.mtl", "a.png"};
    QStringList paths;
    for (const QString& name : names) {
        write(name, "one");
        paths.append(path(name));
    }
    watch.setFiles(paths);
    for (const QString& name : names) {
        changes = 0;
        write(name, "other");
        EXPECT_TRUE(waitForChange()) << name.toStdString();
    }
}

TEST_F(FileWatchTest, ReportsAFileThatDidNotExist) {
    watch.setFiles({path("a.mtl")});
    handleEvents(50);
    write("a.mtl", "new");
    EXPECT_TRUE(waitForChange());
}

TEST_F(FileWatchTest, IgnoresOtherFilesOfTheFolder) {
    write("a.obj", "one");
    watch.setFiles({path("a.obj")});
    write("b.obj", "other");
    handleEvents(2 * FileWatch::kQuietMilliseconds);
    EXPECT_EQ(changes, 0);
}

TEST_F(FileWatchTest, AnEmptyListEndsTheWatch) {
    write("a.obj", "one");
    watch.setFiles({path("a.obj")});
    write("a.obj", "other");
    handleEvents(50);
    watch.setFiles({});
    handleEvents(2 * FileWatch::kQuietMilliseconds);
    EXPECT_EQ(changes, 0);
}

} // namespace Atelier::Vel::Viewer::Testing
