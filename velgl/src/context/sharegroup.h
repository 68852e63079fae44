#pragma once

#include <memory>
#include <optional>
#include <unordered_map>

#include <QtCore/QtGlobal>

#include "context/contextmark.h"
#include "context/glnamespace.h"

namespace Atelier::Vel {

struct LinkedProgram;

/// The name space of a group of sharing contexts.
///
/// VelGL does not know all contexts of a group: it sees those in which it is used. So a group may live on
/// while none of its known contexts does. Who made the contexts decides how much is known.
class ShareGroup : public GLNameSpace {
public:
    enum class Origin {
        VelGL, ///< ends with the last of its contexts
        Qt,    ///< ends when Qt says so, or with the last headless context that shares with one of Qt
        Other, ///< never known to end; its mark identifies it when a context of the group comes back
    };

    /// Requires: one of the new group's contexts is natively current. A group that Qt knows gets no mark.
    explicit ShareGroup(Origin origin);

    /// A number that no other group has.
    quint64 serial() const { return _serial; }
    /// Returns: whether Qt has the group, or a known context of it exists.
    bool isAwake() const override { return !isClosed() && (_isQts || _contextCount > 0); }
    /// Returns: whether the group has a mark, and the natively current context sees it.
    bool isMarkCurrent() const noexcept { return _mark && _mark->isCurrent(); }

    /// What was looked up of a program of this group when it was linked; null for a program of other code.
    std::shared_ptr<const LinkedProgram> linkedProgram(unsigned int name) const;
    void addLinkedProgram(unsigned int name, std::shared_ptr<const LinkedProgram> linked);
    void removeLinkedProgram(unsigned int name) noexcept;

    /// Count the known contexts of the group.
    void addContext() { ++_contextCount; }
    void removeContext() noexcept;
    /// Qt has no context of the group any more.
    void endQts() noexcept;

private:
    quint64 _serial;
    Origin _origin;
    std::optional<ContextMark> _mark;
    std::atomic<int> _contextCount{0};
    std::atomic<bool> _isQts;
    mutable std::mutex _programMutex;
    std::unordered_map<unsigned int, std::shared_ptr<const LinkedProgram>> _programs;
};

} // namespace Atelier::Vel
