#include "vieweroptions.h"

#include <QtCore/QCoreApplication>

#include "camera.h"
#include "console.h"

namespace Atelier::Vel::Viewer {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("ViewerOptions", text);
}

QString up() {
    return QStringLiteral("up");
}

QString watch() {
    return QStringLiteral("watch");
}

QString verbose() {
    return QStringLiteral("verbose");
}

void declare(QCommandLineParser& parser) {
    parser.setApplicationDescription(tr("Shows OBJ models in windows. H lists the keys there."));
    parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, tr("Print this text.")});
    parser.addOption({QStringLiteral("version"), tr("Print the version.")});
    parser.addOption({verbose(),
                      tr("Lowest level of the messages on standard error: %1 (default warning).")
                          .arg(Tool::verbosityLevels().join(QStringLiteral(", "))),
                      QStringLiteral("level"), QStringLiteral("warning")});
    parser.addOption({watch(), tr("Load a model again when its files change.")});
    parser.addOption(
        {up(),
         tr("The axis that points up: %1 (default +Y).").arg(Tool::upDirections().join(QStringLiteral(", "))),
         QStringLiteral("axis"), QStringLiteral("+Y")});
    Tool::addLoadFlags(parser);
    parser.addPositionalArgument(QStringLiteral("file"), tr("The OBJ files, each for a window of its own."),
                                 QStringLiteral("[file ...]"));
}

ExitCode print(const QString& text) {
    const QString failure = Tool::writeToStandardOutput(text.toLocal8Bit());
    if (failure.isNull())
        return ExitCode::Done;
    Tool::reportError(tr("standard output: cannot be written: %1").arg(failure));
    return ExitCode::CannotWrite;
}

ExitCode wrongUsage(const QString& cause) {
    Tool::reportError(tr("%1 Try 'velview --help'.").arg(cause));
    return ExitCode::WrongUsage;
}

// Qt prints the path that the program was called by; the name is easier to read.
QString helpText(const QCommandLineParser& parser) {
    QString text = parser.helpText();
    const QString path = QCoreApplication::arguments().constFirst();
    return text.replace(text.indexOf(path), path.size(), QStringLiteral("velview"));
}

// Each object is a part that can be hidden.
Tool::LoadFlags loadFlags(const QCommandLineParser& parser) {
    Tool::LoadFlags flags = Tool::readLoadFlags(parser);
    flags.options.splitObjects = !parser.isSet(QStringLiteral("exact"));
    return flags;
}

} // namespace

std::optional<ViewerOptions> readViewerOptions(const QStringList& arguments, ExitCode& exitCode) {
    QCommandLineParser parser;
    declare(parser);
    const bool isParsed = parser.parse(QStringList(QStringLiteral("velview")) + arguments);
    if (!isParsed)
        exitCode = wrongUsage(parser.errorText());
    else if (parser.isSet(QStringLiteral("help")))
        exitCode = print(helpText(parser));
    else if (parser.isSet(QStringLiteral("version")))
        exitCode = print(QStringLiteral("velview " VELMODEL_VERSION "\n"));
    else if (!Tool::upDirections().contains(parser.value(up())))
        exitCode = wrongUsage(tr("--up takes %1, not '%2'.")
                                  .arg(Tool::upDirections().join(QStringLiteral(", ")), parser.value(up())));
    else if (!Tool::verbosityLevels().contains(parser.value(verbose())))
        exitCode =
            wrongUsage(tr("--verbose takes %1, not '%2'.")
                           .arg(Tool::verbosityLevels().join(QStringLiteral(", ")), parser.value(verbose())));
    else
        return ViewerOptions{loadFlags(parser), parser.value(up()), parser.isSet(watch()),
                             parser.value(verbose()), parser.positionalArguments()};
    return std::nullopt;
}

} // namespace Atelier::Vel::Viewer
