#include <epoxy/gl.h>

#include "context/contexttable.h"

#include <algorithm>
#include <iterator>

#include <QtGui/QOpenGLContext>

#include "context/glversion.h"
#include "context/log.h"
#include "context/qtcontext.h"

namespace Atelier::Vel {

namespace {

// Groups that no object uses any more, and of which no context is known, are kept up to this number: a
// context of theirs may come back and delete the names that are queued.
constexpr int kMaxSleepingGroups = 64;

// The object of a context that other code made.
class AdoptedContext : public OpenGLDeviceContext {
public:
    explicit AdoptedContext(std::unique_ptr<ContextGL> gl) { ContextAccess::gl(*this) = std::move(gl); }
};

template<typename Entries>
auto findNative(Entries& entries, const NativeContext& native) {
    return std::find_if(entries.begin(), entries.end(),
                        [&](const auto& entry) { return entry.native == native; });
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
    const Found found = find(native);
    return found.isEntry ? found.context : adopt(native);
}

QSharedPointer<OpenGLDeviceContext> ContextTable::known() noexcept {
    const NativeContext native = currentNativeContext();
    return native.api == NativeContext::Api::None ? nullptr : find(native).context;
}

ContextTable::Found ContextTable::find(const NativeContext& native) noexcept {
    Found found;
    std::optional<ContextMark> mark;
    bool isStale = false;
    {
        const std::lock_guard lock(_mutex);
        const auto entry = findNative(_entries, native);
        if (entry == _entries.end())
            return {};
        found = {true, entry->context.toStrongRef()};
        mark = entry->mark;
        isStale = isGone(*entry);
    }
    if (!isStale && (!mark || _programForgets || mark->isCurrent()))
        return found;
    remove(native); // the handle is that of another context now
    return {};
}

// The signal before Qt destroys a context has other receivers, which may use VelGL in it once more.
bool ContextTable::isGone(const Entry& entry) noexcept {
    return entry.isQts && entry.qt.isNull();
}

void ContextTable::add(const QSharedPointer<OpenGLDeviceContext>& context) {
    const NativeContext native = ContextAccess::gl(*context)->native();
    remove(native);
    const std::lock_guard lock(_mutex);
    _entries.push_back({native, context, {}, {}, false, {}});
}

void ContextTable::remove(const NativeContext& native) noexcept {
    Entry removed;
    {
        const std::lock_guard lock(_mutex);
        const auto entry = findNative(_entries, native);
        if (entry == _entries.end())
            return;
        removed = std::move(*entry);
        _entries.erase(entry);
    }
    if (removed.adopted)
        ContextAccess::gl(*removed.adopted).reset();
}

void ContextTable::forgetCurrent() {
    const NativeContext native = currentNativeContext();
    const QSharedPointer<OpenGLDeviceContext> context = known();
    _programForgets = true;
    ContextGL* gl = context ? ContextAccess::gl(*context).get() : nullptr;
    if (!gl)
        return;
    gl->deleteQueuedNames();
    const bool isAdopted = [&] {
        const std::lock_guard lock(_mutex);
        const auto entry = findNative(_entries, native);
        return entry != _entries.end() && entry->adopted;
    }();
    if (isAdopted)
        remove(native);
}

std::shared_ptr<ShareGroup> ContextTable::makeGroup(ShareGroup::Origin origin) {
    auto group = std::make_shared<ShareGroup>(origin);
    const std::lock_guard lock(_mutex);
    _groups.push_back({group, nullptr});
    return group;
}

QSharedPointer<OpenGLDeviceContext> ContextTable::adopt(NativeContext native) {
    const int version = currentVersion();
    if (version < kMinVersion) {
        warnOfVersionOnce(native, version);
        return {};
    }
    removeDestroyed();
    if (native.api == NativeContext::Api::Egl)
        native.display = currentEglDisplay();
    const QOpenGLContext* qt = qtContextOf(native);
    auto gl = std::make_unique<ContextGL>(native, groupOf(qt), ContextFeatures());
    QSharedPointer<OpenGLDeviceContext> context(new AdoptedContext(std::move(gl)));
    Entry entry{native, context, context, {}, qt != nullptr, qt};
    if (qt)
        QObject::connect(qt, &QOpenGLContext::aboutToBeDestroyed,
                         [native] { ContextTable::instance().remove(native); });
    else
        entry.mark.emplace(ContextMark::Of::Context);
    const std::lock_guard lock(_mutex);
    _entries.push_back(std::move(entry));
    return context;
}

// What Qt knows comes first. Marks also find the group of a context of Qt that wraps one of another library.
std::shared_ptr<ShareGroup> ContextTable::groupOf(const QOpenGLContext* context) {
    const QOpenGLContextGroup* qt = context ? context->shareGroup() : nullptr;
    std::shared_ptr<ShareGroup> group = qt ? findGroup(qt) : nullptr;
    if (group)
        return group;
    group = findMarkedGroup();
    removeUnusedGroups();
    if (!group)
        group = makeGroup(qt ? ShareGroup::Origin::Qt : ShareGroup::Origin::Other);
    if (qt)
        setQtGroup(group, qt);
    return group;
}

std::shared_ptr<ShareGroup> ContextTable::findGroup(const QOpenGLContextGroup* qt) {
    const std::lock_guard lock(_mutex);
    for (const Group& known : _groups)
        if (known.qt == qt)
            return known.group;
    return nullptr;
}

std::shared_ptr<ShareGroup> ContextTable::findMarkedGroup() {
    std::vector<Group> groups;
    {
        const std::lock_guard lock(_mutex);
        groups = _groups;
    }
    for (const Group& known : groups)
        if (!known.group->isClosed() && known.group->isMarkCurrent())
            return known.group;
    return nullptr;
}

void ContextTable::setQtGroup(const std::shared_ptr<ShareGroup>& group, const QOpenGLContextGroup* qt) {
    {
        const std::lock_guard lock(_mutex);
        _groups.push_back({group, qt});
    }
    QObject::connect(qt, &QObject::destroyed, [qt] { ContextTable::instance().endQtGroup(qt); });
}

void ContextTable::endQtGroup(const QOpenGLContextGroup* qt) noexcept {
    const std::lock_guard lock(_mutex);
    for (Group& known : _groups) {
        if (known.qt != qt)
            continue;
        known.qt = nullptr;
        known.group->endQts();
    }
}

void ContextTable::warnOfVersionOnce(const NativeContext& native, int version) {
    {
        const std::lock_guard lock(_mutex);
        if (std::find(_tooOld.cbegin(), _tooOld.cend(), native) != _tooOld.cend())
            return;
        _tooOld.push_back(native);
    }
    if (version == 0)
        qCWarning(velglLog, "OpenGL ES is current, but OpenGL %d.%d or later is needed", kMinVersion / 10,
                  kMinVersion % 10);
    else
        qCWarning(velglLog, "OpenGL %d.%d is current, but OpenGL %d.%d or later is needed", version / 10,
                  version % 10, kMinVersion / 10, kMinVersion % 10);
}

void ContextTable::removeDestroyed() {
    std::vector<NativeContext> adopted;
    std::vector<NativeContext> gone;
    {
        const std::lock_guard lock(_mutex);
        for (const Entry& entry : _entries)
            if (entry.adopted)
                (isGone(entry) ? gone : adopted).push_back(entry.native);
    }
    std::copy_if(adopted.cbegin(), adopted.cend(), std::back_inserter(gone), isDestroyed);
    for (const NativeContext& native : gone)
        remove(native);
}

void ContextTable::removeUnusedGroups() {
    const std::lock_guard lock(_mutex);
    const auto isUnused = [](const Group& known) {
        return !known.qt && !known.group->isAwake() && known.group.use_count() == 1;
    };
    auto sleeping = std::count_if(_groups.cbegin(), _groups.cend(), isUnused);
    const auto isDropped = [&](const Group& known) {
        return known.group->isClosed() || (isUnused(known) && sleeping-- > kMaxSleepingGroups);
    };
    _groups.erase(std::remove_if(_groups.begin(), _groups.end(), isDropped), _groups.end());
}

} // namespace Atelier::Vel
