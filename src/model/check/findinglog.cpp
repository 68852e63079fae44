#include "check/findinglog.h"

#include <algorithm>
#include <iterator>

namespace Atelier::Vel {

namespace {

using Severity = LoadDiagnostic::Severity;

struct CodeFacts {
    const char* name;
    Severity severity;
};

// In the order of CheckCode.
constexpr CodeFacts kCodes[] = {
    {"file-unreadable", Severity::Error},
    {"file-too-large", Severity::Error},
    {"nothing-to-draw", Severity::Error},
    {"face-malformed", Severity::Error},
    {"face-too-few-corners", Severity::Error},
    {"face-index-out-of-range", Severity::Error},
    {"face-not-cut", Severity::Error},
    {"texcoord-index-out-of-range", Severity::Warning},
    {"normal-index-out-of-range", Severity::Warning},
    {"face-crosses-itself", Severity::Warning},
    {"face-degenerate", Severity::Warning},
    {"face-duplicate", Severity::Warning},
    {"face-opposite", Severity::Note},
    {"face-not-planar", Severity::Note},
    {"face-repeats-vertex", Severity::Note},
    {"normal-against-face", Severity::Warning},
    {"normal-in-face-plane", Severity::Note},
    {"normal-zero", Severity::Warning},
    {"normal-not-unit", Severity::Note},
    {"texcoords-missing", Severity::Warning},
    {"normals-missing", Severity::Note},
    {"vertex-unused", Severity::Note},
    {"coordinate-not-finite", Severity::Error},
    {"number-malformed", Severity::Warning},
    {"decimal-comma", Severity::Warning},
    {"number-missing", Severity::Warning},
    {"text-behind-numbers", Severity::Warning},
    {"vertex-weight", Severity::Note},
    {"vertex-colour", Severity::Note},
    {"keyword-unknown", Severity::Warning},
    {"keyword-skipped", Severity::Note},
    {"line-too-long", Severity::Warning},
    {"carriage-return", Severity::Warning},
    {"null-character", Severity::Warning},
    {"byte-order-mark", Severity::Note},
    {"foreign-blank", Severity::Note},
    {"library-missing", Severity::Warning},
    {"library-relocated", Severity::Note},
    {"material-undefined", Severity::Warning},
    {"material-defined-twice", Severity::Warning},
    {"material-unused", Severity::Note},
    {"material-black", Severity::Warning},
    {"opacity-contradicts", Severity::Warning},
    {"name-matched", Severity::Note},
    {"map-options", Severity::Note},
    {"texture-missing", Severity::Error},
    {"texture-relocated", Severity::Note},
    {"texture-unreadable", Severity::Error},
    {"texture-too-large", Severity::Error},
    {"far-from-origin", Severity::Warning},
    {"unusual-size", Severity::Note},
};
static_assert(std::size(kCodes) == static_cast<std::size_t>(CheckCode::UnusualSize) + 1);

const CodeFacts& factsOf(CheckCode code) {
    return kCodes[static_cast<std::size_t>(code)];
}

} // namespace

QString checkCodeName(CheckCode code) {
    return QLatin1String(factsOf(code).name);
}

LoadDiagnostic::Severity severityOf(CheckCode code) {
    return factsOf(code).severity;
}

bool ModelCheck::hasAtLeast(LoadDiagnostic::Severity severity) const {
    return std::any_of(findings.cbegin(), findings.cend(),
                       [severity](const CheckFinding& finding) { return finding.severity >= severity; });
}

void FindingLog::moveTo(ModelCheck& check) const {
    for (const Severity severity : {Severity::Error, Severity::Warning, Severity::Note})
        for (auto code = _findings.begin(); code != _findings.end(); ++code)
            if (severityOf(code.key()) == severity)
                check.findings += *code;
    check.counts = _counts;
}

} // namespace Atelier::Vel
