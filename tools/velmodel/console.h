#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFileDevice>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Atelier::Vel::Tool {

/// Sees to it that output which cannot be written is an error to be told, not the end of the program, and
/// that nothing else is ever written to: a file opened later must not take the place of a standard stream
/// that the caller has closed. To be called before anything is opened.
void prepareStandardStreams();

/// The words that --verbose takes, from the most to the fewest messages.
QStringList verbosityLevels();

/// Sends Qt's messages to standard error, one line each, from `level` (one of verbosityLevels()) upwards.
void installMessageLog(const QString& level = QStringLiteral("warning"));

/// `text` with control characters spelled out, so that a strange file name cannot break a line in two.
QString onOneLine(const QString& text);

/// Prints "velmodel: <text>" on standard error, whatever the verbosity.
void reportError(const QString& text);

/// Writes to a file that is open. Returns: false when not all could be written; the file knows why.
bool writeAll(QFileDevice& file, const QByteArray& bytes);

/// Returns: null on success, else why nothing, or not everything, could be written.
QString writeToStandardOutput(const QByteArray& bytes);

} // namespace Atelier::Vel::Tool
