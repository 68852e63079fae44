#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QVector>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Testing {

/// The contents of all buffers of a model.
class BufferContents {
public:
    /// Reads them back. Requires: a context that knows the buffers is current.
    explicit BufferContents(const GPUModel& model) {
        for (BufferObject* buffer : buffersOf(model))
            _bytes[buffer] = buffer->readBack();
    }
    /// Uploads them to the same buffers in the current context.
    bool restore(const GPUModel& model) const {
        bool restored = true;
        for (BufferObject* buffer : buffersOf(model)) {
            const QByteArray bytes = _bytes.value(buffer);
            restored =
                buffer->uploadArbitraryData(bytes.constData(), bytes.size(), kStaticDraw, 1) && restored;
        }
        return restored;
    }

private:
    static constexpr unsigned int kStaticDraw = 0x88E4; // GL_STATIC_DRAW

    static QVector<BufferObject*> buffersOf(const GPUModel& model) {
        QVector<BufferObject*> buffers;
        for (int i = 0; i < model.drawableCount(); ++i) {
            buffers.append(model.drawable(i)->indexBuffer().data());
            for (const VertexArrayObject::Stream& stream : model.drawable(i)->VAO()->streams())
                buffers.append(stream.buffer.data());
        }
        return buffers;
    }

    QHash<BufferObject*, QByteArray> _bytes;
};

} // namespace Atelier::Vel::Testing
