#include "state/scopedbinding.h"

#include <velgl/bufferobject.h>

#include <limits>

#include "context/currentcontext.h"
#include "context/glerrors.h"
#include "context/log.h"
#include "objects/bufferoperations.h"
#include "objects/labels.h"
#include "state/bindingstack.h"

namespace Atelier::Vel {

struct BufferObject::Data {
    unsigned int target = GL_ARRAY_BUFFER;
    GLName name;
    quint64 byteCount = 0;
    QString label;
    FailureReport report{"Buffer"};
    BindingStack bindings;

    bool make(const ContextGL& gl);
    bool upload(const void* data, int count, unsigned int usage, unsigned long long elementSize);
};

// A name that went with its context is replaced; one that lives in a stranger's context is left to it.
bool BufferObject::Data::make(const ContextGL& gl) {
    if (name.livesIn(*gl.group()))
        return true;
    if (name.isAlive()) {
        qCWarning(velglLog, "Buffer '%s' belongs to a context that does not share with the current one",
                  qPrintable(label));
        return false;
    }
    name = makeBuffer(gl, label);
    byteCount = 0;
    if (!name.isAlive())
        report.failed("made", label);
    return name.isAlive();
}

bool BufferObject::Data::upload(const void* data, int count, unsigned int usage,
                                unsigned long long elementSize) {
    const ContextGL* gl = enterCurrentContext();
    if (!gl || count < 0 || (count > 0 && elementSize > 0 && !data))
        return false;
    if (count > 0 && elementSize > quint64(std::numeric_limits<qint64>::max()) / quint64(count))
        return false;
    if (!make(*gl))
        return false;
    const qint64 size = static_cast<qint64>(elementSize * quint64(count));
    const bool filled = fillBuffer(*gl, name, data, size, usage);
    byteCount = filled ? quint64(size) : 0;
    if (filled)
        report.succeeded();
    else
        report.failed("filled", label);
    return filled;
}

BufferObject::BufferObject() : _data(std::make_unique<Data>()) {}

BufferObject::~BufferObject() = default;

void BufferObject::setTarget(unsigned int target) {
    _data->target = target;
}

unsigned int BufferObject::target() const {
    return _data->target;
}

bool BufferObject::bind() {
    const ContextGL* gl = enterCurrentContext();
    const GLenum query = bufferBindingQuery(_data->target);
    if (!gl || query == 0 || !_data->make(*gl)) {
        _data->bindings.push({});
        return false;
    }
    const bool belongsToVertexArray = _data->target == GL_ELEMENT_ARRAY_BUFFER;
    _data->bindings.push(
        {gl->serial(), currentName(query), belongsToVertexArray ? currentName(GL_VERTEX_ARRAY_BINDING) : 0});
    glBindBuffer(_data->target, _data->name.value());
    return true;
}

void BufferObject::unbind() {
    const SavedBinding binding = _data->bindings.pop();
    const ContextGL* gl = enterCurrentContext();
    if (!gl || gl->serial() != binding.context)
        return;
    if (_data->target != GL_ELEMENT_ARRAY_BUFFER) {
        rebindBuffer(_data->target, binding.previous);
        return;
    }
    const GLuint vertexArray = currentName(GL_VERTEX_ARRAY_BINDING);
    if (binding.place != 0 && !glIsVertexArray(binding.place))
        return;
    glBindVertexArray(binding.place);
    rebindBuffer(_data->target, binding.previous);
    glBindVertexArray(vertexArray);
}

bool BufferObject::uploadGLuintData(const unsigned int* data, int count, unsigned int usage) {
    return uploadArbitraryData(data, count, usage, sizeof *data);
}

bool BufferObject::uploadGLushortData(const unsigned short* data, int count, unsigned int usage) {
    return uploadArbitraryData(data, count, usage, sizeof *data);
}

bool BufferObject::uploadArbitraryData(const void* data, int count, unsigned int usage,
                                       unsigned long long elementSize) {
    return _data->upload(data, count, usage, elementSize);
}

quint64 BufferObject::byteCount() const {
    return _data->byteCount;
}

QByteArray BufferObject::readBack() const {
    const ContextGL* gl = enterCurrentContext();
    if (!gl || !_data->name.livesIn(*gl->group()))
        return {};
    return readBuffer(*gl, _data->name);
}

unsigned int BufferObject::name() const {
    const ContextGL* gl = enterCurrentContext();
    return gl && _data->name.livesIn(*gl->group()) ? _data->name.value() : 0;
}

QString BufferObject::label() const {
    return _data->label;
}

void BufferObject::setLabel(const QString& label) {
    _data->label = label;
    if (const unsigned int current = name())
        labelObject(GL_BUFFER, current, label);
    _data->report.setLabel(label);
}

} // namespace Atelier::Vel
