// The code of docs/library.md.
#include <memory>

#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <velgl/gpumodel.h>
#include <velmodel/objloader.h>

#include "support/glfixture.h"
#include "support/messagelog.h"

namespace Atelier::Vel {

namespace {

using LibraryDocumentTest = Testing::GLFixture;

QString writeModel(const QTemporaryDir& folder) {
    const QString path = folder.filePath(QStringLiteral("model.obj"));
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("mtllib missing.mtl\nv 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 1\nusemtl red\nf 1 2 3\n");
    return path;
}

std::unique_ptr<GPUModel> loadForgivingly(const QString& path, QString& error) {
    // clang-format off
    LoadOptions options = LoadOptions::forgiving();
    options.vertexColours = true;
    options.extendedMaterials = true;
    LoadReport report;
    std::unique_ptr<GPUModel> model = loadModelFromOBJFile(path, error, options, {}, &report);
    for (const LoadDiagnostic& diagnostic : qAsConst(report.diagnostics))
        qWarning("%s:%lld: %s", qPrintable(diagnostic.file), diagnostic.line, qPrintable(diagnostic.message));
    // clang-format on
    return model;
}

void readWithoutOpenGL(const QString& path, QString& error, LoadReport& report, QVector3D& normal) {
    LoadOptions options = LoadOptions::forgiving();
    options.normals = NormalOptions::smooth();
    options.normals.outward = true;
    const DrawData data = readDrawDataFromOBJFile(path, error, {}, &report, options);
    if (data.isEmpty())
        return;
    for (const DrawData::Attribute& attribute : data.attributes())
        if (attribute.name == QLatin1String("va_Normal"))
            normal = QVector3D(static_cast<const float*>(attribute.data)[0],
                               static_cast<const float*>(attribute.data)[1],
                               static_cast<const float*>(attribute.data)[2]);
}

DrawData readWithCreases(const QString& path, QString& error) {
    LoadOptions options;
    options.normals = NormalOptions::crease(30);
    options.normals.outward = true;
    options.repairs.generateMissingNormals = true;
    const DrawData data = readDrawDataFromOBJFile(path, error, {}, nullptr, options);
    return data;
}

} // namespace

TEST_F(LibraryDocumentTest, NormalsAreMadeAsAsked) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("cube.obj"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 2 4\nf 1 3 2\n");
    file.close();
    QString error;
    EXPECT_EQ(readWithCreases(path, error).vertexCount(), 6u) << "the edge between the faces is sharp";
}

TEST_F(LibraryDocumentTest, ForgivingLoadShowsTheModelAndSaysWhatItRepaired) {
    const QTemporaryDir folder;
    const Testing::MessageLog log;
    QString error;
    const std::unique_ptr<GPUModel> model = loadForgivingly(writeModel(folder), error);
    ASSERT_NE(model, nullptr) << error.toStdString();
    EXPECT_EQ(model->drawableCount(), 1);
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 2u) << "the library and the material";
}

TEST_F(LibraryDocumentTest, FileIsReadWithoutOpenGL) {
    const QTemporaryDir folder;
    const Testing::MessageLog log;
    QString error;
    LoadReport report;
    QVector3D normal;
    readWithoutOpenGL(writeModel(folder), error, report, normal);
    EXPECT_EQ(normal, QVector3D(0, 0, 1));
    EXPECT_EQ(report.statistics.triangles, 1u);
}

TEST_F(LibraryDocumentTest, SummaryCanBeSilenced) {
    const QTemporaryDir folder;
    const QString path = writeModel(folder);
    QString error;
    LoadReport report;
    QVector3D normal;
    const Testing::MessageLog log;
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    readWithoutOpenGL(path, error, report, normal);
    QLoggingCategory::setFilterRules(QString());
    EXPECT_EQ(log.texts(QtDebugMsg).size(), 0u);
    readWithoutOpenGL(path, error, report, normal);
    EXPECT_EQ(log.texts(QtDebugMsg).size(), 1u);
}

} // namespace Atelier::Vel
