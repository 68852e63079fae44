#pragma once

#include <vector>

#include <QtCore/QVarLengthArray>
#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include "geometry/triangulationblockers.h"
#include "geometry/triangulationmath.h"

namespace Atelier::Vel {

/// One corner of a polygon that is being cut; its neighbours are corner numbers in counter-clockwise order.
struct PolygonCorner {
    int after;
    int before;
    float cross;
    float cosine;
    bool active;
    bool ear;
};

/// The faces of a mesh: face f has `counts[f]` corners, whose vertex numbers begin at `corners[starts[f]]`;
/// `positions` holds three floats per vertex.
struct PolygonFaces {
    const unsigned int* counts;
    const unsigned int* starts;
    const int* corners;
    const float* positions;
};

/// An ear that waits to be clipped. One whose corner has changed since then is out of date.
struct QueuedEar {
    float cosine;
    int corner;
};

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
    QVarLengthArray<int, 96> triangles; ///< corner numbers, three per triangle
    BlockerSearch search = BlockerSearch::kRing;
    std::vector<QueuedEar> ears; ///< of a large polygon: a heap, the next one to clip on top
    EarBlockers blockers;        ///< of a large polygon
};

/// Cuts polygons as Triangulate3D does, one after the other, and keeps its working memory between them: once
/// it is warm, a face costs no allocation.
class PolygonTriangulator {
public:
    /// The cut of one polygon: corner numbers (0 to count − 1), three per triangle, valid until the next
    /// call. Empty, after a warning, when the polygon has fewer than three corners or no ear is left.
    const PolygonScratch::Triangles& cornerTriangles(const QVector3D& normal, int count, const int* corners,
                                                     const float* positions);
    /// The same about the polygon's own normal.
    const PolygonScratch::Triangles& cornerTriangles(int count, const int* corners, const float* positions);

    /// The most vertex numbers that `faceCount` faces with `cornerCount` corners together can give, if none
    /// of them has fewer than three corners.
    static constexpr qint64 indexBound(qint64 cornerCount, qint64 faceCount) {
        return 3 * (cornerCount - 2 * faceCount);
    }

    /// Writes the triangles of one polygon, cut about its own normal, as vertex numbers to `out`.
    /// Requires: room for 3 · (count − 2) numbers, none for fewer than three corners.
    /// Returns:  the end of what it wrote.
    unsigned int* cut(int count, const int* corners, const float* positions, unsigned int* out);

    /// The same for the faces with the given numbers, in that order.
    unsigned int* cut(const PolygonFaces& faces, const unsigned int* faceNumbers, qint64 faceCount,
                      unsigned int* out);

    /// How many polygons gave no triangle so far.
    quint64 uncutPolygons() const { return _uncutPolygons; }

private:
    const PolygonScratch::Triangles& projectAndClip(const SpacePoint& normal, int count, const int* corners,
                                                    const float* positions);
    template<int count>
    unsigned int* cutFixed(const int* corners, const float* positions, unsigned int* out);
    unsigned int* cutGeneral(int count, const int* corners, const float* positions, unsigned int* out);

    PolygonScratch _scratch;
    quint64 _uncutPolygons = 0;
};

} // namespace Atelier::Vel
