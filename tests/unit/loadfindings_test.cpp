#include "check/loadfindings.h"

#include <gmock/gmock.h>

namespace Atelier::Vel {

namespace {

using Code = LoadDiagnostic::Code;
using testing::IsEmpty;

LoadReport reportOf(Code code) {
    LoadReport report;
    LoadDiagnostic diagnostic;
    diagnostic.code = code;
    diagnostic.file = "m.obj";
    diagnostic.line = 7;
    diagnostic.column = 2;
    diagnostic.text = "text";
    diagnostic.message = "message";
    report.diagnostics.append(diagnostic);
    report.diagnosticCounts[code] = 12;
    return report;
}

} // namespace

TEST(LoadFindingsTest, DiagnosticsOfFilesAndNamesAreFindings) {
    const std::pair<Code, CheckCode> codes[] = {
        {Code::MissingLibrary, CheckCode::LibraryMissing},
        {Code::UnreadableLibrary, CheckCode::LibraryMissing},
        {Code::RelocatedLibrary, CheckCode::LibraryRelocated},
        {Code::UndefinedMaterial, CheckCode::MaterialUndefined},
        {Code::MatchedName, CheckCode::NameMatched},
        {Code::MapName, CheckCode::MapOptions},
        {Code::RelocatedTexture, CheckCode::TextureRelocated},
        {Code::UnreadableFile, CheckCode::FileUnreadable},
        {Code::TooLarge, CheckCode::FileTooLarge},
    };
    for (const auto& [code, expected] : codes) {
        FindingLog log;
        addLoadFindings(reportOf(code), log);
        ModelCheck check;
        log.moveTo(check);
        ASSERT_EQ(check.findings.size(), 1);
        const CheckFinding& finding = check.findings[0];
        EXPECT_EQ(finding.code, expected);
        EXPECT_EQ(finding.file, "m.obj");
        EXPECT_EQ(finding.line, 7);
        EXPECT_EQ(finding.column, 2);
        EXPECT_EQ(finding.text, "text");
        EXPECT_EQ(finding.message, "message");
        EXPECT_EQ(check.counts.value(expected), 12U);
    }
}

TEST(LoadFindingsTest, WhatTheExaminationFindsItselfIsNotTaken) {
    for (const Code code : {Code::UnplacedFace, Code::MissingNormals, Code::MalformedFace, Code::UndrawnFace,
                            Code::MissingPosition, Code::Cancelled, Code::NothingToDraw}) {
        FindingLog log;
        addLoadFindings(reportOf(code), log);
        ModelCheck check;
        log.moveTo(check);
        EXPECT_THAT(check.findings, IsEmpty());
        EXPECT_THAT(check.counts, IsEmpty());
    }
}

} // namespace Atelier::Vel
