#pragma once

#include <utility>

#include <QtGui/QVector3D>

#include "geometry/triangulation/earclipping.h"
#include "geometry/triangulation/fixedpattern.h"
#include "geometry/triangulation/windingfilter.h"

namespace Atelier::Vel {

/// Triangulates polygons like Triangulate3D. Keeps its working memory between polygons, so that later
/// polygons need no allocation.
class PolygonTriangulator {
public:
    /// Sets the meter that counts the corners of large polygons during their triangulation.
    void setMeter(WorkMeter meter) { _scratch.meter = std::move(meter); }

    /// The triangles of one polygon: corner numbers (0 to count − 1), three per triangle, valid until the
    /// next call. Empty if the polygon has fewer than three corners or no ear is left.
    const PolygonScratch::Triangles& cornerTriangles(const QVector3D& normal, int count, const int* corners,
                                                     const float* positions);
    /// The same with the polygon's own normal.
    const PolygonScratch::Triangles& cornerTriangles(int count, const int* corners, const float* positions);

    /// Triangulates one polygon with its own normal, and writes the triangles as vertex numbers to `out`.
    /// Requires: capacity for 3 · (count − 2) numbers; none for fewer than three corners.
    /// Returns:  the end of the output; `out` itself for a polygon that cannot be triangulated.
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
