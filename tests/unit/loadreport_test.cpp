#include <velmodel/loadreport.h>

#include <memory>
#include <utility>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextCodec>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/modelsource.h>
#include <velmodel/objloader.h>

#include "support/clientsource.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using Code = LoadDiagnostic::Code;
using Severity = LoadDiagnostic::Severity;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

const QByteArray kPositions = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";

/// A model "m.obj" on a device that cannot seek.
std::shared_ptr<ModelSource> readOnce(const QByteArray& text) {
    auto source = std::make_shared<Testing::ClientSource>();
    source->files.insert(QStringLiteral("m.obj"), text);
    source->behaviour.isSequential = true;
    return source;
}

class LoadReportTest : public testing::Test {
protected:
    QString path(const QString& name) const { return _folder.filePath(name); }
    QString write(const QString& name, const QByteArray& text) const {
        QFile::remove(path(name));
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    }
    /// Reads `text` as the file m.obj. Returns: found().
    QStringList read(const QByteArray& text, const LoadOptions& options = {},
                     const LoadProgress& progress = {}) {
        const QString model = write("m.obj", text);
        _error.clear();
        readDrawDataFromOBJFile(model, _error, progress, &_report, options);
        return found();
    }
    /// "file:line:column 'text' message" of each diagnostic.
    QStringList found() const {
        QStringList result;
        for (const LoadDiagnostic& at : _report.diagnostics)
            result.append(QStringLiteral("%1:%2:%3 '%4' %5")
                              .arg(QFileInfo(at.file).fileName())
                              .arg(at.line)
                              .arg(at.column)
                              .arg(at.text, at.message));
        return result;
    }
    quint64 count(Code code) const { return _report.diagnosticCounts.value(code); }

    LoadReport _report;
    QString _error;

private:
    QTemporaryDir _folder;
};

LoadOptions forgiving() {
    return LoadOptions::forgiving();
}

} // namespace

// Places

TEST_F(LoadReportTest, LinesAndColumnsCountFromOne) {
    EXPECT_THAT(
        read(kPositions + "f 1 x 3\n\n \tusemtl\t red\nf 1 2 3\n"),
        ElementsAre("m.obj:4:5 'x' The corner 'x' is not an integer, and the face is dropped",
                    "m.obj:6:11 'red' No library has defined the material 'red': its faces are not drawn"));
    EXPECT_THAT(
        read("f 1.5/2 2 3"),
        ElementsAre("m.obj:1:3 '1.5/2' The corner '1.5/2' is not an integer, and the face is dropped"));
}

TEST_F(LoadReportTest, CarriageReturnsEndNoLineAndAreNoCharacters) {
    EXPECT_THAT(read("v 0 0 0\r\nv 1 0 0\r\n# a\rb\r\nf\r 1 x 3\r\n"),
                ElementsAre("m.obj:4:5 'x' The corner 'x' is not an integer, and the face is dropped"));
}

TEST_F(LoadReportTest, ContinuedLineHasTheNumberOfItsFirst) {
    EXPECT_THAT(read("#\nf 1 \\\n2 \\\r\nx\nf y\n", forgiving()),
                ElementsAre("m.obj:2:9 'x' The corner 'x' is not an integer, and the face is dropped",
                            "m.obj:5:3 'y' The corner 'y' is not an integer, and the face is dropped"));
}

TEST_F(LoadReportTest, ColumnsCountDecodedCharacters) {
    write("m.mtl", "newmtl \xC3\xA9\nmap_Kd \xF0\x9F\x98\x80 -x tex\\wood.png\n");
    EXPECT_THAT(
        read("\xEF\xBB\xBF"
             "f x \xC3\xA9\n# \xE8\xB5\xA4\nf 1/\xC3\xA9 x\nf 1 \n"),
        ElementsAre("m.obj:1:3 'x' The corner 'x' is not an integer, and the face is dropped",
                    QString::fromUtf8("m.obj:3:3 '1/\xC3\xA9' The corner '1/\xC3\xA9' is not an integer, "
                                      "and the face is dropped"),
                    "m.obj:4:3 '1' Position '1' does not exist, and the corner lies in the origin"));
}

TEST_F(LoadReportTest, WideEncodingsHaveLinesAndColumns) {
    for (const char* name : {"UTF-16LE", "UTF-16BE", "UTF-32LE"}) {
        QTextCodec::ConverterState state; // which writes the mark
        const QString text = QString::fromUtf8("v 0 0 0\r\n# \xE8\xB5\xA4\r\n\tf 1 \xC3\xA9\r\nf 1 1 7\n");
        const QByteArray bytes =
            QTextCodec::codecForName(name)->fromUnicode(text.constData(), text.size(), &state);
        EXPECT_THAT(
            read(bytes),
            ElementsAre(QString::fromUtf8("m.obj:3:6 '\xC3\xA9' The corner '\xC3\xA9' is not an integer, "
                                          "and the face is dropped"),
                        "m.obj:4:7 '7' Position '7' does not exist, and the corner lies in the origin"))
            << name;
    }
}

TEST_F(LoadReportTest, LinesOfLibrariesArePlaces) {
    write("wood.png", "x");
    write("m.mtl", "# one\r\nnewmtl my red\r\n\tmap_Kd -s 2 2 1   tex\\wood.png\r\n");
    EXPECT_THAT(
        read("mtllib  gone.mtl\nmtllib m.mtl\n" + kPositions + "usemtl green\nf 1 2 3\n", forgiving()),
        ElementsAre("m.obj:1:9 'gone.mtl' '" + path("gone.mtl") + "': no such file; the library is left out",
                    "m.mtl:3:20 'tex\\wood.png' 'tex\\wood.png': no such file; 'wood.png' is used",
                    "m.mtl:3:9 '-s 2 2 1   tex\\wood.png' '-s 2 2 1   tex\\wood.png' names the file '" +
                        path("wood.png") + "'",
                    "m.mtl:2:8 'my red' 'my red' is read as the name 'my red', and not as 'my'",
                    "m.obj:6:8 'green' No library has defined the material 'green': the default "
                    "material is used"));
}

TEST_F(LoadReportTest, TextureOutsideOfTheModelsFolderIsReported) {
    write("m.mtl", "newmtl red\nmap_Kd ../x.png\nusemtl red\n");
    LoadOptions options;
    options.files = LoadOptions::Files::InOwnFolder;
    EXPECT_THAT(
        read("mtllib m.mtl\n" + kPositions + "usemtl red\nf 1 2 3\n", options),
        ElementsAre("m.mtl:2:8 '../x.png' '../x.png': lies outside of the model's folder; it is drawn "
                    "as white"));
}

// The file of the map is named by the first word after all, since only that exists.
TEST_F(LoadReportTest, MapThatIsFoundByItsFirstWordHasNoOtherName) {
    write("wood.png", "x");
    write("m.mtl", "newmtl red\nmap_Kd wood.png of oak\n");
    EXPECT_THAT(read("mtllib m.mtl\n" + kPositions + "usemtl red\nf 1 2 3\n", forgiving()), IsEmpty());
    write("wood.png of oak", "x");
    EXPECT_THAT(read("mtllib m.mtl\n" + kPositions + "usemtl red\nf 1 2 3\n", forgiving()),
                ElementsAre("m.mtl:2:8 'wood.png of oak' 'wood.png of oak' names the file '" +
                            path("wood.png of oak") + "'"));
}

// Far behind, where lines are parsed many at a time and blocks are left behind.
TEST_F(LoadReportTest, LinesAreCountedThroughALargeFile) {
    const QByteArray filler =
        QByteArray("v 1 2 3\nvn 0 0 1\nvt 0.5 0.5\nf 1/1/1 2/2/2 3/3/3\n").repeated(20'000);
    const QByteArray text = filler + "f 1 x\n" + filler + "f 1//1 2//2 3//99999\r\nf 1 2 99999\n" + filler +
                            "usemtl red\nf 1 2 3\n";
    EXPECT_THAT(
        read(text),
        ElementsAre("m.obj:80001:5 'x' The corner 'x' is not an integer, and the face is dropped",
                    "m.obj:240004:8 'red' No library has defined the material 'red': its faces are not "
                    "drawn",
                    "m.obj:160002:13 '3//99999' Normal '99999' does not exist, and the corner gets zeros",
                    "m.obj:160003:7 '99999' Position '99999' does not exist, and the corner lies in the "
                    "origin"));
}

// Indices

TEST_F(LoadReportTest, IndicesThatDoNotExistHaveTheirLines) {
    const QByteArray text = "f 1/4 2 3\n" + kPositions +
                            "vt 0 0\nvn 0 0 1\nf 1/1/1 2/2/-2 3/3/0\nf 1 2 0\nf 1 -9 7\n  f 1//1 2//1 3//1\n";
    EXPECT_THAT(
        read(text),
        ElementsAre("m.obj:1:3 '1/4' Texture coordinate '4' does not exist, and the corner gets zeros",
                    "m.obj:7:9 '2/2/-2' Texture coordinate '2' does not exist, and the corner gets zeros",
                    "m.obj:7:9 '2/2/-2' Normal '-2' does not exist, and the corner gets zeros",
                    "m.obj:8:7 '0' Position '0' does not exist, and the corner lies in the origin",
                    "m.obj:9:5 '-9' Position '-9' does not exist, and the corner lies in the origin"));
    EXPECT_EQ(count(Code::MissingTexCoord), 2u);
    EXPECT_EQ(count(Code::MissingPosition), 2u);
}

TEST_F(LoadReportTest, ForgivingLoadSaysWhatItDropsAndGenerates) {
    const QByteArray text = kPositions + "vn 0 0 1\nf 1//1 2//1 3\nf 1 2 3\nf 1//1 2//1 4\n";
    EXPECT_THAT(read(text, forgiving()),
                ElementsAre("m.obj:5:13 '3' 1 corner has no normal, and gets a generated one",
                            "m.obj:6:3 '1' 3 corners have no normal, and get generated ones",
                            "m.obj:7:13 '4' Position '4' does not exist, and the face is dropped"));
    EXPECT_EQ(count(Code::MissingNormals), 2u);
    EXPECT_EQ(count(Code::UnplacedFace), 1u);
}

TEST_F(LoadReportTest, IndicesOfLaterLinesAreNoFaults) {
    EXPECT_THAT(read("f 1/1/1 2/1/1 3/1/1\nvt 0 0\nvn 0 0 1\nf 1/1/1 2/1/1 3//1\n" + kPositions), IsEmpty());
}

TEST_F(LoadReportTest, FirstTenOfACodeHaveTheirOwnLines) {
    read(kPositions + QByteArray("f 1 2 9\n").repeated(2000), forgiving());
    ASSERT_EQ(_report.diagnostics.size(), LoadReport::kMaxDiagnostics);
    EXPECT_EQ(_report.diagnostics[9].line, 13);
    EXPECT_EQ(count(Code::UnplacedFace), 2000u);
}

TEST_F(LoadReportTest, TextThatIsReadOnceHasNoLinesForIndices) {
    const QByteArray text = kPositions + "vn 0 0 1\nvt 0 0\nf 1//1 2/7 3\nf 1 2 9\nf 1 2 8\nf 1 x\n";
    readDrawDataFromOBJ(readOnce(text), "m.obj", _error, forgiving(), {}, &_report);
    EXPECT_THAT(
        found(),
        ElementsAre("m.obj:9:5 'x' The corner 'x' is not an integer, and the face is dropped",
                    "m.obj:0:0 '' 2 faces have a corner without a position, and are dropped",
                    "m.obj:0:0 '' Faces have texture coordinates that do not exist, and their corners "
                    "get zeros",
                    "m.obj:0:0 '' 2 corners have no normal, and get generated ones"));
    EXPECT_EQ(count(Code::UnplacedFace), 2u);
    readDrawDataFromOBJ(readOnce(kPositions + "vn 0 0 1\nf 1 2 9//9\n"), "m.obj", _error, {}, {}, &_report);
    EXPECT_THAT(found(),
                ElementsAre("m.obj:0:0 '' Faces have positions that do not exist, and their corners "
                            "lie in the origin",
                            "m.obj:0:0 '' Faces have normals that do not exist, and their corners get "
                            "zeros"));
    readDrawDataFromOBJ(readOnce(kPositions + "vn 0 0 1\nf 1//1 2//1 3\nf 1 2 9\n"), "m.obj", _error,
                        forgiving(), {}, &_report);
    EXPECT_THAT(found(), ElementsAre("m.obj:0:0 '' 1 face has a corner without a position, and is dropped",
                                     "m.obj:0:0 '' 1 corner has no normal, and gets a generated one"));
}

TEST_F(LoadReportTest, FacesOfAnUndefinedMaterialAreCountedInOneEntryForEachUse) {
    EXPECT_THAT(
        read(kPositions + "usemtl red\n" + QByteArray("f 1 2 3\n").repeated(3000) + "usemtl blue\nf 1 2 3\n"),
        ElementsAre("m.obj:4:8 'red' No library has defined the material 'red': its faces are not drawn",
                    "m.obj:3005:8 'blue' No library has defined the material 'blue': its faces are not "
                    "drawn"));
    EXPECT_EQ(count(Code::UndrawnFace), 3001u);
}

// Failures

TEST_F(LoadReportTest, FileThatCannotBeReadIsAnError) {
    _report.faces = 7;
    readDrawDataFromOBJFile(path("none.obj"), _error, {}, &_report);
    EXPECT_THAT(found(), ElementsAre("none.obj:0:0 '' No such file"));
    EXPECT_EQ(_report.diagnostics[0].code, Code::UnreadableFile);
    EXPECT_EQ(_report.diagnostics[0].severity, Severity::Error);
    EXPECT_EQ(_report.faces, 0u) << "of an earlier load";
    readDrawDataFromOBJ(readOnce(QByteArray()), "none", _error, {}, {}, &_report);
    EXPECT_THAT(found(), ElementsAre("none:0:0 '' The source cannot read it"));
}

TEST_F(LoadReportTest, LibraryThatCannotBeReadIsAnErrorInItsLine) {
    EXPECT_THAT(read(kPositions + "f x\nmtllib gone.mtl\nf 1 2 3\n"),
                ElementsAre("m.obj:4:3 'x' The corner 'x' is not an integer, and the face is dropped",
                            "m.obj:5:8 'gone.mtl' '" + path("gone.mtl") + "': no such file"));
    EXPECT_EQ(_error, QString("Failed to load MTL file '%1'").arg(path("gone.mtl")));
    EXPECT_EQ(_report.diagnostics[1].code, Code::UnreadableLibrary);
    EXPECT_EQ(_report.diagnostics[1].severity, Severity::Error);
    EXPECT_GT(_report.bytesRead, 0);
}

TEST_F(LoadReportTest, IndicesOfAttributesThatTheFileDoesNotHaveAreNoFaults) {
    EXPECT_THAT(
        read(kPositions + "f 1/1/1 2/1/1 9/1/1\n"),
        ElementsAre("m.obj:4:15 '9/1/1' Position '9' does not exist, and the corner lies in the origin"));
}

TEST_F(LoadReportTest, GeneratedNormalsAloneAreReported) {
    LoadOptions options;
    options.repairs.generateMissingNormals = true;
    EXPECT_THAT(read(kPositions + "vn 0 0 1\nf 1//1 2 3//1\n", options),
                ElementsAre("m.obj:5:8 '2' 1 corner has no normal, and gets a generated one"));
}

/// A text that has one more line when it is read again.
class GrowingText : public QBuffer {
public:
    explicit GrowingText(QByteArray text) : _text(std::move(text)) {
        setBuffer(&_text);
        open(QIODevice::ReadOnly);
    }
    bool seek(qint64 position) override {
        if (position == 0 && pos() != 0)
            _text.prepend("v 0 0 0\n");
        return QBuffer::seek(position);
    }

private:
    QByteArray _text;
};

class GrowingSource : public ModelSource {
public:
    std::unique_ptr<QIODevice> open(const QString& /*name*/) override {
        return std::make_unique<GrowingText>(kPositions + "f 1 2 9\n");
    }
    QString resolve(const QString& /*base*/, const QString& name) override { return name; }
};

TEST_F(LoadReportTest, FaultsOfATextThatHasChangedHaveNoLines) {
    LoadReport report;
    QString error;
    readDrawDataFromOBJ(std::make_shared<GrowingSource>(), "m.obj", error, LoadOptions(), {}, &report);
    EXPECT_TRUE(error.isNull());
    ASSERT_EQ(report.diagnostics.size(), 1);
    EXPECT_EQ(report.diagnostics[0].code, Code::MissingPosition);
    EXPECT_EQ(report.diagnostics[0].line, 0);
}

TEST_F(LoadReportTest, FacesOfAFileWithoutPositionsAreReported) {
    EXPECT_THAT(
        read("vt 0 0\nf 1/1 1/1 1/1\n"),
        ElementsAre("m.obj:2:3 '1/1' Position '1' does not exist, and the corner lies in the origin"));
}

TEST_F(LoadReportTest, CancelledLoadIsAnError) {
    const auto atOnce = [](const LoadStep&) { return false; };
    EXPECT_THAT(read(kPositions + "f 1 2 3\n", {}, atOnce),
                ElementsAre("m.obj:0:0 '' The load was cancelled"));
    EXPECT_EQ(_report.diagnostics[0].code, Code::Cancelled);
    EXPECT_EQ(_error, QString("Loading OBJ file '%1' was cancelled").arg(path("m.obj")));
}

TEST_F(LoadReportTest, SearchForTheLinesOfFaultsCanBeCancelled) {
    const QByteArray text = kPositions + "f 1 2 9\n" + QByteArray("# comment\n").repeated(1 << 19);
    qint64 last = -1;
    // The search reports the end of the first reading again.
    const auto untilRepetition = [&last](const LoadStep& step) {
        return std::exchange(last, step.done) != step.done;
    };
    EXPECT_THAT(read(text, {}, untilRepetition), ElementsAre("m.obj:0:0 '' The load was cancelled"));
}

TEST_F(LoadReportTest, LoadOfNothingIsAnError) {
    const QString model = write("m.obj", "# empty\n");
    EXPECT_EQ(loadModelFromOBJFile(model, _error, LoadOptions(), {}, &_report), nullptr);
    EXPECT_THAT(found(), ElementsAre("m.obj:0:0 '' No context of OpenGL 4.3 or later is current"));
    const Testing::RecordingContext context;
    EXPECT_EQ(loadModelFromOBJFile(model, _error, LoadOptions(), {}, &_report), nullptr);
    EXPECT_THAT(found(), ElementsAre("m.obj:0:0 '' Nothing of the file can be drawn"));
    EXPECT_THAT(_report.diagnostics, Each(Field(&LoadDiagnostic::severity, Severity::Error)));
}

} // namespace Atelier::Vel
