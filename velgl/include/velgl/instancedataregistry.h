#pragma once

#include <memory>

#include <QtCore/QList>
#include <QtCore/QString>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class InstanceDataPlan;

/// The plans of the process, by name. A library registers its plans when it is loaded; collections find
/// theirs here when they are packed or drawn.
/// Threads: all functions may be called on any thread, several at a time. No context is needed.
class VELGL_EXPORT InstanceDataRegistry {
public:
    /// Returns: the registry of the process. It is made by the first call and never destroyed, so static
    /// objects of any library may use it, also before main() and after it.
    static InstanceDataRegistry& Instance();

    InstanceDataRegistry(const InstanceDataRegistry&) = delete;
    InstanceDataRegistry& operator=(const InstanceDataRegistry&) = delete;

    /// Takes ownership of `plan`, to the end of the process: it stays when the library that registered it is
    /// unloaded. Null, and a plan that is registered already, change nothing. A second plan of a known name
    /// is deleted, since collections may use the first one; a warning says so when the members of the two
    /// differ.
    void registerPlan(InstanceDataPlan* plan);
    /// Returns: the plan of that name; null when there is none. It stays valid to the end of the process.
    /// Cost: linear in the number of plans, of which a process has few.
    const InstanceDataPlan* plan(const QString& name) const;
    /// Returns: all plans, in the order of their registration.
    QList<const InstanceDataPlan*> plans() const;

private:
    InstanceDataRegistry();
    ~InstanceDataRegistry();

    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
