#pragma once

#include <cstddef>

namespace Atelier::Vel::Testing {

/// Whether allocations can be counted here: a sanitizer wants them for itself.
bool countsAllocations();

/// All allocations of the process so far, Qt's strings and arrays included.
std::size_t allocationCount();

} // namespace Atelier::Vel::Testing
