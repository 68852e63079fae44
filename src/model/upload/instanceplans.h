#pragma once

namespace Atelier::Vel {

/// Registers "InstanceInfo", the layout of the transforms of every uploaded model.
void registerInstanceInfoPlan();

} // namespace Atelier::Vel
