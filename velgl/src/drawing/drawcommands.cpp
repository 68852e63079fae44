#include "drawing/drawcommands.h"

namespace Atelier::Vel {

void DrawCommands::set(const QVector<Command>& commands) {
    _commands = commands;
    _hidden.clear();
    ++_visibilityRevision;
}

void DrawCommands::multiplyInstances(std::uint32_t times) {
    for (Command& command : _commands)
        command.instanceCount *= times;
}

void DrawCommands::setHidden(int number, bool isHidden) {
    if (_hidden.isEmpty())
        _hidden.resize(count());
    _hidden.setBit(number, isHidden);
    ++_visibilityRevision;
}

bool DrawCommands::isRefused(int number) const {
    const Command& command = _commands[number];
    return quint64(command.firstIndex) + command.count > _availableIndices;
}

DrawCommands::Command DrawCommands::drawn(int number) const {
    Command command = _commands[number];
    if (isRefused(number))
        command.count = 0;
    if (isHidden(number))
        command.instanceCount = 0;
    return command;
}

int DrawCommands::refusedCount() const {
    int refused = 0;
    for (int number = 0; number < count(); ++number)
        refused += isRefused(number);
    return refused;
}

} // namespace Atelier::Vel
