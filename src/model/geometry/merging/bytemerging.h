#pragma once

#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/merging/mergeoptions.h"
#include "geometry/merging/vertexremap.h"

namespace Atelier::Vel {

/// Merges the corners of `remap` whose values have the same bytes in all attributes.
/// Cost: one hash look-up per corner; working memory of 8 bytes per corner, plus keys for a quarter of the
/// corners.
void mergeByBytes(const std::vector<CornerAttribute>& attributes, const MergeOptions& options,
                  VertexRemap& remap);

/// The same result, faster if few corners are alike. Looks up only the candidates, whose values in the
/// largest attribute share a hash with others. If no two candidates are alike, `remap` stays the identity.
void mergeMostlyDistinct(const std::vector<CornerAttribute>& attributes, const MergeOptions& options,
                         VertexRemap& remap);

} // namespace Atelier::Vel
