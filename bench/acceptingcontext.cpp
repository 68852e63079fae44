#include "acceptingcontext.h"

#include <velgl/bufferobject.h>
#include <velgl/sharedpointer.h>
#include <velgl/vertexarrayobject.h>

#include "checksum.h"
#include "layoutsum.h"

namespace Atelier::Vel::Bench {

namespace {

class AcceptingBuffer : public BufferObject {
public:
    explicit AcceptingBuffer(UploadLog* log) : _log(log) {}

    bool bind() override { return true; }
    void unbind() override {}
    bool uploadGLuintData(const unsigned int* data, int count, unsigned int /*usage*/) override {
        if (_log)
            _log->indices = indexChecksum(data, count);
        return true;
    }
    bool uploadGLushortData(const unsigned short* data, int count, unsigned int /*usage*/) override {
        if (_log)
            _log->indices = indexChecksum(data, count);
        return true;
    }
    bool uploadArbitraryData(const void* data, int count, unsigned int /*usage*/,
                             unsigned long long elementSize) override {
        if (_log)
            _content = streamChecksum(data, std::size_t(count) * elementSize);
        return true;
    }
    quint64 byteCount() const override { return 0; }
    QByteArray readBack() const override { return {}; }

    std::uint64_t content() const { return _content; }

private:
    UploadLog* _log;
    std::uint64_t _content = 0;
};

class AcceptingVertexArray : public VertexArrayObject {
public:
    explicit AcceptingVertexArray(UploadLog* log) : _log(log) {}

    bool bind() override { return true; }
    void unbind() override {}
    void registerBO(const QString& name, QSharedPointer<BufferObject> buffer, int components,
                    unsigned int type) override {
        if (_log)
            _log->streams[name] =
                layoutChecksum(buffer.staticCast<AcceptingBuffer>()->content(), components, type);
    }

private:
    UploadLog* _log;
};

class AcceptingContext : public OpenGLDeviceContext {
public:
    explicit AcceptingContext(UploadLog* log) : _log(log) {}

    bool makeCurrent() override { return true; }
    void doneCurrent() override {}
    QSharedPointer<BufferObject> createBufferObject() override {
        return shared<BufferObject>(std::make_unique<AcceptingBuffer>(_log));
    }
    QSharedPointer<VertexArrayObject> createVertexArrayObject() override {
        return shared<VertexArrayObject>(std::make_unique<AcceptingVertexArray>(_log));
    }

private:
    UploadLog* _log;
};

} // namespace

QSharedPointer<OpenGLDeviceContext> makeAcceptingContext(UploadLog* log) {
    return QSharedPointer<AcceptingContext>::create(log);
}

} // namespace Atelier::Vel::Bench
