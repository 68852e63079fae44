#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include "commandparser.h"
#include "commands.h"
#include "console.h"
#include "jsonoutput.h"
#include "loadflags.h"
#include "modelsession.h"
#include "modelsummary.h"

namespace Atelier::Vel::Tool {

namespace {

/// Adds the summaries of the files that can be loaded. Returns: false if not all of them can be drawn.
bool summarizeAll(const QStringList& files, const LoadFlags& flags, QVector<ModelSummary>& summaries) {
    bool areDrawable = true;
    for (const QString& file : files) {
        const std::optional<LoadedData> loaded = loadData(file, flags);
        if (loaded)
            summaries.append(summarize(file, *loaded));
        areDrawable = loaded && isDrawable(file, *loaded) && areDrawable;
    }
    return areDrawable;
}

QByteArray asText(const QVector<ModelSummary>& summaries) {
    QStringList texts;
    for (const ModelSummary& summary : summaries)
        texts.append(summaryText(summary));
    return texts.join(QLatin1Char('\n')).toLocal8Bit();
}

QByteArray asJson(const QVector<ModelSummary>& summaries) {
    QJsonArray array;
    for (const ModelSummary& summary : summaries)
        array.append(summaryJson(summary));
    return jsonText(QJsonDocument(array));
}

} // namespace

ExitCode runInfo(const QStringList& arguments) {
    CommandParser parser(
        QStringLiteral("info"),
        QStringLiteral("Prints the contents of models, and what loading and drawing them costs."));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Print a JSON array with one object per model."));
    parser.options().addOption(json);
    addLoadFlags(parser.options());
    parser.options().addPositionalArgument(QStringLiteral("file"), QStringLiteral("The OBJ files."),
                                           QStringLiteral("file..."));
    if (const auto exitCode = parser.parse(arguments))
        return *exitCode;
    const QStringList files = parser.options().positionalArguments();
    if (files.isEmpty())
        return parser.wrongUsage(QStringLiteral("A file is missing."));

    QVector<ModelSummary> summaries;
    const bool areDrawable = summarizeAll(files, readLoadFlags(parser.options()), summaries);
    const QString failure =
        writeToStandardOutput(parser.options().isSet(json) ? asJson(summaries) : asText(summaries));
    if (!failure.isNull()) {
        reportError(QStringLiteral("standard output: The summary cannot be written: %1").arg(failure));
        return ExitCode::CannotWrite;
    }
    return areDrawable ? ExitCode::Done : ExitCode::CannotLoad;
}

} // namespace Atelier::Vel::Tool
