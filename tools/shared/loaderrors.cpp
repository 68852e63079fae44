#include "loaderrors.h"

namespace Atelier::Vel::Tool {

QString placedMessage(const LoadDiagnostic& diagnostic) {
    const QString line = diagnostic.line == 0 ? QString() : QStringLiteral(":%1").arg(diagnostic.line);
    return diagnostic.file + line + QStringLiteral(": ") + diagnostic.message;
}

QString errorLine(const QString& error, const LoadReport& report) {
    if (report.diagnostics.isEmpty() || report.diagnostics.last().severity != LoadDiagnostic::Severity::Error)
        return error;
    const LoadDiagnostic& cause = report.diagnostics.last();
    return cause.line != 0 ? placedMessage(cause) : QStringLiteral("%1: %2").arg(error, cause.message);
}

} // namespace Atelier::Vel::Tool
