#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSharedPointer>
#include <QtCore/QVector>

#include <velgl/bufferobject.h>

namespace Atelier::Vel::Testing {

/// A buffer class of a client: it keeps its content in memory and does not use OpenGL.
class MemoryBuffer : public BufferObject {
public:
    template<typename Element>
    static QSharedPointer<MemoryBuffer> of(const QVector<Element>& elements) {
        auto buffer = QSharedPointer<MemoryBuffer>::create();
        buffer->uploadArbitraryData(elements.constData(), elements.size(), 0, sizeof(Element));
        return buffer;
    }

    bool bind() override { return true; }
    void unbind() override {}
    bool uploadArbitraryData(const void* data, int count, unsigned int /*usage*/,
                             unsigned long long elementSize) override {
        _content = QByteArray(static_cast<const char*>(data), count * static_cast<int>(elementSize));
        return true;
    }
    quint64 byteCount() const override { return static_cast<quint64>(_content.size()); }
    QByteArray readBack() const override {
        ++_readCount;
        return _content;
    }

    /// Returns: the number of calls of readBack().
    int readCount() const { return _readCount; }

private:
    QByteArray _content;
    mutable int _readCount = 0;
};

} // namespace Atelier::Vel::Testing
