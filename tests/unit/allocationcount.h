#pragma once

#include <cstddef>

namespace Atelier::Vel::Testing {

/// Whether allocations can be counted here: a sanitizer wants them for itself.
bool countsAllocations();

/// All allocations of the process so far, Qt's strings and arrays included.
std::size_t allocationCount();

/// The bytes of all blocks and mappings that the process has at the moment.
std::size_t bytesInUse();

} // namespace Atelier::Vel::Testing
