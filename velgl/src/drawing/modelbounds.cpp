#include "drawing/modelbounds.h"

#include <algorithm>
#include <cmath>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "objects/scalartype.h"

namespace Atelier::Vel {

namespace {

// Buffers that drawables share are read once.
class BufferContents {
public:
    const QByteArray& of(const QSharedPointer<BufferObject>& buffer) {
        const auto known = _contents.constFind(buffer.data());
        return known != _contents.constEnd() ? *known : *_contents.insert(buffer.data(), buffer->readBack());
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

void include(GPUModel::Bounds& bounds, const QVector3D& position) {
    for (int i = 0; i < 3; ++i)
        if (!std::isfinite(position[i]))
            return;
    if (!bounds.isValid)
        bounds = {position, position, true};
    for (int i = 0; i < 3; ++i) {
        bounds.minimum[i] = std::min(bounds.minimum[i], position[i]);
        bounds.maximum[i] = std::max(bounds.maximum[i], position[i]);
    }
}

void includeCommand(GPUModel::Bounds& bounds, const DrawElementsIndirectCommand& command,
                    const QByteArray& indices, unsigned int indexType, const Positions& positions) {
    const qint64 end = qint64(command.firstIndex) + command.count;
    if (command.instanceCount == 0 || end > indices.size() / scalarSize(indexType))
        return;
    for (qint64 i = command.firstIndex; i < end; ++i) {
        const qint64 vertex = static_cast<qint64>(scalarAt(indices.constData(), indexType, i)) +
                              static_cast<qint32>(command.baseVertex);
        if (vertex >= 0 && vertex < positions.count())
            include(bounds, positions.at(vertex));
    }
}

const VertexArrayObject::Stream* findStream(const QVector<VertexArrayObject::Stream>& streams,
                                            const QString& name) {
    for (const VertexArrayObject::Stream& stream : streams)
        if (stream.name == name && stream.buffer && stream.components > 0 && scalarSize(stream.type) > 0)
            return &stream;
    return nullptr;
}

void includeDrawable(GPUModel::Bounds& bounds, const DrawBuffers& buffers, const QString& attribute,
                     BufferContents& contents) {
    if (!buffers.VAO() || !buffers.indexBuffer() || scalarSize(buffers.indexType()) == 0)
        return;
    const QVector<VertexArrayObject::Stream> streams = buffers.VAO()->streams();
    const VertexArrayObject::Stream* stream = findStream(streams, attribute);
    if (!stream)
        return;
    const QByteArray positionBytes = contents.of(stream->buffer);
    const QByteArray indices = contents.of(buffers.indexBuffer());
    const Positions positions{positionBytes, stream->type, stream->components};
    for (const DrawElementsIndirectCommand& command : buffers.drawElementsIndirectCommands())
        includeCommand(bounds, command, indices, buffers.indexType(), positions);
}

} // namespace

GPUModel::Bounds boundsOf(const ModelDrawables& drawables, const QString& attribute) {
    GPUModel::Bounds bounds;
    BufferContents contents;
    for (const std::unique_ptr<ModelDrawable>& drawable : drawables)
        includeDrawable(bounds, *drawable->buffers, attribute, contents);
    return bounds;
}

} // namespace Atelier::Vel
