#include <velmodel/objloader.h>

#include <clocale>
#include <memory>
#include <optional>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QTemporaryDir>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include "literal/literalobjloader.h"
#include "modeldescription.h"
#include "nastytext.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"
#include "support/sanitizer.h"
#include "support/scale.h"
#include "support/withoutrootsrights.h"

namespace Atelier::Vel {

namespace {

using testing::AllOf;
using Testing::describe;
using testing::ElementsAre;
using testing::Le;
using Testing::literalLoadModel;
using Testing::MessageLog;
using Testing::NastyText;
using Testing::RecordingContext;
using Testing::scaled;
using Testing::WithoutRootsRights;

/// The result of a load.
struct Loaded {
    std::unique_ptr<GPUModel> model;
    QString error;
    LoadReport report;
    QStringList calls;
    std::vector<QByteArray> uploads;
    QStringList facts;

    /// The floats of the buffer that holds `name`; empty without one.
    std::vector<float> values(const QString& name) const;
    bool has(const QString& name) const { return !calls.filter(name).isEmpty(); }
    /// The names of the material groups that draw something, with their index counts.
    std::vector<std::pair<std::string, unsigned int>> commands() const;
};

std::vector<float> Loaded::values(const QString& name) const {
    const QStringList registrations = calls.filter(QStringLiteral(" components, type"));
    for (int i = 0; i < registrations.size(); ++i) {
        if (!registrations[i].contains(name))
            continue;
        // Buffers hold the indices first, then the attributes in the order of their registration.
        const QByteArray& bytes = uploads.at(static_cast<size_t>(i) + 1);
        std::vector<float> result(static_cast<size_t>(bytes.size()) / sizeof(float));
        std::copy_n(bytes.constData(), bytes.size(), reinterpret_cast<char*>(result.data()));
        return result;
    }
    return {};
}

std::vector<std::pair<std::string, unsigned int>> Loaded::commands() const {
    std::vector<std::pair<std::string, unsigned int>> result;
    for (int drawable = 0; drawable < model->drawableCount(); ++drawable) {
        const auto commands = model->drawable(drawable)->drawElementsIndirectCommands();
        for (int i = 0; i < commands.size(); ++i)
            result.emplace_back(model->materialName(drawable, i).toStdString(), commands[i].count);
    }
    return result;
}

/// The code of the one error of a load that has failed.
std::optional<LoadDiagnostic::Code> causeOfFailure(const LoadReport& report) {
    std::optional<LoadDiagnostic::Code> cause;
    for (const LoadDiagnostic& diagnostic : report.diagnostics)
        if (diagnostic.severity == LoadDiagnostic::Severity::Error) {
            EXPECT_FALSE(cause) << "a second error: " << diagnostic.message.toStdString();
            cause = diagnostic.code;
        }
    return cause;
}

void keep(Loaded& loaded, const RecordingContext& context) {
    loaded.calls = context.calls();
    for (const auto& upload : context.recording().uploads)
        loaded.uploads.push_back(upload.bytes);
    if (loaded.model)
        loaded.facts = describe(*loaded.model);
}

class ObjLoaderTest : public testing::Test {
protected:
    QString path(const QString& name) const { return _directory.filePath(name); }
    void write(const QString& name, const QByteArray& text) {
        // Closing a file that was truncated to zero may flush it to the disk; a new file is faster.
        QFile::remove(path(name));
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    Loaded load(const QByteArray& text, const LoadProgress& progress = {}) {
        write(QStringLiteral("model.obj"), text);
        return loadFile(path(QStringLiteral("model.obj")), progress);
    }
    static Loaded loadFile(const QString& file, const LoadProgress& progress = {}) {
        const RecordingContext context;
        Loaded loaded;
        loaded.model.reset(loadModelFromOBJFile(file, loaded.error, progress, &loaded.report));
        keep(loaded, context);
        return loaded;
    }
    /// What is reported as done in a phase.
    std::vector<qint64> progressOf(const QByteArray& text, LoadPhase phase = LoadPhase::Reading) {
        std::vector<qint64> reported;
        const Loaded loaded = load(text, [&](const LoadStep& step) {
            if (step.phase == phase)
                reported.push_back(step.done);
            return true;
        });
        EXPECT_NE(loaded.model, nullptr);
        return reported;
    }
    static Loaded loadLiterally(const QString& file) {
        const RecordingContext context;
        Loaded loaded;
        loaded.model.reset(literalLoadModel(file, loaded.error));
        keep(loaded, context);
        return loaded;
    }
    static void expectAsLiterally(const QString& file) {
        const Loaded expected = loadLiterally(file);
        const Loaded loaded = loadFile(file);
        ASSERT_EQ(loaded.error, expected.error);
        ASSERT_EQ(loaded.model == nullptr, expected.model == nullptr);
        ASSERT_EQ(loaded.calls, expected.calls);
        ASSERT_TRUE(loaded.uploads == expected.uploads);
        ASSERT_EQ(loaded.facts, expected.facts);
    }

private:
    QTemporaryDir _directory;
};

const QByteArray kCube = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n"
                         "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";
const QByteArray kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";

} // namespace

TEST_F(ObjLoaderTest, MissingFileFailsWithItsPath) {
    const Loaded loaded = loadFile(QStringLiteral("/no/such file%1.obj"));
    EXPECT_EQ(loaded.model, nullptr);
    EXPECT_EQ(loaded.error, "Failed to load OBJ file '/no/such file%1.obj'");
    EXPECT_TRUE(loaded.calls.isEmpty());
}

TEST_F(ObjLoaderTest, EmptyPathFails) {
    EXPECT_EQ(loadFile(QString()).error, "Failed to load OBJ file ''");
    EXPECT_EQ(loadFile(QStringLiteral("")).error, "Failed to load OBJ file ''");
}

TEST_F(ObjLoaderTest, DirectoryFails) {
    const Loaded loaded = loadFile(path(QString()));
    EXPECT_EQ(loaded.model, nullptr);
    EXPECT_EQ(loaded.error, QStringLiteral("Failed to load OBJ file '%1'").arg(path(QString())));
}

// Opening a pipe without a writer would wait for ever.
TEST_F(ObjLoaderTest, PipeFailsAtOnce) {
    const QString pipe = path(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(loadFile(pipe).error, QStringLiteral("Failed to load OBJ file '%1'").arg(pipe));
    EXPECT_EQ(load("mtllib pipe\n").error, QStringLiteral("Failed to load MTL file '%1'").arg(pipe));
}

TEST_F(ObjLoaderTest, DeviceFailsAtOnce) {
    EXPECT_EQ(loadFile(QStringLiteral("/dev/zero")).error, "Failed to load OBJ file '/dev/zero'");
    EXPECT_EQ(load("mtllib /dev/zero\n").error, "Failed to load MTL file '/dev/zero'");
}

TEST_F(ObjLoaderTest, SocketFails) {
    const QByteArray socketPath = QFile::encodeName(path(QStringLiteral("socket")));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(static_cast<size_t>(socketPath.size()), sizeof address.sun_path);
    std::copy_n(socketPath.constData(), socketPath.size(), address.sun_path);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(loadFile(path(QStringLiteral("socket"))).error,
              QStringLiteral("Failed to load OBJ file '%1'").arg(path(QStringLiteral("socket"))));
    close(listener);
}

TEST_F(ObjLoaderTest, UnreadableFileFails) {
    write(QStringLiteral("secret.obj"), kCube);
    write(QStringLiteral("model.obj"), kCube + "mtllib secret.obj\n");
    const QString secret = path(QStringLiteral("secret.obj"));
    ASSERT_EQ(chmod(qPrintable(path(QString())), 0755), 0);
    ASSERT_EQ(chmod(qPrintable(secret), 0), 0);
    const WithoutRootsRights asAnybody;
    EXPECT_EQ(loadFile(secret).error, QStringLiteral("Failed to load OBJ file '%1'").arg(secret));
    EXPECT_EQ(loadFile(path(QStringLiteral("model.obj"))).error,
              QStringLiteral("Failed to load MTL file '%1'").arg(secret));
}

TEST_F(ObjLoaderTest, MissingLibraryFailsWithItsAbsolutePath) {
    const Loaded loaded = load(kCube + "mtllib no such.mtl\n");
    EXPECT_EQ(loaded.model, nullptr);
    EXPECT_EQ(loaded.error, QStringLiteral("Failed to load MTL file '%1'").arg(path(QStringLiteral("no"))));
    EXPECT_TRUE(loaded.calls.isEmpty());
    EXPECT_EQ(causeOfFailure(loaded.report), LoadDiagnostic::Code::UnreadableLibrary);
    EXPECT_EQ(loaded.report.statistics.vertices, 0u);
}

TEST_F(ObjLoaderTest, LibraryWithoutANameIsTheDirectoryAndFails) {
    const QString directory = QDir(path(QString())).absoluteFilePath(QString());
    EXPECT_EQ(load("mtllib\n").error, QStringLiteral("Failed to load MTL file '%1'").arg(directory));
}

TEST_F(ObjLoaderTest, SuccessLeavesAnEarlierErrorAlone) {
    write(QStringLiteral("model.obj"), kCube);
    QString error = QStringLiteral("an earlier error");
    const RecordingContext context;
    const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path(QStringLiteral("model.obj")), error));
    EXPECT_NE(model, nullptr);
    EXPECT_EQ(error, "an earlier error");
}

TEST_F(ObjLoaderTest, EmptyFileIsAnEmptyModel) {
    const Loaded loaded = load("");
    ASSERT_NE(loaded.model, nullptr);
    EXPECT_EQ(loaded.model->drawableCount(), 0);
    EXPECT_TRUE(loaded.error.isNull());
}

TEST_F(ObjLoaderTest, CubeWithoutNormalsGetsThem) {
    const Loaded loaded = load(kCube);
    ASSERT_NE(loaded.model, nullptr);
    EXPECT_TRUE(loaded.has(QStringLiteral("va_Vertex")));
    EXPECT_TRUE(loaded.has(QStringLiteral("va_Normal")));
    EXPECT_FALSE(loaded.has(QStringLiteral("va_TexCoord")));
    EXPECT_EQ(loaded.report.statistics.triangles, 12u);
    EXPECT_EQ(loaded.report.statistics.vertices, 8u);
    EXPECT_EQ(loaded.report.statistics.corners, 24u);
    EXPECT_THAT(loaded.commands(), ElementsAre(std::make_pair("<default>", 36u)));
}

TEST_F(ObjLoaderTest, FileWithNormalsKeepsThem) {
    const Loaded loaded = load(kTriangle + "vn 0 0 1\nvt 0.5 0.25\nf 1/1/1 2/1/1 3/1/1\n");
    EXPECT_THAT(loaded.values(QStringLiteral("va_Normal")), ElementsAre(0, 0, 1, 0, 0, 1, 0, 0, 1));
    EXPECT_THAT(loaded.values(QStringLiteral("va_TexCoord")),
                ElementsAre(0.5F, 0.25F, 0.5F, 0.25F, 0.5F, 0.25F));
}

TEST_F(ObjLoaderTest, FacesJoinTheGroupNamedLast) {
    write(QStringLiteral("colours.mtl"), "newmtl red\nKd 1 0 0\n");
    const Loaded loaded =
        load(kTriangle + "mtllib colours.mtl\nf 1 2 3\nusemtl red\nf 1 2 3\nf 1 2 3\nusemtl blue\nf 1 2 3\n");
    EXPECT_THAT(loaded.commands(), ElementsAre(std::make_pair("<default>", 3u), std::make_pair("red", 6u)));
    EXPECT_EQ(loaded.report.faces, 4u);
    EXPECT_EQ(loaded.report.facesWithoutGroup, 1u);
}

TEST_F(ObjLoaderTest, LibraryNamedLateAppliesToTheFacesAfterIt) {
    write(QStringLiteral("colours.mtl"), "newmtl red\n");
    const Loaded loaded = load(kTriangle + "usemtl red\nf 1 2 3\nmtllib colours.mtl\nf 1 2 3\nf 1 2 3\n");
    EXPECT_THAT(loaded.commands(), ElementsAre(std::make_pair("red", 6u)));
    EXPECT_EQ(loaded.report.facesWithoutGroup, 1u);
}

TEST_F(ObjLoaderTest, LibraryCannotReplaceTheDefaultGroup) {
    write(QStringLiteral("colours.mtl"), "newmtl <default>\nKd 1 0 0\n");
    const Loaded loaded = load(kTriangle + "mtllib colours.mtl\nf 1 2 3\n");
    const InstanceData material = loaded.model->materials(0)->items().at(0);
    EXPECT_EQ(material.value(QStringLiteral("Kd")), makeDefaultMaterial().value(QStringLiteral("Kd")));
}

// The faces before them pushed no normal indices, so entry k of the list serves corner k.
TEST_F(ObjLoaderTest, NormalsAfterFacesAreNotAlignedWithThem) {
    const Loaded loaded = load(kTriangle + "f 1 2 3\nvn 0 0 1\nvn 0 1 0\nvn 1 0 0\nf 1//1 2//2 3//3\n");
    EXPECT_THAT(loaded.values(QStringLiteral("va_Normal")),
                ElementsAre(0, 0, 1, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(loaded.report.statistics.substitutedCorners, 3u);
}

TEST_F(ObjLoaderTest, CornersWithoutANormalAddNoIndex) {
    const Loaded loaded = load(kTriangle + "vn 0 0 1\nf 1 2 3\n");
    EXPECT_THAT(loaded.values(QStringLiteral("va_Normal")), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(loaded.report.statistics.substitutedCorners, 3u);
}

TEST_F(ObjLoaderTest, DroppedFaceReleasesItsNumber) {
    const Loaded loaded = load(kTriangle + "v 5 5 5\nf 1 x 3\nf 1 2 3\nf 1/y 2 3\nf 2 3 4\n");
    EXPECT_EQ(loaded.report.faces, 2u);
    EXPECT_EQ(loaded.report.droppedFaces, 2u);
    EXPECT_EQ(loaded.report.statistics.triangles, 2u);
    EXPECT_EQ(loaded.report.statistics.untriangulatedFaces, 0u);
}

TEST_F(ObjLoaderTest, ReportCountsFacesThatGiveNoTriangle) {
    const Loaded loaded = load(kTriangle + "f\nf 1\nf 1 2\nf 1 2 3\n");
    EXPECT_EQ(loaded.report.faces, 4u);
    EXPECT_EQ(loaded.report.statistics.untriangulatedFaces, 3u);
    EXPECT_EQ(loaded.report.statistics.triangles, 1u);
    EXPECT_EQ(loaded.report.bytesRead, kTriangle.size() + 20);
}

TEST_F(ObjLoaderTest, ReportCountsEachKindSeparately) {
    const MessageLog log;
    const QByteArray text = "v 0 0 0\nv 2 0 0\nv 2 2 0\nv 0 2 0\nv 9 9 9\nvt 3 3\nvt 1 1\n"
                            "f 1/1 2/1 3/1 4/1\n" // two triangles of four vertices
                            "f 1/2 2/2 3/9\n"     // three further vertices, one of them without a value
                            "f 1 2 x\nf 1 2 y\nf 1 2 z\nf z\n"
                            "f 1/1 2/1\n" // no triangle
                            "usemtl none\nf 1/1 2/1 3/1\nf 1/1 2/1 3/1\n";
    const Loaded loaded = load(text);
    EXPECT_EQ(loaded.report.bytesRead, text.size());
    EXPECT_EQ(loaded.report.faces, 5u);
    EXPECT_EQ(loaded.report.droppedFaces, 4u);
    EXPECT_EQ(loaded.report.facesWithoutGroup, 2u);
    EXPECT_EQ(loaded.report.statistics.untriangulatedFaces, 1u);
    EXPECT_EQ(loaded.report.statistics.substitutedCorners, 1u);
    EXPECT_EQ(loaded.report.statistics.corners, 15u);
    EXPECT_EQ(loaded.report.statistics.vertices, 7u);
    EXPECT_EQ(loaded.report.statistics.triangles, 3u);
}

TEST_F(ObjLoaderTest, ReportAndProgressAreOptional) {
    write(QStringLiteral("model.obj"), kCube);
    QString error;
    const RecordingContext context;
    const std::unique_ptr<GPUModel> model(
        loadModelFromOBJFile(path(QStringLiteral("model.obj")), error, {}, nullptr));
    EXPECT_NE(model, nullptr);
    EXPECT_EQ(error, QString());
}

TEST_F(ObjLoaderTest, EveryDrawableCarriesIdentityMatrices) {
    const Loaded loaded = load(kCube);
    const InstanceData instance = loaded.model->instances(0)->items().at(0);
    const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const QByteArray bytes(reinterpret_cast<const char*>(identity), sizeof identity);
    EXPECT_EQ(instance.name(), "InstanceInfo");
    EXPECT_EQ(instance.valueNames(),
              QStringList({"ModelMatrix", "ModelNormalMatrix", "PreviousModelMatrix"}));
    for (const QString& name : instance.valueNames())
        EXPECT_EQ(instance.value(name), bytes);
}

TEST_F(ObjLoaderTest, RelativeLibrariesStartAtTheModelsDirectory) {
    QDir(path(QString())).mkdir(QStringLiteral("sub"));
    write(QStringLiteral("sub/lib.mtl"), "newmtl red\nmap_Kd tex/a.png\n");
    const Loaded loaded = load(kTriangle + "mtllib sub/lib.mtl\nusemtl red\nf 1 2 3\n");
    EXPECT_EQ(loaded.model->materials(0)->items().at(0).texturePath(QStringLiteral("map_Kd")),
              path(QStringLiteral("sub/tex/a.png")));
}

TEST_F(ObjLoaderTest, WithoutAContextTheModelStaysEmpty) {
    write(QStringLiteral("model.obj"), kCube);
    QString error;
    const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path(QStringLiteral("model.obj")), error));
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->drawableCount(), 0);
}

TEST_F(ObjLoaderTest, FacesOfVeryManyCornersLoadAsLiterally) {
    QByteArray text = kTriangle + "vt 0 0\nvn 0 0 1\nf 1/1/1 2/1/1 3/1/1\n";
    for (int face = 0; face < 3; ++face)
        text += "f" + QByteArray(" 1/1/1 2 3//1").repeated(2000) + '\n';
    write(QStringLiteral("model.obj"), text);
    ASSERT_NO_FATAL_FAILURE(expectAsLiterally(path(QStringLiteral("model.obj"))));
}

TEST_F(ObjLoaderTest, CancellingGivesNoModelAndReportsIt) {
    const Loaded loaded = load(kCube, [](const LoadStep&) { return false; });
    EXPECT_EQ(loaded.model, nullptr);
    EXPECT_EQ(loaded.error,
              QStringLiteral("Loading OBJ file '%1' was cancelled").arg(path(QStringLiteral("model.obj"))));
    EXPECT_TRUE(loaded.calls.isEmpty());
}

TEST_F(ObjLoaderTest, CancellingLateGivesNoModelEither) {
    const QByteArray text = kCube + QByteArray("f 1 2 3\n").repeated(300'000);
    int calls = 0;
    const Loaded loaded = load(text, [&](const LoadStep& step) {
        ++calls;
        return step.done < step.total / 2;
    });
    EXPECT_EQ(loaded.model, nullptr);
    EXPECT_GT(calls, 1);
}

TEST_F(ObjLoaderTest, ProgressRisesToTheEndInAFewHundredCalls) {
    const QByteArray text =
        kCube + QByteArray("f 1 2 3\n").repeated(10'000) + QByteArray("# comment\n").repeated(1'000'000);
    const std::vector<qint64> done = progressOf(text);
    EXPECT_THAT(done.size(), AllOf(testing::Ge(2u), Le(300u)));
    EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
    EXPECT_LE(done.back(), text.size());
}

constexpr int kBlockBytes = 256 * 1024; // of text, read at a time

/// A triangle and comments: text of the given size in bytes.
QByteArray triangleAndComments(int bytes) {
    const QByteArray text = kTriangle + "f 1 2 3\n";
    const QByteArray comments = QByteArray("# comment\n").repeated(bytes / 10);
    return text + comments.left(bytes - text.size() - 1) + '\n';
}

TEST_F(ObjLoaderTest, ProgressIsReportedForEachBlockOfTheText) {
    const std::vector<qint64> reported = progressOf(triangleAndComments(3 * kBlockBytes + 10'000));
    EXPECT_THAT(reported,
                ElementsAre(0, kBlockBytes, 2 * kBlockBytes, 3 * kBlockBytes, 3 * kBlockBytes + 10'000));
}

// The last block is reported if it is at least one step after the previous report.
TEST_F(ObjLoaderTest, ProgressIsReportedInStepsOfATwoHundredth) {
    constexpr int kStep = 3952;
    static_assert((3 * kBlockBytes + kStep) / 200 + 1 == kStep);
    EXPECT_EQ(progressOf(triangleAndComments(3 * kBlockBytes + kStep)).size(), 5u);
    EXPECT_EQ(progressOf(triangleAndComments(3 * kBlockBytes + kStep - 1)).size(), 4u);
}

TEST_F(ObjLoaderTest, CancellingAnywhereGivesNothing) {
    const QByteArray text = triangleAndComments(600'000);
    int calls = 0;
    ASSERT_NE(load(text, [&](const LoadStep&) { return ++calls > 0; }).model, nullptr);
    ASSERT_EQ(calls, 8) << "four while reading, two while making normals, one in each other phase";
    for (int last = 1; last <= calls; ++last) {
        int reported = 0;
        const Loaded loaded = load(text, [&](const LoadStep&) { return ++reported < last; });
        EXPECT_EQ(reported, last);
        EXPECT_EQ(loaded.model, nullptr);
        EXPECT_EQ(
            loaded.error,
            QStringLiteral("Loading OBJ file '%1' was cancelled").arg(path(QStringLiteral("model.obj"))));
        EXPECT_TRUE(loaded.calls.isEmpty());
        EXPECT_EQ(causeOfFailure(loaded.report), LoadDiagnostic::Code::Cancelled);
    }
}

/// Polygons with the given numbers of corners, on a parabola: convex, with distinct corners.
QByteArray polygons(int count, int corners) {
    QByteArray text;
    for (int i = 0; i < corners; ++i) {
        const double x = 2.0 * i / corners - 1.0;
        text += "v " + QByteArray::number(x, 'f', 6) + ' ' + QByteArray::number(x * x, 'f', 6) + " 0\n";
    }
    QByteArray face = "f";
    for (int i = 0; i < corners; ++i)
        face += ' ' + QByteArray::number(i + 1);
    return text + (face + '\n').repeated(count);
}

/// Loads until all of the text has been read and progress has been reported a number of times after that.
class CancelledCutTest : public ObjLoaderTest {
protected:
    void expectCancelledAfter(int reports, const QByteArray& text) {
        int count = 0;
        const Loaded loaded = load(text, [&](const LoadStep& step) {
            count += step.phase == LoadPhase::Triangulating ? 1 : 0;
            return count < reports;
        });
        EXPECT_EQ(count, reports);
        EXPECT_EQ(loaded.model, nullptr);
        EXPECT_EQ(
            loaded.error,
            QStringLiteral("Loading OBJ file '%1' was cancelled").arg(path(QStringLiteral("model.obj"))));
        EXPECT_TRUE(loaded.calls.isEmpty());
    }
};

TEST_F(CancelledCutTest, OfALargePolygon) {
    expectCancelledAfter(10, polygons(1, 20'000));
}

TEST_F(CancelledCutTest, OfManySmallPolygons) {
    expectCancelledAfter(5, polygons(3000, 30));
}

TEST_F(CancelledCutTest, OfPolygonsThatCannotBeTriangulated) {
    const MessageLog log; // a warning for each polygon
    const QByteArray face = "f" + QByteArray(" 1 2").repeated(20) + '\n';
    expectCancelledAfter(5, kTriangle + face.repeated(2500));
}

TEST_F(CancelledCutTest, ReportsProgressAFewHundredTimes) {
    for (const QByteArray& text : {polygons(1, 20'000), polygons(20'000, 5)}) {
        const std::vector<qint64> done = progressOf(text, LoadPhase::Triangulating);
        EXPECT_THAT(done.size(), AllOf(testing::Ge(2u), Le(300u)));
        EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
    }
}

// Corners are counted in portions of 16,384; a step is more than one of them and less than two.
TEST_F(CancelledCutTest, ReportsManyPortionsInStepsOfATwoHundredth) {
    if (VELMODEL_ADDRESS_SANITIZER != 0)
        GTEST_SKIP() << "millions of corners take too long under the sanitizer";
    constexpr int kCorners = 4'800'000;
    static_assert(kCorners / 200 > 16'384 && kCorners / 200 < 2 * 16'384);
    const std::vector<qint64> done = progressOf(polygons(kCorners / 6, 6), LoadPhase::Triangulating);
    EXPECT_EQ(done.size(), 1 + kCorners / 16'384 / 2);
    EXPECT_GE(done.back(), kCorners - 2 * 16'384);
}

TEST_F(ObjLoaderTest, DecimalCommasChangeNothing) {
    write(QStringLiteral("a.mtl"), "newmtl m\nKd 0.5 0.25 1.5\n");
    const QByteArray text = kTriangle + "v 1.5 2.25e0 3\nmtllib a.mtl\nusemtl m\nf 1 2 4\n";
    const Loaded before = load(text);
    const QLocale standard;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    setlocale(LC_ALL, "de_DE.UTF-8");
    const Loaded german = load(text);
    setlocale(LC_ALL, "C");
    QLocale::setDefault(standard);
    ASSERT_NE(before.model, nullptr);
    EXPECT_TRUE(german.uploads == before.uploads);
    EXPECT_EQ(german.facts, before.facts);
}

TEST_F(ObjLoaderTest, MaterialPlanIsRegisteredAfterTheInstancePlan) {
    QStringList names;
    for (const InstanceDataPlan* plan : InstanceDataRegistry::Instance().plans())
        names << plan->name();
    EXPECT_EQ(names, QStringList({"InstanceInfo", "OBJMaterial"}));
}

TEST_F(ObjLoaderTest, NastyModelsLoadAsLiterally) {
    NastyText nasty(11);
    const MessageLog log; // many faces that cannot be triangulated
    for (int i = scaled(400); i > 0; --i) {
        write(QStringLiteral("lib.mtl"), nasty.mtl(20));
        QByteArray text = kTriangle + "mtllib lib.mtl\n" + nasty.obj(60);
        text.replace("mtllib", nasty.below(3) == 0 ? "mtllib lib.mtl" : "# mtllib");
        write(QStringLiteral("model.obj"), text);
        ASSERT_NO_FATAL_FAILURE(expectAsLiterally(path(QStringLiteral("model.obj")))) << text.toStdString();
    }
}

TEST_F(ObjLoaderTest, NastyLibrariesLoadAsLiterally) {
    NastyText nasty(13);
    QByteArray faces;
    for (const QByteArray& name : nasty.names())
        faces += "usemtl " + name + "\nf 1 2 3\n";
    write(QStringLiteral("model.obj"), kTriangle + "mtllib lib.mtl\n" + faces);
    const MessageLog log;
    for (int i = scaled(500); i > 0; --i) {
        const QByteArray library =
            nasty.encoded(nasty.below(2) == 0 ? nasty.mtl(40) : nasty.damaged(nasty.mtl(40)));
        write(QStringLiteral("lib.mtl"), library);
        ASSERT_NO_FATAL_FAILURE(expectAsLiterally(path(QStringLiteral("model.obj"))))
            << library.toStdString();
    }
}

// Corners are merged by their indices at first, and by their values once nearly all have indices of their
// own.
TEST_F(ObjLoaderTest, ModelsWhoseCornersStopSharingLoadAsLiterally) {
    constexpr unsigned int kValues = 2000;
    Testing::NastyText nasty(9);
    QByteArray text;
    for (unsigned int i = 0; i < kValues; ++i)
        text += "v " + QByteArray::number(nasty.below(3000)) + " 0 1\nvt " +
                QByteArray::number(nasty.below(3000)) + " 0\n";
    for (int face = 0; face < 12'000; ++face) {
        text += 'f';
        for (int corner = 0; corner < 3; ++corner) {
            // Some indices name no value.
            const unsigned int range = face < 1000 ? 10 : kValues + 20;
            text +=
                ' ' + QByteArray::number(nasty.below(range)) + '/' + QByteArray::number(nasty.below(range));
        }
        text += '\n';
    }
    write(QStringLiteral("model.obj"), text);
    expectAsLiterally(path(QStringLiteral("model.obj")));
}

TEST_F(ObjLoaderTest, LongModelsLoadAsLiterally) {
    NastyText nasty(12);
    const MessageLog log;
    for (int i = scaled(4); i > 0; --i) {
        write(QStringLiteral("lib.mtl"), "newmtl a\nnewmtl b\nKd 1 0 0\n");
        QByteArray text = kTriangle + "f 1 2 3\nusemtl a\nf 1 2 3\nmtllib lib.mtl\n";
        for (int part = 0; part < 20; ++part)
            text += nasty.plain(2000) + (nasty.below(2) == 0 ? "usemtl a\n" : "usemtl b\n");
        write(QStringLiteral("model.obj"), text);
        ASSERT_NO_FATAL_FAILURE(expectAsLiterally(path(QStringLiteral("model.obj"))));
    }
}

/// Objects one after the other, each of `positions` positions and texture coordinates and `faces` triangles
/// of any of them; one corner in `strays` names a texture coordinate that is not there.
QByteArray objects(NastyText& nasty, int count, unsigned int positions, int faces, unsigned int strays) {
    QByteArray text;
    for (int object = 0; object < count; ++object) {
        for (unsigned int i = 0; i < positions; ++i)
            text += "v " + QByteArray::number(nasty.below(100)) + ' ' + QByteArray::number(nasty.below(100)) +
                    " 0\nvt " + QByteArray::number(nasty.below(4)) + " 0\n";
        for (int face = 0; face < faces; ++face) {
            text += 'f';
            for (int corner = 0; corner < 3; ++corner) {
                const QByteArray number = QByteArray::number(-1 - static_cast<int>(nasty.below(positions)));
                text += ' ' + number + '/' + (nasty.below(strays) == 0 ? "999999999" : number);
            }
            text += '\n';
        }
    }
    return text;
}

// Corners are merged as they come, as long as each has a position by then and all attributes were declared
// before the first.
TEST_F(ObjLoaderTest, MergingWhileReadingLoadsAsLiterally) {
    NastyText nasty(14);
    const QByteArray few = objects(nasty, 20, 60, 300, 50);
    const QByteArray faces = few.mid(few.lastIndexOf("vt") + 7);
    const QByteArray models[] = {
        few,
        few + "vn 0 0 1\n" + faces + "f 1/1/1 2/2/1 3/3/-1\n",
        few + "f 1 2 1201\nv 5 5 5\n" + faces,
        few + "f 1 2 999999999\n" + faces,
        few + "f 1 2 0\n" + faces,
        faces + few,
        "vt 0 0\nf 1/1 2/1 3/1\n" + few,
        "vt 0 0\nf 1 2 3\n" + few,
        "vn 0 0 1\n" + few,
        kTriangle + "vt 0 0\nvn 0 0 1\nf 1/1/1 2/1/1 4/1/1\nv 0 0 1\nf 1/1/1 2/1/1 3/1/1\n",
    };
    const MessageLog log;
    for (const QByteArray& model : models) {
        write(QStringLiteral("model.obj"), model);
        ASSERT_NO_FATAL_FAILURE(expectAsLiterally(path(QStringLiteral("model.obj"))))
            << model.right(200).toStdString();
    }
}

// Missing indices of a face are passed on only if a later face has such indices.
TEST_F(ObjLoaderTest, ManyCornersWithoutAnIndexLoadAsLiterally) {
    const MessageLog log;
    // A missing position ends the merging.
    const QByteArray listed = kTriangle + "vt 1 1\nvn 0 0 1\nf 1 2 9\n";
    for (const int corners : {1, 1023, 1024, 1025, 4095, 4096, 4097, 8191, 8192, 8193, 12'289})
        for (const QByteArray end :
             {"", "f 1/1 2/1 3/1\n", "f 1//1 2//1 3//1\n", "f 1/1/1 2/1/1 3/1/1\nf 1 2 3\n"}) {
            write(QStringLiteral("model.obj"), listed + QByteArray("f 1\n").repeated(corners) + end);
            ASSERT_NO_FATAL_FAILURE(expectAsLiterally(path(QStringLiteral("model.obj"))))
                << corners << ' ' << end.toStdString();
        }
}

TEST_F(ObjLoaderTest, MergingThatStopsPayingLoadsAsLiterally) {
    NastyText nasty(15);
    QByteArray soup;
    for (int face = 1; face < 30'000; ++face)
        soup += "v " + QByteArray::number(face) + " 0 0\nv 0 1 0\nv 0 0 " + QByteArray::number(face % 77) +
                "\nf -1 -2 -3\n";
    QByteArray fan = "v 1 2 3\nv 4 5 6\n";
    for (int i = 1; i < 1'500; ++i)
        fan += "vt " + QByteArray::number(i) + " 0\n";
    for (int face = 0; face < 25'000; ++face) {
        fan += 'f';
        for (int corner = 0; corner < 3; ++corner)
            fan += " 2/" + QByteArray::number(1 + nasty.below(1'500));
        fan += '\n';
    }
    const MessageLog log;
    for (const QByteArray& model : {soup, fan, objects(nasty, 1, 60'000, 40'000, 1'000)}) {
        write(QStringLiteral("model.obj"), model);
        ASSERT_NO_FATAL_FAILURE(expectAsLiterally(path(QStringLiteral("model.obj"))));
    }
}

// If groups take faces in their order, triangles overwrite the corners that they are made of.
TEST_F(ObjLoaderTest, GroupsInAnyOrderLoadAsLiterally) {
    NastyText nasty(16);
    const MessageLog log;
    write(QStringLiteral("lib.mtl"), "newmtl a\nnewmtl b\n");
    const auto faces = [&nasty](int count, int corners) {
        QByteArray text;
        for (int face = 0; face < count; ++face) {
            text += 'f';
            for (int corner = 0; corner < corners; ++corner)
                text += ' ' + QByteArray::number(1 + nasty.below(60));
            text += '\n';
        }
        return text;
    };
    const QByteArray begin = "mtllib lib.mtl\n" + objects(nasty, 1, 60, 0, 1);
    for (const int corners : {1, 2, 3}) {
        const QByteArray few = faces(scaled(5'000), corners);
        const QByteArray many = faces(scaled(40'000), corners);
        for (const QByteArray& model :
             {many, many + "usemtl a\n" + many + "usemtl b\n" + few, few + "usemtl b\n" + many,
              few + "usemtl none\n" + many + "usemtl a\n" + many, "usemtl b\n" + few + "usemtl a\n" + many,
              "usemtl a\n" + many + "usemtl b\n" + few + "usemtl a\n" + many, many + faces(2, 4) + few}) {
            write(QStringLiteral("model.obj"), begin + model);
            ASSERT_NO_FATAL_FAILURE(expectAsLiterally(path(QStringLiteral("model.obj"))))
                << corners << " corners, " << model.size() << " bytes";
        }
    }
}

TEST_F(ObjLoaderTest, ReportCountsCornersWithoutAValueHoweverMerged) {
    const MessageLog log;
    const Loaded merged = load(kTriangle + "vt 0 0\nf 1/1 2/9 3/9\nf 1/1 2/9 3\n");
    EXPECT_EQ(merged.report.statistics.substitutedCorners, 4U);
    const Loaded listed =
        load(kTriangle + "vt 0 0\nf 1/1 2/9 3/9\nf 1/1 2/9 3\nvn 0 0 1\nf 1/1/1 2/1/1 3/1/1\n");
    EXPECT_EQ(listed.report.statistics.substitutedCorners, 4U + 6U);
}

// Numbers in a file begin with 1.
TEST_F(ObjLoaderTest, LastValueExistsAndLaterValuesAreZeros) {
    const QByteArray values =
        "v 1 1 1\nv 2 1 1\nv 2 2 1\nv 1 9 1\nvt 1 1\nvt 2 1\nvt 1 9\nvn 1 0 0\nvn 9 0 0\n";
    const struct {
        const char* name;
        const char* corner; ///< of a number in this attribute
        int valueCount;
        int components;
    } rows[] = {
        {"va_Vertex", "%1/1/1", 4, 3}, {"va_TexCoord", "3/%1/1", 3, 2}, {"va_Normal", "3/1/%1", 2, 3}};
    for (const auto& row : rows)
        for (const int number : {row.valueCount, row.valueCount + 1, row.valueCount + 2, 0x7FFFFFFF}) {
            SCOPED_TRACE(testing::Message() << row.name << ' ' << number);
            const MessageLog log;
            const Loaded loaded =
                load(values + "f 1/1/1 2/2/1 3/1/1\n" +
                     ("f 1/1/1 2/2/1 " + QString::fromLatin1(row.corner).arg(number) + "\n").toLatin1());
            const bool isThere = number == row.valueCount;
            std::vector<QString> warnings;
            if (!isThere)
                warnings.push_back(
                    QStringLiteral("1 corner has no valid index into vertex attribute '%1' and "
                                   "takes a value of zeros")
                        .arg(row.name));
            EXPECT_EQ(log.texts(QtWarningMsg), warnings);
            EXPECT_EQ(loaded.report.statistics.substitutedCorners, isThere ? 0U : 1U);
            const std::vector<float> uploaded = loaded.values(QString::fromLatin1(row.name));
            EXPECT_EQ(std::count(uploaded.begin(), uploaded.end(), 9.0F), isThere ? 1 : 0);
            EXPECT_GE(std::count(uploaded.begin(), uploaded.end(), 0.0F), isThere ? 0 : row.components);
            // The corner is a vertex of its own.
            EXPECT_EQ(uploaded.size(), static_cast<size_t>(4 * row.components));
        }
}

} // namespace Atelier::Vel
