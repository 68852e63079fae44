#include "modeldump.h"

#include <algorithm>
#include <cstring>

#include <QtCore/QJsonArray>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/vertexarrayobject.h>

#include "glnames.h"
#include "jsonoutput.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr unsigned int kUnsignedShort = 0x1403;

// All drawables of a model share the index buffer and the vertex buffers, so the first one is enough.
const DrawBuffers* firstDrawable(const GPUModel& model) {
    return model.drawableCount() > 0 ? model.drawable(0) : nullptr;
}

QVector<VertexArrayObject::Stream> sortedStreams(const DrawBuffers& buffers) {
    QVector<VertexArrayObject::Stream> streams = buffers.VAO()->streams();
    std::sort(streams.begin(), streams.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return streams;
}

QString base64(const BufferObject& buffer) {
    return QString::fromLatin1(buffer.readBack().toBase64());
}

QJsonArray attributes(const DrawBuffers& buffers, const DumpOptions& options) {
    QJsonArray result;
    for (const VertexArrayObject::Stream& stream : sortedStreams(buffers)) {
        QJsonObject attribute{{QStringLiteral("name"), stream.name},
                              {QStringLiteral("components"), stream.components},
                              {QStringLiteral("type"), glTypeName(stream.type)}};
        if (options.includeData)
            attribute.insert(QStringLiteral("data"), base64(*stream.buffer));
        result.append(attribute);
    }
    return result;
}

QJsonValue nameOrNull(const QString& name) {
    return name.isNull() ? QJsonValue() : QJsonValue(name);
}

QJsonArray commands(const GPUModel& model, int drawable) {
    QJsonArray result;
    const auto list = model.drawable(drawable)->readBackCommands();
    for (int number = 0; number < list.size(); ++number) {
        const DrawElementsIndirectCommand& command = list[number];
        result.append(QJsonObject{
            {QStringLiteral("count"), qint64(command.count)},
            {QStringLiteral("instanceCount"), qint64(command.instanceCount)},
            {QStringLiteral("firstIndex"), qint64(command.firstIndex)},
            {QStringLiteral("baseVertex"), qint64(command.baseVertex)},
            {QStringLiteral("baseInstance"), qint64(command.baseInstance)},
            {QStringLiteral("material"), nameOrNull(model.materialName(drawable, number))},
            {QStringLiteral("object"), nameOrNull(model.objectName(drawable, number))},
        });
    }
    return result;
}

bool isInteger(const InstanceDataPlan* plan, const QString& name) {
    const QVector<InstanceDataPlan::Member> members =
        plan != nullptr ? plan->members() : QVector<InstanceDataPlan::Member>();
    return std::any_of(members.begin(), members.end(), [&name](const InstanceDataPlan::Member& member) {
        return member.name == name && member.type == InstanceDataPlan::DataType::Int;
    });
}

QJsonArray jsonInteger(const QByteArray& bytes) {
    qint32 value = 0;
    if (bytes.size() != int(sizeof value))
        return {};
    std::memcpy(&value, bytes.constData(), sizeof value);
    return {value};
}

// Values that the plan does not have are floats.
QJsonObject instanceData(const InstanceData& data, const InstanceDataPlan* plan) {
    QJsonObject values;
    for (const QString& name : data.valueNames()) {
        const QByteArray value = data.value(name);
        values.insert(name, isInteger(plan, name) ? jsonInteger(value) : jsonFloats(value));
    }
    QJsonObject textures;
    for (const QString& name : data.textureNames())
        textures.insert(name, nameOrNull(data.texturePath(name)));
    return {{QStringLiteral("name"), data.name()},
            {QStringLiteral("values"), values},
            {QStringLiteral("textures"), textures}};
}

QJsonArray instanceDataList(const InstanceDataCollection* collection) {
    QJsonArray result;
    if (collection != nullptr)
        for (const InstanceData& item : collection->items())
            result.append(instanceData(item, collection->plan()));
    return result;
}

QJsonObject drawable(const GPUModel& model, int index) {
    return {{QStringLiteral("key"), qint64(model.key(index))},
            {QStringLiteral("primitive"), glPrimitiveName(model.drawable(index)->primitiveType())},
            {QStringLiteral("commands"), commands(model, index)},
            {QStringLiteral("materials"), instanceDataList(model.materials(index))},
            {QStringLiteral("instances"), instanceDataList(model.instances(index))}};
}

} // namespace

QJsonObject dumpModel(const GPUModel& model, const DumpOptions& options) {
    const DrawBuffers* first = firstDrawable(model);
    QJsonArray drawables;
    for (int index = 0; index < model.drawableCount(); ++index)
        drawables.append(drawable(model, index));
    QJsonObject result{
        {QStringLiteral("vertexCount"), first ? qint64(first->vertexCount()) : 0},
        {QStringLiteral("indexType"), glTypeName(first ? first->indexType() : kUnsignedShort)},
        {QStringLiteral("indexCount"), first ? first->indexCount() : 0},
        {QStringLiteral("attributes"), first ? attributes(*first, options) : QJsonArray()},
        {QStringLiteral("drawables"), drawables},
    };
    if (options.includeData)
        result.insert(QStringLiteral("indices"), first ? base64(*first->indexBuffer()) : QString());
    return result;
}

quint64 dumpedByteCount(const GPUModel& model) {
    const DrawBuffers* first = firstDrawable(model);
    if (first == nullptr)
        return 0;
    quint64 bytes = first->indexBuffer()->byteCount();
    for (const VertexArrayObject::Stream& stream : first->VAO()->streams())
        bytes += stream.buffer->byteCount();
    return bytes;
}

} // namespace Atelier::Vel::Tool
