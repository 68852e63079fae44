#include "import/diagnostics/diagnosticlog.h"

#include <gtest/gtest.h>

namespace Atelier::Vel {

namespace {

using Code = LoadDiagnostic::Code;
using Severity = LoadDiagnostic::Severity;

LoadReport reportOf(const DiagnosticLog& log) {
    LoadReport report;
    log.copyTo(report);
    return report;
}

} // namespace

TEST(DiagnosticLogTest, RepairsWithoutLossAreNotes) {
    for (const Code code : {Code::RelocatedLibrary, Code::MatchedName, Code::MapName, Code::RelocatedTexture})
        EXPECT_EQ(severityOf(code), Severity::Note) << int(code);
}

TEST(DiagnosticLogTest, LossesAreWarnings) {
    for (const Code code :
         {Code::MissingLibrary, Code::UndefinedMaterial, Code::UnplacedFace, Code::MissingNormals,
          Code::MalformedFace, Code::UndrawnFace, Code::MissingPosition, Code::MissingNormal,
          Code::MissingTexCoord, Code::UnreadableTexture})
        EXPECT_EQ(severityOf(code), Severity::Warning) << int(code);
}

TEST(DiagnosticLogTest, FailuresAreErrors) {
    for (const Code code : {Code::UnreadableFile, Code::UnreadableLibrary, Code::TooLarge, Code::Cancelled,
                            Code::NoOpenGL, Code::NothingToDraw})
        EXPECT_EQ(severityOf(code), Severity::Error) << int(code);
}

TEST(DiagnosticLogTest, KeepsTheFirstTenOfEachCodeAndCountsAll) {
    DiagnosticLog log;
    int described = 0;
    for (int i = 0; i < 12; ++i)
        for (const Code code : {Code::MapName, Code::MissingLibrary})
            log.add(code, {"file"}, QString::number(i), [&] { return QString::number(++described); });
    const LoadReport report = reportOf(log);
    ASSERT_EQ(report.diagnostics.size(), 2 * LoadReport::kMaxDiagnostics);
    EXPECT_EQ(described, report.diagnostics.size()) << "no message is made in vain";
    EXPECT_EQ(report.diagnostics[18].text, "9");
    EXPECT_EQ(report.diagnostics[18].code, Code::MapName);
    EXPECT_EQ(report.diagnostics[18].severity, Severity::Note);
    EXPECT_EQ(report.diagnosticCounts.value(Code::MapName), 12u);
    EXPECT_EQ(report.diagnosticCounts.value(Code::MissingLibrary), 12u);
    EXPECT_EQ(report.diagnosticCounts.size(), 2);
}

} // namespace Atelier::Vel
