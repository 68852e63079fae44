#include "repairs.h"

#include <QtCore/QMap>

#include "console.h"
#include "loaderrors.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr quint64 kMaxLines = 10;

/// The repairs of one kind.
struct Kind {
    QStringList texts; ///< of the first ones
    quint64 count = 0; ///< of all
};

QString message(const LoadDiagnostic& diagnostic) {
    return diagnostic.message;
}

// A single text may be about several places.
QString lineOf(const Kind& kind) {
    if (kind.texts.size() == 1)
        return kind.texts.first();
    return kind.texts.first() + QStringLiteral(" (and %1 more like it)").arg(kind.count - 1);
}

// One line for each repair, or for each kind.
QStringList linesOf(const LoadReport& report, QString (*text)(const LoadDiagnostic&)) {
    QMap<LoadDiagnostic::Code, Kind> kinds;
    for (const LoadDiagnostic& diagnostic : report.diagnostics) {
        Kind& kind = kinds[diagnostic.code];
        kind.texts.append(text(diagnostic));
        kind.count = report.diagnosticCounts.value(diagnostic.code);
    }
    QStringList all;
    QStringList summary;
    quint64 count = 0;
    for (const Kind& kind : qAsConst(kinds)) {
        const int kept = kind.texts.size();
        count += kept == LoadReport::kMaxDiagnostics ? kind.count : quint64(kept);
        all += kind.texts;
        summary.append(lineOf(kind));
    }
    return count > kMaxLines ? summary : all;
}

} // namespace

QStringList repairLines(const LoadReport& report) {
    return linesOf(report, message);
}

void reportRepairs(const LoadReport& report) {
    for (const QString& line : linesOf(report, placedMessage))
        reportWarning(line);
}

} // namespace Atelier::Vel::Tool
