#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "context/glnamespace.h"

namespace Atelier::Vel {

/// Owns one GL name. Outlives its context safely: the name is then simply forgotten.
class GLName {
public:
    GLName() = default;
    GLName(GLKind kind, unsigned int name, const std::shared_ptr<GLNameSpace>& space)
        : _kind(kind), _name(name), _space(space) {}
    ~GLName() { release(); }
    GLName(GLName&& other) noexcept
        : _kind(other._kind), _name(std::exchange(other._name, 0U)), _space(std::move(other._space)) {}
    GLName& operator=(GLName&& other) noexcept;

    bool livesIn(const GLNameSpace& space) const { return _name && _space.lock().get() == &space; }
    /// Whether it lives in a context that is not known to be gone.
    bool isAlive() const { return _name && !_space.expired(); }
    unsigned int value() const { return _name; }

private:
    /// What is kept of the name afterwards has no meaning.
    void release();

    GLKind _kind = GLKind::Buffer;
    unsigned int _name = 0;
    std::weak_ptr<GLNameSpace> _space;
};

/// The GL names of one object: one in every group of contexts where it was used.
class GLNames {
public:
    /// Null when the object has none there.
    const GLName* find(const GLNameSpace& space) const;
    const GLName& add(GLName name);
    /// Whether there is one in a context that is not known to be gone.
    bool isAlive() const;

private:
    std::vector<GLName> _names;
};

} // namespace Atelier::Vel
