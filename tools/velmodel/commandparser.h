#pragma once

#include <optional>

#include <QtCore/QCommandLineParser>
#include <QtCore/QStringList>

#include "exitcode.h"

namespace Atelier::Vel::Tool {

/// A QCommandLineParser with the options that every command has, which reports mistakes in the program's
/// format.
class CommandParser {
public:
    /// `command` is the command's name; null for the program itself.
    CommandParser(const QString& command, const QString& description);

    /// The parser to declare options and positional arguments on.
    QCommandLineParser& options() { return _parser; }
    const QCommandLineParser& options() const { return _parser; }

    /// Parses `arguments`, which do not include the program's name. Handles --help and --version.
    /// Returns: the exit code if there is nothing left to do; none if the command has to go on.
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
