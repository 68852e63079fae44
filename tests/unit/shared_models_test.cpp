#include <velmodel/objloader.h>

#include <map>
#include <memory>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QTextStream>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>

#include "literal/literalobjloader.h"
#include "modeldescription.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {

namespace {

using Testing::describe;
using Testing::literalLoadModel;
using Testing::MessageLog;
using Testing::RecordingContext;

QDir modelsDirectory() {
    const QByteArray named = qgetenv("VELMODEL_SHARED_MODELS");
    return QDir(named.isEmpty() ? QStringLiteral(VELMODEL_SOURCE_DIR "/../shared/models")
                                : QFile::decodeName(named));
}

/// One row of the catalogue.
struct Model {
    QString path;
    quint64 triangles = 0;
};

std::map<int, Model> catalogue() {
    QFile file(modelsDirectory().filePath(QStringLiteral("CATALOGUE.md")));
    std::map<int, Model> models;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return models;
    // Number and file come first; the size of the largest polygon and the triangles follow the line counts.
    const QRegularExpression row(QStringLiteral(
        "^\\| (\\d\\d) \\| `([^`]+)` \\|.*\\| \\d+ / \\d+ / \\d+ / \\d+ \\| \\d+ \\| (\\d+) \\|"));
    QTextStream stream(&file);
    while (!stream.atEnd()) {
        const QRegularExpressionMatch match = row.match(stream.readLine());
        if (match.hasMatch())
            models[match.captured(1).toInt()] = {modelsDirectory().filePath(match.captured(2)),
                                                 match.captured(3).toULongLong()};
    }
    return models;
}

/// What a model gives where the catalogue, which counts n - 2 for every face with valid indices, says
/// otherwise.
struct Exception {
    int number;
    const char* missingLibrary; ///< the load fails and names this file; null if it succeeds
    quint64 triangles;
    const char* reason;
};

const Exception kExceptions[] = {
    {3, nullptr, 36, "six faces use a material that the library does not define"},
    {4, "materials\\\\box-windows-paths.mtl", 0, "a backslash is a character like any other in a file name"},
    {5, "box", 0, "a library name ends at white space"},
    {9, nullptr, 12, "corners without a position take one of zeros, and their faces are cut"},
    {19, nullptr, 64, "there are no normals to index: the given indices do not count, and normals are made"},
    {21, "00.mtl", 0, "the library is missing"},
    {25, nullptr, 2, "two faces use a material that the library does not define"},
    {27, "blender_331_space", 0, "a library name ends at white space"},
};

const Exception* exceptionFor(int number) {
    for (const Exception& exception : kExceptions)
        if (exception.number == number)
            return &exception;
    return nullptr;
}

// The catalogue counts no triangles of a text in UTF-16, and none of faces whose normals do not exist.
quint64 trianglesOfForgivingLoad(int number, quint64 listed) {
    constexpr int kUtf16 = 13;
    constexpr int kMissingNormals = 19;
    return number == kUtf16 ? 12 : number == kMissingNormals ? 64 : listed;
}

} // namespace

class SharedModelsTest : public testing::Test {
protected:
    void SetUp() override {
        _models = catalogue();
        if (_models.empty())
            GTEST_SKIP() << "no models at " << modelsDirectory().path().toStdString();
    }

    std::map<int, Model> _models;
    MessageLog _log; // the models contain lines that are logged
};

TEST_F(SharedModelsTest, CatalogueIsComplete) {
    EXPECT_EQ(_models.size(), 38u);
}

TEST_F(SharedModelsTest, EveryModelGivesItsTrianglesOrTheDefinedError) {
    for (const auto& [number, model] : _models) {
        const RecordingContext context;
        const Exception* exception = exceptionFor(number);
        QString error;
        LoadReport report;
        const std::unique_ptr<GPUModel> loaded(
            loadModelFromOBJFile(model.path, error, LoadProgress(), &report));
        if (exception != nullptr && exception->missingLibrary != nullptr) {
            const QString library =
                QFileInfo(model.path).dir().filePath(QString::fromLatin1(exception->missingLibrary));
            EXPECT_EQ(loaded, nullptr) << number;
            EXPECT_EQ(error, QStringLiteral("Failed to load MTL file '%1'").arg(QDir::cleanPath(library)))
                << number;
            continue;
        }
        EXPECT_NE(loaded, nullptr) << number << error.toStdString();
        EXPECT_TRUE(error.isNull()) << number;
        EXPECT_EQ(report.statistics.triangles, exception == nullptr ? model.triangles : exception->triangles)
            << number << ", " << report.droppedFaces << " dropped, " << report.statistics.untriangulatedFaces
            << " uncut, " << report.facesWithoutGroup << " without group, "
            << report.statistics.substitutedCorners << " corners";
    }
}

TEST_F(SharedModelsTest, ForgivingLoadsShowEveryFaceWithPositions) {
    for (const auto& [number, model] : _models) {
        QString error;
        LoadReport report;
        const DrawData data =
            readDrawDataFromOBJFile(model.path, error, {}, &report, LoadOptions::forgiving());
        EXPECT_TRUE(error.isNull()) << number << error.toStdString();
        EXPECT_EQ(report.statistics.triangles, trianglesOfForgivingLoad(number, model.triangles))
            << number << ", " << report.droppedFaces << " dropped, " << report.statistics.untriangulatedFaces
            << " uncut, " << report.facesWithoutGroup << " without group";
        EXPECT_EQ(data.isEmpty(), report.statistics.triangles == 0) << number;
    }
}

TEST_F(SharedModelsTest, EveryModelLoadsAsLiterally) {
    for (const auto& [number, model] : _models) {
        QString error;
        QString expectedError;
        const RecordingContext context;
        const std::unique_ptr<GPUModel> loaded(loadModelFromOBJFile(model.path, error));
        const RecordingContext literalContext;
        const std::unique_ptr<GPUModel> expected(literalLoadModel(model.path, expectedError));
        ASSERT_EQ(error, expectedError) << number;
        ASSERT_EQ(context.calls(), literalContext.calls()) << number;
        const auto& uploads = context.recording().uploads;
        for (size_t i = 0; i < uploads.size(); ++i)
            ASSERT_TRUE(uploads[i].bytes == literalContext.recording().uploads[i].bytes) << number;
        if (loaded != nullptr) {
            ASSERT_EQ(describe(*loaded), describe(*expected)) << number;
        }
    }
}

} // namespace Atelier::Vel
