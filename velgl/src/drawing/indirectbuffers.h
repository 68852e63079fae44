#pragma once

#include <vector>

#include <QtCore/QString>

#include <velgl/drawelementsindirectcommand.h>

#include "context/contextgl.h"
#include "objects/changedbytes.h"
#include "objects/glnames.h"

namespace Atelier::Vel {

class DrawCommands;

/// An indirect buffer in each group of contexts: of all commands of a drawable, or of some of them in an
/// order of their own. Commands that are hidden or shown are changed in the buffer that is there.
class IndirectBuffers {
public:
    using Command = DrawElementsIndirectCommand;

    /// Takes all commands as they are, or, if there are `numbers`, the commands of these numbers, with their
    /// number as the base instance. Buffers that are there are filled again.
    void setNumbers(std::vector<int> numbers);
    const std::vector<int>& numbers() const { return _numbers; }
    /// Forgets all buffers: the commands were replaced.
    void drop() { _buffers = {}; }

    /// Whether there is a filled buffer for the context.
    bool isFilledIn(const ContextGL& gl);
    /// Makes and fills the buffer for the current context `gl`, or uploads what is hidden or shown since.
    /// Returns: its name; 0 if OpenGL has no memory.
    unsigned int update(const ContextGL& gl, const DrawCommands& commands, const QString& label);
    /// Returns: the content of the buffer. Requires: update() returned its name.
    QByteArray readBack(const ContextGL& gl);

private:
    struct Buffer {
        GLName name;
        bool isFilled = false;
        std::vector<bool> hidden; ///< by place in the buffer
        quint64 visibilityRevision = 0;
        ChangedBytes changed;
    };

    int size(const DrawCommands& commands) const;
    int numberAt(int place) const { return _numbers.empty() ? place : _numbers[std::size_t(place)]; }
    Command commandAt(int place, const DrawCommands& commands) const;
    void gather(const DrawCommands& commands, int first, int end);
    bool fill(const ContextGL& gl, const DrawCommands& commands, Buffer& buffer);
    void uploadChanges(const ContextGL& gl, const DrawCommands& commands, Buffer& buffer);

    std::vector<int> _numbers;
    GLNameTable<Buffer> _buffers;
    std::vector<Command> _scratch; ///< keeps its memory from frame to frame
};

} // namespace Atelier::Vel
