#pragma once

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// Two edges of a polygon that cross. Edge k leads from corner k to the next one; -1 if there is none.
struct EdgeCrossing {
    int first = -1;
    int second = -1;
    /// The search has ended without a result, because the allowed comparisons were used up.
    bool isUndecided = false;
};

/// Finds two edges of a polygon that cross, seen along the axis that is nearest to its normal. Edges that
/// only touch, such as those of a bridge to a hole, or that cross by less than a millionth of the size of the
/// polygon, do not count.
///
/// `comparisons` is the number of pairs of edges that may still be compared; it is reduced by those that
/// were. Requires: three corners at least, every vertex number lies in `positions` (three floats per vertex),
/// the
///           coordinates are finite, and `normal` is not zero.
/// Cost:     O(count log count) for ordinary polygons, O(count²) comparisons in the worst case.
EdgeCrossing findEdgeCrossing(const float* positions, const quint32* corners, int count,
                              const double (&normal)[3], qint64& comparisons);

} // namespace Atelier::Vel
