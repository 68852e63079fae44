#include "state/scopedbinding.h"

#include <velgl/vertexarrayobject.h>

#include <velgl/bufferobject.h>

#include "context/currentcontext.h"
#include "context/log.h"
#include "objects/bufferaccess.h"
#include "objects/glnames.h"
#include "objects/objectrecord.h"
#include "objects/scalartype.h"
#include "objects/vertexarrayaccess.h"
#include "state/bindingstack.h"

namespace Atelier::Vel {

namespace {

// One enabled attribute as a vertex array holds it.
struct Attribute {
    int location = -1;
    InputKind kind = InputKind::Float;
    unsigned int buffer = 0;
    int components = 0;
    unsigned int type = 0;

    friend bool operator==(const Attribute& a, const Attribute& b) {
        return a.location == b.location && a.kind == b.kind && a.buffer == b.buffer &&
               a.components == b.components && a.type == b.type;
    }
};

// The GL object in one context, and what was last set in it.
struct ContextArray {
    GLName name;
    std::vector<Attribute> attributes;
    int revision = -1;
};

bool isReadable(const VertexArrayObject::Stream& stream, InputKind kind) {
    if (stream.components < 1 || stream.components > 4 || scalarSize(stream.type) == 0)
        return false;
    if (kind == InputKind::Integer)
        return isIntegerType(stream.type);
    return kind != InputKind::Double || stream.type == GL_DOUBLE;
}

void enable(const Attribute& attribute) {
    const auto slot = static_cast<GLuint>(attribute.location);
    if (attribute.kind == InputKind::Integer)
        glVertexAttribIFormat(slot, attribute.components, attribute.type, 0);
    else if (attribute.kind == InputKind::Double)
        glVertexAttribLFormat(slot, attribute.components, attribute.type, 0);
    else
        glVertexAttribFormat(slot, attribute.components, attribute.type, GL_FALSE, 0);
    glVertexAttribBinding(slot, slot);
    glBindVertexBuffer(slot, attribute.buffer, 0, attribute.components * scalarSize(attribute.type));
    glEnableVertexAttribArray(slot);
}

} // namespace

struct VertexArrayObject::Data {
    QVector<Stream> streams;
    QSharedPointer<BufferObject> indices;
    GLNameTable<ContextArray> arrays;
    BindingStack bindings;
    int revision = 0;          // incremented with every change of the streams or the label
    QStringList reportedNames; // of streams that were reported as unreadable
    ObjectRecord record{"Vertex array", GL_VERTEX_ARRAY};

    ContextArray* arrayIn(const ContextGL& gl);
    std::vector<ProgramInput> inputs;              // of the program below, one for each stream
    std::shared_ptr<const LinkedProgram> inputsOf; // null when they have to be found again
    int inputRevision = -1;                        // `revision` when they were found
    std::vector<Attribute> attributes;             // that the next configure() sets; keeps its memory

    void findInputs(const DrawProgram& program);
    void findAttributes(const ContextGL& gl, const DrawProgram& program);
    void configure(ContextArray& array) const noexcept;
};

// Returns: null when OpenGL cannot make a vertex array.
ContextArray* VertexArrayObject::Data::arrayIn(const ContextGL& gl) {
    if (ContextArray* array = arrays.find(*gl.ownNameSpace()))
        return array;
    GLName owned(GLKind::VertexArray, gl.ownNameSpace());
    GLuint name = 0;
    glGenVertexArrays(1, &name);
    owned.set(name);
    if (name == 0) {
        record.failed("made");
        return nullptr;
    }
    return &arrays.add({std::move(owned), {}, -1});
}

void VertexArrayObject::Data::findInputs(const DrawProgram& program) {
    if (inputsOf && inputsOf == program.linked() && inputRevision == revision)
        return;
    inputsOf = nullptr;
    inputs.clear();
    for (const Stream& stream : qAsConst(streams))
        inputs.push_back(program.input(stream.name));
    inputsOf = program.linked();
    inputRevision = revision;
}

void VertexArrayObject::Data::findAttributes(const ContextGL& gl, const DrawProgram& program) {
    attributes.clear();
    if (program.isNull())
        return;
    findInputs(program);
    auto nextInput = inputs.cbegin();
    for (const Stream& stream : qAsConst(streams)) {
        const ProgramInput input = *nextInput++;
        const unsigned int buffer = stream.buffer ? BufferAccess::nameIn(gl, *stream.buffer) : 0;
        // A buffer is empty if the driver had no memory for it. Reading from it is undefined.
        if (input.location < 0 || buffer == 0 || stream.buffer->byteCount() == 0)
            continue;
        if (isReadable(stream, input.kind)) {
            attributes.push_back({input.location, input.kind, buffer, stream.components, stream.type});
        } else if (!reportedNames.contains(stream.name)) {
            reportedNames.append(stream.name);
            qCWarning(velglLog, "Attribute '%s' cannot be read from %d components of type 0x%X",
                      qPrintable(stream.name), stream.components, stream.type);
        }
    }
}

// Requires: the array is bound.
void VertexArrayObject::Data::configure(ContextArray& array) const noexcept {
    if (array.revision == revision && array.attributes == attributes)
        return;
    if (array.revision != revision)
        record.applyLabel(array.name.value());
    for (const Attribute& attribute : array.attributes)
        glDisableVertexAttribArray(static_cast<GLuint>(attribute.location));
    for (const Attribute& attribute : attributes)
        enable(attribute);
    array.attributes.assign(attributes.cbegin(), attributes.cend());
    array.revision = revision;
}

VertexArrayObject::VertexArrayObject() : _data(std::make_unique<Data>()) {}

VertexArrayObject::~VertexArrayObject() = default;

void VertexArrayObject::registerBO(const QString& name, QSharedPointer<BufferObject> buffer, int components,
                                   unsigned int type) {
    if (buffer && buffer->label().isEmpty())
        buffer->setLabel(name);
    Stream stream{name, std::move(buffer), components, type};
    ++_data->revision;
    for (Stream& known : _data->streams)
        if (known.name == name) {
            known = std::move(stream);
            return;
        }
    _data->streams.append(std::move(stream));
}

QVector<VertexArrayObject::Stream> VertexArrayObject::streams() const {
    return _data->streams;
}

void VertexArrayObject::setIndexBuffer(QSharedPointer<BufferObject> indices) {
    _data->indices = std::move(indices);
}

bool VertexArrayObject::bind() {
    const ContextGL* gl = enterCurrentContext();
    // What may throw comes first: nothing is bound then.
    if (!gl || !VertexArrayAccess::prepare(*this, *gl, DrawProgram::current(*gl))) {
        _data->bindings.push({});
        return false;
    }
    const GLuint indices = _data->indices ? _data->indices->name() : 0;
    _data->bindings.push({gl->serial(), currentName(GL_VERTEX_ARRAY_BINDING), 0});
    VertexArrayAccess::bind(*this, *gl, indices);
    return true;
}

bool VertexArrayAccess::prepare(VertexArrayObject& vao, const ContextGL& gl, const DrawProgram& program) {
    ContextArray* const array = vao._data->arrayIn(gl);
    if (!array)
        return false;
    vao._data->findAttributes(gl, program);
    array->attributes.reserve(vao._data->attributes.size());
    return true;
}

void VertexArrayAccess::bind(VertexArrayObject& vao, const ContextGL& gl, unsigned int indices) noexcept {
    ContextArray& array = *vao._data->arrays.find(*gl.ownNameSpace());
    glBindVertexArray(array.name.value());
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices);
    vao._data->configure(array);
}

const QVector<VertexArrayObject::Stream>& VertexArrayAccess::streams(const VertexArrayObject& vao) {
    return vao._data->streams;
}

const QSharedPointer<BufferObject>& VertexArrayAccess::indexBuffer(const VertexArrayObject& vao) {
    return vao._data->indices;
}

void VertexArrayObject::unbind() {
    const SavedBinding binding = _data->bindings.pop();
    const ContextGL* gl = findKnownContext();
    if (gl && gl->serial() == binding.context)
        rebindVertexArray(binding.previous);
}

void VertexArrayObject::setLabel(const QString& label) {
    _data->record.setLabel(label);
    ++_data->revision;
}

QString VertexArrayObject::label() const {
    return _data->record.label();
}

} // namespace Atelier::Vel
