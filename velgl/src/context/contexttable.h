#pragma once

#include <memory>
#include <vector>

#include <QtCore/QSharedPointer>
#include <QtCore/QWeakPointer>

#include "context/contextaccess.h"

namespace Atelier::Vel {

/// All native contexts that VelGL has met, those of others and its own.
class ContextTable {
public:
    static ContextTable& instance();

    /// The device context of what is natively current; made at the first sight of it. Null for none, and for
    /// one that is too old.
    QSharedPointer<OpenGLDeviceContext> current();

    /// Files a headless context, which its maker owns and removes.
    void add(const QSharedPointer<OpenGLDeviceContext>& context);
    void remove(const NativeContext& native);

    /// The share group of what is natively current; a new one when it shares with no context known.
    std::shared_ptr<ShareGroup> currentGroup() const;

private:
    struct Entry {
        NativeContext native;
        QWeakPointer<OpenGLDeviceContext> context;
        QSharedPointer<OpenGLDeviceContext> adopted; ///< the same, when it stands for somebody else's context
    };

    QSharedPointer<OpenGLDeviceContext> adopt(const NativeContext& native);
    void warnOnce(const NativeContext& native, int version);
    void forgetDestroyed();

    std::vector<Entry> _entries;
    std::vector<NativeContext> _tooOld;
};

} // namespace Atelier::Vel
