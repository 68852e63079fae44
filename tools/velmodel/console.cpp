#include "console.h"

#include <cstdio>

#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>

namespace Atelier::Vel::Tool {

namespace {

// Qt's handler takes no user data, hence the variable.
int& verbosity() {
    static int level = 2;
    return level;
}

void printLine(const char* prefix, const QString& text) {
    const QByteArray line = "velmodel: " + QByteArray(prefix) + onOneLine(text).toLocal8Bit() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

// Positions in verbosityLevels(); QtMsgType's own order is not one of severity.
int severity(QtMsgType type) {
    switch (type) {
    case QtDebugMsg:
        return 0;
    case QtInfoMsg:
        return 1;
    case QtWarningMsg:
        return 2;
    default:
        return 3;
    }
}

void logMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    static const char* const kPrefixes[] = {"debug: ", "", "warning: ", "error: "};
    if (severity(type) >= verbosity())
        printLine(kPrefixes[severity(type)], text);
}

} // namespace

QStringList verbosityLevels() {
    return {QStringLiteral("debug"), QStringLiteral("info"), QStringLiteral("warning"),
            QStringLiteral("error")};
}

void installMessageLog(const QString& level) {
    verbosity() = verbosityLevels().indexOf(level);
    qInstallMessageHandler(logMessage);
}

QString onOneLine(const QString& text) {
    QString result;
    for (const QChar character : text) {
        const bool breaks = character.category() == QChar::Other_Control ||
                            character.category() == QChar::Separator_Line ||
                            character.category() == QChar::Separator_Paragraph;
        if (breaks)
            result += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        else
            result += character;
    }
    return result;
}

void reportError(const QString& text) {
    printLine("", text);
}

QString writeToStandardOutput(const QByteArray& bytes) {
    QFile output;
    const bool written = output.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered) &&
                         output.write(bytes) == bytes.size();
    return written ? QString() : output.errorString();
}

} // namespace Atelier::Vel::Tool
