// Files that are no models: one line on standard error, exit code 1, and never a hang or a crash.

#include <random>

#include <sys/stat.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <gmock/gmock.h>

#include <velmodel/drawdata.h>

#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"
#include "terminal.h"

namespace Atelier::Vel::Testing {

namespace {

// All commands get the same files.
void expectCannotLoad(const QString& path, const QString& message,
                      const ProgramSurroundings& surroundings = {}, const QStringList& options = {}) {
    const TemporaryFolder folder;
    const QString picture = folder.path("never.png");
    QList<QStringList> commands = {{"info", path}, {"dump", path}, {"render", path, "-o", picture}};
    if (DrawData::canOptimise())
        commands.append({"dump", path, "--optimise"});
    for (const QStringList& arguments : qAsConst(commands)) {
        const ProgramResult result = runProgram(arguments + options, surroundings);
        EXPECT_EQ(result.exitCode, 1) << arguments.join(' ').toStdString();
        EXPECT_EQ(result.errors, QStringLiteral("velmodel: %1\n").arg(message));
        EXPECT_TRUE(result.output.isEmpty());
    }
    EXPECT_FALSE(QFile::exists(picture));
}

TEST(BadInputTest, MissingFile) {
    expectCannotLoad("/no/such/model.obj", "Failed to load OBJ file '/no/such/model.obj': No such file");
}

TEST(BadInputTest, EmptyPath) {
    expectCannotLoad("", "Failed to load OBJ file '': No such file");
}

TEST(BadInputTest, Directory) {
    expectCannotLoad("/tmp", "Failed to load OBJ file '/tmp': Is a directory");
}

TEST(BadInputTest, Device) {
    expectCannotLoad("/dev/zero", "Failed to load OBJ file '/dev/zero': Is not a regular file");
}

TEST(BadInputTest, FifoWithoutAWriter) {
    const TemporaryFolder folder;
    const QString path = folder.path("fifo.obj");
    ASSERT_EQ(mkfifo(qPrintable(path), 0600), 0);
    expectCannotLoad(path, QStringLiteral("Failed to load OBJ file '%1': Is not a regular file").arg(path));
}

TEST(BadInputTest, UnreadableFile) {
    const TemporaryFolder folder;
    const QString path = folder.write("secret.obj", triangleText());
    ASSERT_EQ(chmod(qPrintable(path), 0), 0);
    expectCannotLoad(path, QStringLiteral("Failed to load OBJ file '%1': Permission denied").arg(path),
                     withoutPrivileges());
}

TEST(BadInputTest, FileOfTheKernel) {
    expectCannotLoad("/proc/version", "Failed to load OBJ file '/proc/version': Cannot be read");
}

TEST(BadInputTest, NameWithApostrophesAppearsInTheMessage) {
    expectCannotLoad("/no/Anna's 'ship'.obj",
                     "Failed to load OBJ file '/no/Anna's 'ship'.obj': No such file");
}

TEST(BadInputTest, NameWithALineBreakStaysOnOneLine) {
    expectCannotLoad("/no/such\nmodel.obj", "Failed to load OBJ file '/no/such\\x0amodel.obj': No such file");
}

TEST(BadInputTest, NameWithPercentSignsIsUnchanged) {
    expectCannotLoad("/no/%1%2.obj", "Failed to load OBJ file '/no/%1%2.obj': No such file");
}

TEST(BadInputTest, MissingMaterialLibraryIsNamedBesideTheModel) {
    const TemporaryFolder folder;
    const QString path = folder.write("m.obj", "mtllib gone.mtl\n" + triangleText());
    expectCannotLoad(path, QStringLiteral("%1:1: '%2': no such file").arg(path, folder.path("gone.mtl")), {},
                     {"--exact"});
}

TEST(BadInputTest, MaterialLibraryThatIsAFifo) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(qPrintable(folder.path("m.mtl")), 0600), 0);
    const QString path = folder.write("m.obj", "mtllib m.mtl\n" + triangleText());
    expectCannotLoad(path,
                     QStringLiteral("%1:1: '%2': is not a regular file").arg(path, folder.path("m.mtl")), {},
                     {"--exact"});
}

TEST(BadInputTest, TextureThatIsAFifoCountsAsMissing) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(qPrintable(folder.path("t.png")), 0600), 0);
    folder.write("m.mtl", "newmtl m\nKd 1 1 1\nmap_Kd t.png\n");
    const QString path = folder.write("m.obj", "mtllib m.mtl\nusemtl m\n" + triangleText());
    EXPECT_EQ(runProgram({"info", path}).exitCode, 0);
    const ProgramResult result =
        runProgram({"render", path, "-o", folder.path("m.png"), "--resolution", "32,32"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.errors.contains("t.png' cannot be loaded"));
}

TEST(BadInputTest, ModelWithoutTrianglesIsShownAndIsAnError) {
    const TemporaryFolder folder;
    for (const QByteArray& text :
         {QByteArray(), QByteArray("\x89PNG\r\n\x1A\n"), QByteArray("v 1 2 3\n"), QByteArray("f 1 2 3\n")}) {
        const QString path = folder.write("empty.obj", text);
        const QString error =
            QStringLiteral("velmodel: %1: There is nothing to draw: the model has no triangles\n").arg(path);
        const ProgramResult info = runProgram({"info", path});
        EXPECT_EQ(info.exitCode, 1);
        EXPECT_TRUE(info.errors.endsWith(error)) << info.errors.toStdString();
        EXPECT_TRUE(info.output.startsWith(path.toLocal8Bit()));
        const ProgramResult dump = runProgram({"dump", path});
        EXPECT_EQ(dump.exitCode, 1);
        EXPECT_TRUE(dump.errors.endsWith(error)) << dump.errors.toStdString();
        EXPECT_EQ(QJsonDocument::fromJson(dump.output)["indexCount"], 0);
        const ProgramResult picture = runProgram({"render", path, "-o", folder.path("m.png")});
        EXPECT_EQ(picture.exitCode, 1);
        EXPECT_TRUE(picture.errors.endsWith(error)) << picture.errors.toStdString();
    }
}

TEST(BadInputTest, RandomBytesNeverCrashTheProgram) {
    std::mt19937 random(4711);
    const TemporaryFolder folder;
    const QByteArray words[] = {"v ", "vt ", "vn ",  "f ",   "usemtl ", "mtllib ",
                                "1 ", "-1 ", "2/1 ", "nan ", "1e39 ",   "\n"};
    for (int round = 0; round < 12; ++round) {
        QByteArray text;
        for (int n = 0; n < 2000; ++n)
            text += random() % 8 == 0 ? QByteArray(1, static_cast<char>(random()))
                                      : words[random() % std::size(words)];
        const QString path = folder.write("random.obj", text);
        for (const QStringList& arguments :
             {QStringList{"info", path}, QStringList{"dump", path},
              QStringList{"render", path, "-o", folder.path("m.png"), "--resolution", "16,16"}}) {
            const int exitCode = runProgram(arguments).exitCode;
            EXPECT_TRUE(exitCode == 0 || exitCode == 1)
                << arguments.first().toStdString() << " gave " << exitCode;
        }
    }
}

TEST(ProgressTest, LargeFileShowsABarOnlyOnATerminal) {
    const TemporaryFolder folder;
    const QString large = folder.write("large.obj", triangleText() + QByteArray(17 << 20, '#') + '\n');
    const QString small = folder.write("small.obj", triangleText());
    Terminal terminal;
    ProgramSurroundings surroundings;
    surroundings.errorFile = terminal.name();
    EXPECT_EQ(runProgram({"info", small}, surroundings).exitCode, 0);
    EXPECT_EQ(terminal.text(), QByteArray());
    EXPECT_EQ(runProgram({"info", large}, surroundings).exitCode, 0);
    const QByteArray shown = terminal.text();
    EXPECT_TRUE(shown.startsWith("\r[")) << shown.left(200).toStdString();
    EXPECT_TRUE(shown.contains(" % large.obj"));
    EXPECT_TRUE(shown.endsWith(" \r")) << "the bar is erased at the end";
    EXPECT_EQ(runProgram({"info", large}).errors, QString());
}

} // namespace

} // namespace Atelier::Vel::Testing
