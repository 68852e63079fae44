#include "state/scopedbinding.h"

#include "drawing/orderedcommands.h"

#include <algorithm>

#include <velgl/drawbuffers.h>
#include <velgl/vertexarrayobject.h>

#include "drawing/drawbuffersaccess.h"
#include "drawing/texturesets.h"
#include "objects/bufferoperations.h"

namespace Atelier::Vel {

namespace {

using Command = DrawElementsIndirectCommand;

bool hasBaseInstance(const QVector<Command>& commands) {
    return std::any_of(commands.cbegin(), commands.cend(),
                       [](const Command& command) { return command.baseInstance != 0; });
}

// Returns: where the commands of each set begin in the sorted list, and behind the last one its end.
std::vector<int> startsOf(const TextureSets& sets) {
    std::vector<int> starts(static_cast<std::size_t>(sets.setCount()) + 1);
    for (const TextureRun& run : sets.runs())
        starts[static_cast<std::size_t>(run.set) + 1] += run.count;
    for (std::size_t set = 1; set < starts.size(); ++set)
        starts[set] += starts[set - 1];
    return starts;
}

QVector<Command> sorted(const QVector<Command>& commands, const TextureSets& sets, std::vector<int> next) {
    QVector<Command> result(commands.size());
    for (const TextureRun& run : sets.runs())
        for (int number = run.first; number < run.first + run.count; ++number) {
            Command& command = result[next[static_cast<std::size_t>(run.set)]++];
            command = commands[number];
            command.baseInstance = static_cast<std::uint32_t>(number);
        }
    return result;
}

} // namespace

unsigned int OrderedCommands::update(const ContextGL& gl, const DrawBuffers& buffers,
                                     const TextureSets& sets) {
    const quint64 commandRevision = DrawBuffersAccess::commandRevision(buffers);
    if (_commandRevision != commandRevision) {
        _buffers = {};
        _isPossible = !hasBaseInstance(buffers.drawElementsIndirectCommands());
        _starts = startsOf(sets);
        _commandRevision = commandRevision;
    }
    if (!_isPossible)
        return 0;
    if (const Entry* known = _buffers.find(*gl.group()))
        return known->name.value();
    const QVector<Command> commands = sorted(DrawBuffersAccess::safeCommands(buffers), sets, _starts);
    GLName buffer = makeBuffer(gl, QStringLiteral("sorted draw commands"));
    const qint64 size = qint64(commands.size()) * qint64(sizeof(Command));
    if (!buffer.isAlive() || !fillBuffer(gl, buffer, commands.constData(), size, GL_STATIC_DRAW)) {
        _report.failed("sorted", buffers.VAO() ? buffers.VAO()->label() : QString());
        return 0;
    }
    _report.succeeded();
    return _buffers.add({std::move(buffer)}).name.value();
}

} // namespace Atelier::Vel
