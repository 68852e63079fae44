#pragma once

#include <memory>
#include <vector>

#include <QtCore/QSharedPointer>
#include <QtCore/QWeakPointer>

#include "context/contextaccess.h"

namespace Atelier::Vel {

/// The native contexts that VelGL has seen: its own headless ones, and adopted ones, which other code made.
class ContextTable {
public:
    static ContextTable& instance();

    /// Returns: the object of the native context that is current; one that is new is adopted. Null when none
    /// is current and when its version is too old, after one warning.
    QSharedPointer<OpenGLDeviceContext> current();

    /// Adds a headless context. Its creator owns it and removes it.
    void add(const QSharedPointer<OpenGLDeviceContext>& context);
    /// Removes a context. The object of an adopted one loses its connection to OpenGL.
    void remove(const NativeContext& native);

    /// Returns: the share group of the native context that is current; a new group if it shares with no known
    /// context.
    std::shared_ptr<ShareGroup> currentGroup() const;

private:
    struct Entry {
        NativeContext native;
        QWeakPointer<OpenGLDeviceContext> context;
        QSharedPointer<OpenGLDeviceContext> adopted; ///< the same object if the context is adopted; else null
    };

    QSharedPointer<OpenGLDeviceContext> adopt(const NativeContext& native);
    void warnOfVersionOnce(const NativeContext& native, int version);
    void removeDestroyed();

    std::vector<Entry> _entries;
    std::vector<NativeContext> _tooOld;
};

} // namespace Atelier::Vel
