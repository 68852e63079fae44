#pragma once

#include <memory>

#include "context/glnamespace.h"

namespace Atelier::Vel {

/// Owns one GL name. It may outlive the contexts of its name space; there is nothing to delete then.
/// Threads: the destructor may be called on any thread.
class GLName {
public:
    GLName() = default;
    /// Allocates what a later deletion needs, so make this before the GL object.
    /// Requires: `space` is not null.
    GLName(GLKind kind, std::shared_ptr<GLNameSpace> space)
        : _node(1, {kind, 0U}), _space(std::move(space)) {}
    ~GLName() { release(); }
    GLName(GLName&& other) noexcept = default;
    GLName& operator=(GLName&& other) noexcept;

    /// Requires: the two-argument constructor made this object.
    void set(unsigned int name) { _node.front().second = name; }

    /// Returns: whether there is a name, and it belongs to `space`.
    bool belongsTo(const GLNameSpace& space) const { return value() != 0 && _space.get() == &space; }
    /// Returns: whether there is a name, and its contexts are not known to be gone.
    bool isAlive() const { return value() != 0 && !_space->isClosed(); }
    /// Returns: whether there is a name, and a context that knows it exists, as far as is known.
    bool isAwake() const { return value() != 0 && _space->isAwake(); }
    unsigned int value() const { return _node.empty() ? 0 : _node.front().second; }

private:
    /// Leaves the members as they are; the caller replaces them or ends their life.
    void release() noexcept;

    GLNameNode _node;
    std::shared_ptr<GLNameSpace> _space;
};

} // namespace Atelier::Vel
