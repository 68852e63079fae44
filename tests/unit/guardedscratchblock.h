#pragma once

#include <cstddef>
#include <vector>

namespace Atelier::Vel::Testing {

/// The bytes of all scratch blocks so far, in the order in which they were made.
std::vector<std::size_t>& scratchBlocks();

} // namespace Atelier::Vel::Testing
