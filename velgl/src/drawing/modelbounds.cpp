#include "drawing/modelbounds.h"

#include <algorithm>
#include <optional>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "drawing/boxes.h"
#include "drawing/drawbuffersaccess.h"
#include "drawing/drawcommands.h"
#include "objects/bufferaccess.h"
#include "objects/bufferoperations.h"
#include "objects/scalartype.h"

namespace Atelier::Vel {

namespace {

using Bounds = GPUModel::Bounds;

// Limits the memory for the boxes of a model whose commands change all the time, to a few megabytes.
constexpr int kMaxKeptRanges = 0x10000;

// Buffers that drawables share are read once.
class BufferContents {
public:
    // Returns: the bytes; nothing if they cannot be read now, but possibly later.
    std::optional<QByteArray> of(const QSharedPointer<BufferObject>& buffer) {
        auto known = _contents.constFind(buffer.data());
        if (known == _contents.constEnd())
            known = _contents.insert(buffer.data(), buffer->readBack());
        const quint64 expected = buffer->byteCount();
        if (known->isEmpty() && expected > 0 && expected <= quint64(kMaxReadBackSize))
            return {};
        return *known;
    }

private:
    QHash<const BufferObject*, QByteArray> _contents;
};

struct Positions {
    const QByteArray& bytes;
    unsigned int type;
    int components;

    qint64 count() const { return bytes.size() / (qint64(components) * scalarSize(type)); }

    // Components that the stream does not have are 0.
    QVector3D at(qint64 vertex) const {
        QVector3D position;
        for (int i = 0; i < std::min(components, 3); ++i)
            position[i] = static_cast<float>(scalarAt(bytes.constData(), type, vertex * components + i));
        return position;
    }
};

Bounds boxOf(const DrawnRange& range, const QByteArray& indices, unsigned int indexType,
             const Positions& positions) {
    Bounds bounds;
    const qint64 end = qint64(range.firstIndex) + range.count;
    if (end > indices.size() / scalarSize(indexType))
        return bounds;
    for (qint64 i = range.firstIndex; i < end; ++i) {
        const qint64 vertex = static_cast<qint64>(scalarAt(indices.constData(), indexType, i)) +
                              static_cast<qint32>(range.baseVertex);
        if (vertex >= 0 && vertex < positions.count())
            include(bounds, positions.at(vertex));
    }
    return bounds;
}

std::optional<VertexArrayObject::Stream> findStream(const DrawBuffers& buffers, const QString& name) {
    if (!buffers.VAO() || !buffers.indexBuffer() || scalarSize(buffers.indexType()) == 0)
        return {};
    const QVector<VertexArrayObject::Stream> streams = buffers.VAO()->streams();
    for (const VertexArrayObject::Stream& stream : streams)
        if (stream.name == name && stream.buffer && stream.components > 0 && scalarSize(stream.type) > 0)
            return stream;
    return {};
}

BoxSource sourceOf(const DrawBuffers& buffers, const VertexArrayObject::Stream& stream) {
    return {BufferAccess::contentRevision(*stream.buffer),
            BufferAccess::contentRevision(*buffers.indexBuffer()), stream.components, stream.type,
            buffers.indexType()};
}

// The ranges of the commands that draw something. Those beyond the announced indices do not.
QVector<DrawnRange> rangesOf(const DrawCommands& commands, int indexCount) {
    QVector<DrawnRange> ranges;
    for (int number = 0; number < commands.count(); ++number) {
        const DrawElementsIndirectCommand& command = commands.asSet()[number];
        if (!commands.isHidden(number) && command.instanceCount > 0 && command.count > 0 &&
            qint64(command.firstIndex) + command.count <= indexCount)
            ranges.append({command.firstIndex, command.count, command.baseVertex});
    }
    return ranges;
}

// Adds the boxes of the ranges that are not known yet.
// Returns: false if the buffers cannot be read.
bool addMissing(DrawableBoxes& boxes, const QVector<DrawnRange>& ranges, const DrawBuffers& buffers,
                const VertexArrayObject::Stream& stream, BufferContents& contents) {
    const auto isKnown = [&](const DrawnRange& range) { return boxes.ranges.contains(range); };
    if (std::all_of(ranges.cbegin(), ranges.cend(), isKnown))
        return true;
    const std::optional<QByteArray> positionBytes = contents.of(stream.buffer);
    const std::optional<QByteArray> indices = contents.of(buffers.indexBuffer());
    if (!positionBytes || !indices)
        return false;
    if (boxes.ranges.size() + ranges.size() > kMaxKeptRanges)
        boxes.ranges.clear();
    const Positions positions{*positionBytes, stream.type, stream.components};
    for (const DrawnRange& range : ranges)
        if (!isKnown(range))
            boxes.ranges.insert(range, boxOf(range, *indices, buffers.indexType(), positions));
    return true;
}

Bounds boxOf(const DrawBuffers& buffers, const VertexArrayObject::Stream& stream, DrawableBoxes& boxes,
             BufferContents& contents) {
    const BoxSource source = sourceOf(buffers, stream);
    if (!source.isSameAs(boxes.source)) {
        boxes = {};
        boxes.source = source;
    }
    // A copy that is still shared shows that the commands were not replaced.
    const DrawCommands& commands = DrawBuffersAccess::commands(buffers);
    if (boxes.isTotalKnown && commands.asSet().isSharedWith(boxes.commands) &&
        commands.visibilityRevision() == boxes.visibilityRevision && buffers.indexCount() == boxes.indexCount)
        return boxes.total;
    boxes.isTotalKnown = false;
    const QVector<DrawnRange> ranges = rangesOf(commands, buffers.indexCount());
    if (!addMissing(boxes, ranges, buffers, stream, contents))
        return {};
    Bounds total;
    for (const DrawnRange& range : ranges)
        include(total, boxes.ranges.value(range));
    boxes.isTotalKnown = true;
    boxes.commands = commands.asSet();
    boxes.visibilityRevision = commands.visibilityRevision();
    boxes.indexCount = buffers.indexCount();
    boxes.total = total;
    return total;
}

} // namespace

Bounds boundsOf(const ModelDrawables& drawables, const QString& attribute) {
    Bounds bounds;
    BufferContents contents;
    for (std::size_t i = 0; i < drawables.size(); ++i) {
        ModelDrawable* const drawable = drawables[i].get();
        if (!drawable)
            continue;
        if (const std::optional<VertexArrayObject::Stream> stream = findStream(*drawable->buffers, attribute))
            include(bounds, boxOf(*drawable->buffers, *stream, drawable->boxes[attribute], contents));
    }
    return bounds;
}

} // namespace Atelier::Vel
