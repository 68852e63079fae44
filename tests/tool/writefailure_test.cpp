// Outputs that cannot be written: exit code 4, the cause in one line, and no partial file.

#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

/// A reason why standard output cannot be written, and the system's message.
struct ClosedOutput {
    const char* name;
    void (*close)();
    const char* cause;
};

void leaveWithoutReader() {
    int ends[2] = {-1, -1};
    if (pipe(ends) == 0) {
        close(ends[0]);
        dup2(ends[1], STDOUT_FILENO);
    }
}

void fillUp() {
    dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
}

void closeOutput() {
    close(STDOUT_FILENO);
}

void closeInputAndOutput() {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
}

void giveReadOnly() {
    dup2(open("/dev/null", O_RDONLY), STDOUT_FILENO);
}

constexpr ClosedOutput kClosedOutputs[] = {
    {"PipeWithoutReader", leaveWithoutReader, "Broken pipe"},
    {"FullDevice", fillUp, "No space left on device"},
    {"Closed", closeOutput, "Bad file descriptor"},
    {"ClosedWithInput", closeInputAndOutput, "Bad file descriptor"},
    {"ReadOnly", giveReadOnly, "Bad file descriptor"},
};

/// A command that writes to standard output, and the start of its error message.
struct Output {
    const char* name;
    QStringList arguments;
    const char* complaint;
};

QList<Output> outputs() {
    const QString gear = samplePath(QStringLiteral("gear"));
    return {
        {"info", {"info", gear}, "standard output: The summary cannot be written"},
        {"json", {"info", "--json", gear}, "standard output: The summary cannot be written"},
        {"dump", {"dump", gear}, "samples/gear/gear.obj: The dump cannot be written"},
        {"render", {"render", gear, "-o", "-", "--resolution", "16,16"}, "-: The picture cannot be written"}};
}

class ClosedOutputTest : public testing::TestWithParam<ClosedOutput> {};

TEST_P(ClosedOutputTest, IsExitCodeFourAndTheCause) {
    for (const Output& output : outputs()) {
        ProgramSurroundings surroundings;
        surroundings.beforeStart = GetParam().close;
        const ProgramResult result = runProgram(output.arguments, surroundings);
        EXPECT_EQ(result.exitCode, 4) << output.name;
        EXPECT_EQ(result.errors, QStringLiteral("velmodel: %1: %2\n")
                                     .arg(QLatin1String(output.complaint), QLatin1String(GetParam().cause)));
    }
}

TEST_P(ClosedOutputTest, UnwritableErrorMessagesDoNotChangeTheExitCode) {
    ProgramSurroundings surroundings;
    surroundings.beforeStart = [] {
        GetParam().close();
        if (dup2(STDOUT_FILENO, STDERR_FILENO) == -1)
            close(STDERR_FILENO);
    };
    for (const Output& output : outputs())
        EXPECT_EQ(runProgram(output.arguments, surroundings).exitCode, 4) << output.name;
    EXPECT_EQ(runProgram({"dump", "/no/such.obj"}, surroundings).exitCode, 1);
    EXPECT_EQ(runProgram({"nonsense"}, surroundings).exitCode, 2);
}

std::string nameOf(const testing::TestParamInfo<ClosedOutput>& information) {
    return information.param.name;
}

INSTANTIATE_TEST_SUITE_P(Outputs, ClosedOutputTest, testing::ValuesIn(kClosedOutputs), nameOf);

/// Pictures in a separate folder.
class PictureFileTest : public testing::Test {
protected:
    QStringList arguments() const {
        return {"render",       samplePath(QStringLiteral("showpiece")),
                "-o",           _folder.path("a.png"),
                "--resolution", "320,240"};
    }
    QStringList files() const { return QDir(_folder.path(QString())).entryList(QDir::Files | QDir::Hidden); }
    QString complaint(const QString& name, const char* cause) const {
        return QStringLiteral("velmodel: %1: The picture cannot be written: %2\n")
            .arg(_folder.path(name), QLatin1String(cause));
    }

    TemporaryFolder _folder;
};

/// The maximum length of files: simulates a disk that fills up during a write.
ProgramSurroundings fullDisk() {
    ProgramSurroundings surroundings;
    surroundings.beforeStart = [] {
        constexpr rlimit kLimit = {100, 100};
        setrlimit(RLIMIT_FSIZE, &kLimit);
    };
    return surroundings;
}

TEST_F(PictureFileTest, FullDiskLeavesNoFile) {
    const ProgramResult result = runProgram(arguments(), fullDisk());
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errors, complaint("a.png", "File too large"));
    EXPECT_EQ(files(), QStringList());
}

TEST_F(PictureFileTest, DiskThatFillsUpUnderStandardOutputIsReportedAsTheCause) {
    ProgramSurroundings surroundings = fullDisk();
    surroundings.outputFile = _folder.path("output");
    for (const Output& output : outputs()) {
        const ProgramResult result = runProgram(output.arguments, surroundings);
        EXPECT_EQ(result.exitCode, 4) << output.name;
        EXPECT_EQ(result.errors,
                  QStringLiteral("velmodel: %1: File too large\n").arg(QLatin1String(output.complaint)));
    }
}

TEST_F(PictureFileTest, FullDiskLeavesAnEarlierPictureAlone) {
    _folder.write("a.png", "an earlier picture");
    EXPECT_EQ(runProgram(arguments(), fullDisk()).exitCode, 4);
    EXPECT_EQ(files(), QStringList("a.png"));
    QFile file(_folder.path("a.png"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "an earlier picture");
}

TEST_F(PictureFileTest, TurntableEndsAtTheFirstPictureThatCannotBeWritten) {
    ASSERT_TRUE(QDir(_folder.path(QString())).mkdir("a-002.png"));
    const ProgramResult result = runProgram(arguments() << "--turntable"
                                                        << "4");
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_TRUE(result.errors.contains(_folder.path("a-002.png"))) << result.errors.toStdString();
    EXPECT_EQ(files(), QStringList({"a-000.png", "a-001.png"}));
    EXPECT_EQ(QImage(_folder.path("a-001.png")).size(), QSize(320, 240));
}

TEST_F(PictureFileTest, UnwritableFolderIsExitCodeFour) {
    ASSERT_EQ(chmod(qPrintable(_folder.path(QString())), 0555), 0);
    const ProgramResult result = runProgram(arguments(), withoutPrivileges());
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errors, complaint("a.png", "Permission denied"));
    EXPECT_EQ(files(), QStringList());
    ASSERT_EQ(chmod(qPrintable(_folder.path(QString())), 0755), 0);
}

TEST_F(PictureFileTest, UnwritableFileIsUnchanged) {
    const QString file = _folder.write("a.png", "an earlier picture");
    ASSERT_EQ(chmod(qPrintable(file), 0444), 0);
    const ProgramResult result = runProgram(arguments(), withoutPrivileges());
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errors,
              complaint("a.png", qPrintable(QStringLiteral("Existing file %1 is not writable").arg(file))));
    EXPECT_EQ(QFile(file).size(), 18);
    EXPECT_EQ(files(), QStringList("a.png"));
}

} // namespace

} // namespace Atelier::Vel::Testing
