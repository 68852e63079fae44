#pragma once

#include <limits>
#include <queue>
#include <utility>

#include <QtCore/QVarLengthArray>
#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include "geometry/qtvectormath.h"
#include "geometry/triangulation/earblockers.h"
#include "geometry/triangulation/windingfilter.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// The triangles of a triangle or quadrilateral. The latter is always cut from corner 1 to corner 3, concave
/// or not: that is meant.
inline constexpr int kTrianglePattern[2][3] = {{0, 1, 2}, {0, 2, 1}};
inline constexpr int kQuadrilateralPattern[2][6] = {{0, 1, 3, 1, 2, 3}, {0, 3, 1, 1, 3, 2}};

inline const int* fixedPattern(int count, bool clockwise) {
    return count == 3 ? kTrianglePattern[clockwise] : kQuadrilateralPattern[clockwise];
}

/// One corner of a polygon that is being cut; its neighbours are corner numbers in counter-clockwise order.
struct PolygonCorner {
    int after;
    int before;
    int updatedAt; ///< how many corners were clipped when its neighbours came to be those
    int clippedAt; ///< how many corners were clipped with it; kNotClipped
    bool isTested; ///< and found to be an ear

    static constexpr int kNotClipped = std::numeric_limits<int>::max();
};

/// An ear by its sharpness, the corner number included.
using EarKey = quint64;

/// How to look for corners that block an ear.
enum class BlockerSearch {
    kNone, ///< there are none, and every corner is an ear
    kRing, ///< one after the other
    kIndex ///< through `blockers`
};

/// The working memory of one cut; polygons of up to 32 corners fit in without an allocation.
struct PolygonScratch {
    using Triangles = QVarLengthArray<int, 96>;

    QVarLengthArray<PlanePoint, 32> points;
    QVarLengthArray<PlanePoint, 32> directions; ///< per corner, normalised, to the one after it
    QVarLengthArray<PolygonCorner, 32> corners;
    QVarLengthArray<EarKey, 32> keys;   ///< per corner; zero for one that is known to be no ear
    QVarLengthArray<int, 96> triangles; ///< corner numbers, three per triangle
    BlockerSearch search = BlockerSearch::kRing;
    std::priority_queue<EarKey> queue; ///< of a large polygon; what is out of date stays until it is met
    EarBlockers blockers;              ///< of a large polygon
    WorkMeter meter;                   ///< of large polygons; may be empty
};

/// Cuts polygons as Triangulate3D does, one after the other, and keeps its working memory between them: once
/// it is warm, a face costs no allocation.
class PolygonTriangulator {
public:
    /// Has the corners of large polygons counted while they are cut.
    void setMeter(WorkMeter meter) { _scratch.meter = std::move(meter); }

    /// The cut of one polygon: corner numbers (0 to count − 1), three per triangle, valid until the next
    /// call. Empty, after a warning, when the polygon has fewer than three corners or no ear is left.
    const PolygonScratch::Triangles& cornerTriangles(const QVector3D& normal, int count, const int* corners,
                                                     const float* positions);
    /// The same about the polygon's own normal.
    const PolygonScratch::Triangles& cornerTriangles(int count, const int* corners, const float* positions);

    /// Writes the triangles of one polygon, cut about its own normal, as vertex numbers to `out`.
    /// Requires: room for 3 · (count − 2) numbers; none for fewer than three corners.
    /// Returns:  the end of what it wrote; `out` itself, after a warning, for a polygon that cannot be cut.
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

inline unsigned int* writeTriangle(int a, int b, int c, unsigned int* out) {
    out[0] = static_cast<unsigned int>(a);
    out[1] = static_cast<unsigned int>(b);
    out[2] = static_cast<unsigned int>(c);
    return out + 3;
}

inline unsigned int* writeFixedPattern(int count, bool clockwise, const int* corners, unsigned int* out) {
    const int* pattern = fixedPattern(count, clockwise);
    out = writeTriangle(corners[pattern[0]], corners[pattern[1]], corners[pattern[2]], out);
    return count == 3 ? out
                      : writeTriangle(corners[pattern[3]], corners[pattern[4]], corners[pattern[5]], out);
}

inline unsigned int* PolygonTriangulator::triangulate(int count, const int* corners, const float* positions,
                                                      unsigned int* out) {
    const Winding winding = quickWinding(count, corners, positions);
    if (winding == Winding::kUndecided)
        return triangulateGeneral(count, corners, positions, out);
    return writeFixedPattern(count, winding == Winding::kClockwise, corners, out);
}

} // namespace Atelier::Vel
