#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

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
    bool livesIn(const GLNameSpace& space) const { return _name && _space.lock().get() == &space; }
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

/// What an object has in each name space where it was used. `Entry` has a member `name`, a GLName. Objects
/// are used in one or two name spaces, so the entries are searched one after the other.
template<typename Entry>
class GLNameTable {
public:
    /// Returns: the entry whose name belongs to `space`; null when there is none.
    Entry* find(const GLNameSpace& space) {
        for (Entry& entry : _entries)
            if (entry.name.livesIn(space))
                return &entry;
        return nullptr;
    }

    /// Adds an entry and drops those whose contexts are gone. Pointers to other entries become invalid.
    Entry& add(Entry entry) {
        const auto isGone = [](const Entry& known) { return !known.name.isAlive(); };
        _entries.erase(std::remove_if(_entries.begin(), _entries.end(), isGone), _entries.end());
        return _entries.emplace_back(std::move(entry));
    }

    /// Returns: whether an entry's name belongs to a context that is not known to be gone.
    bool isAlive() const {
        return std::any_of(_entries.cbegin(), _entries.cend(),
                           [](const Entry& entry) { return entry.name.isAlive(); });
    }

private:
    std::vector<Entry> _entries;
};

/// The GL names of one object: one in each name space where it was used.
class GLNames {
public:
    /// Returns: the name that belongs to `space`; null when there is none.
    const GLName* find(const GLNameSpace& space);
    /// Returns: the name that the current context shares; 0 when there is none, or no context.
    unsigned int inCurrentContext();
    const GLName& add(GLName name) { return _table.add({std::move(name)}).name; }
    bool isAlive() const { return _table.isAlive(); }

private:
    struct Entry {
        GLName name;
    };
    GLNameTable<Entry> _table;
};

} // namespace Atelier::Vel
