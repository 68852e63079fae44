#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFileDevice>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Atelier::Vel::Tool {

/// Prepares standard input, output and error for errors. A failed write returns an error and does not end the
/// program. A standard stream that the caller has closed is opened on /dev/null, so that no file that is
/// opened later takes its number and receives the output.
/// Requires: no file has been opened yet.
void prepareStandardStreams();

/// Sets the name that each line on standard error begins with; "velmodel" by default.
void setConsoleName(const QByteArray& name);

/// The values of --verbose, from the lowest severity to the highest.
QStringList verbosityLevels();

/// Prints Qt's messages on standard error, one line each, from the severity `level` upwards.
/// Requires: `level` is one of verbosityLevels().
void installMessageLog(const QString& level = QStringLiteral("warning"));

/// `text` with control characters and line breaks escaped, so that a file name cannot break a line.
QString onOneLine(const QString& text);

/// Prints "NAME: <text>" on standard error at every verbosity.
void reportError(const QString& text);
/// Prints "NAME: warning: <text>" on standard error, unless only errors are wanted.
void reportWarning(const QString& text);

/// Writes to an open file. Returns: false if not all bytes could be written; file.errorString() has the
/// cause.
bool writeAll(QFileDevice& file, const QByteArray& bytes);

/// Whether standard output is a terminal whose user wants colours: NO_COLOR is not set.
bool showsColours();

/// Writes all bytes. Returns: null on success, else the cause of the failure.
QString writeToStandardOutput(const QByteArray& bytes);

} // namespace Atelier::Vel::Tool
