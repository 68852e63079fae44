#pragma once

#include <memory>

#include <velmodel/drawdata.h>

#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Whether this build can optimise draw data.
bool canOptimise();

/// A copy of `content` with its own streams, in which triangles and vertices have an order that a GPU draws
/// faster. `meter`, which may be empty, is called after each command with its index count; an exception from
/// it cancels the work.
/// Returns: null if this content cannot be reordered or, after a warning, if a stream is not available.
std::shared_ptr<DrawDataContent> optimisedContent(const DrawDataContent& content, const WorkMeter& meter);

/// The statistics of the vertex cache. They are zero if there are no triangles, if an index is out of range,
/// or if this build cannot optimise.
DrawData::VertexCacheStatistics cacheStatistics(const DrawDataContent& content);

} // namespace Atelier::Vel
