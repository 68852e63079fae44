#include <QtCore/QJsonDocument>

#include "commandparser.h"
#include "commands.h"
#include "console.h"
#include "jsonoutput.h"
#include "loadflags.h"
#include "modeldump.h"
#include "modelsession.h"

namespace Atelier::Vel::Tool {

namespace {

// Qt's strings hold at most 2 GiB. Base64, 16-bit characters and a growing buffer multiply the size.
constexpr quint64 kMaxBytes = quint64(256) << 20;

} // namespace

ExitCode runDump(const QStringList& arguments) {
    CommandParser parser(
        QStringLiteral("dump"),
        QStringLiteral("Prints a model's draw data as one JSON object, read back from OpenGL."));
    const QCommandLineOption noData(QStringLiteral("no-data"),
                                    QStringLiteral("Leave out the contents of the buffers."));
    parser.options().addOption(noData);
    addLoadFlags(parser.options());
    parser.options().addPositionalArgument(QStringLiteral("file"), QStringLiteral("The OBJ file."));
    if (const auto exitCode = parser.parse(arguments))
        return *exitCode;
    const QStringList files = parser.options().positionalArguments();
    if (files.size() != 1)
        return parser.wrongUsage(
            QStringLiteral("Exactly one file is required; %1 are given.").arg(files.size()));

    ModelSession session(readLoadFlags(parser.options()));
    if (!session.open())
        return ExitCode::NoOpenGL;
    const LoadedModel loaded = session.load(files.first());
    if (!loaded.model)
        return ExitCode::CannotLoad;

    const DumpOptions options{!parser.options().isSet(noData)};
    QString failure;
    if (options.includeData && dumpedByteCount(*loaded.model) > kMaxBytes) {
        failure = QStringLiteral("its buffers are too big for one JSON text; --no-data leaves them out");
    } else {
        QJsonObject dump = dumpModel(*loaded.model, options);
        dump.insert(QStringLiteral("file"), files.first());
        failure = writeToStandardOutput(jsonText(QJsonDocument(dump)));
    }
    if (failure.isNull())
        return isDrawable(files.first(), loaded) ? ExitCode::Done : ExitCode::CannotLoad;
    reportError(QStringLiteral("%1: The dump cannot be written: %2").arg(files.first(), failure));
    return ExitCode::CannotWrite;
}

} // namespace Atelier::Vel::Tool
