#pragma once

#include <vector>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// What one bind() replaced.
struct SavedBinding {
    quint64 context = 0;       ///< ContextGL::serial(); 0 for a bind() that failed
    unsigned int previous = 0; ///< the name that was bound before
    unsigned int place = 0;    ///< the texture unit, or the vertex array for an index buffer

    friend bool operator==(const SavedBinding& a, const SavedBinding& b) {
        return a.context == b.context && a.previous == b.previous && a.place == b.place;
    }
};

/// The bind() calls of an object that have not met their unbind(). Equal ones in a row are counted, so that a
/// client which binds again and again without unbinding costs no memory.
class BindingStack {
public:
    void push(const SavedBinding& binding);
    /// The latest one; one of a failed bind() when there is none.
    SavedBinding pop();

private:
    struct Run {
        SavedBinding binding;
        quint64 count = 1;
    };
    std::vector<Run> _runs;
};

} // namespace Atelier::Vel
