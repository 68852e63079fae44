#include "state/scopedbinding.h"

#include <velgl/drawbuffers.h>

#include <algorithm>
#include <cstdint>
#include <typeinfo>
#include <utility>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "context/currentcontext.h"
#include "context/glerrors.h"
#include "context/log.h"
#include "drawing/drawbuffersaccess.h"
#include "drawing/drawcommands.h"
#include "drawing/indirectbuffers.h"
#include "objects/bufferaccess.h"
#include "objects/scalartype.h"
#include "objects/vertexarrayaccess.h"
#include "state/primitiverestart.h"

namespace Atelier::Vel {

namespace {

using Command = DrawElementsIndirectCommand;

// The part of `first` to `first + count - 1` that exists. In 64 bits, since both may be any number.
CommandRange existing(int first, int count, int size) {
    const qint64 end = std::clamp<qint64>(qint64(first) + count, 0, size);
    return {std::max(first, 0), static_cast<int>(end)};
}

// A vertex array of a derived class is bound by its own functions.
bool isPlain(const VertexArrayObject& vao) {
    return typeid(vao) == typeid(VertexArrayObject);
}

// Requires: the vertex array and the buffer of commands are bound.
void multiDraw(GLenum mode, GLenum indexType, CommandRange range) {
    const auto offset = static_cast<std::uintptr_t>(range.first) * sizeof(Command);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an offset into the bound buffer, as OpenGL takes it
    const auto* start = reinterpret_cast<const void*>(offset);
    glMultiDrawElementsIndirect(mode, indexType, start, range.end - range.first, 0);
}

// Binds the vertex array of a drawable and unbinds it on destruction.
class ScopedDrawBuffers {
public:
    ScopedDrawBuffers(DrawBuffers& buffers, const ContextGL& gl)
        : _buffers(buffers),
          _previous(currentName(GL_VERTEX_ARRAY_BINDING)),
          _isBound(DrawBuffersAccess::bind(buffers, gl)) {}
    ~ScopedDrawBuffers() {
        DrawBuffersAccess::unbind(_buffers);
        rebindVertexArray(_previous);
    }
    ScopedDrawBuffers(const ScopedDrawBuffers&) = delete;
    ScopedDrawBuffers& operator=(const ScopedDrawBuffers&) = delete;

    bool isBound() const { return _isBound; }

private:
    DrawBuffers& _buffers;
    GLuint _previous;
    bool _isBound;
};

} // namespace

struct DrawBuffers::Data {
    QSharedPointer<VertexArrayObject> vao;
    QSharedPointer<BufferObject> indices;
    int indexCount = 0;
    unsigned int indexType = GL_UNSIGNED_INT;
    unsigned int vertexCount = 0;
    unsigned int primitiveType = GL_TRIANGLES;
    DrawCommands commands;
    IndirectBuffers commandBuffers;
    // Size of the index buffer that the commands in `commandBuffers` were checked against.
    quint64 checkedBytes = 0;
    int lastInstance = 0; // see shaderInterface()
    bool isNumberReported = false;
    FailureReport report{"Draw commands of"};
    int checkedCount = 0; // the first commands, whose draws have been checked for errors
    quint64 commandRevision = 1;

    QString label() const { return vao ? vao->label() : QString(); }
    quint64 indexBytes() const { return indices ? indices->byteCount() : 0; }
    unsigned int commandBufferIn(const ContextGL& gl);
    quint64 availableIndices() const;
    void warnOfRefused() const;
    bool hasCommand(int number);
    bool canDraw(const ContextGL& gl) const;
    void dropCommandBuffers();
};

quint64 DrawBuffers::Data::availableIndices() const {
    const quint64 announced = quint64(std::max(indexCount, 0));
    const int size = scalarSize(indexType);
    return size > 0 ? std::min(announced, indexBytes() / quint64(size)) : announced;
}

void DrawBuffers::Data::warnOfRefused() const {
    if (const int refused = commands.refusedCount(); refused > 0)
        qCWarning(velglLog, "%d of %d draw commands reach beyond the %llu indices; they draw nothing",
                  refused, commands.count(), commands.availableIndices());
}

void DrawBuffers::Data::dropCommandBuffers() {
    commandBuffers.drop();
    ++commandRevision;
}

// Returns: the name of the buffer; 0 if it cannot be filled, after a warning.
unsigned int DrawBuffers::Data::commandBufferIn(const ContextGL& gl) {
    if (const quint64 bytes = indexBytes(); bytes != checkedBytes) {
        dropCommandBuffers();
        checkedBytes = bytes;
    }
    const bool isFilled = commandBuffers.isFilledIn(gl);
    if (!isFilled) {
        commands.setAvailableIndices(availableIndices());
        warnOfRefused();
    }
    const unsigned int name = commandBuffers.update(gl, commands, QStringLiteral("draw commands"));
    if (name == 0) {
        report.failed("uploaded", label());
    } else if (!isFilled) {
        report.succeeded();
        checkedCount = 0;
    }
    return name;
}

bool DrawBuffers::Data::hasCommand(int number) {
    if (number >= 0 && number < commands.count())
        return true;
    if (!std::exchange(isNumberReported, true))
        qCWarning(velglLog, "'%s' has %d draw commands and no command %d", qPrintable(label()),
                  commands.count(), number);
    return false;
}

bool DrawBuffers::Data::canDraw(const ContextGL& gl) const {
    const bool isIndexType =
        indexType == GL_UNSIGNED_BYTE || indexType == GL_UNSIGNED_SHORT || indexType == GL_UNSIGNED_INT;
    return vao && indices && isIndexType && BufferAccess::nameIn(gl, *indices) != 0 && indexBytes() > 0;
}

const BufferObject* DrawBuffersAccess::indexBuffer(const DrawBuffers& buffers) {
    return buffers._data->indices.data();
}

const VertexArrayObject* DrawBuffersAccess::vertexArray(const DrawBuffers& buffers) {
    return buffers._data->vao.data();
}

unsigned int DrawBuffersAccess::prepare(DrawBuffers& buffers, const ContextGL& gl,
                                        const DrawProgram& program) {
    DrawBuffers::Data& data = *buffers._data;
    if (program.isNull() || !data.canDraw(gl))
        return 0;
    const unsigned int commands = data.commandBufferIn(gl);
    if (commands == 0 || (isPlain(*data.vao) && !VertexArrayAccess::prepare(*data.vao, gl, program)))
        return 0;
    return commands;
}

bool DrawBuffersAccess::bind(DrawBuffers& buffers, const ContextGL& gl) {
    DrawBuffers::Data& data = *buffers._data;
    if (VertexArrayAccess::indexBuffer(*data.vao) != data.indices)
        data.vao->setIndexBuffer(data.indices);
    if (!isPlain(*data.vao))
        return data.vao->bind();
    VertexArrayAccess::bind(*data.vao, gl, BufferAccess::nameIn(gl, *data.indices));
    return true;
}

void DrawBuffersAccess::unbind(DrawBuffers& buffers) {
    if (!isPlain(*buffers._data->vao))
        buffers._data->vao->unbind();
}

void DrawBuffersAccess::draw(const DrawBuffers& buffers, const ContextGL& gl, const DrawProgram& program,
                             CommandRange range) {
    // Without draw parameters a shader gets the number of the command from the uniform alone.
    const int commandsPerCall = gl.features().drawParameters ? range.end - range.first : 1;
    for (int command = range.first; command < range.end; command += commandsPerCall) {
        program.setFirstCommand(command);
        multiDraw(buffers.primitiveType(), buffers.indexType(), {command, command + commandsPerCall});
    }
}

void DrawBuffersAccess::useBaseInstances(const DrawProgram& program) noexcept {
    program.setFirstCommand(-1); // see shaderInterface()
}

int DrawBuffersAccess::commandCount(const DrawBuffers& buffers) {
    return buffers._data->commands.count();
}

void DrawBuffersAccess::multiplyInstances(DrawBuffers& buffers, int times) {
    buffers._data->lastInstance = std::max(times - 1, 0);
    buffers._data->commands.multiplyInstances(static_cast<std::uint32_t>(times));
    buffers._data->dropCommandBuffers();
}

int DrawBuffersAccess::lastInstance(const DrawBuffers& buffers) {
    return buffers._data->lastInstance;
}

void DrawBuffersAccess::drawNumbered(const DrawBuffers& buffers, CommandRange range) {
    multiDraw(buffers.primitiveType(), buffers.indexType(), range);
}

const DrawCommands& DrawBuffersAccess::commands(const DrawBuffers& buffers) {
    return buffers._data->commands;
}

quint64 DrawBuffersAccess::commandRevision(const DrawBuffers& buffers) {
    return buffers._data->commandRevision;
}

bool DrawBuffersAccess::isFirstDraw(const DrawBuffers& buffers, int end) {
    return end > buffers._data->checkedCount;
}

// Errors from before a draw are logged separately: the draw did not cause them.
void DrawBuffersAccess::reportEarlierErrors(const DrawBuffers& buffers) {
    const QString errors = takeErrors();
    if (!errors.isEmpty())
        qCWarning(velglLog, "OpenGL had noted %s before '%s' was drawn first", qPrintable(errors),
                  qPrintable(buffers._data->label()));
}

void DrawBuffersAccess::reportErrorsOfDraw(DrawBuffers& buffers, int end) {
    const QString errors = takeErrors();
    if (!errors.isEmpty())
        qCWarning(velglLog, "'%s' could not be drawn (%s)", qPrintable(buffers._data->label()),
                  qPrintable(errors));
    buffers._data->checkedCount = std::max(buffers._data->checkedCount, end);
}

DrawBuffers::DrawBuffers(QObject* parent) : QObject(parent), _data(std::make_unique<Data>()) {}

DrawBuffers::~DrawBuffers() = default;

void DrawBuffers::setVAO(QSharedPointer<VertexArrayObject> vao) {
    _data->vao = std::move(vao);
}

QSharedPointer<VertexArrayObject> DrawBuffers::VAO() const {
    return _data->vao;
}

void DrawBuffers::setIndexedDraw(QSharedPointer<BufferObject> indices, int count, unsigned int type) {
    if (indices && indices->label().isEmpty())
        indices->setLabel(QStringLiteral("indices"));
    _data->indices = std::move(indices);
    _data->indexCount = count;
    _data->indexType = type;
    _data->dropCommandBuffers();
}

QSharedPointer<BufferObject> DrawBuffers::indexBuffer() const {
    return _data->indices;
}

int DrawBuffers::indexCount() const {
    return _data->indexCount;
}

unsigned int DrawBuffers::indexType() const {
    return _data->indexType;
}

void DrawBuffers::setVertexCount(unsigned int count) {
    _data->vertexCount = count;
}

unsigned int DrawBuffers::vertexCount() const {
    return _data->vertexCount;
}

void DrawBuffers::setPrimitiveType(unsigned int type) {
    _data->primitiveType = type;
}

unsigned int DrawBuffers::primitiveType() const {
    return _data->primitiveType;
}

void DrawBuffers::setDrawElementsIndirectCommands(const DrawElementsIndirectCommand* commands, int count) {
    const bool isAny = commands && count > 0;
    _data->commands.set(isAny ? QVector<Command>(commands, commands + count) : QVector<Command>());
    _data->dropCommandBuffers();
}

QVector<DrawElementsIndirectCommand> DrawBuffers::drawElementsIndirectCommands() const {
    return _data->commands.asSet();
}

void DrawBuffers::setVisibility(int command, Visibility visibility) {
    if (_data->hasCommand(command) && visibility != this->visibility(command))
        _data->commands.setHidden(command, visibility == Visibility::Hidden);
}

DrawBuffers::Visibility DrawBuffers::visibility(int command) const {
    const bool isKnown = command >= 0 && command < _data->commands.count();
    return isKnown && !_data->commands.isHidden(command) ? Visibility::Shown : Visibility::Hidden;
}

QVector<DrawElementsIndirectCommand> DrawBuffers::readBackCommands() {
    const ContextGL* gl = enterCurrentContext();
    if (!gl || _data->commandBufferIn(*gl) == 0)
        return {};
    const QByteArray content = _data->commandBuffers.readBack(*gl);
    QVector<Command> commands(content.size() / int(sizeof(Command)));
    std::copy(content.cbegin(), content.cend(), reinterpret_cast<char*>(commands.data()));
    return commands;
}

void DrawBuffers::draw(int first, int count) {
    const ContextScope scope;
    const ContextGL* gl = scope.gl();
    const CommandRange range = existing(first, count, _data->commands.count());
    if (!gl || range.end <= range.first)
        return;
    const DrawProgram program = DrawProgram::current(*gl);
    const GLuint commands = DrawBuffersAccess::prepare(*this, *gl, program);
    if (commands == 0)
        return;
    // Only once for each command: glGetError() makes a driver with threads of its own wait for them.
    const bool isFirstDraw = DrawBuffersAccess::isFirstDraw(*this, range.end);
    if (isFirstDraw)
        DrawBuffersAccess::reportEarlierErrors(*this);
    {
        const ScopedDrawBuffers vertexArray(*this, *gl);
        const ScopedPrimitiveRestart restart(_data->primitiveType);
        const ScopedBufferBinding binding(GL_DRAW_INDIRECT_BUFFER, commands);
        program.setLastInstance(_data->lastInstance);
        if (vertexArray.isBound())
            DrawBuffersAccess::draw(*this, *gl, program, range);
    }
    if (isFirstDraw)
        DrawBuffersAccess::reportErrorsOfDraw(*this, range.end);
}

} // namespace Atelier::Vel
