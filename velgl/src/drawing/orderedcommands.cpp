#include "state/scopedbinding.h"

#include "drawing/orderedcommands.h"

#include <algorithm>

#include <velgl/drawbuffers.h>
#include <velgl/vertexarrayobject.h>

#include "drawing/drawbuffersaccess.h"
#include "drawing/drawfilteraccess.h"
#include "objects/bufferoperations.h"

namespace Atelier::Vel {

namespace {

using Command = DrawElementsIndirectCommand;

bool hasBaseInstance(const QVector<Command>& commands) {
    return std::any_of(commands.cbegin(), commands.cend(),
                       [](const Command& command) { return command.baseInstance != 0; });
}

/// A command that is drawn.
struct Selected {
    int number = 0;
    int set = 0;
};

// Returns: the commands that pass, in the order in which they are drawn.
std::vector<Selected> selectedCommands(const TextureSets& sets, const CommandSelection& selection,
                                       bool isByTextures) {
    std::vector<Selected> selected;
    for (const TextureRun& run : sets.runs())
        for (int number = run.first; number < run.first + run.count; ++number)
            if (selection.filter.passes(selection.drawable, number))
                selected.push_back({number, run.set});
    if (isByTextures)
        std::stable_sort(selected.begin(), selected.end(),
                         [](const Selected& a, const Selected& b) { return a.set < b.set; });
    return selected;
}

// Joins commands of the same set that lie side by side; `place` gives the place in a buffer.
template<typename Place>
std::vector<TextureRun> runsOf(const std::vector<Selected>& selected, Place place) {
    std::vector<TextureRun> runs;
    for (const Selected& command : selected) {
        const int at = place(command);
        if (runs.empty() || runs.back().set != command.set || runs.back().first + runs.back().count != at)
            runs.push_back({at, 0, command.set});
        ++runs.back().count;
    }
    return runs;
}

QVector<Command> numbered(const QVector<Command>& commands, const std::vector<int>& numbers) {
    QVector<Command> result;
    result.reserve(static_cast<int>(numbers.size()));
    for (const int number : numbers) {
        result.append(commands[number]);
        result.last().baseInstance = static_cast<std::uint32_t>(number);
    }
    return result;
}

} // namespace

OrderedRuns OrderedCommands::update(const ContextGL& gl, const DrawBuffers& buffers, const TextureSets& sets,
                                    const CommandSelection& selection) {
    dropIfChanged(buffers, sets);
    Key key{DrawFilterAccess::serial(selection.filter), selection.order,
            _isNumberingPossible && gl.features().drawParameters};
    List& list = find(key, sets, selection);
    const unsigned int buffer = list.numbers.empty() ? 0 : bufferOf(list, gl, buffers);
    if (list.numbers.empty() || buffer != 0)
        return {&list.runs, buffer};
    key.isNumbered = false;
    return {&find(key, sets, selection).runs, 0};
}

void OrderedCommands::dropIfChanged(const DrawBuffers& buffers, const TextureSets& sets) {
    const quint64 commandRevision = DrawBuffersAccess::commandRevision(buffers);
    if (_commandRevision == commandRevision && _setRevision == sets.revision())
        return;
    _lists.clear();
    _isNumberingPossible = !hasBaseInstance(buffers.drawElementsIndirectCommands());
    _commandRevision = commandRevision;
    _setRevision = sets.revision();
}

OrderedCommands::List& OrderedCommands::find(const Key& key, const TextureSets& sets,
                                             const CommandSelection& selection) {
    const auto known =
        std::find_if(_lists.begin(), _lists.end(), [&](const List& list) { return list.key == key; });
    if (known != _lists.end())
        return *known;
    const auto isUnused = [](const List& list) { return list.key.filter != 0 && list.filter.expired(); };
    _lists.erase(std::remove_if(_lists.begin(), _lists.end(), isUnused), _lists.end());
    return _lists.emplace_back(makeList(key, sets, selection));
}

OrderedCommands::List OrderedCommands::makeList(const Key& key, const TextureSets& sets,
                                                const CommandSelection& selection) {
    const std::vector<Selected> selected =
        selectedCommands(sets, selection, key.isNumbered && key.order == DrawOrder::ByTextures);
    List list{key, DrawFilterAccess::lifetime(selection.filter), {}, {}, {}};
    list.runs = runsOf(selected, [](const Selected& command) { return command.number; });
    std::vector<TextureRun> joined = runsOf(selected, [next = 0](const Selected&) mutable { return next++; });
    if (key.isNumbered && joined.size() < list.runs.size()) {
        list.runs = std::move(joined);
        for (const Selected& command : selected)
            list.numbers.push_back(command.number);
    }
    return list;
}

// Returns: the name of the buffer; 0 if it cannot be filled, after a warning.
unsigned int OrderedCommands::bufferOf(List& list, const ContextGL& gl, const DrawBuffers& buffers) {
    if (const Buffer* known = list.buffers.find(*gl.group()))
        return known->name.value();
    const QVector<Command> commands = numbered(DrawBuffersAccess::safeCommands(buffers), list.numbers);
    GLName buffer = makeBuffer(gl, QStringLiteral("sorted draw commands"));
    const qint64 size = qint64(commands.size()) * qint64(sizeof(Command));
    if (!buffer.isAlive() || !fillBuffer(gl, buffer, commands.constData(), size, GL_STATIC_DRAW)) {
        _report.failed("sorted", buffers.VAO() ? buffers.VAO()->label() : QString());
        return 0;
    }
    _report.succeeded();
    return list.buffers.add({std::move(buffer)}).name.value();
}

} // namespace Atelier::Vel
