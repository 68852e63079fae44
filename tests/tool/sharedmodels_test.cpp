// Shared models, if available: each is summarised and drawn, or rejected with one line.

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QJsonDocument>
#include <QtGui/QImage>

#include <gmock/gmock.h>

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

} // namespace

} // namespace Atelier::Vel::Testing
