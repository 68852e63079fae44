#include "support/messagelog.h"

#include <mutex>

namespace Atelier::Vel::Testing {

namespace {

// Qt's handler takes no user data, hence the one collector per process.
std::vector<LoggedMessage>& collected() {
    static std::vector<LoggedMessage> messages;
    return messages;
}

void collect(QtMsgType level, const QMessageLogContext& context, const QString& text) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    collected().push_back({level, text, QString::fromLatin1(context.category),
                           context.file != nullptr || context.line != 0 || context.function != nullptr});
}

} // namespace

MessageLog::MessageLog() : _previous(qInstallMessageHandler(collect)) {
    collected().clear();
}

MessageLog::~MessageLog() {
    qInstallMessageHandler(_previous);
}

const std::vector<LoggedMessage>& MessageLog::messages() const {
    return collected();
}

std::vector<QString> MessageLog::texts(QtMsgType level) const {
    std::vector<QString> result;
    for (const LoggedMessage& message : collected())
        if (message.level == level)
            result.push_back(message.text);
    return result;
}

void MessageLog::clear() {
    collected().clear();
}

} // namespace Atelier::Vel::Testing

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
