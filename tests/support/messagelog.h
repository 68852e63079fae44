#pragma once

#include <ostream>
#include <vector>

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace Atelier::Vel::Testing {

/// One message from Qt's logger.
struct LoggedMessage {
    QtMsgType level = QtDebugMsg;
    QString text;
    QString category;
    bool hasContext = false; ///< it carried a file, a line or a function

    friend bool operator==(const LoggedMessage& a, const LoggedMessage& b) {
        return a.level == b.level && a.text == b.text;
    }
    friend void PrintTo(const LoggedMessage& message, std::ostream* out) {
        *out << message.level << ": " << message.text.toStdString();
    }
};

/// Collects the messages that any thread logs during its lifetime. Requires: it is read after the other
/// threads have ended, and only one exists at a time.
class MessageLog {
public:
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    const std::vector<LoggedMessage>& messages() const;
    /// The texts of the messages of one level, in order.
    std::vector<QString> texts(QtMsgType level) const;
    void clear();

private:
    QtMessageHandler _previous;
};

} // namespace Atelier::Vel::Testing

QT_BEGIN_NAMESPACE
/// Lets GoogleTest print strings as text.
void PrintTo(const QString& text, std::ostream* out);
QT_END_NAMESPACE
