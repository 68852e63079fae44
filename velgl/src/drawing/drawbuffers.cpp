#include "state/scopedbinding.h"

#include <velgl/drawbuffers.h>

#include <algorithm>
#include <cstdint>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "context/currentcontext.h"
#include "context/glerrors.h"
#include "context/log.h"
#include "objects/bufferoperations.h"
#include "objects/glnames.h"
#include "objects/scalartype.h"
#include "state/primitiverestart.h"
#include "state/programinputs.h"

namespace Atelier::Vel {

namespace {

using Command = DrawElementsIndirectCommand;

struct Range {
    int first;
    int end; // one beyond the last; not above `first` in an empty range
};

// The part of `first` to `first + count - 1` that exists. In 64 bits, since both may be any number.
Range existing(int first, int count, int size) {
    const qint64 end = std::clamp<qint64>(qint64(first) + count, 0, size);
    return {std::max(first, 0), static_cast<int>(end)};
}

void setUniform(GLuint program, const char* name, GLint value) {
    const GLint location = glGetUniformLocation(program, name);
    if (location >= 0)
        glProgramUniform1i(program, location, value);
}

// Errors from before a draw are logged separately: the draw did not cause them.
void reportEarlierErrors(const QString& label) {
    const QString errors = takeErrors();
    if (!errors.isEmpty())
        qCWarning(velglLog, "OpenGL had noted %s before '%s' was drawn first", qPrintable(errors),
                  qPrintable(label));
}

void reportErrorsOfDraw(const QString& label) {
    const QString errors = takeErrors();
    if (!errors.isEmpty())
        qCWarning(velglLog, "'%s' could not be drawn (%s)", qPrintable(label), qPrintable(errors));
}

// Binds a vertex array and unbinds it on destruction, also when a draw throws.
class ScopedVertexArray {
public:
    explicit ScopedVertexArray(VertexArrayObject& vao) : _vao(vao), _isBound(vao.bind()) {}
    ~ScopedVertexArray() { _vao.unbind(); }
    ScopedVertexArray(const ScopedVertexArray&) = delete;
    ScopedVertexArray& operator=(const ScopedVertexArray&) = delete;

    bool isBound() const { return _isBound; }

private:
    VertexArrayObject& _vao;
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

    QString label() const { return vao ? vao->label() : QString(); }
    quint64 indexBytes() const { return indices ? indices->byteCount() : 0; }
    const GLName* commandBufferIn(const ContextGL& gl);
    QVector<Command> safeCommands() const;
    bool canDraw() const;
    void drawRange(const ContextGL& gl, const GLName& commandBuffer, GLuint program, Range range) const;
    void drawCommands(GLuint program, int first, int count) const;
};

// The commands, with a count of 0 for each that reaches beyond the announced indices or those in the buffer.
QVector<Command> DrawBuffers::Data::safeCommands() const {
    quint64 available = quint64(std::max(indexCount, 0));
    if (const int size = scalarSize(indexType))
        available = std::min(available, indexBytes() / quint64(size));
    QVector<Command> safe = commands;
    int refused = 0;
    for (Command& command : safe) {
        if (quint64(command.firstIndex) + command.count <= available)
            continue;
        command.count = 0;
        ++refused;
    }
    if (refused > 0)
        qCWarning(velglLog, "%d of %d draw commands reach beyond the %llu indices; they draw nothing",
                  refused, safe.size(), available);
    return safe;
}

const GLName* DrawBuffers::Data::commandBufferIn(const ContextGL& gl) {
    if (const quint64 bytes = indexBytes(); bytes != checkedBytes) {
        commandBuffers = {};
        checkedBytes = bytes;
    }
    if (const GLName* name = commandBuffers.find(*gl.group()))
        return name;
    const QVector<Command> safe = safeCommands();
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

bool DrawBuffers::Data::canDraw() const {
    const bool isIndexType =
        indexType == GL_UNSIGNED_BYTE || indexType == GL_UNSIGNED_SHORT || indexType == GL_UNSIGNED_INT;
    return vao && indices && isIndexType && indices->name() != 0 && indexBytes() > 0;
}

// Requires: the vertex array and the buffer of commands are bound.
void DrawBuffers::Data::drawCommands(GLuint program, int first, int count) const {
    setUniform(program, "velgl_firstCommand", first);
    const auto offset = static_cast<std::uintptr_t>(first) * sizeof(Command);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an offset into the bound buffer, as OpenGL takes it
    const auto* start = reinterpret_cast<const void*>(offset);
    glMultiDrawElementsIndirect(primitiveType, indexType, start, count, 0);
}

void DrawBuffers::Data::drawRange(const ContextGL& gl, const GLName& commandBuffer, GLuint program,
                                  Range range) const {
    vao->setIndexBuffer(indices);
    const ScopedVertexArray scope(*vao);
    if (!scope.isBound())
        return;
    const ScopedPrimitiveRestart restart(primitiveType);
    const ScopedBufferBinding binding(GL_DRAW_INDIRECT_BUFFER, commandBuffer.value());
    // Without draw parameters a shader gets the number of the command from the uniform alone.
    const int commandsPerCall = gl.features().drawParameters ? range.end - range.first : 1;
    for (int command = range.first; command < range.end; command += commandsPerCall)
        drawCommands(program, command, commandsPerCall);
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
    _data->commandBuffers = {};
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
    _data->commandBuffers = {};
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
    const ContextGL* gl = enterCurrentContext();
    const Range range = existing(first, count, _data->commands.size());
    const GLuint program = gl ? currentVertexProgram() : 0;
    if (program == 0 || range.end <= range.first || !_data->canDraw())
        return;
    const GLName* commands = _data->commandBufferIn(*gl);
    if (!commands)
        return;
    // Only once for each command: glGetError() makes a driver with threads of its own wait for them.
    const bool isFirstDraw = range.end > _data->checkedCount;
    if (isFirstDraw)
        reportEarlierErrors(_data->label());
    _data->drawRange(*gl, *commands, program, range);
    if (isFirstDraw)
        reportErrorsOfDraw(_data->label());
    _data->checkedCount = std::max(_data->checkedCount, range.end);
}

} // namespace Atelier::Vel
