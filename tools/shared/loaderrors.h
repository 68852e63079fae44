#pragma once

#include <QtCore/QString>

#include <velmodel/loadreport.h>

namespace Atelier::Vel::Tool {

/// The message behind the file and the line, if that is known: "m.obj:7: No such file".
QString placedMessage(const LoadDiagnostic& diagnostic);

/// One line for a load that failed with `error`: the line of the file at fault, if there is one, else the
/// error and its cause.
QString errorLine(const QString& error, const LoadReport& report);

} // namespace Atelier::Vel::Tool
