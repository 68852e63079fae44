#include "repairs.h"

#include <QtCore/QMap>

#include "console.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr quint64 kMaxLines = 10;

/// The repairs of one kind.
struct Kind {
    QStringList messages; ///< of the first ones
    quint64 count = 0;    ///< of all
};

QMap<LoadDiagnostic::Code, Kind> kindsOf(const LoadReport& report) {
    QMap<LoadDiagnostic::Code, Kind> kinds;
    for (const LoadDiagnostic& diagnostic : report.diagnostics) {
        Kind& kind = kinds[diagnostic.code];
        kind.messages.append(diagnostic.message);
        kind.count = report.diagnosticCounts.value(diagnostic.code);
    }
    return kinds;
}

// A single message may be about several places.
QString lineOf(const Kind& kind) {
    if (kind.messages.size() == 1)
        return kind.messages.first();
    return QStringLiteral("%1 (and %2 more like it)").arg(kind.messages.first()).arg(kind.count - 1);
}

} // namespace

QStringList repairLines(const LoadReport& report) {
    const QMap<LoadDiagnostic::Code, Kind> kinds = kindsOf(report);
    QStringList all;
    QStringList summary;
    quint64 count = 0;
    for (const Kind& kind : kinds) {
        const int kept = kind.messages.size();
        count += kept == LoadReport::kMaxDiagnostics ? kind.count : quint64(kept);
        all += kind.messages;
        summary.append(lineOf(kind));
    }
    return count > kMaxLines ? summary : all;
}

void reportRepairs(const QString& path, const LoadReport& report) {
    for (const QString& line : repairLines(report))
        reportWarning(QStringLiteral("%1: %2").arg(path, line));
}

} // namespace Atelier::Vel::Tool
