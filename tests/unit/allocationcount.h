#pragma once

#include <cstddef>

namespace Atelier::Vel::Testing {

/// Whether allocations can be counted: not under a sanitizer, which replaces them.
bool countsAllocations();

/// All allocations of the process so far, including Qt's strings and arrays.
std::size_t allocationCount();

/// The bytes of all blocks and mappings that the process has at the moment.
std::size_t bytesInUse();

} // namespace Atelier::Vel::Testing
