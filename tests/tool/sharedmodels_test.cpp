// Shared models, if available: each is summarised and drawn, or rejected with one line.

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QJsonDocument>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "picturecomparison.h"
#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

QStringList sharedModels() {
    const QString folder =
        qEnvironmentVariable("VELMODEL_SHARED_MODELS", VELMODEL_SOURCE_DIR "/../shared/models");
    QStringList models;
    QDirIterator iterator(folder, {"*.obj"}, QDir::Files, QDirIterator::Subdirectories);
    while (iterator.hasNext())
        models.append(iterator.next());
    models.sort();
    return models;
}

// `isThere`: whether the result of the command exists.
void expectDoneOrRefusedInOneLine(const ProgramResult& result, const QString& model, bool isThere) {
    EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode;
    EXPECT_TRUE(isThere || result.exitCode == 1);
    if (result.exitCode == 1) {
        const QStringList lines = result.errors.split('\n', Qt::SkipEmptyParts);
        ASSERT_FALSE(lines.isEmpty());
        EXPECT_TRUE(lines.last().startsWith("velmodel: " + model + ": ")) << lines.last().toStdString();
    }
}

TEST(SharedModelsTest, AreReportedDumpedAndDrawnOrRejectedInOneLine) {
    const QStringList models = sharedModels();
    if (models.isEmpty())
        GTEST_SKIP() << "the shared models are not available";
    const TemporaryFolder folder;
    for (const QString& model : models) {
        SCOPED_TRACE(model.toStdString());
        const ProgramResult info = runProgram({"info", model});
        expectDoneOrRefusedInOneLine(info, model, info.output.startsWith(model.toLocal8Bit() + '\n'));
        const ProgramResult dump = runProgram({"dump", model});
        const QJsonDocument json = QJsonDocument::fromJson(dump.output);
        expectDoneOrRefusedInOneLine(dump, model, json["file"] == model);
        const QString picture = folder.path("picture.png");
        const ProgramResult drawn = runProgram({"render", model, "-o", picture, "--resolution", "32,24"});
        expectDoneOrRefusedInOneLine(drawn, model, QImage(picture).size() == QSize(32, 24));
        QFile::remove(picture);
    }
}

QImage pictureOf(const char* name, const QStringList& options, QString& errors) {
    for (const QString& model : sharedModels())
        if (model.contains(QLatin1String(name))) {
            const ProgramResult result =
                runProgram(QStringList{"render", model, "-o", "-", "--resolution", "160x120"} + options);
            errors = result.errors;
            return QImage::fromData(result.output, "PNG");
        }
    return {};
}

TEST(SharedModelsTest, CubeWithNormalsInItsSidesHasNoSpeckle) {
    QString errors;
    const QImage picture = pictureOf("/32-cube-cc0/", {}, errors);
    if (picture.isNull())
        GTEST_SKIP() << "the shared models are not available";
    // The middles of the front, the right side and the top.
    for (const QPoint middle : {QPoint(70, 75), QPoint(115, 70), QPoint(80, 14)})
        for (int y = -4; y <= 4; ++y)
            for (int x = -9; x <= 9; ++x)
                ASSERT_LE(largestStep(picture.pixel(middle + QPoint(x, y)), picture.pixel(middle)), 1)
                    << middle.x() << ' ' << x << ' ' << y;
}

TEST(SharedModelsTest, DarkTownGetsAdviceThatHelps) {
    QString errors;
    if (pictureOf("/37-amsterdam/", {}, errors).isNull())
        GTEST_SKIP() << "the shared models are not available";
    EXPECT_TRUE(errors.endsWith("Most of the picture is nearly black; --mtl-colours linear shows more\n"))
        << errors.toStdString();
    EXPECT_FALSE(pictureOf("/37-amsterdam/", {"--mtl-colours", "linear"}, errors).isNull());
    EXPECT_EQ(errors, QString());
}

} // namespace

} // namespace Atelier::Vel::Testing
