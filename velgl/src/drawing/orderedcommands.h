#pragma once

#include <memory>
#include <vector>

#include <velgl/drawoptions.h>

#include "context/contextgl.h"
#include "context/glerrors.h"
#include "drawing/indirectbuffers.h"
#include "drawing/texturesets.h"

namespace Atelier::Vel {

class DrawBuffers;

/// What a draw takes of the commands of a drawable, and in which order.
struct CommandSelection {
    DrawOrder order = DrawOrder::AsGiven;
    const DrawFilter& filter;
    int drawable = 0; ///< its number in the filter
};

/// Commands in the order in which they are drawn: ranges of an indirect buffer.
struct OrderedRuns {
    const std::vector<TextureRun>* runs = nullptr;
    unsigned int buffer = 0; ///< in which base instances are the numbers of the commands; 0 for that of the
                             ///< drawable
};

/// The lists of the commands of a drawable that are drawn with a filter or in another order than given. A
/// list that would need more draws from the buffer of the drawable has an indirect buffer of its own in each
/// group of contexts.
class OrderedCommands {
public:
    /// Finds the list of a selection for the context `gl`; makes it, and its buffer, unless they are known.
    /// A buffer that cannot be filled is reported, and the commands are drawn from that of the drawable.
    /// Returns: runs that are valid until the next update().
    OrderedRuns update(const ContextGL& gl, const DrawBuffers& buffers, const TextureSets& sets,
                       const CommandSelection& selection);

private:
    /// What a list was made for.
    struct Key {
        quint64 filter = 0;
        DrawOrder order = DrawOrder::AsGiven;
        bool isNumbered = false; ///< whether shaders can read the numbers of commands from base instances

        bool operator==(const Key& other) const {
            return filter == other.filter && order == other.order && isNumbered == other.isNumbered;
        }
    };
    struct List {
        Key key;
        std::weak_ptr<const void> filter;
        std::vector<TextureRun> runs;
        IndirectBuffers buffers; ///< of its own, without numbers if it needs none
        quint64 setRevision = 0;
    };

    void dropIfChanged(const DrawBuffers& buffers);
    List& find(const Key& key, const TextureSets& sets, const CommandSelection& selection);
    static void select(List& list, const TextureSets& sets, const CommandSelection& selection);
    unsigned int bufferOf(List& list, const ContextGL& gl, const DrawBuffers& buffers);

    quint64 _commandRevision = 0;
    bool _isNumberingPossible = true;
    std::vector<List> _lists;
    FailureReport _report{"Draw commands of"};
};

} // namespace Atelier::Vel
