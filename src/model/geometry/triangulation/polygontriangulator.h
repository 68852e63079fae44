#pragma once

#include <utility>

#include <QtGui/QVector3D>

#include "geometry/triangulation/earclipping.h"
#include "geometry/triangulation/fixedpattern.h"
#include "geometry/triangulation/windingfilter.h"

namespace Atelier::Vel {

/// Cuts polygons as Triangulate3D does, one after the other, and keeps its working memory between them: once
/// it is warm, a face costs no allocation.
class PolygonTriangulator {
public:
    /// Has the corners of large polygons counted while they are cut.
    void setMeter(WorkMeter meter) { _scratch.meter = std::move(meter); }

    /// The cut of one polygon: corner numbers (0 to count − 1), three per triangle, valid until the next
    /// call. Empty if the polygon has fewer than three corners or no ear is left.
    const PolygonScratch::Triangles& cornerTriangles(const QVector3D& normal, int count, const int* corners,
                                                     const float* positions);
    /// The same about the polygon's own normal.
    const PolygonScratch::Triangles& cornerTriangles(int count, const int* corners, const float* positions);

    /// Writes the triangles of one polygon, cut about its own normal, as vertex numbers to `out`.
    /// Requires: room for 3 · (count − 2) numbers; none for fewer than three corners.
    /// Returns:  the end of what it wrote; `out` itself for a polygon that cannot be triangulated.
    /// Cost:     a few nanoseconds for nearly every triangle and quadrilateral.
    unsigned int* triangulate(int count, const int* corners, const float* positions, unsigned int* out);

private:
    const PolygonScratch::Triangles& projectAndClip(const SpacePoint& normal, int count, const int* corners,
                                                    const float* positions);
    unsigned int* triangulateGeneral(int count, const int* corners, const float* positions,
                                     unsigned int* out);

    PolygonScratch _scratch;
};

inline Winding quickWinding(int count, const int* corners, const float* positions) {
    if (count == 3)
        return quickTriangleWinding(corners, positions);
    if (count == 4)
        return quickQuadrilateralWinding(corners, positions);
    return Winding::kUndecided;
}

inline unsigned int* PolygonTriangulator::triangulate(int count, const int* corners, const float* positions,
                                                      unsigned int* out) {
    const Winding winding = quickWinding(count, corners, positions);
    if (winding == Winding::kUndecided)
        return triangulateGeneral(count, corners, positions, out);
    return writeFixedPattern(count, winding == Winding::kClockwise, corners, out);
}

} // namespace Atelier::Vel
