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
