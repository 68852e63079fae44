// The output of `velmodel info`. These tests need no OpenGL.

#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

#include <gmock/gmock.h>

#include <velmodel/drawdata.h>

#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

QJsonValue informed(const QStringList& arguments, int exitCode = 0) {
    const ProgramResult result = runProgram(QStringList{"info", "--json"} + arguments);
    EXPECT_EQ(result.exitCode, exitCode) << result.errors.toStdString();
    return QJsonDocument::fromJson(result.output).array();
}

QStringList notes(const QByteArray& model, int exitCode = 0) {
    const TemporaryFolder folder;
    QStringList result;
    const QJsonValue all = informed({"--exact", folder.write("m.obj", model)}, exitCode);
    for (const QJsonValue note : all[0]["notes"].toArray())
        result.append(note.toString());
    return result;
}

TEST(InfoTest, CountsWhatIsUploaded) {
    const QJsonObject info = informed({samplePath("vase")})[0].toObject();
    EXPECT_EQ(info["file"], samplePath("vase"));
    EXPECT_EQ(info["corners"], 1408);
    EXPECT_EQ(info["vertices"], 429);
    EXPECT_EQ(info["faces"], 352);
    EXPECT_EQ(info["triangles"], 704);
    EXPECT_EQ(info["draws"], 1);
    EXPECT_EQ(info["commands"], 2);
    EXPECT_EQ(info["attributes"].toArray().size(), 3);
    EXPECT_EQ(info["bytesRead"], QFileInfo(absoluteSamplePath("vase")).size());
    EXPECT_GT(info["seconds"].toDouble(), 0);
    EXPECT_GT(info["megabytesPerSecond"].toDouble(), 0);
    EXPECT_EQ(info["notes"], QJsonArray());
}

TEST(InfoTest, BytesOnTheGPUEqualTheSizeOfTheBuffers) {
    const TemporaryFolder folder;
    const QJsonObject info = informed({folder.write("t.obj", triangleText())})[0].toObject();
    // Three indices, three positions and normals, a command, a material and an instance.
    EXPECT_EQ(info["gpuBytes"].toInt(), 3 * 2 + 3 * 24 + 20 + 96 + 128);
}

TEST(InfoTest, BoundsEncloseThePositions) {
    const QJsonObject bounds = informed({samplePath("oddities")})[0]["bounds"].toObject();
    EXPECT_EQ(bounds["minimum"], (QJsonArray{-1, -1, -1}));
    EXPECT_EQ(bounds["maximum"], (QJsonArray{1, 2.2, 1}));
}

TEST(InfoTest, TexturesAreFoundMissingOrUnreadable) {
    const TemporaryFolder folder;
    folder.write("broken.png", "no picture");
    folder.write("m.mtl", QByteArray("newmtl m\nmap_Kd " VELMODEL_SOURCE_DIR "/samples/vase/glaze.png\n"
                                     "map_Ks broken.png\nmap_Ns none.png\n"));
    const QString path = folder.write("m.obj", "mtllib m.mtl\nusemtl m\n" + triangleText());
    const QJsonArray textures = informed({path})[0]["materials"][0]["textures"].toArray();
    ASSERT_EQ(textures.size(), 3);
    EXPECT_EQ(textures[0], (QJsonObject{{"map", "map_Kd"},
                                        {"path", VELMODEL_SOURCE_DIR "/samples/vase/glaze.png"},
                                        {"status", "found"},
                                        {"width", 128},
                                        {"height", 128}}));
    EXPECT_EQ(textures[1]["status"], "unreadable");
    EXPECT_EQ(textures[2]["status"], "missing");
    const QString text = QString::fromUtf8(runProgram({"info", path}).output);
    EXPECT_TRUE(text.contains("glaze.png (128 x 128)\n"));
    EXPECT_TRUE(text.contains("broken.png (unreadable)\n"));
    EXPECT_TRUE(text.contains("none.png (missing)\n"));
}

TEST(InfoTest, BackslashesInTexturePathsAreSeparators) {
    const TemporaryFolder folder;
    folder.write("m.mtl", QByteArray("newmtl m\nmap_Kd " VELMODEL_SOURCE_DIR "\\samples\\vase\\glaze.png\n"));
    const QString path = folder.write("m.obj", "mtllib m.mtl\nusemtl m\n" + triangleText());
    EXPECT_EQ(informed({path})[0]["materials"][0]["textures"][0]["status"], "found");
}

TEST(InfoTest, ReportsDroppedFaces) {
    EXPECT_EQ(
        notes(triangleText() + "f 1 x 3\n"),
        QStringList("1 face was dropped, because one of its corners is not an integer or has no position."));
    EXPECT_EQ(
        notes(triangleText() + "f 1 x 3\nf 1 2.0 3\n"),
        QStringList(
            "2 faces were dropped, because one of their corners is not an integer or has no position."));
}

TEST(InfoTest, ReportsFacesWithoutAMaterial) {
    EXPECT_EQ(notes(triangleText() + "usemtl gone\nf 1 2 3\n"),
              QStringList("1 face belongs to no material, because its material was unknown when it was read. "
                          "It is not drawn."));
    EXPECT_EQ(notes(triangleText() + "usemtl gone\nf 1 2 3\nf 3 2 1\n"),
              QStringList("2 faces belong to no material, because theirs was unknown when they were read. "
                          "They are not drawn."));
}

TEST(InfoTest, ReportsFacesThatCouldNotBeTriangulated) {
    EXPECT_EQ(notes(triangleText() + "f 1 2\n"),
              QStringList("1 face could not be cut into triangles. It is not drawn."));
    EXPECT_EQ(notes(triangleText() + "f 1 2\nf 1\n"),
              QStringList("2 faces could not be cut into triangles. They are not drawn."));
}

TEST(InfoTest, ReportsCornersWithoutAValue) {
    EXPECT_EQ(notes(triangleText() + "f 1 2 9\n"),
              QStringList("1 position, normal or texture coordinate of a corner is not named or does not "
                          "exist. It is zero."));
    EXPECT_EQ(
        notes(triangleText() + "f 1 8 9\n"),
        QStringList(
            "2 positions, normals or texture coordinates of corners are not named or do not exist. They are "
            "zero."));
}

TEST(InfoTest, ReportsThatThereIsNothingToDraw) {
    EXPECT_EQ(notes("v 1 2 3\n", 1), QStringList("There is nothing to draw: the model has no triangles."));
}

TEST(InfoTest, NamesWithPercentSignsAreUnchanged) {
    const TemporaryFolder folder;
    folder.write("m.mtl", "newmtl 100%1%2\nmap_Kd %1%3.png\n");
    const QString path = folder.write("%1 %2.obj", "mtllib m.mtl\nusemtl 100%1%2\n" + triangleText());
    const QString text = QString::fromUtf8(runProgram({"info", path}).output);
    EXPECT_TRUE(text.startsWith(path + "\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("    100%1%2: 1 triangle\n")) << text.toStdString();
    EXPECT_TRUE(text.contains(folder.path("%1%3.png") + " (missing)\n")) << text.toStdString();
}

TEST(InfoTest, SeveralFilesAreReportedInTheirOrder) {
    const QJsonValue all = informed({samplePath("gear"), samplePath("stairs")});
    ASSERT_EQ(all.toArray().size(), 2);
    EXPECT_EQ(all[0]["file"], samplePath("gear"));
    EXPECT_EQ(all[1]["file"], samplePath("stairs"));
    const QByteArray text = runProgram({"info", samplePath("gear"), samplePath("stairs")}).output;
    EXPECT_TRUE(text.contains("\n\nsamples/stairs/stairs.obj\n"));
}

TEST(InfoTest, BadFileIsReportedAndTheOthersAreSummarised) {
    const ProgramResult result =
        runProgram({"info", "--json", samplePath("gear"), "/no/such.obj", samplePath("vase")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "velmodel: Failed to load OBJ file '/no/such.obj': No such file\n");
    EXPECT_EQ(QJsonDocument::fromJson(result.output).array().size(), 2);
}

TEST(InfoTest, OutputThatCannotBeWrittenIsExitCodeFour) {
    ProgramSurroundings surroundings;
    surroundings.outputFile = "/dev/full";
    const ProgramResult result = runProgram({"info", samplePath("gear")}, surroundings);
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errors,
              "velmodel: standard output: The summary cannot be written: No space left on device\n");
}

TEST(InfoTest, VerbosityChoosesTheMessages) {
    const QStringList info = {"info", samplePath("oddities")};
    EXPECT_TRUE(runProgram(info).errors.contains("velmodel: warning: "));
    EXPECT_EQ(runProgram(info + QStringList{"--verbose", "error"}).errors, QString());
    EXPECT_TRUE(runProgram(info + QStringList{"--verbose", "debug"}).errors.contains("velmodel: debug: "));
    EXPECT_TRUE(runProgram(QStringList{"--verbose", "debug"} + info).errors.contains("velmodel: debug: "));
}

/// The summary of a sample without its time.
QString timeless(const QString& sample, const ProgramSurroundings& surroundings) {
    const ProgramResult result = runProgram({"info", samplePath(sample)}, surroundings);
    EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
    return QString::fromUtf8(result.output).remove(QRegularExpression("  loaded in .*"));
}

TEST(InfoTest, NeedsNoOpenGL) {
    ProgramSurroundings surroundings;
    surroundings.environment.insert("__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent");
    ASSERT_EQ(runProgram({"dump", samplePath("vase")}, surroundings).exitCode, 3) << "OpenGL is available";
    for (const char* sample : {"showpiece", "vase"}) {
        EXPECT_TRUE(timeless(sample, surroundings).startsWith(samplePath(sample) + "\n  vertices "));
        EXPECT_EQ(timeless(sample, surroundings), timeless(sample, {}));
    }
    const ProgramResult missing = runProgram({"info", "/no/such.obj"}, surroundings);
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.errors, "velmodel: Failed to load OBJ file '/no/such.obj': No such file\n");
}

/// A flat grid of 40 times 40 squares; every other row follows after all the others.
QByteArray stripedGrid() {
    constexpr int kSide = 40;
    QByteArray text;
    for (int i = 0; i < (kSide + 1) * (kSide + 1); ++i)
        text += QStringLiteral("v %1 %2 0\n").arg(i % (kSide + 1)).arg(i / (kSide + 1)).toLatin1();
    for (int column = 0; column < kSide; ++column)
        for (int row = 0; row < kSide; ++row) {
            const int corner = row * 17 % kSide * (kSide + 1) + column + 1;
            text += QStringLiteral("f %1 %2 %3 %4\n")
                        .arg(corner)
                        .arg(corner + 1)
                        .arg(corner + kSide + 2)
                        .arg(corner + kSide + 1)
                        .toLatin1();
        }
    return text;
}

TEST(InfoTest, OptimisingImprovesTheVertexCacheAndChangesNothingElse) {
    if (!DrawData::canOptimise())
        GTEST_SKIP() << "this build cannot optimise";
    const TemporaryFolder folder;
    const QString path = folder.write("grid.obj", stripedGrid());
    QJsonObject before = informed({path})[0].toObject();
    QJsonObject after = informed({path, "--optimise"})[0].toObject();
    EXPECT_GE(before["acmr"].toDouble(), 2);
    EXPECT_LT(after["acmr"].toDouble(), 0.9);
    EXPECT_LT(after["atvr"].toDouble(), before["atvr"].toDouble());
    for (const char* changing : {"acmr", "atvr", "seconds", "megabytesPerSecond"}) {
        before.remove(changing);
        after.remove(changing);
    }
    EXPECT_EQ(after, before);
}

TEST(InfoTest, OptimiseIsUnknownIfTheBuildDoesNotSupportIt) {
    if (DrawData::canOptimise())
        GTEST_SKIP() << "this build can optimise";
    const ProgramResult result = runProgram({"info", "--optimise", samplePath("gear")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.errors, "velmodel: Unknown option 'optimise'. Try 'velmodel info --help'.\n");
    EXPECT_FALSE(runProgram({"info", samplePath("gear")}).output.contains("ACMR"));
}

} // namespace

} // namespace Atelier::Vel::Testing
