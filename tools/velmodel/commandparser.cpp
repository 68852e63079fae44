#include "commandparser.h"

#include <QtCore/QCoreApplication>

#include "console.h"

namespace Atelier::Vel::Tool {

namespace {

ExitCode print(const QString& text) {
    const QString failure = writeToStandardOutput(text.toLocal8Bit());
    if (failure.isNull())
        return ExitCode::Done;
    reportError(QStringLiteral("standard output: cannot be written: %1").arg(failure));
    return ExitCode::CannotWrite;
}

} // namespace

CommandParser::CommandParser(const QString& command, const QString& description)
    : _command(command),
      _help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Print this text.")),
      _version(QStringLiteral("version"), QStringLiteral("Print the version.")),
      _verbose(QStringLiteral("verbose"),
               QStringLiteral("Lowest level of the messages on standard error: %1 (default warning).")
                   .arg(verbosityLevels().join(QStringLiteral(", "))),
               QStringLiteral("level"), QStringLiteral("warning")) {
    _parser.setApplicationDescription(description);
    _parser.addOptions({_help, _version, _verbose});
}

std::optional<ExitCode> CommandParser::parse(const QStringList& arguments) {
    if (!_parser.parse(QStringList(programName()) + arguments))
        return wrongUsage(_parser.errorText());
    if (_parser.isSet(_help))
        return print(helpText());
    if (_parser.isSet(_version))
        return print(QStringLiteral("velmodel " VELMODEL_VERSION "\n"));
    if (!verbosityLevels().contains(_parser.value(_verbose)))
        return wrongUsage(QStringLiteral("--verbose takes %1, not '%2'.")
                              .arg(verbosityLevels().join(QStringLiteral(", ")), _parser.value(_verbose)));
    if (_command.isNull() || _parser.isSet(_verbose))
        installMessageLog(_parser.value(_verbose));
    return std::nullopt;
}

ExitCode CommandParser::wrongUsage(const QString& cause) const {
    reportError(QStringLiteral("%1 Try '%2 --help'.").arg(cause, programName()));
    return ExitCode::WrongUsage;
}

QString CommandParser::programName() const {
    return _command.isNull() ? QStringLiteral("velmodel") : QStringLiteral("velmodel ") + _command;
}

QString CommandParser::helpText() const {
    // Qt prints the path that the program was called by; the command's name is easier to read.
    QString text = _parser.helpText();
    const QString path = QCoreApplication::arguments().constFirst();
    return text.replace(text.indexOf(path), path.size(), programName());
}

} // namespace Atelier::Vel::Tool
