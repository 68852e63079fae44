#include "upload/modelupload.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/vertexarrayobject.h>

#include "diagnostics.h"
#include "streams/streamview.h"
#include "upload/streamrequest.h"

namespace Atelier::Vel {

namespace {

constexpr unsigned int kArrayBuffer = 0x8892;        // GL_ARRAY_BUFFER
constexpr unsigned int kElementArrayBuffer = 0x8893; // GL_ELEMENT_ARRAY_BUFFER
constexpr unsigned int kUnsignedShort = 0x1403;      // GL_UNSIGNED_SHORT

// 0xFFFF is kept free: it is the usual primitive-restart index.
constexpr quint64 kShortIndexLimit = 0xFFFF;

/// Element counts go to the GL as signed 32-bit numbers.
constexpr quint64 kMaxElements = std::numeric_limits<int>::max();

/// A copy of the indices, each cut to 16 bits, of as many elements as the source; null when there is no such
/// stream.
QSharedPointer<ModelDataStream> shortened(ModelDataStream& indices, ModelDataStreamAllocator& allocator) {
    const quint64 count = indices.size();
    QSharedPointer<ModelDataStream> result = requestStream(allocator, kUnsignedShort, count);
    const ByteView target = ByteView::of(result.data());
    if (result.isNull() || target.count < count * sizeof(quint16))
        return {};
    const WordView source = WordView::of(&indices);
    auto* const shorts = reinterpret_cast<quint16*>(target.bytes);
    std::transform(source.words, source.words + source.count, shorts,
                   [](quint32 index) { return static_cast<quint16>(index); });
    std::fill(shorts + source.count, shorts + count, quint16{0});
    return result;
}

std::unique_ptr<InstanceDataCollection> makeCollection(const QString& name,
                                                       const QList<InstanceData>& items) {
    return items.isEmpty() ? nullptr : std::make_unique<InstanceDataCollection>(name, items);
}

/// Numbers of commands and the names of their objects, in order; those without a name are left out.
using ObjectNames = std::vector<std::pair<int, QString>>;

void addNames(GPUModel& model, int drawable, const QVector<QString>& materialNames,
              const ObjectNames& objectNames) {
    auto next = objectNames.cbegin();
    for (int command = 0; command < materialNames.size(); ++command) {
        const bool hasObjectName = next != objectNames.cend() && next->first == command;
        model.addMaterialName(drawable, command, materialNames[command]);
        model.addObjectName(drawable, command, hasObjectName ? (next++)->second : QString());
    }
}

} // namespace

ModelUpload::ModelUpload(OpenGLDeviceContext& context, UploadOptions options)
    : _context(context), _options(std::move(options)) {}

QSharedPointer<BufferObject> ModelUpload::bindNewBuffer(unsigned int target) const {
    QSharedPointer<BufferObject> buffer = _context.createBufferObject();
    if (!buffer.isNull()) {
        buffer->setTarget(target);
        buffer->bind();
    }
    return buffer;
}

bool ModelUpload::addIndices(ModelDataStream& indices, quint64 vertexCount,
                             ModelDataStreamAllocator& allocator) {
    const bool isShort = static_cast<qint32>(vertexCount) < static_cast<qint32>(kShortIndexLimit);
    const QSharedPointer<ModelDataStream> shorts =
        isShort ? shortened(indices, allocator) : QSharedPointer<ModelDataStream>();
    const quint64 count = isShort ? indices.size() : WordView::of(&indices).count;
    if ((isShort && shorts.isNull()) || count > kMaxElements) {
        reportMissingStream(QStringLiteral("the index buffer"));
        return false;
    }
    _vertexCount = vertexCount;
    _indexCount = static_cast<int>(count);
    _indexType = isShort ? kUnsignedShort : indices.type();
    _indexBuffer = bindNewBuffer(kElementArrayBuffer);
    if (_indexBuffer.isNull()) {
        reportMissingObject(QStringLiteral("the index buffer"));
        return false;
    }
    if (isShort)
        _indexBuffer->uploadGLushortData(static_cast<const unsigned short*>(shorts->data(0)), _indexCount,
                                         _options.usage);
    else
        _indexBuffer->uploadGLuintData(static_cast<const unsigned int*>(indices.data(0)), _indexCount,
                                       _options.usage);
    _indexBuffer->unbind();
    return true;
}

bool ModelUpload::addAttribute(const QString& name, ModelDataStream& values, int components) {
    const QString purpose = QStringLiteral("the buffer of vertex attribute '%1'").arg(name);
    if (values.size() > kMaxElements) {
        reportMissingStream(purpose);
        return false;
    }
    const Attribute attribute{name, bindNewBuffer(kArrayBuffer), components, values.type()};
    if (attribute.buffer.isNull()) {
        reportMissingObject(purpose);
        return false;
    }
    attribute.buffer->uploadArbitraryData(values.data(0), static_cast<int>(values.size()), _options.usage,
                                          ModelDataStream::typeSize(values.type()));
    attribute.buffer->unbind();
    _attributes.push_back(attribute);
    return true;
}

// Of what stands once per group, no more is held at a time than has to be: groups may be many.
void ModelUpload::addDrawable(GPUModel& model, quint64 drawKey, QVector<DrawElementsIndirectCommand> commands,
                              const QVector<QString>& names,
                              const std::function<DrawGroup(const QString& name)>& groupOf) const {
    const QSharedPointer<VertexArrayObject> vao = _context.createVertexArrayObject();
    auto drawable = std::make_unique<DrawBuffers>(nullptr);
    drawable->setVAO(vao);
    drawable->setIndexedDraw(_indexBuffer, _indexCount, _indexType);
    drawable->setVertexCount(static_cast<unsigned int>(_vertexCount));
    drawable->setPrimitiveType(_options.primitiveType);
    drawable->setDrawElementsIndirectCommands(commands.constData(), commands.size());
    commands = {};
    if (vao.isNull())
        reportMissingObject(QStringLiteral("the vertex array of a drawable, which draws nothing"));
    else
        for (const Attribute& attribute : _attributes)
            drawable->VAO()->registerBO(attribute.name, attribute.buffer, attribute.components,
                                        attribute.type);

    QList<InstanceData> materials;
    QList<InstanceData> instances;
    ObjectNames objectNames;
    instances.reserve(names.size());
    for (int i = 0; i < names.size(); ++i) {
        const DrawGroup group = groupOf(names[i]);
        if (!group.objectName.isNull())
            objectNames.emplace_back(i, group.objectName);
        instances.append(_options.instanceData);
        if (_options.groupIdMember.isNull())
            materials.append(group.material);
        else
            instances.last().set(_options.groupIdMember, &group.id, sizeof group.id);
    }
    const QString materialName = materials.isEmpty() ? QString() : materials.first().name();
    auto materialCollection = makeCollection(materialName, materials);
    auto instanceCollection = makeCollection(_options.instanceData.name(), instances);
    const int index =
        model.add(drawable.release(), 1, materialCollection.release(), instanceCollection.release(), drawKey);
    addNames(model, index, names, objectNames);
}

} // namespace Atelier::Vel
