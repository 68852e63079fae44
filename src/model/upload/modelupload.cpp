#include "upload/modelupload.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include <QtGui/QColor>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>
#include <velmodel/modeldatastream.h>

#include "diagnostics.h"
#include "glconstants.h"
#include "streams/streamrequest.h"
#include "streams/streamview.h"
#include "textures/materialtextures.h"
#include "upload/instanceplans.h"

namespace Atelier::Vel {

namespace {

// 0xFFFF is kept free: it is the usual primitive-restart index.
constexpr quint64 kShortIndexLimit = 0xFFFF;

/// Element counts are passed to GL as signed 32-bit numbers.
constexpr quint64 kMaxElements = std::numeric_limits<int>::max();

/// A QList holds less than 2 GiB of pointers.
constexpr int kMaxInstances = 0x7FFFFFF;

/// A copy of the indices, each truncated to 16 bits, with the same number of elements as the source. Null if
/// no such stream is available.
QSharedPointer<ModelDataStream> shortened(const DrawDataContent& content) {
    const quint64 count = content.indices->size();
    QSharedPointer<ModelDataStream> result = requestStream(*content.allocator, kGlUnsignedShort, count);
    const ByteView target = ByteView::of(result.data());
    if (result.isNull() || target.count < count * sizeof(quint16))
        return {};
    const WordView& source = content.indexWords;
    auto* const shorts = reinterpret_cast<quint16*>(target.bytes);
    std::transform(source.words, source.words + source.count, shorts,
                   [](quint32 index) { return static_cast<quint16>(index); });
    std::fill(shorts + source.count, shorts + count, quint16{0});
    return result;
}

/// Fills `buffer` with the indices, which `shorts` has if it is not null.
bool fillIndices(BufferObject& buffer, const DrawDataContent& content, ModelDataStream* shorts, int count,
                 unsigned int usage) {
    return shorts != nullptr
               ? buffer.uploadGLushortData(static_cast<const unsigned short*>(shorts->data(0)), count, usage)
               : buffer.uploadGLuintData(content.indexWords.words, count, usage);
}

bool fillAttribute(BufferObject& buffer, const DrawDataContent::Stream& stream, unsigned int usage) {
    return buffer.uploadArbitraryData(stream.data, static_cast<int>(stream.values->size()), usage,
                                      ModelDataStream::typeSize(stream.values->type()));
}

/// The buffers of an upload with the draw data that fills them.
struct KeptUpload {
    DrawData data;
    QSharedPointer<BufferObject> indexBuffer;
    int indexCount = 0;
    unsigned int indexType = 0;
    std::vector<QSharedPointer<BufferObject>>
        attributeBuffers; ///< in the order of the draw data's attributes
    unsigned int usage = 0;

    bool fill() const {
        const DrawDataContent& content = DrawDataAccess::content(data);
        const bool isShort = indexType == kGlUnsignedShort;
        const QSharedPointer<ModelDataStream> shorts =
            isShort ? shortened(content) : QSharedPointer<ModelDataStream>();
        if ((isShort && shorts.isNull()) ||
            !fillIndices(*indexBuffer, content, shorts.data(), indexCount, usage))
            return false;
        for (std::size_t i = 0; i < attributeBuffers.size(); ++i)
            if (!fillAttribute(*attributeBuffers[i], content.attributes[i], usage))
                return false;
        return true;
    }
};

std::unique_ptr<InstanceDataCollection> makeCollection(const QString& name,
                                                       const QList<InstanceData>& items) {
    return items.isEmpty() ? nullptr : std::make_unique<InstanceDataCollection>(name, items);
}

void addNames(GPUModel& model, int index, const DrawDataContent::Drawable& drawable) {
    auto next = drawable.objectNames.cbegin();
    for (int command = 0; command < drawable.names.size(); ++command) {
        const bool hasObjectName = next != drawable.objectNames.cend() && next->command == command;
        model.addMaterialName(index, command, drawable.names[command]);
        model.addObjectName(index, command, hasObjectName ? (next++)->name : QString());
    }
}

} // namespace

ModelUpload::ModelUpload(OpenGLDeviceContext& context, const UploadOptions& options)
    : _context(context),
      _options(options),
      _copies(options.instances.isEmpty() ? QList<InstanceData>{options.instance} : options.instances) {}

bool ModelUpload::add(DrawDataContent& content, GPUModel& model) {
    if (!canCopy(content) || !addIndices(content))
        return false;
    content.indices.reset();
    for (DrawDataContent::Stream& stream : content.attributes) {
        if (!addAttribute(stream))
            return false;
        stream.values.reset();
    }
    for (DrawDataContent::Drawable& drawable : content.drawables)
        _drawables.append(addDrawable(model, std::move(drawable)));
    return true;
}

void ModelUpload::keep(const DrawData& data, GPUModel& model) const {
    KeptUpload kept{data, _indexBuffer, _indexCount, _indexType, {}, _options.usage};
    for (const Attribute& attribute : _attributes)
        kept.attributeBuffers.push_back(attribute.buffer);
    model.setRefill([kept, fillOthers = model.refill()](GPUModel& lost) {
        return (!fillOthers || fillOthers(lost)) && kept.fill();
    });
}

bool ModelUpload::canCopy(const DrawDataContent& content) const {
    return std::all_of(
        content.drawables.cbegin(), content.drawables.cend(), [&](const DrawDataContent::Drawable& drawable) {
            if (drawable.commands.size() <= kMaxInstances / _copies.size())
                return true;
            qWarning("%d instances of %d commands are too many", _copies.size(), drawable.commands.size());
            return false;
        });
}

QSharedPointer<BufferObject> ModelUpload::bindNewBuffer(unsigned int target) const {
    QSharedPointer<BufferObject> buffer = _context.createBufferObject();
    if (!buffer.isNull()) {
        buffer->setTarget(target);
        buffer->bind();
    }
    return buffer;
}

bool ModelUpload::addIndices(const DrawDataContent& content) {
    const bool isShort = static_cast<qint32>(content.vertexCount) < static_cast<qint32>(kShortIndexLimit);
    const QSharedPointer<ModelDataStream> shorts =
        isShort ? shortened(content) : QSharedPointer<ModelDataStream>();
    const quint64 count = isShort ? content.indices->size() : content.indexWords.count;
    if ((isShort && shorts.isNull()) || count > kMaxElements) {
        reportMissingStream(QStringLiteral("the index buffer"));
        return false;
    }
    _vertexCount = content.vertexCount;
    _indexCount = static_cast<int>(count);
    _indexType = isShort ? kGlUnsignedShort : content.indices->type();
    _indexBuffer = bindNewBuffer(kGlElementArrayBuffer);
    if (_indexBuffer.isNull()) {
        reportMissingObject(QStringLiteral("the index buffer"));
        return false;
    }
    fillIndices(*_indexBuffer, content, shorts.data(), _indexCount, _options.usage);
    _indexBuffer->unbind();
    return true;
}

bool ModelUpload::addAttribute(const DrawDataContent::Stream& stream) {
    const QString purpose = QStringLiteral("the buffer of vertex attribute '%1'").arg(stream.name);
    const quint64 count = stream.values->size();
    const unsigned int type = stream.values->type();
    if (count > kMaxElements) {
        reportMissingStream(purpose);
        return false;
    }
    const Attribute attribute{stream.name, bindNewBuffer(kGlArrayBuffer), stream.components, type};
    if (attribute.buffer.isNull()) {
        reportMissingObject(purpose);
        return false;
    }
    fillAttribute(*attribute.buffer, stream, _options.usage);
    attribute.buffer->unbind();
    _attributes.push_back(attribute);
    return true;
}

// Returns: the instances of each command, whose groups have these ids.
QList<InstanceData> ModelUpload::instancesOf(const QVector<qint32>& ids) const {
    QList<InstanceData> instances;
    instances.reserve(ids.size() * _copies.size());
    for (const qint32 id : ids)
        for (const InstanceData& copy : _copies) {
            instances.append(copy);
            if (!_options.groupIdMember.isNull())
                instances.last().set(_options.groupIdMember, &id, sizeof id);
        }
    return instances;
}

// There may be many groups, so data per group are released as early as possible.
int ModelUpload::addDrawable(GPUModel& model, DrawDataContent::Drawable added) const {
    const QSharedPointer<VertexArrayObject> vao = _context.createVertexArrayObject();
    auto drawable = std::make_unique<DrawBuffers>(nullptr);
    drawable->setVAO(vao);
    drawable->setIndexedDraw(_indexBuffer, _indexCount, _indexType);
    drawable->setVertexCount(static_cast<unsigned int>(_vertexCount));
    drawable->setPrimitiveType(_options.primitiveType);
    drawable->setDrawElementsIndirectCommands(added.commands.constData(), added.commands.size());
    added.commands = {};
    if (vao.isNull())
        reportMissingObject(QStringLiteral("the vertex array of a drawable, which draws nothing"));
    else
        for (const Attribute& attribute : _attributes)
            drawable->VAO()->registerBO(attribute.name, attribute.buffer, attribute.components,
                                        attribute.type);

    const QList<InstanceData> instances = instancesOf(added.ids);
    added.ids = {};
    if (!_options.groupIdMember.isNull())
        added.materials.clear();
    registerPlanOf(added.materials);
    const QString materialName = added.materials.isEmpty() ? QString() : added.materials.first().name();
    auto materials = makeCollection(materialName, added.materials);
    auto instanceCollection = makeCollection(_copies.first().name(), instances);
    const int index = model.add(drawable.release(), _copies.size(), materials.release(),
                                instanceCollection.release(), added.key);
    addNames(model, index, added);
    return index;
}

namespace {

void fillWhites(DrawDataContent::Drawable& drawable) {
    for (const DrawDataContent::White& white : qAsConst(drawable.whites)) {
        InstanceData& material = drawable.materials[white.command];
        Texture* const texture = TextureManager::Instance().colorTexture(Qt::white);
        white.maps.forEach([&](const QString& map) { material.setTexture(map, texture); });
    }
}

// The boxes of the commands, by drawable.
QVector<QVector<GPUModel::Bounds>> commandBounds(const DrawData& data) {
    QVector<QVector<GPUModel::Bounds>> bounds(data.drawableCount());
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int command = 0; command < data.commandCount(drawable); ++command) {
            const DrawData::Box box = data.commandBox(drawable, command);
            bounds[drawable].append({box.minimum, box.maximum, box.isValid});
        }
    return bounds;
}

} // namespace

bool uploadTo(OpenGLDeviceContext& context, DrawData data, GPUModel& model, const UploadOptions& options) {
    if (data.isNull())
        return false;
    TextureManager::Instance().setDefaultLoader(loadMaterialTexture);
    const DrawData kept = options.keepData ? data : DrawData();
    // The upload frees the positions.
    const auto bounds = options.commandBounds ? commandBounds(data) : QVector<QVector<GPUModel::Bounds>>();
    std::shared_ptr<DrawDataContent> content = DrawDataAccess::take(data);
    // Shared content must not be released early. The copy contains only pointers, and only these are
    // released.
    if (content.use_count() > 1)
        content = std::make_shared<DrawDataContent>(*content);
    for (DrawDataContent::Drawable& drawable : content->drawables)
        fillWhites(drawable);
    ModelUpload upload(context, options);
    if (!upload.add(*content, model))
        return false;
    for (int i = 0; i < bounds.size(); ++i)
        model.setCommandBounds(upload.drawables()[i], bounds[i]);
    if (options.keepData)
        upload.keep(kept, model);
    return true;
}

bool upload(const DrawData& data, GPUModel& model, const UploadOptions& options) {
    return upload(DrawData(data), model, options);
}

bool upload(DrawData&& data, GPUModel& model, const UploadOptions& options) {
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    return !context.isNull() && uploadTo(*context, std::move(data), model, options);
}

} // namespace Atelier::Vel
