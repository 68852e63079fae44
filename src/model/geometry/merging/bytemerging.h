#pragma once

#include <functional>
#include <vector>

#include "geometry/merging/cornerattribute.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// Merges corners whose values have the same bytes in all attributes. Vertices are numbered from 0 in the
/// order in which they first appear over the corners.
/// `vertexOfCorner` and `firstCorner` have room for `cornerCount` entries: the vertex of each corner, and the
/// first corner of each vertex.
/// `meter` counts corners.
/// Returns: the number of vertices.
/// Cost:    one hash look-up per corner, working memory of 8 bytes per corner.
quint32 mergeByBytes(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                     quint32* vertexOfCorner, quint32* firstCorner, const WorkMeter& meter = {});

/// The same result, sooner where few corners are alike: only those whose values in the largest attribute
/// share a hash with others are looked up. `firstCorners` gives the room for the first corner of each vertex.
/// Where no two corners are alike, each is the vertex of its own number, that room may not be asked for, and
/// the lists hold nothing of use.
quint32 mergeMostlyDistinct(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                            quint32* vertexOfCorner, const std::function<quint32*()>& firstCorners,
                            const WorkMeter& meter = {});

/// Copies the value of each of the given corners, or of the first `count` where those are null, to `out`, one
/// after the other. `meter` counts them.
void gatherValues(const CornerAttribute& attribute, const quint32* corners, quint32 count, unsigned char* out,
                  const WorkMeter& meter = {});

} // namespace Atelier::Vel
