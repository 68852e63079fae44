#include "support/recordingcontext.h"

namespace Atelier::Vel::Testing {

namespace {

class RecordingBuffer : public BufferObject {
public:
    RecordingBuffer(QSharedPointer<Recording> recording, int number)
        : _recording(std::move(recording)), _name(QStringLiteral("buffer %1: ").arg(number)) {}

    void setTarget(unsigned int target) override {
        note(QStringLiteral("target 0x%1").arg(target, 0, 16));
        BufferObject::setTarget(target);
    }
    bool bind() override {
        note(QStringLiteral("bind"));
        return true;
    }
    void unbind() override { note(QStringLiteral("unbind")); }
    bool uploadGLuintData(const unsigned int* data, int count, unsigned int usage) override {
        return keep(QStringLiteral("uint"), data, count, usage, sizeof *data);
    }
    bool uploadGLushortData(const unsigned short* data, int count, unsigned int usage) override {
        return keep(QStringLiteral("ushort"), data, count, usage, sizeof *data);
    }
    bool uploadArbitraryData(const void* data, int count, unsigned int usage,
                             unsigned long long elementSize) override {
        return keep(QStringLiteral("elements of %1 bytes").arg(elementSize), data, count, usage, elementSize);
    }

private:
    void note(const QString& call) { _recording->calls.append(_name + call); }
    bool keep(const QString& kind, const void* data, int count, unsigned int usage, quint64 elementSize) {
        note(QStringLiteral("%1 %2, usage 0x%3").arg(count).arg(kind).arg(usage, 0, 16));
        const int bytes = count * static_cast<int>(elementSize);
        _recording->uploads.push_back(
            {QByteArray(static_cast<const char*>(data), bytes), count, elementSize});
        return true;
    }

    QSharedPointer<Recording> _recording;
    QString _name;
};

class RecordingVertexArray : public VertexArrayObject {
public:
    RecordingVertexArray(QSharedPointer<Recording> recording, int number)
        : _recording(std::move(recording)), _name(QStringLiteral("array %1: ").arg(number)) {}

    void registerBO(const QString& name, QSharedPointer<BufferObject> buffer, int components,
                    unsigned int type) override {
        _recording->calls.append(
            _name +
            QStringLiteral("%1, %2 components, type 0x%3").arg(name).arg(components).arg(type, 0, 16));
        VertexArrayObject::registerBO(name, buffer, components, type);
    }

private:
    QSharedPointer<Recording> _recording;
    QString _name;
};

class Context : public OpenGLDeviceContext {
public:
    explicit Context(QSharedPointer<Recording> recording) : _recording(std::move(recording)) {}

    QSharedPointer<BufferObject> createBufferObject() override {
        _recording->calls.append(QStringLiteral("new buffer %1").arg(_buffers));
        return QSharedPointer<RecordingBuffer>::create(_recording, _buffers++);
    }
    QSharedPointer<VertexArrayObject> createVertexArrayObject() override {
        _recording->calls.append(QStringLiteral("new array %1").arg(_arrays));
        return QSharedPointer<RecordingVertexArray>::create(_recording, _arrays++);
    }

private:
    QSharedPointer<Recording> _recording;
    int _buffers = 0;
    int _arrays = 0;
};

} // namespace

RecordingContext::RecordingContext() : _recording(QSharedPointer<Recording>::create()) {
    OpenGLDeviceContext::setCurrent(QSharedPointer<Context>::create(_recording));
}

RecordingContext::~RecordingContext() {
    OpenGLDeviceContext::setCurrent({});
}

} // namespace Atelier::Vel::Testing
