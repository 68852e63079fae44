#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <QtCore/QPointer>
#include <QtCore/QSharedPointer>
#include <QtCore/QWeakPointer>

#include "context/contextaccess.h"
#include "context/contextmark.h"

class QOpenGLContext;
class QOpenGLContextGroup;

namespace Atelier::Vel {

/// The native contexts and share groups that VelGL has seen: its own headless contexts, those made by Qt, and
/// those of other libraries.
///
/// An entry stands for one native context, not for its handle. VelGL knows when its own contexts end, and Qt
/// has a signal for it. A context of another library carries a mark, which distinguishes it from an earlier
/// context with the same handle.
/// Threads: all functions may be called on any thread; those that say "current" mean the calling thread's.
class ContextTable {
public:
    static ContextTable& instance();

    /// Returns: the object of the native context that is current; one that is new is adopted. Null when none
    /// is current and when its version is too old, after one warning.
    QSharedPointer<OpenGLDeviceContext> current();
    /// The same without adopting one: null for a context that is new. Allocates no memory.
    QSharedPointer<OpenGLDeviceContext> known() noexcept;

    /// Adds a headless context. Its creator owns it and removes it.
    void add(const QSharedPointer<OpenGLDeviceContext>& context);
    void remove(const NativeContext& native) noexcept;

    /// Removes the current context if VelGL did not make it. From the first call on, the program is trusted
    /// to call this for each context that it destroys, and marks are not checked any more.
    void forgetCurrent();

    /// Makes a group for the context that is natively current.
    std::shared_ptr<ShareGroup> makeGroup(ShareGroup::Origin origin);

private:
    struct Entry {
        NativeContext native;
        QWeakPointer<OpenGLDeviceContext> context;
        QSharedPointer<OpenGLDeviceContext> adopted; ///< the same object if the context is adopted; else null
        std::optional<ContextMark> mark;             ///< of a context of another library
        bool isQts = false;
        QPointer<const QOpenGLContext> qt; ///< null when Qt has destroyed its context
    };
    struct Group {
        std::shared_ptr<ShareGroup> group;
        const QOpenGLContextGroup* qt = nullptr; ///< null when Qt does not know the group, or has ended it
    };

    struct Found {
        bool isEntry = false;
        QSharedPointer<OpenGLDeviceContext> context; ///< null if its creator is destroying it
    };

    Found find(const NativeContext& native) noexcept;
    QSharedPointer<OpenGLDeviceContext> adopt(NativeContext native);
    std::shared_ptr<ShareGroup> groupOf(const QOpenGLContext* context);
    std::shared_ptr<ShareGroup> findGroup(const QOpenGLContextGroup* qt);
    std::shared_ptr<ShareGroup> findMarkedGroup();
    void setQtGroup(const std::shared_ptr<ShareGroup>& group, const QOpenGLContextGroup* qt);
    void endQtGroup(const QOpenGLContextGroup* qt) noexcept;
    void warnOfVersionOnce(const NativeContext& native, int version);
    static bool isGone(const Entry& entry) noexcept;
    void removeDestroyed();
    void removeUnusedGroups();

    std::mutex _mutex; ///< for the members below; never held while other code runs
    std::vector<Entry> _entries;
    std::vector<Group> _groups;
    std::vector<NativeContext> _tooOld;
    std::atomic<bool> _programForgets{false}; ///< whether the program calls forgetCurrent()
};

} // namespace Atelier::Vel
