#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace Atelier::Vel {

enum class GLKind { Buffer, Texture, Program, VertexArray };

/// What GL names live in: a group of contexts that share objects, or one context for names that are not
/// shared. Destroying it means that its names are gone.
class NameOwner {
public:
    NameOwner() = default;
    NameOwner(const NameOwner&) = delete;
    NameOwner& operator=(const NameOwner&) = delete;

    /// Deletes the name now where a context of this owner is current, else when one is next.
    void release(GLKind kind, unsigned int name);
    /// Requires: a context of this owner is natively current.
    void deleteQueued();

private:
    std::vector<std::pair<GLKind, unsigned int>> _queued;
};

/// Owns one GL name. Outlives its context safely: the name is then simply forgotten.
class GLName {
public:
    GLName() = default;
    GLName(GLKind kind, unsigned int name, const std::shared_ptr<NameOwner>& owner)
        : _kind(kind), _name(name), _owner(owner) {}
    ~GLName() { release(); }
    GLName(GLName&& other) noexcept
        : _kind(other._kind), _name(std::exchange(other._name, 0U)), _owner(std::move(other._owner)) {}
    GLName& operator=(GLName&& other) noexcept;

    bool livesIn(const NameOwner& owner) const { return _name && _owner.lock().get() == &owner; }
    /// Whether it lives in a context that is not known to be gone.
    bool isAlive() const { return _name && !_owner.expired(); }
    unsigned int value() const { return _name; }

private:
    /// What is kept of the name afterwards has no meaning.
    void release();

    GLKind _kind = GLKind::Buffer;
    unsigned int _name = 0;
    std::weak_ptr<NameOwner> _owner;
};

/// The GL names of one object: one in every group of contexts where it was used.
class GLNames {
public:
    /// Null when the object has none there.
    const GLName* find(const NameOwner& owner) const;
    const GLName& add(GLName name);
    /// Whether there is one in a context that is not known to be gone.
    bool isAlive() const;

private:
    std::vector<GLName> _names;
};

} // namespace Atelier::Vel
