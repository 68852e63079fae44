// Models from elsewhere, where they are at hand: each is told and drawn, or refused in one line.

#include <QtCore/QDir>
#include <QtCore/QDirIterator>

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

void expectDoneOrRefusedInOneLine(const ProgramResult& result, const QString& model) {
    EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode;
    if (result.exitCode == 1) {
        const QStringList lines = result.errors.split('\n', Qt::SkipEmptyParts);
        ASSERT_FALSE(lines.isEmpty());
        EXPECT_TRUE(lines.last().startsWith("velmodel: " + model + ": ")) << lines.last().toStdString();
    }
}

TEST(SharedModelsTest, AreToldDumpedAndDrawnOrRefusedInOneLine) {
    const QStringList models = sharedModels();
    if (models.isEmpty())
        GTEST_SKIP() << "no shared models here";
    const TemporaryFolder folder;
    for (const QString& model : models) {
        SCOPED_TRACE(model.toStdString());
        expectDoneOrRefusedInOneLine(runProgram({"info", model}), model);
        expectDoneOrRefusedInOneLine(runProgram({"dump", model}), model);
        const QString picture = folder.path("picture.png");
        expectDoneOrRefusedInOneLine(runProgram({"render", model, "-o", picture, "--resolution", "32,24"}),
                                     model);
    }
}

} // namespace

} // namespace Atelier::Vel::Testing
