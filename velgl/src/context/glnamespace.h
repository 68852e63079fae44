#pragma once

#include <utility>
#include <vector>

namespace Atelier::Vel {

enum class GLKind { Buffer, Texture, Program, VertexArray };

/// The set of GL names that a group of sharing contexts has in common, or that one context has alone, and the
/// queue of those that wait to be deleted. When it is destroyed, its names are gone with their contexts.
class GLNameSpace {
public:
    GLNameSpace() = default;
    GLNameSpace(const GLNameSpace&) = delete;
    GLNameSpace& operator=(const GLNameSpace&) = delete;

    /// Deletes the name at once if a context of this space is current; otherwise queues it until one is.
    void release(GLKind kind, unsigned int name);
    /// Requires: a context of this space is natively current.
    void deleteQueuedNames();

private:
    std::vector<std::pair<GLKind, unsigned int>> _queued;
};

} // namespace Atelier::Vel
