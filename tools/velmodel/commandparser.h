#pragma once

#include <optional>

#include <QtCore/QCommandLineParser>
#include <QtCore/QStringList>

#include "exitcode.h"

namespace Atelier::Vel::Tool {

/// A QCommandLineParser with the options that every command has, and the program's way of saying what is
/// wrong.
class CommandParser {
public:
    /// `command` is the command's name; null for the program itself.
    CommandParser(const QString& command, const QString& description);

    /// Options and positional arguments are declared on this.
    QCommandLineParser& options() { return _parser; }
    const QCommandLineParser& options() const { return _parser; }

    /// Reads `arguments`, without the name in front of them. Answers --help and --version.
    /// Returns: the exit code when there is nothing left to do; none when the command shall go on.
    std::optional<ExitCode> parse(const QStringList& arguments);

    /// Reports a mistake on the command line. Returns: the exit code for it.
    ExitCode wrongUsage(const QString& cause) const;

private:
    QString programName() const;
    QString helpText() const;

    QString _command;
    QCommandLineParser _parser;
    QCommandLineOption _help;
    QCommandLineOption _version;
    QCommandLineOption _verbose;
};

} // namespace Atelier::Vel::Tool
