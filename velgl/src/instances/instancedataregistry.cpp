#include <velgl/instancedataregistry.h>

#include <algorithm>
#include <memory>

#include <velgl/instancedataplan.h>

#include "context/log.h"

namespace Atelier::Vel {

namespace {

bool sameMembers(const InstanceDataPlan& a, const InstanceDataPlan& b) {
    const auto sameMember = [](const InstanceDataPlan::Member& x, const InstanceDataPlan::Member& y) {
        return x.type == y.type && x.name == y.name;
    };
    return std::equal(a.members().cbegin(), a.members().cend(), b.members().cbegin(), b.members().cend(),
                      sameMember);
}

} // namespace

InstanceDataRegistry::InstanceDataRegistry() = default;

InstanceDataRegistry::~InstanceDataRegistry() = default;

// Made by the first call and never destroyed: static objects of any library may use it at any time.
InstanceDataRegistry& InstanceDataRegistry::Instance() {
    static auto* const registry = new InstanceDataRegistry;
    return *registry;
}

void InstanceDataRegistry::registerPlan(InstanceDataPlan* plan) {
    if (!plan || _plans.contains(plan))
        return;
    std::unique_ptr<InstanceDataPlan> owned(plan);
    const InstanceDataPlan* known = this->plan(owned->name());
    if (!known)
        _plans.append(owned.release());
    else if (!sameMembers(*known, *owned))
        qCWarning(velglLog, "A second plan '%s' with other members is left out", qPrintable(known->name()));
}

const InstanceDataPlan* InstanceDataRegistry::plan(const QString& name) const {
    for (const InstanceDataPlan* plan : _plans)
        if (plan->name() == name)
            return plan;
    return nullptr;
}

QList<const InstanceDataPlan*> InstanceDataRegistry::plans() const {
    return _plans;
}

} // namespace Atelier::Vel
