#include <velgl/instancedataregistry.h>

#include <algorithm>
#include <mutex>

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

struct InstanceDataRegistry::Data {
    std::mutex mutex;
    QList<const InstanceDataPlan*> plans;

    const InstanceDataPlan* find(const QString& name) const {
        for (const InstanceDataPlan* plan : plans)
            if (plan->name() == name)
                return plan;
        return nullptr;
    }
};

InstanceDataRegistry::InstanceDataRegistry() : _data(std::make_unique<Data>()) {}

InstanceDataRegistry::~InstanceDataRegistry() = default;

// Made by the first call and never destroyed: static objects of any library may use it at any time.
InstanceDataRegistry& InstanceDataRegistry::Instance() {
    static auto* const registry = new InstanceDataRegistry;
    return *registry;
}

void InstanceDataRegistry::registerPlan(InstanceDataPlan* plan) {
    if (!plan)
        return;
    const InstanceDataPlan* known = nullptr;
    {
        const std::lock_guard lock(_data->mutex);
        known = _data->find(plan->name());
        if (!known)
            _data->plans.append(plan);
    }
    if (!known || known == plan)
        return;
    const std::unique_ptr<InstanceDataPlan> second(plan);
    if (!sameMembers(*known, *second))
        qCWarning(velglLog, "A second plan '%s' with other members is left out", qPrintable(known->name()));
}

const InstanceDataPlan* InstanceDataRegistry::plan(const QString& name) const {
    const std::lock_guard lock(_data->mutex);
    return _data->find(name);
}

QList<const InstanceDataPlan*> InstanceDataRegistry::plans() const {
    const std::lock_guard lock(_data->mutex);
    return _data->plans;
}

} // namespace Atelier::Vel
