#include "upload/instanceplans.h"

#include <memory>

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

namespace {

using DataType = InstanceDataPlan::DataType;

QString extendedName() {
    return QStringLiteral("OBJMaterialExtended");
}

// The members include "Ke" and "map_Ke", which a plain load never sets, and lack "Ka" and "map_Ka". This is
// intentional.
std::unique_ptr<InstanceDataPlan> makeMaterialPlan(const QString& name) {
    auto plan = std::make_unique<InstanceDataPlan>(name);
    plan->addMember(DataType::Float, QStringLiteral("Ns"));
    plan->addMember(DataType::Float, QStringLiteral("d"));
    plan->addMember(DataType::Vec3, QStringLiteral("Kd"));
    plan->addMember(DataType::Vec3, QStringLiteral("Ks"));
    plan->addMember(DataType::Vec3, QStringLiteral("Ke"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ns"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Kd"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ks"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ke"));
    return plan;
}

} // namespace

void registerObjMaterialPlan() {
    InstanceDataRegistry::Instance().registerPlan(makeMaterialPlan(QStringLiteral("OBJMaterial")).release());
}

void registerExtendedMaterialPlan() {
    std::unique_ptr<InstanceDataPlan> plan = makeMaterialPlan(extendedName());
    plan->addMember(DataType::Int, QStringLiteral("illum"));
    plan->addMember(DataType::Float, QStringLiteral("Pr"));
    plan->addMember(DataType::Float, QStringLiteral("Pm"));
    plan->addMember(DataType::Vec2, QStringLiteral("map_offset"));
    plan->addMember(DataType::Vec2, QStringLiteral("map_scale"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Pr"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Pm"));
    plan->addMember(DataType::Texture, QStringLiteral("norm"));
    // A second plan of the name is deleted.
    InstanceDataRegistry::Instance().registerPlan(plan.release());
}

void registerPlanOf(const QList<InstanceData>& materials) {
    // All materials of a load have one layout.
    if (!materials.isEmpty() && materials.first().name() == extendedName())
        registerExtendedMaterialPlan();
}

} // namespace Atelier::Vel
