#include "check/loadfindings.h"

#include <optional>

namespace Atelier::Vel {

namespace {

std::optional<CheckCode> checkCodeOf(LoadDiagnostic::Code code) {
    switch (code) {
    case LoadDiagnostic::Code::MissingLibrary:
    case LoadDiagnostic::Code::UnreadableLibrary:
        return CheckCode::LibraryMissing;
    case LoadDiagnostic::Code::RelocatedLibrary:
        return CheckCode::LibraryRelocated;
    case LoadDiagnostic::Code::UndefinedMaterial:
        return CheckCode::MaterialUndefined;
    case LoadDiagnostic::Code::MatchedName:
        return CheckCode::NameMatched;
    case LoadDiagnostic::Code::MapName:
        return CheckCode::MapOptions;
    case LoadDiagnostic::Code::RelocatedTexture:
        return CheckCode::TextureRelocated;
    case LoadDiagnostic::Code::UnreadableFile:
        return CheckCode::FileUnreadable;
    case LoadDiagnostic::Code::TooLarge:
        return CheckCode::FileTooLarge;
    default:
        return std::nullopt;
    }
}

} // namespace

void addLoadFindings(const LoadReport& report, FindingLog& log) {
    QMap<CheckCode, quint64> kept;
    for (const LoadDiagnostic& diagnostic : report.diagnostics) {
        const std::optional<CheckCode> code = checkCodeOf(diagnostic.code);
        if (!code)
            continue;
        ++kept[*code];
        log.add(*code, {diagnostic.file, diagnostic.line, diagnostic.column}, [&](CheckFinding& finding) {
            finding.text = diagnostic.text;
            finding.message = diagnostic.message;
        });
    }
    for (auto count = report.diagnosticCounts.begin(); count != report.diagnosticCounts.end(); ++count)
        if (const std::optional<CheckCode> code = checkCodeOf(count.key()))
            log.count(*code, *count - kept[*code]);
}

} // namespace Atelier::Vel
