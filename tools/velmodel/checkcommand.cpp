#include <algorithm>
#include <vector>

#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <velmodel/modelcheck.h>

#include "checkjson.h"
#include "checktext.h"
#include "commandparser.h"
#include "commands.h"
#include "console.h"
#include "jsonoutput.h"
#include "loadflags.h"
#include "progressbar.h"

namespace Atelier::Vel::Tool {

namespace {

struct CheckedFile {
    QString name;
    ModelCheck check;
};

CheckedFile examine(const QString& file, const CheckOptions& options) {
    ProgressBar bar(file, QFileInfo(file).size());
    return {file, checkOBJFile(file, options, [&bar](const LoadStep& step) {
                bar.show(step);
                return true;
            })};
}

QByteArray asText(const std::vector<CheckedFile>& files) {
    const Colours colours = showsColours() ? Colours::On : Colours::Off;
    QStringList texts;
    for (const CheckedFile& file : files)
        texts.append(checkText(file.name, file.check, colours));
    return texts.join(QLatin1Char('\n')).toLocal8Bit();
}

QByteArray asJson(const std::vector<CheckedFile>& files) {
    QJsonArray array;
    for (const CheckedFile& file : files)
        array.append(checkJson(file.name, file.check));
    return jsonText(QJsonDocument(
        QJsonObject{{QStringLiteral("version"), kCheckJsonVersion}, {QStringLiteral("files"), array}}));
}

ExitCode exitCodeOf(const std::vector<CheckedFile>& files, bool isStrict) {
    const bool areDrawable = std::all_of(files.begin(), files.end(), [](const CheckedFile& file) {
        return file.check.isLoadable && file.check.triangles > 0;
    });
    if (!areDrawable)
        return ExitCode::CannotLoad;
    const bool areSound = std::none_of(files.begin(), files.end(), [](const CheckedFile& file) {
        return file.check.hasAtLeast(LoadDiagnostic::Severity::Warning);
    });
    return areSound || !isStrict ? ExitCode::Done : ExitCode::Findings;
}

} // namespace

ExitCode runCheck(const QStringList& arguments) {
    CommandParser parser(QStringLiteral("check"),
                         QStringLiteral("Prints what is wrong with models, and where in their files."));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Print a JSON object with one entry per model."));
    const QCommandLineOption strict(QStringLiteral("strict"),
                                    QStringLiteral("Exit with 5 if there is an error or a warning."));
    parser.options().addOptions({json, strict});
    addConfinedFlag(parser.options());
    parser.options().addPositionalArgument(QStringLiteral("file"), QStringLiteral("The OBJ files."),
                                           QStringLiteral("file..."));
    if (const auto exitCode = parser.parse(arguments))
        return *exitCode;
    const QStringList names = parser.options().positionalArguments();
    if (names.isEmpty())
        return parser.wrongUsage(QStringLiteral("A file is missing."));
    // The findings say what the warnings of a load say, and more.
    if (!parser.options().isSet(QStringLiteral("verbose")))
        installMessageLog(QStringLiteral("error"));

    CheckOptions options;
    if (isConfined(parser.options()))
        options.files = LoadOptions::Files::InOwnFolder;
    std::vector<CheckedFile> files;
    for (const QString& name : names)
        files.push_back(examine(name, options));
    const QString failure =
        writeToStandardOutput(parser.options().isSet(json) ? asJson(files) : asText(files));
    if (!failure.isNull()) {
        reportError(QStringLiteral("standard output: The findings cannot be written: %1").arg(failure));
        return ExitCode::CannotWrite;
    }
    return exitCodeOf(files, parser.options().isSet(strict));
}

} // namespace Atelier::Vel::Tool
