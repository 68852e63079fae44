#include "state/scopedbinding.h"

#include "drawing/orderedcommands.h"

#include <algorithm>

#include <velgl/drawbuffers.h>
#include <velgl/vertexarrayobject.h>

#include "drawing/drawbuffersaccess.h"
#include "drawing/drawcommands.h"
#include "drawing/drawfilteraccess.h"

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

} // namespace

OrderedRuns OrderedCommands::update(const ContextGL& gl, const DrawBuffers& buffers, const TextureSets& sets,
                                    const CommandSelection& selection) {
    dropIfChanged(buffers);
    Key key{DrawFilterAccess::serial(selection.filter), selection.order,
            _isNumberingPossible && gl.features().drawParameters};
    List& list = find(key, sets, selection);
    const bool hasBuffer = !list.buffers.numbers().empty();
    const unsigned int buffer = hasBuffer ? bufferOf(list, gl, buffers) : 0;
    if (!hasBuffer || buffer != 0)
        return {&list.runs, buffer};
    key.isNumbered = false;
    return {&find(key, sets, selection).runs, 0};
}

void OrderedCommands::dropIfChanged(const DrawBuffers& buffers) {
    const quint64 commandRevision = DrawBuffersAccess::commandRevision(buffers);
    if (_commandRevision == commandRevision)
        return;
    _lists.clear();
    _isNumberingPossible = !hasBaseInstance(DrawBuffersAccess::commands(buffers).asSet());
    _commandRevision = commandRevision;
}

OrderedCommands::List& OrderedCommands::find(const Key& key, const TextureSets& sets,
                                             const CommandSelection& selection) {
    auto list =
        std::find_if(_lists.begin(), _lists.end(), [&](const List& known) { return known.key == key; });
    if (list == _lists.end()) {
        const auto isUnused = [](const List& known) {
            return known.key.filter != 0 && known.filter.expired();
        };
        _lists.erase(std::remove_if(_lists.begin(), _lists.end(), isUnused), _lists.end());
        list = _lists.insert(_lists.end(), {key, DrawFilterAccess::lifetime(selection.filter), {}, {}, 0});
    }
    if (list->setRevision != sets.revision())
        select(*list, sets, selection);
    return *list;
}

// A list that is known keeps its buffers, which are filled again.
void OrderedCommands::select(List& list, const TextureSets& sets, const CommandSelection& selection) {
    const Key& key = list.key;
    const std::vector<Selected> selected =
        selectedCommands(sets, selection, key.isNumbered && key.order == DrawOrder::ByTextures);
    list.runs = runsOf(selected, [](const Selected& command) { return command.number; });
    std::vector<TextureRun> joined = runsOf(selected, [next = 0](const Selected&) mutable { return next++; });
    std::vector<int> numbers;
    if (key.isNumbered && joined.size() < list.runs.size()) {
        list.runs = std::move(joined);
        for (const Selected& command : selected)
            numbers.push_back(command.number);
    }
    list.buffers.setNumbers(std::move(numbers));
    list.setRevision = sets.revision();
}

// Returns: the name of the buffer; 0 if it cannot be filled, after a warning.
unsigned int OrderedCommands::bufferOf(List& list, const ContextGL& gl, const DrawBuffers& buffers) {
    const unsigned int name =
        list.buffers.update(gl, DrawBuffersAccess::commands(buffers), QStringLiteral("sorted draw commands"));
    if (name == 0)
        _report.failed("sorted", buffers.VAO() ? buffers.VAO()->label() : QString());
    else
        _report.succeeded();
    return name;
}

} // namespace Atelier::Vel
