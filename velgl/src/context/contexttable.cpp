#include <epoxy/gl.h>

#include "context/contexttable.h"

#include <algorithm>

#include <QtGui/QOpenGLContext>

#include "context/glversion.h"
#include "context/log.h"

namespace Atelier::Vel {

namespace {

// The object of a context that other code made.
class AdoptedContext : public OpenGLDeviceContext {
public:
    explicit AdoptedContext(std::unique_ptr<ContextGL> gl) { ContextAccess::gl(*this) = std::move(gl); }
};

ContextGL* knownGL(const QWeakPointer<OpenGLDeviceContext>& context) {
    const QSharedPointer<OpenGLDeviceContext> strong = context.toStrongRef();
    return strong ? ContextAccess::gl(*strong).get() : nullptr;
}

// GLX has no query for whether a context still exists. A QOpenGLContext reports its own destruction.
void removeWithQtContext(const NativeContext& native) {
    const QOpenGLContext* context = QOpenGLContext::currentContext();
    if (native.api == NativeContext::Api::Glx && context)
        QObject::connect(context, &QOpenGLContext::aboutToBeDestroyed,
                         [native] { ContextTable::instance().remove(native); });
}

} // namespace

// Never destroyed: static objects may delete their GL names after all other static objects are destroyed.
ContextTable& ContextTable::instance() {
    static auto* const table = new ContextTable;
    return *table;
}

QSharedPointer<OpenGLDeviceContext> ContextTable::current() {
    const NativeContext native = currentNativeContext();
    if (native.api == NativeContext::Api::None)
        return {};
    const auto isCurrent = [&](const Entry& entry) { return entry.native == native; };
    const auto entry = std::find_if(_entries.begin(), _entries.end(), isCurrent);
    if (entry == _entries.end())
        return adopt(native);
    // A new context may reuse the handle of a destroyed one; the labelled buffer of the group distinguishes
    // them.
    if (entry->adopted && !ContextAccess::gl(*entry->adopted)->group()->isCurrent()) {
        remove(native);
        return adopt(native);
    }
    return entry->context.toStrongRef();
}

void ContextTable::add(const QSharedPointer<OpenGLDeviceContext>& context) {
    const NativeContext native = ContextAccess::gl(*context)->native();
    remove(native);
    _entries.push_back({native, context, {}});
}

void ContextTable::remove(const NativeContext& native) {
    for (Entry& entry : _entries)
        if (entry.native == native && entry.adopted)
            ContextAccess::gl(*entry.adopted).reset();
    const auto isRemoved = [&](const Entry& entry) { return entry.native == native; };
    _entries.erase(std::remove_if(_entries.begin(), _entries.end(), isRemoved), _entries.end());
}

std::shared_ptr<ShareGroup> ContextTable::currentGroup() const {
    for (const Entry& entry : _entries)
        if (const ContextGL* gl = knownGL(entry.context))
            if (gl->group()->isCurrent())
                return gl->group();
    return std::make_shared<ShareGroup>();
}

QSharedPointer<OpenGLDeviceContext> ContextTable::adopt(const NativeContext& native) {
    const int version = currentVersion();
    if (version < kMinVersion) {
        warnOfVersionOnce(native, version);
        return {};
    }
    removeDestroyed();
    auto gl = std::make_unique<ContextGL>(native, currentGroup(), ContextFeatures());
    QSharedPointer<OpenGLDeviceContext> context(new AdoptedContext(std::move(gl)));
    _entries.push_back({native, context, context});
    removeWithQtContext(native);
    return context;
}

void ContextTable::warnOfVersionOnce(const NativeContext& native, int version) {
    if (std::find(_tooOld.cbegin(), _tooOld.cend(), native) != _tooOld.cend())
        return;
    _tooOld.push_back(native);
    if (version == 0)
        qCWarning(velglLog, "OpenGL ES is current, but OpenGL %d.%d or later is needed", kMinVersion / 10,
                  kMinVersion % 10);
    else
        qCWarning(velglLog, "OpenGL %d.%d is current, but OpenGL %d.%d or later is needed", version / 10,
                  version % 10, kMinVersion / 10, kMinVersion % 10);
}

void ContextTable::removeDestroyed() {
    std::vector<NativeContext> destroyed;
    for (const Entry& entry : _entries)
        if (entry.adopted && isDestroyed(entry.native))
            destroyed.push_back(entry.native);
    for (const NativeContext& native : destroyed)
        remove(native);
}

} // namespace Atelier::Vel
