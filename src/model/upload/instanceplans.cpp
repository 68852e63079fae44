#include "upload/instanceplans.h"

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

namespace Atelier::Vel {

void registerInstanceInfoPlan() {
    // No string literals of this library: the registry keeps the names after the library is unloaded.
    auto* const plan = new InstanceDataPlan(QString::fromLatin1("InstanceInfo"));
    plan->addMember(InstanceDataPlan::DataType::Mat4, QString::fromLatin1("ModelMatrix"));
    plan->addMember(InstanceDataPlan::DataType::Mat4, QString::fromLatin1("ModelNormalMatrix"));
    InstanceDataRegistry::Instance().registerPlan(plan);
}

} // namespace Atelier::Vel
