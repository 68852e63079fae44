#include "parts.h"

#include <algorithm>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>

namespace Atelier::Vel::Tool {

namespace {

constexpr int kMaxNames = 20; // in a message

bool belongsTo(const QString& part, const QString& name) {
    return part == name || part.startsWith(name + QLatin1Char('/'));
}

// In the order of the commands, each once.
QStringList partsOf(const GPUModel& model) {
    QStringList parts;
    for (int drawable = 0; drawable < model.drawableCount(); ++drawable) {
        const int commands = model.drawable(drawable)->drawElementsIndirectCommands().size();
        for (int command = 0; command < commands; ++command)
            parts.append(model.objectName(drawable, command));
    }
    parts.removeAll(QString());
    parts.removeDuplicates();
    return parts;
}

QString unknownPart(const QString& name, const QStringList& parts) {
    QString text = QStringLiteral("There is no part '%1'; ").arg(name);
    if (parts.isEmpty())
        return text + QStringLiteral("the model has no parts");
    text += QStringLiteral("the parts are '%1'").arg(parts.mid(0, kMaxNames).join(QStringLiteral("', '")));
    if (parts.size() > kMaxNames)
        text += QStringLiteral(" and %1 more").arg(parts.size() - kMaxNames);
    return text;
}

} // namespace

DrawFilter partFilter(const GPUModel& model, const QStringList& names, QString& error) {
    if (names.isEmpty())
        return {};
    const QStringList parts = partsOf(model);
    for (const QString& name : names) {
        const auto isNamed = [&](const QString& part) { return belongsTo(part, name); };
        if (error.isNull() && std::none_of(parts.begin(), parts.end(), isNamed))
            error = unknownPart(name, parts);
    }
    return DrawFilter(model, [&](int drawable, int command) {
        const QString part = model.objectName(drawable, command);
        const auto namesIt = [&](const QString& name) { return belongsTo(part, name); };
        return std::any_of(names.begin(), names.end(), namesIt);
    });
}

} // namespace Atelier::Vel::Tool
