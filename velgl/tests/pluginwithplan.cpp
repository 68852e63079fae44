#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

namespace Atelier::Vel::Testing {

namespace {

// The literals lie in this library and are unmapped with it.
struct Registrar {
    Registrar() {
        auto* plan = new InstanceDataPlan(QStringLiteral("PlanOfAPlugin"));
        plan->addMember(InstanceDataPlan::DataType::Mat4, QStringLiteral("memberOfAPlugin"));
        InstanceDataRegistry::Instance().registerPlan(plan);
    }
};

const Registrar registrar;

} // namespace

} // namespace Atelier::Vel::Testing
