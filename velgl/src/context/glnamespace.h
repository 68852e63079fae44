#pragma once

#include <atomic>
#include <list>
#include <mutex>
#include <utility>

namespace Atelier::Vel {

enum class GLKind { Buffer, Texture, Renderbuffer, Program, VertexArray, Framebuffer };

/// A list of one GL name. Such a list moves into a queue without an allocation.
using GLNameNode = std::list<std::pair<GLKind, unsigned int>>;

/// The set of GL names that a group of sharing contexts has in common, or that one context has alone, and the
/// queue of those that wait to be deleted.
/// Threads: all functions may be called on any thread.
class GLNameSpace {
public:
    GLNameSpace() = default;
    virtual ~GLNameSpace() = default;
    GLNameSpace(const GLNameSpace&) = delete;
    GLNameSpace& operator=(const GLNameSpace&) = delete;

    /// Deletes the name in `name` at once if a context of this space is current, and otherwise queues it
    /// until one is. Allocates no memory.
    void release(GLNameNode& name) noexcept;
    /// Requires: a context of this space is natively current.
    /// Cost: one atomic load if no name waits.
    void deleteQueuedNames() noexcept {
        if (_isAnyQueued)
            deleteQueue();
    }

    /// Declares that the contexts of this space are gone, and all names with them.
    void close() noexcept;
    bool isClosed() const { return _isClosed; }
    /// Returns: whether a context of this space exists, as far as is known.
    virtual bool isAwake() const { return !_isClosed; }

private:
    void deleteQueue() noexcept;

    std::mutex _mutex; ///< for `_queued`, and for changes of `_isAnyQueued`
    GLNameNode _queued;
    std::atomic<bool> _isAnyQueued{false};
    std::atomic<bool> _isClosed{false};
};

} // namespace Atelier::Vel
