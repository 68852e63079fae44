#include "state/scopedbinding.h"

#include <velgl/drawbuffers.h>

#include <algorithm>
#include <cstdint>
#include <typeinfo>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "context/currentcontext.h"
#include "context/glerrors.h"
#include "context/log.h"
#include "drawing/drawbuffersaccess.h"
#include "objects/bufferaccess.h"
#include "objects/bufferoperations.h"
#include "objects/glnames.h"
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
    QVector<Command> commands;
    GLNames commandBuffers;
    quint64 checkedBytes =
        0; // size of the index buffer that the commands in `commandBuffers` were checked against
    FailureReport report{"Draw commands of"};
    int checkedCount = 0; // the first commands, whose draws have been checked for errors
    quint64 commandRevision = 1;

    QString label() const { return vao ? vao->label() : QString(); }
    quint64 indexBytes() const { return indices ? indices->byteCount() : 0; }
    const GLName* commandBufferIn(const ContextGL& gl);
    quint64 availableIndices() const;
    QVector<Command> safeCommands() const;
    void warnOfRefused(const QVector<Command>& safe) const;
    bool canDraw(const ContextGL& gl) const;
    void dropCommandBuffers();
};

quint64 DrawBuffers::Data::availableIndices() const {
    const quint64 announced = quint64(std::max(indexCount, 0));
    const int size = scalarSize(indexType);
    return size > 0 ? std::min(announced, indexBytes() / quint64(size)) : announced;
}

// The commands, with a count of 0 for each that reaches beyond the announced indices or those in the buffer.
QVector<Command> DrawBuffers::Data::safeCommands() const {
    const quint64 available = availableIndices();
    QVector<Command> safe = commands;
    for (Command& command : safe)
        if (quint64(command.firstIndex) + command.count > available)
            command.count = 0;
    return safe;
}

void DrawBuffers::Data::warnOfRefused(const QVector<Command>& safe) const {
    int refused = 0;
    for (int i = 0; i < safe.size(); ++i)
        refused += safe[i].count != commands[i].count;
    if (refused > 0)
        qCWarning(velglLog, "%d of %d draw commands reach beyond the %llu indices; they draw nothing",
                  refused, safe.size(), availableIndices());
}

void DrawBuffers::Data::dropCommandBuffers() {
    commandBuffers = {};
    ++commandRevision;
}

const GLName* DrawBuffers::Data::commandBufferIn(const ContextGL& gl) {
    if (const quint64 bytes = indexBytes(); bytes != checkedBytes) {
        dropCommandBuffers();
        checkedBytes = bytes;
    }
    if (const GLName* name = commandBuffers.find(*gl.group()))
        return name;
    const QVector<Command> safe = safeCommands();
    warnOfRefused(safe);
    GLName buffer = makeBuffer(gl, QStringLiteral("draw commands"));
    const qint64 size = qint64(safe.size()) * qint64(sizeof(Command));
    if (!buffer.isAlive() || !fillBuffer(gl, buffer, safe.constData(), size, GL_STATIC_DRAW)) {
        report.failed("uploaded", label());
        return nullptr;
    }
    report.succeeded();
    checkedCount = 0;
    return &commandBuffers.add(std::move(buffer));
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
    const GLName* commands = data.commandBufferIn(gl);
    if (!commands || (isPlain(*data.vao) && !VertexArrayAccess::prepare(*data.vao, gl, program)))
        return 0;
    return commands->value();
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
    return buffers._data->commands.size();
}

void DrawBuffersAccess::drawNumbered(const DrawBuffers& buffers, CommandRange range) {
    multiDraw(buffers.primitiveType(), buffers.indexType(), range);
}

QVector<Command> DrawBuffersAccess::safeCommands(const DrawBuffers& buffers) {
    return buffers._data->safeCommands();
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
    _data->commands.clear();
    if (commands && count > 0)
        _data->commands = QVector<Command>(commands, commands + count);
    _data->dropCommandBuffers();
}

QVector<DrawElementsIndirectCommand> DrawBuffers::drawElementsIndirectCommands() const {
    return _data->commands;
}

QVector<DrawElementsIndirectCommand> DrawBuffers::readBackCommands() {
    const ContextGL* gl = enterCurrentContext();
    const GLName* indirect = gl ? _data->commandBufferIn(*gl) : nullptr;
    if (!indirect)
        return {};
    const QByteArray content = readBuffer(*gl, *indirect);
    QVector<Command> commands(content.size() / int(sizeof(Command)));
    std::copy(content.cbegin(), content.cend(), reinterpret_cast<char*>(commands.data()));
    return commands;
}

void DrawBuffers::draw(int first, int count) {
    const ContextScope scope;
    const ContextGL* gl = scope.gl();
    const CommandRange range = existing(first, count, _data->commands.size());
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
        if (vertexArray.isBound())
            DrawBuffersAccess::draw(*this, *gl, program, range);
    }
    if (isFirstDraw)
        DrawBuffersAccess::reportErrorsOfDraw(*this, range.end);
}

} // namespace Atelier::Vel
