#pragma once

#include <limits>
#include <queue>

#include <QtCore/QVarLengthArray>

#include "geometry/qtvectormath.h"
#include "geometry/triangulation/earblockers.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

/// One corner of a polygon during ear clipping. Its neighbours are corner numbers in counter-clockwise order.
struct PolygonCorner {
    int after;
    int before;
    int updatedAt; ///< the number of clipped corners when it got its current neighbours
    int clippedAt; ///< the number of clipped corners including it, or kNotClipped
    bool isTested; ///< it was tested and is an ear

    static constexpr int kNotClipped = std::numeric_limits<int>::max();
};

/// The sharpness and the corner number of an ear in one number.
using EarKey = quint64;

/// How to search for corners that block an ear.
enum class BlockerSearch {
    kNone, ///< no search, because every corner is an ear
    kRing, ///< test one corner after the other
    kIndex ///< use `blockers`
};

/// The working memory of one triangulation. Polygons of up to 32 corners need no allocation.
struct PolygonScratch {
    using Triangles = QVarLengthArray<int, 96>;

    QVarLengthArray<PlanePoint, 32> points;
    QVarLengthArray<PlanePoint, 32> directions; ///< per corner, normalised, to the next corner
    QVarLengthArray<PolygonCorner, 32> corners;
    QVarLengthArray<EarKey, 32> keys;   ///< per corner; zero if it is known to be no ear
    QVarLengthArray<int, 96> triangles; ///< corner numbers, three per triangle
    BlockerSearch search = BlockerSearch::kRing;
    std::priority_queue<EarKey> queue; ///< of a large polygon; may contain outdated keys
    EarBlockers blockers;              ///< of a large polygon
    WorkMeter meter;                   ///< of large polygons; may be empty
};

} // namespace Atelier::Vel
