#pragma once

#include <QtCore/QList>

#include <velgl/instancedata.h>

namespace Atelier::Vel {

/// Registers "InstanceInfo", the layout of the transforms of every uploaded model.
void registerInstanceInfoPlan();
/// Registers "OBJMaterial", the layout of the materials of loads. Called once, when the library is loaded.
void registerObjMaterialPlan();
/// Registers "OBJMaterialExtended", unless it is registered.
void registerExtendedMaterialPlan();
/// The same if `materials` need it.
void registerPlanOf(const QList<InstanceData>& materials);

} // namespace Atelier::Vel
