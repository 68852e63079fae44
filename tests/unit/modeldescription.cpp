#include "modeldescription.h"

#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>

namespace Atelier::Vel::Testing {

namespace {

void describeItems(const QString& kind, const InstanceDataCollection* collection, QStringList& facts) {
    if (collection == nullptr) {
        facts << kind + QStringLiteral(": none");
        return;
    }
    for (const InstanceData& item : collection->items()) {
        facts << kind + QLatin1Char(' ') + collection->name() + QLatin1Char(' ') + item.name();
        for (const QString& name : item.valueNames())
            facts << name + QLatin1String(" = ") + QString::fromLatin1(item.value(name).toHex());
        for (const QString& name : item.textureNames())
            facts << name + QLatin1String(" = ") + item.texturePath(name) +
                         QStringLiteral(" %1").arg(reinterpret_cast<quintptr>(item.texture(name)));
    }
}

void describeCommands(const GPUModel& model, int drawable, QStringList& facts) {
    const QVector<DrawElementsIndirectCommand> commands =
        model.drawable(drawable)->drawElementsIndirectCommands();
    for (int i = 0; i < commands.size(); ++i)
        facts << QStringLiteral("command %1 %2 %3 %4 %5 of '%6' '%7'")
                     .arg(commands[i].count)
                     .arg(commands[i].instanceCount)
                     .arg(commands[i].firstIndex)
                     .arg(commands[i].baseVertex)
                     .arg(commands[i].baseInstance)
                     .arg(model.materialName(drawable, i), model.objectName(drawable, i));
}

} // namespace

QStringList describe(const GPUModel& model) {
    QStringList facts;
    for (int i = 0; i < model.drawableCount(); ++i) {
        facts << QStringLiteral("drawable %1: %2 vertices, %3 indices of 0x%4, primitive %5")
                     .arg(model.key(i))
                     .arg(model.drawable(i)->vertexCount())
                     .arg(model.drawable(i)->indexCount())
                     .arg(model.drawable(i)->indexType(), 0, 16)
                     .arg(model.drawable(i)->primitiveType());
        describeCommands(model, i, facts);
        describeItems(QStringLiteral("material"), model.materials(i), facts);
        describeItems(QStringLiteral("instance"), model.instances(i), facts);
    }
    return facts;
}

} // namespace Atelier::Vel::Testing
