#pragma once

#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/mergeoptions.h"
#include "geometry/merging/vertexremap.h"

namespace Atelier::Vel {

/// Merges the corners of `remap` whose values have the same bytes in all attributes.
/// Cost: one hash look-up per corner; working memory of 8 bytes per corner, and of keys for a quarter of
/// them.
void mergeByBytes(const std::vector<CornerAttribute>& attributes, const MergeOptions& options,
                  VertexRemap& remap);

/// The same result, sooner if few corners are alike: only candidates, whose values in the largest attribute
/// share a hash with others, are looked up. If no two corners are alike, `remap` stays the identity.
void mergeMostlyDistinct(const std::vector<CornerAttribute>& attributes, const MergeOptions& options,
                         VertexRemap& remap);

} // namespace Atelier::Vel
