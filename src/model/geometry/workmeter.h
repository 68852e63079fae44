#pragma once

#include <functional>

namespace Atelier::Vel {

/// A callback that counts finished units of long work, some ten thousand per call. May be empty. An exception
/// from it cancels the work.
using WorkMeter = std::function<void(int units)>;

} // namespace Atelier::Vel
