#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "callrecord.h"

namespace Atelier::Vel {

using Testing::CallRecord;
using Testing::hexadecimal;
using Testing::listed;
using Testing::quoted;
using Testing::recordCall;

Bindable::~Bindable() = default;

AutoBinder::AutoBinder(Bindable* bindable) : _bindable(bindable) {
    if (_bindable)
        _bindable->bind();
}

AutoBinder::~AutoBinder() {
    if (_bindable)
        _bindable->unbind();
}

struct BufferObject::Data {
    unsigned int target = 0;
};

BufferObject::BufferObject() : _data(std::make_unique<Data>()) {
    CallRecord::instance().number(this, QStringLiteral("buffer"));
}

BufferObject::~BufferObject() {
    CallRecord::instance().forget(this);
}

void BufferObject::setTarget(unsigned int target) {
    _data->target = target;
    recordCall(this, QStringLiteral("setTarget ") + hexadecimal(target));
}

unsigned int BufferObject::target() const {
    recordCall(this, QStringLiteral("target"));
    return _data->target;
}

bool BufferObject::bind() {
    recordCall(this, QStringLiteral("bind"));
    return CallRecord::instance().succeeds;
}

void BufferObject::unbind() {
    recordCall(this, QStringLiteral("unbind"));
}

bool BufferObject::uploadGLuintData(const unsigned int* data, int count, unsigned int usage) {
    recordCall(this,
               QStringLiteral("uploadGLuintData %1, usage %2").arg(listed(data, count), hexadecimal(usage)));
    return CallRecord::instance().succeeds;
}

bool BufferObject::uploadGLushortData(const unsigned short* data, int count, unsigned int usage) {
    recordCall(
        this, QStringLiteral("uploadGLushortData %1, usage %2").arg(listed(data, count), hexadecimal(usage)));
    return CallRecord::instance().succeeds;
}

// Elements of four bytes are recorded as floats.
bool BufferObject::uploadArbitraryData(const void* data, int count, unsigned int usage,
                                       unsigned long long elementSize) {
    const QString content = elementSize == sizeof(float)
                                ? listed(static_cast<const float*>(data), count)
                                : listed(static_cast<const unsigned char*>(data), count * int(elementSize));
    recordCall(this, QStringLiteral("uploadArbitraryData %1, %2 elements of %3 bytes, usage %4")
                         .arg(content)
                         .arg(count)
                         .arg(elementSize)
                         .arg(hexadecimal(usage)));
    return CallRecord::instance().succeeds;
}

quint64 BufferObject::byteCount() const {
    recordCall(this, QStringLiteral("byteCount"));
    return 0;
}

QByteArray BufferObject::readBack() const {
    recordCall(this, QStringLiteral("readBack"));
    return {};
}

struct VertexArrayObject::Data {};

VertexArrayObject::VertexArrayObject() {
    CallRecord::instance().number(this, QStringLiteral("array"));
}

VertexArrayObject::~VertexArrayObject() {
    CallRecord::instance().forget(this);
}

void VertexArrayObject::registerBO(const QString& name, QSharedPointer<BufferObject> buffer, int components,
                                   unsigned int type) {
    recordCall(this, QStringLiteral("registerBO %1, %2, %3 components, type %4")
                         .arg(quoted(name), CallRecord::instance().nameOf(buffer.data()))
                         .arg(components)
                         .arg(hexadecimal(type)));
}

bool VertexArrayObject::bind() {
    recordCall(this, QStringLiteral("bind"));
    return CallRecord::instance().succeeds;
}

void VertexArrayObject::unbind() {
    recordCall(this, QStringLiteral("unbind"));
}

} // namespace Atelier::Vel
