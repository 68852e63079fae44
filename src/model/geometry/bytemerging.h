#pragma once

#include <vector>

#include "geometry/cornerattribute.h"

namespace Atelier::Vel {

/// Merges corners whose values have the same bytes in all attributes. Vertices are numbered from 0 in the
/// order in which they first appear over the corners.
/// `vertexOfCorner` and `firstCorner` have room for `cornerCount` entries: the vertex of each corner, and the
/// first corner of each vertex.
/// Returns: the number of vertices.
/// Cost:    one hash look-up per corner, working memory of 8 bytes per corner.
quint32 mergeByBytes(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                     quint32* vertexOfCorner, quint32* firstCorner);

/// The same result, sooner where few corners are alike: only those whose values in the largest attribute
/// share a hash with others are looked up.
quint32 mergeMostlyDistinct(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                            quint32* vertexOfCorner, quint32* firstCorner);

/// Copies the value of each of the given corners to `out`, one after the other.
void gatherValues(const CornerAttribute& attribute, const quint32* corners, quint32 count,
                  unsigned char* out);

} // namespace Atelier::Vel
