#include "callrecord.h"

namespace Atelier::Vel::Testing {

// Made by the first call, which comes from a static object of VelModel, and never destroyed.
CallRecord& CallRecord::instance() {
    static auto* const record = new CallRecord;
    return *record;
}

std::string CallRecord::take() {
    std::string text;
    for (const QString& call : qAsConst(_calls))
        text += call.toStdString() + '\n';
    _calls.clear();
    return text;
}

void CallRecord::restart() {
    _calls.clear();
    _names.clear();
    _counts.clear();
}

QString CallRecord::number(const void* object, const QString& kind) {
    if (isPaused)
        return kind;
    const QString name = QStringLiteral("%1 %2").arg(kind).arg(_counts[kind]++);
    _names.insert(object, name);
    return name;
}

QString CallRecord::nameOf(const void* object) const {
    return object == nullptr ? QStringLiteral("null")
                             : _names.value(object, QStringLiteral("0x%1").arg(quintptr(object), 0, 16));
}

QStringList CallRecord::liveObjects() const {
    QStringList names = _names.values();
    names.sort();
    return names;
}

QString quoted(const QString& text) {
    return text.isNull() ? QStringLiteral("null") : QLatin1Char('\'') + text + QLatin1Char('\'');
}

QString hexadecimal(unsigned int value) {
    return QStringLiteral("0x%1").arg(value, 0, 16);
}

} // namespace Atelier::Vel::Testing
