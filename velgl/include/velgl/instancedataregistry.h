#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class InstanceDataPlan;

/// The process-wide table of plans. It can be used while libraries are still being loaded.
class VELGL_EXPORT InstanceDataRegistry {
public:
    static InstanceDataRegistry& Instance();

    InstanceDataRegistry(const InstanceDataRegistry&) = delete;
    InstanceDataRegistry& operator=(const InstanceDataRegistry&) = delete;

    /// Takes the plan over. A second plan of a known name is deleted and the first stays, since collections
    /// may hold it; a warning says so when the two differ.
    void registerPlan(InstanceDataPlan* plan);
    /// The plan of that name; null when there is none.
    const InstanceDataPlan* plan(const QString& name) const;
    /// All plans, in the order of their registration.
    QList<const InstanceDataPlan*> plans() const;

private:
    InstanceDataRegistry();
    ~InstanceDataRegistry();

    QList<const InstanceDataPlan*> _plans;
};

} // namespace Atelier::Vel
