#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Atelier::Vel::Tool {

/// The words that --verbose takes, from the most to the fewest messages.
QStringList verbosityLevels();

/// Sends Qt's messages to standard error, one line each, from `level` (one of verbosityLevels()) upwards.
void installMessageLog(const QString& level = QStringLiteral("warning"));

/// `text` with control characters spelled out, so that a strange file name cannot break a line in two.
QString onOneLine(const QString& text);

/// Prints "velmodel: <text>" on standard error, whatever the verbosity.
void reportError(const QString& text);

/// Returns: null on success, else why nothing, or not everything, could be written.
QString writeToStandardOutput(const QByteArray& bytes);

} // namespace Atelier::Vel::Tool
