#include "checkingcontext.h"

#include <algorithm>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/vertexarrayobject.h>
#include <velmodel/modeldatastream.h>

#include "claim.h"

namespace Atelier::Vel::Fuzzing {

namespace {

class CheckingBuffer : public BufferObject {
public:
    bool bind() override { return true; }
    void unbind() override {}
    // Index uploads of both types also end here.
    bool uploadArbitraryData(const void* data, int count, unsigned int /*usage*/,
                             unsigned long long elementSize) override {
        require(count >= 0, "an upload has no negative length");
        _content.clear();
        if (count > 0)
            _content = QByteArray(static_cast<const char*>(data), count * static_cast<int>(elementSize));
        return true;
    }
    quint64 byteCount() const override { return static_cast<quint64>(_content.size()); }
    QByteArray readBack() const override { return _content; }

private:
    QByteArray _content;
};

class CheckingContext : public OpenGLDeviceContext {
public:
    bool makeCurrent() override { return true; }
    void doneCurrent() override {}
    QSharedPointer<BufferObject> createBufferObject() override {
        return QSharedPointer<CheckingBuffer>::create();
    }
};

template<typename Index>
bool areBelow(const QByteArray& bytes, quint64 limit) {
    const auto* first = reinterpret_cast<const Index*>(bytes.constData());
    return std::all_of(first, first + static_cast<std::size_t>(bytes.size()) / sizeof(Index),
                       [limit](Index index) { return index < limit; });
}

void requireIndices(const DrawBuffers& drawable) {
    const QByteArray indices = drawable.indexBuffer()->readBack();
    const quint64 size = ModelDataStream::typeSize(drawable.indexType());
    require(size == 2 || size == 4, "indices have 16 or 32 bits");
    require(static_cast<quint64>(indices.size()) == size * static_cast<quint64>(drawable.indexCount()),
            "the index buffer is as long as its count says");
    require(size == 2 ? areBelow<quint16>(indices, drawable.vertexCount())
                      : areBelow<quint32>(indices, drawable.vertexCount()),
            "indices are below the vertex count");
}

void requireStreams(const DrawBuffers& drawable) {
    for (const VertexArrayObject::Stream& stream : drawable.VAO()->streams())
        require(stream.buffer->byteCount() == ModelDataStream::typeSize(stream.type) *
                                                  static_cast<quint64>(stream.components) *
                                                  drawable.vertexCount(),
                "a stream has the vertex count of the drawable");
}

} // namespace

QSharedPointer<OpenGLDeviceContext> makeCheckingContext() {
    return QSharedPointer<CheckingContext>::create();
}

quint64 requireDrawable(const GPUModel& model) {
    quint64 drawn = 0;
    for (int i = 0; i < model.drawableCount(); ++i) {
        const DrawBuffers& drawable = *model.drawable(i);
        requireIndices(drawable);
        requireStreams(drawable);
        for (const DrawElementsIndirectCommand& command : drawable.drawElementsIndirectCommands()) {
            require(quint64{command.firstIndex} + command.count <=
                        static_cast<quint64>(drawable.indexCount()),
                    "a command lies inside the index buffer");
            require(command.count % 3 == 0, "a command draws whole triangles");
            require(command.baseVertex == 0 && command.instanceCount == 1,
                    "a command draws once what it is given");
            drawn += command.count;
        }
    }
    return drawn;
}

} // namespace Atelier::Vel::Fuzzing
