#pragma once

namespace Atelier::Vel {

/// Registers "InstanceInfo", the layout of the transforms of every uploaded model.
void registerInstanceInfoPlan();
/// Registers "OBJMaterial", the layout of the materials of loads. Called once, when the library is loaded.
void registerObjMaterialPlan();

} // namespace Atelier::Vel
