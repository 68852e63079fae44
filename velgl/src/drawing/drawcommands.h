#pragma once

#include <QtCore/QBitArray>
#include <QtCore/QVector>

#include <velgl/drawelementsindirectcommand.h>

namespace Atelier::Vel {

/// The commands of a drawable: as they were set, which of them are hidden, and as a GPU may draw them.
class DrawCommands {
public:
    using Command = DrawElementsIndirectCommand;

    /// Replaces the commands; all of them are shown.
    void set(const QVector<Command>& commands);
    /// Multiplies the instance count of each command. Hidden ones stay hidden.
    void multiplyInstances(std::uint32_t times);
    /// Hides or shows a command. Requires: there is one of that number.
    void setHidden(int number, bool isHidden);
    /// Sets the number of indices that commands may draw.
    void setAvailableIndices(quint64 count) { _availableIndices = count; }

    const QVector<Command>& asSet() const { return _commands; }
    int count() const { return _commands.size(); }
    bool isHidden(int number) const { return number < _hidden.size() && _hidden.testBit(number); }
    /// Returns: whether a command reaches beyond the available indices.
    bool isRefused(int number) const;
    /// Returns: the command as buffers have it: its count is 0 if it is refused, and its instance count is 0
    /// if it is hidden.
    Command drawn(int number) const;
    /// Returns: the number of commands that are refused.
    int refusedCount() const;
    quint64 availableIndices() const { return _availableIndices; }
    /// Returns: a number that grows with each setHidden().
    quint64 visibilityRevision() const { return _visibilityRevision; }

private:
    QVector<Command> _commands;
    QBitArray _hidden; ///< empty as long as all commands are shown
    quint64 _availableIndices = 0;
    quint64 _visibilityRevision = 0;
};

} // namespace Atelier::Vel
