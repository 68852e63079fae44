#pragma once

#include <limits>
#include <queue>

#include <QtCore/QVarLengthArray>

#include "geometry/qtvectormath.h"
#include "geometry/triangulation/earblockers.h"
#include "geometry/workmeter.h"

namespace Atelier::Vel {

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

} // namespace Atelier::Vel
