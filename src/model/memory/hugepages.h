#pragma once

#include <cstddef>

namespace Atelier::Vel {

/// Asks the system to back a large block with large pages, which makes its first use several times cheaper.
/// This is a hint. It does nothing for small blocks or if there are no such pages.
void adviseHugePages(void* begin, std::size_t bytes);

} // namespace Atelier::Vel
