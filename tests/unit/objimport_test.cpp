#include "import/objimport.h"

#include <gtest/gtest.h>

#include "support/clientsource.h"

namespace Atelier::Vel {

namespace {

/// What an import reads of the model "m.obj" with `text`.
struct Imported {
    bool isRead = false;
    bool hasMesh = false;
    QString error;
    LoadReport report;
};

Imported import(const QByteArray& text, DiagnosticLog::Use diagnostics = DiagnosticLog::Use::Kept) {
    const QString name = QStringLiteral("m.obj");
    Testing::ClientSource source;
    source.files.insert(name, text);
    const std::unique_ptr<TextInput> input = TextInput::open(source, name);
    const LoadOptions options;
    ObjImport import(*input, name, source, options, diagnostics);
    ProgressMeter meter{LoadProgress()};
    Imported result;
    result.isRead = import.readText(meter, result.error);
    result.hasMesh = import.hasMesh();
    result.report = import.report();
    return result;
}

} // namespace

TEST(ObjImportTest, TextBecomesAMesh) {
    const Imported triangle = import("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_TRUE(triangle.isRead && triangle.hasMesh);
    EXPECT_EQ(triangle.report.faces, 1u);
    EXPECT_TRUE(triangle.error.isNull());
    const Imported empty = import("# nothing\n");
    EXPECT_TRUE(empty.isRead);
    EXPECT_FALSE(empty.hasMesh);
}

TEST(ObjImportTest, LibraryThatIsNeededEndsIt) {
    const Imported failed = import("f 1 2 3\nmtllib x.mtl\nf 1 2 3\n");
    EXPECT_FALSE(failed.isRead);
    EXPECT_EQ(failed.error, "Failed to load MTL file 'x.mtl'");
    EXPECT_EQ(failed.report.diagnostics.size(), 1);
}

TEST(ObjImportTest, DiagnosticsAreMadeOnRequest) {
    const Imported ignored = import("f x\nusemtl red\nf 1 2 3\n", DiagnosticLog::Use::Ignored);
    EXPECT_TRUE(ignored.report.diagnostics.isEmpty());
    EXPECT_TRUE(ignored.report.diagnosticCounts.isEmpty());
    EXPECT_EQ(ignored.report.droppedFaces, 1u);
}

} // namespace Atelier::Vel
