#pragma once

#include <functional>

namespace Atelier::Vel {

/// Counts units of a long work as they are done, some ten thousand at a time. May be empty. An exception from
/// it cancels the work.
using WorkMeter = std::function<void(int units)>;

} // namespace Atelier::Vel
