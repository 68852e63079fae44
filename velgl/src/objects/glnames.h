#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "objects/glname.h"

namespace Atelier::Vel {

/// What an object has in each name space where it was used. `Entry` has a member `name`, a GLName. Objects
/// are used in one or two name spaces, so the entries are searched one after the other.
template<typename Entry>
class GLNameTable {
public:
    /// Returns: the entry whose name belongs to `space`; null when there is none.
    Entry* find(const GLNameSpace& space) {
        for (Entry& entry : _entries)
            if (entry.name.belongsTo(space))
                return &entry;
        return nullptr;
    }

    /// Adds an entry and drops those whose contexts are gone. Pointers to other entries become invalid.
    Entry& add(Entry entry) {
        removeIf([](const Entry& known) { return !known.name.isAlive(); });
        return _entries.emplace_back(std::move(entry));
    }

    /// Calls `function` with each entry.
    template<typename Function>
    void forEach(Function function) {
        std::for_each(_entries.begin(), _entries.end(), function);
    }

    /// Removes the entries of all other name spaces.
    void removeAllBut(const GLNameSpace& space) {
        removeIf([&](const Entry& entry) { return !entry.name.belongsTo(space); });
    }
    /// Removes the entry of `space`.
    void remove(const GLNameSpace& space) {
        removeIf([&](const Entry& entry) { return entry.name.belongsTo(space); });
    }

    /// Returns: whether a context that knows an entry's name exists, as far as is known.
    bool isAwake() const {
        return std::any_of(_entries.cbegin(), _entries.cend(),
                           [](const Entry& entry) { return entry.name.isAwake(); });
    }
    /// The same for the names of all other name spaces.
    bool isAwakeBut(const GLNameSpace& space) const {
        return std::any_of(_entries.cbegin(), _entries.cend(), [&](const Entry& entry) {
            return entry.name.isAwake() && !entry.name.belongsTo(space);
        });
    }

private:
    template<typename Condition>
    void removeIf(Condition condition) {
        _entries.erase(std::remove_if(_entries.begin(), _entries.end(), condition), _entries.end());
    }

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
    void removeAllBut(const GLNameSpace& space) { _table.removeAllBut(space); }
    void remove(const GLNameSpace& space) { _table.remove(space); }
    bool isAwake() const { return _table.isAwake(); }
    bool isAwakeBut(const GLNameSpace& space) const { return _table.isAwakeBut(space); }

private:
    struct Entry {
        GLName name;
    };
    GLNameTable<Entry> _table;
};

} // namespace Atelier::Vel
