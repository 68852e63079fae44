#include "state/scopedbinding.h"

#include <velgl/bufferobject.h>

#include <atomic>
#include <limits>
#include <typeinfo>

#include "context/currentcontext.h"
#include "objects/bufferaccess.h"
#include "objects/bufferoperations.h"
#include "objects/glnames.h"
#include "objects/objectrecord.h"
#include "state/bindingstack.h"

namespace Atelier::Vel {

namespace {

quint64 nextRevision() {
    static std::atomic<quint64> last = 0;
    return ++last;
}

} // namespace

struct BufferObject::Data {
    unsigned int target = GL_ARRAY_BUFFER;
    quint64 byteCount = 0;
    quint64 revision = nextRevision(); // of the content
    GLNames names;
    ObjectRecord record{"Buffer", GL_BUFFER};
    BindingStack bindings;

    const GLName* nameIn(const ContextGL& gl);
    const GLName* makeIn(const ContextGL& gl);
    void contentChanged(quint64 newByteCount);
    bool upload(const void* data, int count, unsigned int usage, unsigned long long elementSize);
};

quint64 BufferAccess::contentRevision(const BufferObject& buffer) {
    return typeid(buffer) == typeid(BufferObject) ? buffer._data->revision : 0;
}

void BufferObject::Data::contentChanged(quint64 newByteCount) {
    byteCount = newByteCount;
    revision = nextRevision();
}

unsigned int BufferAccess::nameIn(const ContextGL& gl, const BufferObject& buffer) {
    const GLName* name = buffer._data->names.find(*gl.group());
    return name ? name->value() : 0;
}

// For a bind, which gives no content: a buffer whose content is in contexts of another group stays there. One
// whose contexts are gone begins anew.
const GLName* BufferObject::Data::nameIn(const ContextGL& gl) {
    if (const GLName* name = names.find(*gl.group()))
        return name;
    if (names.isAwake()) {
        record.warnOfForeignContext();
        return nullptr;
    }
    names.removeAllBut(*gl.group());
    contentChanged(0);
    return makeIn(gl);
}

const GLName* BufferObject::Data::makeIn(const ContextGL& gl) {
    GLName name = makeBuffer(gl, record.label());
    if (!name.isAlive()) {
        record.failed("made");
        return nullptr;
    }
    return &names.add(std::move(name));
}

bool BufferObject::Data::upload(const void* data, int count, unsigned int usage,
                                unsigned long long elementSize) {
    const ContextGL* gl = enterCurrentContext();
    if (!gl || count < 0 || (count > 0 && elementSize > 0 && !data))
        return false;
    if (count > 0 && elementSize > quint64(std::numeric_limits<qint64>::max()) / quint64(count))
        return false;
    const GLNameSpace& group = *gl->group();
    const GLName* name = names.find(group);
    if (!name)
        name = makeIn(*gl);
    if (!name)
        return false;
    const qint64 size = static_cast<qint64>(elementSize * quint64(count));
    if (!fillBuffer(*gl, *name, data, size, usage)) {
        record.failed("filled");
        if (names.isAwakeBut(group))
            names.remove(group);
        else
            contentChanged(0);
        return false;
    }
    record.succeeded();
    // Each group with content has as much of it as the others, so a draw can rely on the size.
    if (byteCount != quint64(size))
        names.removeAllBut(group);
    contentChanged(quint64(size));
    return true;
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
    const GLName* name = gl && query != 0 ? _data->nameIn(*gl) : nullptr;
    if (!name) {
        _data->bindings.push({});
        return false;
    }
    const bool belongsToVertexArray = _data->target == GL_ELEMENT_ARRAY_BUFFER;
    _data->bindings.push(
        {gl->serial(), currentName(query), belongsToVertexArray ? currentName(GL_VERTEX_ARRAY_BINDING) : 0});
    glBindBuffer(_data->target, name->value());
    return true;
}

void BufferObject::unbind() {
    const SavedBinding binding = _data->bindings.pop();
    const ContextGL* gl = findKnownContext();
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
    const GLName* name = gl ? _data->names.find(*gl->group()) : nullptr;
    return name ? readBuffer(*gl, *name) : QByteArray();
}

unsigned int BufferObject::name() const {
    return _data->names.inCurrentContext();
}

QString BufferObject::label() const {
    return _data->record.label();
}

void BufferObject::setLabel(const QString& label) {
    _data->record.setLabel(label);
    if (const unsigned int current = name())
        _data->record.applyLabel(current);
}

} // namespace Atelier::Vel
