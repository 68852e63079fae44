#include "jsonoutput.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include <QtCore/QByteArray>
#include <QtCore/QList>

namespace Atelier::Vel::Tool {

namespace {

// Qt's documents drop the sign of zero. The smallest double is smaller than every float, so it represents
// minus zero until the text is made.
constexpr double kMinusZero = std::numeric_limits<double>::denorm_min();
constexpr const char* kMinusZeroText = "5e-324";

// A reader may convert to float directly or through double. In rare cases the results differ.
bool readsBack(const QByteArray& text, float value) {
    float direct = 0;
    std::from_chars(text.constBegin(), text.constEnd(), direct);
    return direct == value && static_cast<float>(text.toDouble()) == value;
}

double shortestDouble(float value) {
    for (int digits = 1; digits <= std::numeric_limits<float>::max_digits10; ++digits) {
        const QByteArray text = QByteArray::number(double(value), 'g', digits);
        if (readsBack(text, value))
            return text.toDouble();
    }
    return double(value);
}

} // namespace

QJsonValue jsonFloat(float value) {
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    if (value == 0.0F)
        return std::signbit(value) ? kMinusZero : 0.0;
    return shortestDouble(value);
}

QJsonArray jsonFloats(const QByteArray& bytes) {
    QJsonArray result;
    for (int at = 0; at + int(sizeof(float)) <= bytes.size(); at += int(sizeof(float))) {
        float value = 0;
        std::memcpy(&value, bytes.constData() + at, sizeof(value));
        result.append(jsonFloat(value));
    }
    return result;
}

QByteArray jsonText(const QJsonDocument& document) {
    QByteArray text = document.toJson(QJsonDocument::Indented);
    if (!text.contains(kMinusZeroText))
        return text;
    // A number in an array is alone on its line, and strings contain no line breaks.
    QList<QByteArray> lines = text.split('\n');
    for (QByteArray& line : lines) {
        const QByteArray value = line.trimmed();
        if (value == kMinusZeroText || value == QByteArray(kMinusZeroText) + ',')
            line.replace(kMinusZeroText, "-0.0");
    }
    return lines.join('\n');
}

} // namespace Atelier::Vel::Tool
