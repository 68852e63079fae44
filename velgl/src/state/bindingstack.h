#pragma once

#include <vector>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// What one bind() replaced.
struct SavedBinding {
    quint64 context = 0;       ///< ContextGL::serial(); 0 for a bind() that failed
    unsigned int previous = 0; ///< the name that was bound before
    unsigned int place = 0;    ///< the texture unit; for an index buffer, the vertex array

    friend bool operator==(const SavedBinding& a, const SavedBinding& b) {
        return a.context == b.context && a.previous == b.previous && a.place == b.place;
    }
};

/// What the bind() calls of an object replaced, for those without an unbind() yet. Equal entries in a row are
/// counted, so that a client that binds repeatedly without unbinding uses no memory. `Saved` has an equality,
/// and its default value stands for a bind() that failed.
template<typename Saved>
class SavedStack {
public:
    void push(const Saved& saved) {
        if (!_runs.empty() && _runs.back().saved == saved)
            ++_runs.back().count;
        else
            _runs.push_back({saved});
    }
    /// Returns: the latest entry; that of a failed bind() when the stack is empty.
    Saved pop() {
        if (_runs.empty())
            return {};
        const Saved saved = _runs.back().saved;
        if (--_runs.back().count == 0)
            _runs.pop_back();
        return saved;
    }

private:
    struct Run {
        Saved saved;
        quint64 count = 1;
    };
    std::vector<Run> _runs;
};

using BindingStack = SavedStack<SavedBinding>;

} // namespace Atelier::Vel
