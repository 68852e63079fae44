#include <velmodel/objloader.h>

#include <algorithm>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QColor>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texturemanager.h>

#include "modeldescription.h"
#include "nastytext.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::NastyText;
using Testing::RecordingContext;

const QByteArray kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

class ReadDrawDataTest : public testing::Test {
protected:
    QString write(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    }
    QString path(const QString& name) const { return _directory.filePath(name); }
    QStringList nastyModels(int count) const {
        QStringList models;
        for (int i = 0; i < count; ++i) {
            NastyText nasty(static_cast<unsigned int>(i));
            write(QStringLiteral("lib.mtl"), nasty.mtl(30));
            models +=
                write(QStringLiteral("%1.obj").arg(i),
                      "mtllib lib.mtl\n" + nasty.plain(80) + nasty.obj(120).replace("mtllib", "# mtllib"));
        }
        return models;
    }

    /// Calls, bytes and facts of what `make` puts into a model.
    template<typename Make>
    static QStringList uploaded(const Make& make) {
        const RecordingContext context;
        const std::unique_ptr<GPUModel> model(make());
        QStringList result = context.calls();
        for (const auto& buffer : context.recording().uploads)
            result.append(QString::fromLatin1(buffer.bytes.toHex()));
        return model ? result + Testing::describe(*model) : result + QStringList(QStringLiteral("null"));
    }
    static QStringList loaded(const QString& path) {
        QString error;
        return uploaded([&] { return loadModelFromOBJFile(path, error); });
    }
    static QStringList loaded(const QString& path, const LoadOptions& options) {
        QString error;
        return uploaded([&] { return loadModelFromOBJFile(path, error, options); });
    }
    static QStringList readAndUploaded(const QString& path, const LoadOptions& options = {}) {
        QString error;
        DrawData data = readDrawDataFromOBJFile(path, error, {}, nullptr, options);
        return uploaded([&] {
            auto model = std::make_unique<GPUModel>();
            upload(data, *model, {makeIdentityInstance()});
            return model.release();
        });
    }

private:
    QTemporaryDir _directory;
};

/// All bytes of draw data, and what its commands draw.
QByteArray contentOf(const DrawData& data) {
    QByteArray content(reinterpret_cast<const char*>(data.indices().data),
                       static_cast<int>(data.indices().count * sizeof(quint32)));
    for (const DrawData::Attribute& attribute : data.attributes())
        content += attribute.name.toUtf8() +
                   QByteArray(static_cast<const char*>(attribute.data), static_cast<int>(attribute.bytes));
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int command = 0; command < data.commandCount(drawable); ++command)
            content += data.group(drawable, command).name.toUtf8() + ' ' +
                       QByteArray::number(data.command(drawable, command).count) + '\n';
    return content;
}

} // namespace

TEST_F(ReadDrawDataTest, GivesTheSameAsALoad) {
    const MessageLog log;
    for (const QString& model : nastyModels(20))
        EXPECT_EQ(readAndUploaded(model), loaded(model)) << model.toStdString();
}

TEST_F(ReadDrawDataTest, CanBeReadBeforeTheUpload) {
    write(QStringLiteral("m.mtl"), "newmtl red\nKd 1 0 0\nmap_Kd red.png\n");
    QString error;
    LoadReport report;
    const DrawData data = readDrawDataFromOBJFile(
        write(QStringLiteral("m.obj"), "mtllib m.mtl\n" + kTriangle + "usemtl red\nf 3 2 1\n"), error, {},
        &report);
    EXPECT_TRUE(error.isNull());
    ASSERT_EQ(data.drawableCount(), 1);
    ASSERT_EQ(data.commandCount(0), 2);
    EXPECT_EQ(data.vertexCount(), 3U);
    EXPECT_EQ(data.indices().count, 6U);
    EXPECT_EQ(data.group(0, 1).name, QStringLiteral("red"));
    EXPECT_EQ(data.group(0, 1).material.texturePath(QStringLiteral("map_Kd")),
              path(QStringLiteral("red.png")));
    EXPECT_EQ(data.commandBox(0, 0).maximum, QVector3D(1, 1, 0));
    EXPECT_EQ(report.statistics.triangles, 2U);
    EXPECT_EQ(report.statistics.vertices, 3U);
}

TEST_F(ReadDrawDataTest, FailsLikeALoad) {
    const QString withoutLibrary = write(QStringLiteral("m.obj"), "mtllib none.mtl\n");
    for (const QString& model : {path(QStringLiteral("none.obj")), withoutLibrary}) {
        QString error;
        QString expected;
        LoadReport report;
        EXPECT_TRUE(readDrawDataFromOBJFile(model, error, {}, &report).isNull());
        EXPECT_EQ(loadModelFromOBJFile(model, expected), nullptr);
        EXPECT_FALSE(expected.isEmpty());
        EXPECT_EQ(error, expected);
        ASSERT_EQ(report.diagnostics.size(), 1);
        EXPECT_EQ(report.diagnostics[0].severity, LoadDiagnostic::Severity::Error);
        EXPECT_EQ(report.statistics.vertices, 0U);
    }
}

TEST_F(ReadDrawDataTest, FileWithoutFacesGivesNullAndNoError) {
    QString error;
    LoadReport report;
    EXPECT_TRUE(
        readDrawDataFromOBJFile(write(QStringLiteral("m.obj"), "v 0 0 0\n"), error, {}, &report).isNull());
    EXPECT_TRUE(error.isNull());
    EXPECT_EQ(report.bytesRead, 8);
}

/// Triangles over a number of positions; corner k uses position k % `positions`. All vertex lines differ.
QByteArray mesh(int triangles, int positions) {
    QByteArray text;
    for (int i = 0; i < positions; ++i)
        text += "v " + QByteArray::number(i % 311) + ' ' + QByteArray::number(i) + " 0\n";
    for (int i = 0; i < 3 * triangles; i += 3) {
        text += 'f';
        for (int corner = i; corner < i + 3; ++corner)
            text += ' ' + QByteArray::number(corner % positions + 1);
        text += '\n';
    }
    return text;
}

/// The ways in which corners are merged.
struct MergingWay {
    const char* name;
    QByteArray text;
};

class ReadProgressTest : public ReadDrawDataTest {
protected:
    static std::vector<MergingWay> ways() {
        QByteArray distinct = mesh(70'000, 210'000); // no value comes again: by their bytes
        QByteArray late = mesh(70'000, 30'000) + "vt 0 0\nf 1/1 2/1 3/1\n"; // tuples of lists
        return {{"merged while read", mesh(70'000, 70'000)},
                {"merged by lists", std::move(late)},
                {"not merged", std::move(distinct)}};
    }
};

TEST_F(ReadProgressTest, PhasesFollowInOrderAndEachRises) {
    for (const MergingWay& way : ways()) {
        SCOPED_TRACE(way.name);
        std::vector<LoadStep> steps;
        QString error;
        const LoadProgress progress = [&steps](const LoadStep& step) {
            steps.push_back(step);
            return true;
        };
        ASSERT_FALSE(
            readDrawDataFromOBJFile(write(QStringLiteral("m.obj"), way.text), error, progress).isNull());
        std::vector<LoadPhase> phases;
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const bool isFirst = i == 0 || steps[i].phase != steps[i - 1].phase;
            if (isFirst)
                phases.push_back(steps[i].phase);
            ASSERT_EQ(isFirst, steps[i].done == 0) << i;
            ASSERT_LE(steps[i].done, steps[i].total) << i;
            ASSERT_TRUE(isFirst ||
                        (steps[i].done > steps[i - 1].done && steps[i].total == steps[i - 1].total));
        }
        EXPECT_THAT(phases, ElementsAre(LoadPhase::Reading, LoadPhase::Merging, LoadPhase::Triangulating,
                                        LoadPhase::MakingNormals));
        for (const LoadPhase phase : phases)
            EXPECT_GE(std::count_if(steps.begin(), steps.end(),
                                    [phase](const LoadStep& step) { return step.phase == phase; }),
                      3)
                << static_cast<int>(phase);
    }
}

TEST_F(ReadProgressTest, EachPhaseCanBeCancelled) {
    for (const MergingWay& way : ways())
        for (const LoadPhase phase :
             {LoadPhase::Reading, LoadPhase::Merging, LoadPhase::Triangulating, LoadPhase::MakingNormals}) {
            SCOPED_TRACE(std::string(way.name) + ' ' + std::to_string(static_cast<int>(phase)));
            const QString model = write(QStringLiteral("m.obj"), way.text);
            QString error;
            LoadReport report;
            int last = -1;
            const LoadProgress progress = [&](const LoadStep& step) {
                last = static_cast<int>(step.phase);
                return step.phase != phase || step.done == 0;
            };
            EXPECT_TRUE(readDrawDataFromOBJFile(model, error, progress, &report).isNull());
            EXPECT_EQ(error, QStringLiteral("Loading OBJ file '%1' was cancelled").arg(model));
            EXPECT_EQ(last, static_cast<int>(phase));
            EXPECT_EQ(report.diagnosticCounts.value(LoadDiagnostic::Code::Cancelled), 1U);
        }
}

TEST_F(ReadProgressTest, ExceptionOfTheProgressFunctionReachesTheCaller) {
    const QString model = write(QStringLiteral("m.obj"), mesh(1000, 1000));
    QString error;
    const LoadProgress progress = [](const LoadStep& step) {
        if (step.phase == LoadPhase::Triangulating)
            throw std::runtime_error("enough");
        return true;
    };
    EXPECT_THROW(readDrawDataFromOBJFile(model, error, progress), std::runtime_error);
    EXPECT_TRUE(error.isNull());
}

TEST_F(ReadDrawDataTest, ForbiddenMapsAreWhiteAfterTheUpload) {
    const MessageLog log;
    LoadOptions confined;
    confined.files = LoadOptions::Files::InOwnFolder;
    write(QStringLiteral("m.mtl"),
          "newmtl a\nmap_Kd /outside.png\nmap_Ns in.png\n"
          "newmtl b\nmap_Ka /outside.png\nmap_Ka in.png\nmap_Ks in.png\nmap_Ks /outside.png\n"
          "newmtl c\nKd 1 0 0\n");
    const QString model =
        write(QStringLiteral("m.obj"),
              "mtllib m.mtl\n" + kTriangle + "usemtl a\nf 1 2 3\nusemtl b\nf 1 2 3\nusemtl c\nf 1 2 3\n");
    EXPECT_EQ(readAndUploaded(model, confined), loaded(model, confined));
    QString error;
    const DrawData data = readDrawDataFromOBJFile(model, error, {}, nullptr, confined);
    const RecordingContext context;
    GPUModel uploadedModel;
    ASSERT_TRUE(upload(data, uploadedModel, {makeIdentityInstance()}));
    Texture* const white = TextureManager::Instance().colorTexture(Qt::white);
    const QList<InstanceData> materials = uploadedModel.materials(0)->items();
    ASSERT_EQ(materials.size(), 4);
    EXPECT_EQ(materials[0].texture(QStringLiteral("map_Kd")), white) << "the default material";
    EXPECT_EQ(materials[0].texture(QStringLiteral("map_Ks")), white);
    EXPECT_EQ(materials[1].texture(QStringLiteral("map_Kd")), white);
    EXPECT_EQ(materials[1].texturePath(QStringLiteral("map_Ns")), path(QStringLiteral("in.png")));
    EXPECT_EQ(materials[2].texturePath(QStringLiteral("map_Ka")), path(QStringLiteral("in.png")))
        << "the last line holds";
    EXPECT_EQ(materials[2].texture(QStringLiteral("map_Ks")), white);
    EXPECT_THAT(materials[3].textureNames(), IsEmpty());
    EXPECT_EQ(data.group(0, 0).material.texture(QStringLiteral("map_Kd")), nullptr)
        << "an upload does not change draw data";
}

// Each thread reads all files, so that they read the same one at a time as well as different ones.
TEST_F(ReadDrawDataTest, SeveralThreadsReadAtTheSameTime) {
    const MessageLog log;
    const QStringList models = nastyModels(12);
    std::vector<QByteArray> expected;
    const auto readAll = [&models] {
        std::vector<QByteArray> contents;
        for (const QString& model : models) {
            QString error;
            contents.push_back(contentOf(readDrawDataFromOBJFile(model, error)));
        }
        return contents;
    };
    expected = readAll();
    std::vector<std::future<std::vector<QByteArray>>> results;
    for (int thread = 0; thread < 4; ++thread)
        results.push_back(std::async(std::launch::async, readAll));
    for (auto& result : results)
        EXPECT_TRUE(result.get() == expected);
}

TEST_F(ReadDrawDataTest, ModelsAreMadeAndDestroyedWhileOthersAreRead) {
    const MessageLog log;
    const QStringList models = nastyModels(8);
    const auto read = [](const QString& model) {
        QString error;
        return readDrawDataFromOBJFile(model, error);
    };
    std::vector<QStringList> expected;
    for (const QString& model : models)
        expected.push_back(readAndUploaded(model));
    for (int round = 0; round < 5; ++round) {
        std::vector<std::future<DrawData>> results;
        for (const QString& model : models)
            results.push_back(std::async(std::launch::async, read, model));
        for (std::size_t i = 0; i < results.size(); ++i)
            EXPECT_EQ(uploaded([&] {
                          auto model = std::make_unique<GPUModel>();
                          upload(results[i].get(), *model, {makeIdentityInstance()});
                          return model.release();
                      }),
                      expected[i]);
    }
}

TEST_F(ReadDrawDataTest, DrawDataOutlivesTheThreadThatReadIt) {
    const QString model =
        write(QStringLiteral("m.obj"), kTriangle + QByteArray("f 1 2 3\n").repeated(300'000));
    QString error;
    const DrawData expected = readDrawDataFromOBJFile(model, error);
    const DrawData data =
        std::async(std::launch::async, [&] { return readDrawDataFromOBJFile(model, error); }).get();
    EXPECT_TRUE(contentOf(data) == contentOf(expected));
    EXPECT_EQ(data.indices().count, 900'003U);
}

} // namespace Atelier::Vel
