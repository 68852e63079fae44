#include "console.h"

#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>

namespace Atelier::Vel::Tool {

namespace {

// A variable, since Qt's handler takes no user data.
int& verbosity() {
    static int level = 2;
    return level;
}

QByteArray& consoleName() {
    static QByteArray name = "velmodel";
    return name;
}

void printLine(const char* prefix, const QString& text) {
    const QByteArray line = consoleName() + ": " + prefix + onOneLine(text).toLocal8Bit() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

// The position in verbosityLevels(). The values of QtMsgType are not in the order of severity.
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

// What the decoder of PNG says about oddities that do no harm.
bool isFromLibpng(const QString& text) {
    return text.startsWith(QLatin1String("libpng "));
}

void logMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    if (isFromLibpng(text))
        type = QtDebugMsg;
    static const char* const kPrefixes[] = {"debug: ", "", "warning: ", "error: "};
    if (severity(type) >= verbosity())
        printLine(kPrefixes[severity(type)], text);
}

} // namespace

void prepareStandardStreams() {
    // Sent when the reader of a pipe is gone, and when a file reaches the size limit of the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) == -1)
            open("/dev/null", O_RDONLY); // gets the lowest free number; writing to it fails
}

void setConsoleName(const QByteArray& name) {
    consoleName() = name;
}

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

void reportWarning(const QString& text) {
    logMessage(QtWarningMsg, {}, text);
}

bool writeAll(QFileDevice& file, const QByteArray& bytes) {
    // A disk that fills up accepts a part first. Only another attempt returns the cause.
    for (qint64 done = 0; done < bytes.size();) {
        const qint64 taken = file.write(bytes.constData() + done, bytes.size() - done);
        if (taken <= 0)
            return false;
        done += taken;
    }
    // Here and not later: QSaveFile::commit() loses the cause of a failed flush.
    return file.flush();
}

bool showsColours() {
    return isatty(STDOUT_FILENO) == 1 && qEnvironmentVariableIsEmpty("NO_COLOR") &&
           qEnvironmentVariable("TERM") != QLatin1String("dumb");
}

QString writeToStandardOutput(const QByteArray& bytes) {
    QFile output;
    const bool written =
        output.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered) && writeAll(output, bytes);
    return written ? QString() : output.errorString();
}

} // namespace Atelier::Vel::Tool
