#include "repairs.h"

#include <gmock/gmock.h>

#include "loaderrors.h"
#include "program.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

using Code = LoadDiagnostic::Code;
using testing::ElementsAre;
using testing::IsEmpty;
using Tool::repairLines;

LoadReport reportOf(std::initializer_list<std::pair<Code, int>> repairs) {
    LoadReport report;
    for (const auto& [code, count] : repairs) {
        for (int i = 0; i < std::min(count, LoadReport::kMaxDiagnostics); ++i)
            report.diagnostics.append({code, LoadDiagnostic::Severity::Warning, "f", 0, 0, "t",
                                       QStringLiteral("%1/%2").arg(int(code)).arg(i)});
        report.diagnosticCounts.insert(code, quint64(count));
    }
    return report;
}

// Two libraries and a material are missing.
QString brokenModel(const TemporaryFolder& folder) {
    return folder.write("m.obj", "mtllib a.mtl\nmtllib b.mtl\nusemtl red\n" + triangleText());
}

} // namespace

TEST(RepairLinesTest, UpToTenRepairsHaveALineEach) {
    EXPECT_THAT(repairLines(reportOf({})), IsEmpty());
    EXPECT_EQ(repairLines(reportOf({{Code::MissingLibrary, 8}, {Code::MapName, 2}})).size(), 10);
}

TEST(RepairLinesTest, MoreHaveALineForEachKind) {
    EXPECT_THAT(
        repairLines(reportOf({{Code::MissingLibrary, 9}, {Code::MapName, 2}, {Code::MatchedName, 1}})),
        ElementsAre(QStringLiteral("%1/0 (and 8 more like it)").arg(int(Code::MissingLibrary)),
                    QStringLiteral("%1/0").arg(int(Code::MatchedName)),
                    QStringLiteral("%1/0 (and 1 more like it)").arg(int(Code::MapName))));
    EXPECT_THAT(repairLines(reportOf({{Code::MissingLibrary, 11}})),
                ElementsAre(QStringLiteral("%1/0 (and 10 more like it)").arg(int(Code::MissingLibrary))));
}

TEST(RepairLinesTest, OneMessageAboutManyPlacesIsOneRepair) {
    LoadReport report = reportOf({{Code::UnplacedFace, 1}});
    report.diagnosticCounts[Code::UnplacedFace] = 400;
    EXPECT_THAT(repairLines(report), ElementsAre(QStringLiteral("%1/0").arg(int(Code::UnplacedFace))));
}

TEST(RepairLinesTest, PlaceIsTheFileWithTheLineIfThatIsKnown) {
    EXPECT_EQ(Tool::placedMessage(
                  {Code::MapName, LoadDiagnostic::Severity::Note, "m%1.obj", 70, 3, "t", "It's %1"}),
              "m%1.obj:70: It's %1");
    EXPECT_EQ(Tool::placedMessage({Code::MapName, LoadDiagnostic::Severity::Note, "m.obj", 0, 0, {}, "Text"}),
              "m.obj: Text");
}

TEST(RepairsTest, MoreThanTenHaveALineForEachKindWithItsFirstPlace) {
    const TemporaryFolder folder;
    const QString path = folder.write("m.obj", triangleText() + QByteArray("f 1 2 9\n").repeated(12) +
                                                   "usemtl x\n" + triangleText());
    const int first = triangleText().count('\n') + 1;
    const ProgramResult result = runProgram({"info", path});
    EXPECT_EQ(result.errors,
              QStringLiteral("velmodel: warning: %1:%3: No library has defined the material 'x': the default "
                             "material is used\n"
                             "velmodel: warning: %1:%2: Position '9' does not exist, and the face is dropped "
                             "(and 11 more like it)\n")
                  .arg(path)
                  .arg(first)
                  .arg(first + 12));
}

TEST(RepairsTest, EveryCommandNamesThemOnStandardError) {
    const TemporaryFolder folder;
    const QString path = brokenModel(folder);
    const QString errors =
        QStringLiteral("velmodel: warning: %1:1: '%2': no such file; the library is left out\n"
                       "velmodel: warning: %1:2: '%3': no such file; the library is left out\n"
                       "velmodel: warning: %1:3: No library has defined the material 'red': the default "
                       "material is used\n")
            .arg(path, folder.path("a.mtl"), folder.path("b.mtl"));
    const QString picture = folder.path("m.png");
    for (const QStringList& arguments : {QStringList{"info", path},
                                         {"dump", path},
                                         {"render", path, "-o", picture, "--resolution", "16x16"}}) {
        const ProgramResult result = runProgram(arguments);
        EXPECT_EQ(result.exitCode, 0) << arguments.first().toStdString();
        EXPECT_EQ(result.errors, errors) << arguments.first().toStdString();
        EXPECT_EQ(runProgram(arguments + QStringList{"--verbose", "error"}).errors, QString());
    }
}

TEST(RepairsTest, ExactLoadsRepairNothing) {
    const TemporaryFolder folder;
    const QString path = brokenModel(folder);
    for (const QStringList& arguments : {QStringList{"info", "--exact", path},
                                         {"dump", "--exact", path},
                                         {"render", "--exact", path, "-o", folder.path("m.png")}}) {
        const ProgramResult result = runProgram(arguments);
        EXPECT_EQ(result.exitCode, 1) << arguments.first().toStdString();
        EXPECT_EQ(result.errors,
                  QStringLiteral("velmodel: %1:1: '%2': no such file\n").arg(path, folder.path("a.mtl")));
    }
}

} // namespace Atelier::Vel::Testing
