#pragma once

namespace Atelier::Vel::Viewer {

/// Milliseconds since this process was started, in steps of the system's clock tick, which is 10 ms as a
/// rule. Returns: -1 if the system does not provide it.
double processAge();

} // namespace Atelier::Vel::Viewer
