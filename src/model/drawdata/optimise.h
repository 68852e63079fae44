#pragma once

#include <memory>

#include <velmodel/drawdata.h>

#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Whether this build can optimise draw data.
bool canOptimise();

/// A copy of `content` with streams of its own, in which triangles and vertices have a better order.
/// `meter`, which may be empty, is called after each command with its index count; an exception from it
/// cancels the work.
/// Returns: null when the order is not to be changed, or, after a warning, when a stream cannot be had.
std::shared_ptr<DrawDataContent> optimisedContent(const DrawDataContent& content, const WorkMeter& meter);

/// Zeros without triangles, and where this build cannot optimise.
DrawData::VertexCacheStatistics cacheStatistics(const DrawDataContent& content);

} // namespace Atelier::Vel
