#pragma once

#include <memory>
#include <utility>

#include "context/glnamespace.h"

namespace Atelier::Vel {

/// Owns one GL name. It may outlive the contexts of its name space; there is nothing to delete then.
class GLName {
public:
    GLName() = default;
    GLName(GLKind kind, unsigned int name, const std::shared_ptr<GLNameSpace>& space)
        : _kind(kind), _name(name), _space(space) {}
    ~GLName() { release(); }
    GLName(GLName&& other) noexcept
        : _kind(other._kind), _name(std::exchange(other._name, 0U)), _space(std::move(other._space)) {}
    GLName& operator=(GLName&& other) noexcept;

    /// Returns: whether there is a name, and it belongs to `space`.
    bool belongsTo(const GLNameSpace& space) const { return _name && _space.lock().get() == &space; }
    /// Returns: whether there is a name, and its contexts are not known to be gone.
    bool isAlive() const { return _name && !_space.expired(); }
    unsigned int value() const { return _name; }

private:
    /// Leaves the members as they are; the caller replaces them or ends their life.
    void release();

    GLKind _kind = GLKind::Buffer;
    unsigned int _name = 0;
    std::weak_ptr<GLNameSpace> _space;
};

} // namespace Atelier::Vel
