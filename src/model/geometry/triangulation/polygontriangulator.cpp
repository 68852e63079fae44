#include "geometry/triangulation/polygontriangulator.h"

#include <algorithm>
#include <cstring>

#include <QtCore/QtDebug>

#include "geometry/triangulation/convexity.h"

namespace Atelier::Vel {

namespace {

// Up to this size looking at all corners is faster than an index of them.
constexpr int kMaxCornersUnindexed = 64;

// As many are prepared or clipped before a meter is told.
constexpr int kCornersPerReport = 1024;

constexpr quint32 kSignBit = 0x80000000;

bool isLarge(int count) {
    return count > kMaxCornersUnindexed;
}

/// The order of the ears as one number: the sharpest has the greatest key, of two equally sharp ones the
/// lower-numbered. Zero is no ear.
EarKey earKey(float cosine, int corner) {
    const float ordered = cosine + 0.0F; // -0 and 0 are equally sharp
    quint32 bits = 0;
    std::memcpy(&bits, &ordered, sizeof bits);
    bits = (bits & kSignBit) != 0 ? ~bits : bits | kSignBit;
    return EarKey(bits) << 32 | (~quint32(corner));
}

int cornerOf(EarKey key) {
    return static_cast<int>(~static_cast<quint32>(key));
}

SpacePoint positionOf(const float* positions, int vertex) {
    const float* position = positions + 3 * qint64(vertex);
    return {position[0], position[1], position[2]};
}

SpacePoint PolygonNormal(int count, const int* indices, const float* positions) {
    SpacePoint sum = {};
    SpacePoint previous = positionOf(positions, indices[count - 1]);
    for (int k = 0; k < count; ++k) {
        const SpacePoint current = positionOf(positions, indices[k]);
        sum = sum + crossProduct(previous, current);
        previous = current;
    }
    normalize(sum);
    return sum;
}

void ProjectPolygon(const SpacePoint& normal, int count, const int* indices, const float* positions,
                    PlanePoint* points) {
    SpacePoint up = {0, 1, 0};
    if (std::fabs(dotProduct(normal, up)) > 0.9F)
        up = {0, 0, 1};
    const SpacePoint u = normalized(crossProduct(up, normal));
    const SpacePoint w = normalized(crossProduct(normal, u));
    const SpacePoint origin = positionOf(positions, indices[0]);
    points[0] = {0, 0};
    for (int k = 1; k < count; ++k) {
        const SpacePoint offset = positionOf(positions, indices[k]) - origin;
        points[k] = {dotProduct(offset, u), dotProduct(offset, w)};
    }
}

bool IsCounterClockwise(int count, const PlanePoint* points) {
    float sum = 0;
    PlanePoint previous = points[count - 1];
    for (int k = 0; k < count; ++k) {
        sum += (points[k].x - previous.x) * (points[k].y + previous.y);
        previous = points[k];
    }
    return sum <= 0;
}

/// What is left of a polygon that is being cut.
struct Ring {
    PolygonScratch& scratch;
    const PlanePoint* points;
    PlanePoint* directions;
    PolygonCorner* corners;
    EarKey* keys;
    const int count;
    const bool isQueued;
    int clipped = 0;

    Ring(int cornerCount, PolygonScratch& memory)
        : scratch(memory),
          points(memory.points.constData()),
          directions(resized(memory.directions, cornerCount)),
          corners(resized(memory.corners, cornerCount)),
          keys(resized(memory.keys, cornerCount)),
          count(cornerCount),
          isQueued(isLarge(cornerCount)) {}

private:
    template<typename Array>
    static typename Array::value_type* resized(Array& array, int count) {
        array.resize(count);
        return array.data();
    }
};

/// Whether another corner lay in the triangle that clipping `ear` would cut off when it got its neighbours.
/// One that is not there any more counts: whether a corner is an ear is told once.
bool isBlocked(const Ring& ring, int ear) {
    const int after = ring.corners[ear].after;
    const int before = ring.corners[ear].before;
    const EarTriangle triangle(ring.points[ear], ring.points[after], ring.points[before],
                               ring.directions[ear], -ring.directions[before]);
    if (ring.scratch.search == BlockerSearch::kIndex)
        return ring.scratch.blockers.block(triangle);
    const int updatedAt = ring.corners[ear].updatedAt;
    for (int j = 0; j < ring.count; ++j)
        if (ring.corners[j].clippedAt > updatedAt && j != ear && j != after && j != before &&
            triangle.isBlockedBy(ring.points[j]))
            return true;
    return false;
}

/// To be called for each corner of a large polygon, when it is prepared and when it is clipped.
void reportProgress(const Ring& ring, int corner) {
    if (corner % kCornersPerReport == kCornersPerReport - 1 && ring.scratch.meter)
        ring.scratch.meter(kCornersPerReport / 2);
}

/// Of a small polygon, a convex corner is only tested when it is the sharpest: few of them ever are.
void UpdateEar(Ring& ring, int i) {
    PolygonCorner& corner = ring.corners[i];
    const PlanePoint toAfter = ring.directions[i];
    const PlanePoint toBefore = -ring.directions[corner.before]; // exact: rounding is symmetrical
    const bool isConvex = crossProduct(toAfter, toBefore) > 0;
    corner.updatedAt = ring.clipped;
    corner.isTested = ring.scratch.search == BlockerSearch::kNone;
    const bool mayBeEar = isConvex && (corner.isTested || !ring.isQueued || !isBlocked(ring, i));
    ring.keys[i] = mayBeEar ? earKey(dotProduct(toAfter, toBefore), i) : 0;
    if (mayBeEar && ring.isQueued)
        ring.scratch.queue.push(ring.keys[i]);
}

/// The key of the ear to clip next in a small polygon, zero if there is none.
EarKey sharpestTestedEar(Ring& ring) {
    while (true) {
        const EarKey best = *std::max_element(ring.keys, ring.keys + ring.count);
        if (best == 0)
            return 0;
        const int ear = cornerOf(best);
        if (ring.corners[ear].isTested || !isBlocked(ring, ear)) {
            ring.corners[ear].isTested = true;
            return best;
        }
        ring.keys[ear] = 0;
    }
}

/// The key of the ear to clip next, zero if there is none.
EarKey sharpestEar(Ring& ring) {
    if (!ring.isQueued)
        return sharpestTestedEar(ring);
    reportProgress(ring, ring.clipped);
    EarKey best = 0;
    std::priority_queue<EarKey>& queue = ring.scratch.queue;
    while (!queue.empty() && best == 0) {
        const EarKey top = queue.top();
        queue.pop();
        best = ring.keys[cornerOf(top)] == top ? top : 0; // else it is out of date
    }
    return best;
}

void link(Ring& ring, int before, int after) {
    ring.corners[before].after = after;
    ring.corners[after].before = before;
    ring.directions[before] = normalized(ring.points[after] - ring.points[before]);
}

void clipEar(Ring& ring, int ear) {
    const int after = ring.corners[ear].after;
    const int before = ring.corners[ear].before;
    ring.scratch.triangles << before << ear << after;
    ring.corners[ear].clippedAt = ++ring.clipped;
    ring.keys[ear] = 0;
    if (ring.scratch.search == BlockerSearch::kIndex)
        ring.scratch.blockers.remove(ear);
    link(ring, before, after);
    UpdateEar(ring, before);
    UpdateEar(ring, after);
}

void prepareSearch(int count, bool clockwise, PolygonScratch& scratch) {
    const PlanePoint* points = scratch.points.constData();
    scratch.search = isClearlyConvex(count, points, clockwise) ? BlockerSearch::kNone : BlockerSearch::kRing;
    if (!isLarge(count))
        return;
    scratch.queue = {};
    if (scratch.search == BlockerSearch::kRing) {
        scratch.search = BlockerSearch::kIndex;
        scratch.blockers.build(points, count);
    }
}

void makeCorners(bool clockwise, Ring& ring) {
    for (int i = 0; i < ring.count; ++i) {
        const int next = i + 1 < ring.count ? i + 1 : 0;
        ring.corners[i].clippedAt = PolygonCorner::kNotClipped;
        link(ring, clockwise ? next : i, clockwise ? i : next);
    }
    for (int i = 0; i < ring.count; ++i) {
        if (ring.isQueued)
            reportProgress(ring, i);
        UpdateEar(ring, i);
    }
}

void clipAllEars(Ring& ring) {
    PolygonScratch::Triangles& triangles = ring.scratch.triangles;
    for (int remaining = ring.count; remaining > 3; --remaining) {
        const EarKey ear = sharpestEar(ring);
        if (ear == 0) {
            QMessageLogger().warning("Unable to triangulate polygon.");
            triangles.clear();
            return;
        }
        clipEar(ring, cornerOf(ear));
    }
    int last = 0;
    while (ring.corners[last].clippedAt != PolygonCorner::kNotClipped)
        ++last;
    triangles << ring.corners[last].before << last << ring.corners[last].after;
}

void EarClip(int count, bool clockwise, PolygonScratch& scratch) {
    scratch.triangles.clear();
    if (count < 3) {
        QMessageLogger().warning("Cannot triangulate a polygon with fewer than 3 vertices");
    } else if (count <= 4) {
        scratch.triangles.append(fixedPattern(count, clockwise), 3 * (count - 2));
    } else {
        prepareSearch(count, clockwise, scratch);
        Ring ring(count, scratch);
        makeCorners(clockwise, ring);
        clipAllEars(ring);
    }
}

} // namespace

const PolygonScratch::Triangles& PolygonTriangulator::cornerTriangles(const QVector3D& normal, int count,
                                                                      const int* corners,
                                                                      const float* positions) {
    return projectAndClip({normal.x(), normal.y(), normal.z()}, count, corners, positions);
}

const PolygonScratch::Triangles& PolygonTriangulator::cornerTriangles(int count, const int* corners,
                                                                      const float* positions) {
    const Winding winding = quickWinding(count, corners, positions);
    if (winding != Winding::kUndecided) {
        EarClip(count, winding == Winding::kClockwise, _scratch);
        return _scratch.triangles;
    }
    const SpacePoint normal = count < 3 ? SpacePoint() : PolygonNormal(count, corners, positions);
    return projectAndClip(normal, count, corners, positions);
}

const PolygonScratch::Triangles& PolygonTriangulator::projectAndClip(const SpacePoint& normal, int count,
                                                                     const int* corners,
                                                                     const float* positions) {
    bool clockwise = false;
    if (count >= 3) {
        _scratch.points.resize(count);
        ProjectPolygon(normal, count, corners, positions, _scratch.points.data());
        clockwise = !IsCounterClockwise(count, _scratch.points.constData());
    }
    EarClip(count, clockwise, _scratch);
    return _scratch.triangles;
}

unsigned int* PolygonTriangulator::triangulateGeneral(int count, const int* corners, const float* positions,
                                                      unsigned int* out) {
    for (int corner : cornerTriangles(count, corners, positions))
        *out++ = static_cast<unsigned int>(corners[corner]);
    return out;
}

} // namespace Atelier::Vel
