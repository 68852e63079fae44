#pragma once

namespace Atelier::Vel {

/// Registers the layout of the transforms that every uploaded model carries, "InstanceInfo".
void registerInstanceInfoPlan();

} // namespace Atelier::Vel
