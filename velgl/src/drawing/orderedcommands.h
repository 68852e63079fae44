#pragma once

#include <vector>

#include "context/contextgl.h"
#include "context/glerrors.h"
#include "objects/glnames.h"

namespace Atelier::Vel {

class DrawBuffers;
class TextureSets;

/// The commands of a drawable, sorted by their sets of textures, in an indirect buffer of their own for each
/// group of contexts. The base instance of each command is its number, which a shader reads.
///
/// The sets of a drawable change only with its commands: materials do not change, and before their plan is
/// registered there is one set.
class OrderedCommands {
public:
    /// Makes and fills the buffer for the context `gl`, unless it is up to date.
    /// Returns: its name; 0 when it cannot be filled, after a warning, and when a command has a base instance
    /// of its own.
    unsigned int update(const ContextGL& gl, const DrawBuffers& buffers, const TextureSets& sets);

    /// Returns: where the commands of each set begin, and behind the last set where they end.
    const std::vector<int>& starts() const { return _starts; }

private:
    struct Entry {
        GLName name;
    };

    quint64 _commandRevision = 0;
    bool _isPossible = true;
    std::vector<int> _starts;
    GLNameTable<Entry> _buffers;
    FailureReport _report{"Draw commands of"};
};

} // namespace Atelier::Vel
