#include <QtCore/QCoreApplication>

#include "commandparser.h"
#include "commands.h"
#include "console.h"

namespace Atelier::Vel::Tool {

namespace {

struct Command {
    const char* name;
    const char* summary;
    ExitCode (*run)(const QStringList& arguments);
};

constexpr Command kCommands[] = {
    {"info", "the contents of models and their cost", runInfo},
    {"dump", "a model's draw data as JSON, read back from OpenGL", runDump},
    {"render", "a picture of a model", runRender},
    {"check", "what is wrong with models, and where", runCheck},
};

QString description() {
    QString text = QStringLiteral("Shows what VelModel makes of polygon meshes. Commands:\n");
    for (const Command& command : kCommands)
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.name), -8)
                    .arg(QLatin1String(command.summary));
    return text + QStringLiteral("'velmodel COMMAND --help' describes a command.");
}

ExitCode run(const QStringList& arguments) {
    CommandParser parser(QString(), description());
    parser.options().setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.options().addPositionalArgument(QStringLiteral("command"), QStringLiteral("One of the above."),
                                           QStringLiteral("command ..."));
    if (const auto exitCode = parser.parse(arguments))
        return *exitCode;
    QStringList rest = parser.options().positionalArguments();
    if (rest.isEmpty())
        return parser.wrongUsage(QStringLiteral("A command is missing."));
    const QString name = rest.takeFirst();
    for (const Command& command : kCommands)
        if (name == QLatin1String(command.name))
            return command.run(rest);
    return parser.wrongUsage(QStringLiteral("There is no command '%1'.").arg(name));
}

} // namespace

} // namespace Atelier::Vel::Tool

int main(int argc, char** argv) {
    Atelier::Vel::Tool::prepareStandardStreams();
    const QCoreApplication application(argc, argv);
    Atelier::Vel::Tool::installMessageLog();
    return static_cast<int>(Atelier::Vel::Tool::run(application.arguments().mid(1)));
}
