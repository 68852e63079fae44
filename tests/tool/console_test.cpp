#include "console.h"

#include <csignal>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtCore/QLoggingCategory>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include "capturedstream.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

TEST(ConsoleTest, OrdinaryTextIsUnchanged) {
    EXPECT_EQ(onOneLine("models/Gebäude Süd.obj: 100 %"), "models/Gebäude Süd.obj: 100 %");
}

TEST(ConsoleTest, ControlCharactersAreSpelledOut) {
    EXPECT_EQ(onOneLine("a\nb\tc\rd"), "a\\x0ab\\x09c\\x0dd");
    EXPECT_EQ(onOneLine(QString(QChar(0x1B)) + "[31m"), "\\x1b[31m");
    EXPECT_EQ(onOneLine(QString(QChar(0x2028))), "\\x2028");
    EXPECT_EQ(onOneLine(QString(QChar(0x2029))), "\\x2029");
    EXPECT_EQ(onOneLine(QString(QChar(0))), "\\x00");
    EXPECT_EQ(onOneLine(QString(QChar(0x7F))), "\\x7f");
}

TEST(ConsoleTest, LevelsAreOrderedByTheNumberOfMessages) {
    EXPECT_EQ(verbosityLevels(), QStringList({"debug", "info", "warning", "error"}));
}

/// What `print` writes to standard error. The message handler stays as it was before.
template<typename Print>
QByteArray printedBy(const Print& print) {
    const QtMessageHandler before = qInstallMessageHandler(nullptr);
    Testing::CapturedStream errors(STDERR_FILENO);
    print();
    qInstallMessageHandler(before);
    return errors.text();
}

QByteArray printedFrom(const QString& level) {
    return printedBy([&level] {
        installMessageLog(level);
        qDebug("one");
        qInfo("two");
        qWarning("three\nlines");
        qCritical("four");
    });
}

TEST(ConsoleTest, MessagesOfALevelAndAboveArePrintedOneToALine) {
    const QByteArray error = "velmodel: error: four\n";
    const QByteArray warning = "velmodel: warning: three\\x0alines\n" + error;
    const QByteArray info = "velmodel: two\n" + warning;
    EXPECT_EQ(printedFrom("error"), error);
    EXPECT_EQ(printedFrom("warning"), warning);
    EXPECT_EQ(printedFrom("info"), info);
    EXPECT_EQ(printedFrom("debug"), "velmodel: debug: one\n" + info);
}

TEST(ConsoleTest, WarningsAreTheDefaultLevel) {
    const QByteArray printed = printedBy([] {
        installMessageLog();
        qInfo("two");
        qWarning("three");
    });
    EXPECT_EQ(printed, "velmodel: warning: three\n");
}

TEST(ConsoleTest, WarningsOfLibpngAreDebugMessages) {
    const QByteArray printed = printedBy([] {
        installMessageLog();
        qWarning("libpng warning: iCCP: known incorrect sRGB profile");
        installMessageLog("debug");
        qWarning("libpng warning: second");
    });
    EXPECT_EQ(printed, "velmodel: debug: libpng warning: second\n");
}

TEST(ConsoleTest, WarningsOfTheProgramAreLeftOutWhereOnlyErrorsAreWanted) {
    const QByteArray printed = printedBy([] {
        installMessageLog("error");
        reportWarning("one");
        installMessageLog();
        reportWarning("two");
    });
    EXPECT_EQ(printed, "velmodel: warning: two\n");
}

TEST(ConsoleTest, ErrorsArePrintedAtEveryLevel) {
    printedFrom("error");
    Testing::CapturedStream errors(STDERR_FILENO);
    reportError("a\tb: 100 %");
    EXPECT_EQ(errors.text(), "velmodel: a\\x09b: 100 %\n");
}

TEST(ConsoleTest, TextGoesToStandardOutputWhole) {
    Testing::CapturedStream output(STDOUT_FILENO);
    const QByteArray text(200000, 'x');
    EXPECT_EQ(writeToStandardOutput(text), QString());
    EXPECT_TRUE(writeToStandardOutput("end\n").isNull());
    EXPECT_EQ(output.text(), text + "end\n");
}

/// A file that accepts a few bytes at a time, up to a maximum.
class SlowFile : public QFile {
public:
    SlowFile(const QString& path, qint64 room) : QFile(path), _room(room) {
        EXPECT_TRUE(open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    }
    QByteArray content() {
        seek(0);
        return readAll();
    }

protected:
    qint64 writeData(const char* data, qint64 length) override {
        const qint64 taken = std::min({length, _room, qint64(3)});
        _room -= taken;
        return QFile::writeData(data, taken);
    }

private:
    qint64 _room;
};

TEST(ConsoleTest, PartialWritesAreContinued) {
    const QTemporaryDir folder;
    SlowFile file(folder.filePath("a"), 100);
    EXPECT_TRUE(writeAll(file, "eleven bytes"));
    EXPECT_EQ(file.content(), "eleven bytes");
    EXPECT_TRUE(writeAll(file, ""));
}

TEST(ConsoleTest, FileThatAcceptsNoMoreBytesIsAFailure) {
    const QTemporaryDir folder;
    SlowFile file(folder.filePath("a"), 11);
    EXPECT_FALSE(writeAll(file, "eleven bytes"));
    EXPECT_EQ(file.content(), "eleven byte");
}

TEST(ConsoleTest, BufferedTextIsWrittenAtOnce) {
    const QTemporaryDir folder;
    QFile file(folder.filePath("a"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(writeAll(file, "text"));
    EXPECT_EQ(QFile(file.fileName()).size(), 4) << "though the file is still open";
}

TEST(ConsoleTest, FailureOfTheBufferIsAFailure) {
    QFile full("/dev/full");
    ASSERT_TRUE(full.open(QIODevice::WriteOnly));
    EXPECT_FALSE(writeAll(full, "text"));
    EXPECT_EQ(full.errorString(), "No space left on device");
}

bool isReadOnlyNullDevice(int stream) {
    char path[64] = {};
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(stream);
    return readlink(link.constData(), path, sizeof path - 1) > 0 && QByteArray(path) == "/dev/null" &&
           (fcntl(stream, F_GETFL) & O_ACCMODE) == O_RDONLY;
}

// Runs in its own process. The bits of `closed` select the standard streams that it closes.
bool standardStreamsArePrepared(int closed) {
    const int other = open("/dev/zero", O_RDWR);
    for (int stream = 0; stream < 3; ++stream)
        if (dup2(other, stream) != stream)
            return false;
    for (int stream = 0; stream < 3; ++stream)
        if ((closed & (1 << stream)) != 0)
            close(stream);
    prepareStandardStreams();
    for (int stream = 0; stream < 3; ++stream)
        if (isReadOnlyNullDevice(stream) != ((closed & (1 << stream)) != 0))
            return false;
    return raise(SIGPIPE) == 0 && raise(SIGXFSZ) == 0;
}

TEST(ConsoleTest, ClosedStandardStreamsAreOccupiedAndOpenOnesKept) {
    for (int closed = 0; closed < 8; ++closed) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            _exit(standardStreamsArePrepared(closed) ? 0 : 1);
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << closed;
    }
}

} // namespace

} // namespace Atelier::Vel::Tool
