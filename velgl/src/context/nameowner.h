#pragma once

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

} // namespace Atelier::Vel
