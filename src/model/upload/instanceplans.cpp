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

void registerObjMaterialPlan() {
    using DataType = InstanceDataPlan::DataType;
    // The plan contains "Ke" and "map_Ke", which no MTL keyword sets, and lacks "Ka" and "map_Ka". This is
    // intentional.
    auto* plan = new InstanceDataPlan(QStringLiteral("OBJMaterial"));
    plan->addMember(DataType::Float, QStringLiteral("Ns"));
    plan->addMember(DataType::Float, QStringLiteral("d"));
    plan->addMember(DataType::Vec3, QStringLiteral("Kd"));
    plan->addMember(DataType::Vec3, QStringLiteral("Ks"));
    plan->addMember(DataType::Vec3, QStringLiteral("Ke"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ns"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Kd"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ks"));
    plan->addMember(DataType::Texture, QStringLiteral("map_Ke"));
    InstanceDataRegistry::Instance().registerPlan(plan);
}

} // namespace Atelier::Vel
