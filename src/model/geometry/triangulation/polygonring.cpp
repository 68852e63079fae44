#include "geometry/triangulation/polygonring.h"

#include <cstring>

#include "geometry/triangulation/convexity.h"
#include "geometry/triangulation/eartriangle.h"

namespace Atelier::Vel {

namespace {

// Up to this size, testing all corners is faster than an index.
constexpr int kMaxCornersUnindexed = 64;

// Corners that are prepared or clipped between two calls of the meter. Each corner counts half when it is
// prepared and half when it is clipped.
constexpr int kCornersPerReport = 1024;

constexpr quint32 kSignBit = 0x80000000;

bool isLarge(int count) {
    return count > kMaxCornersUnindexed;
}

} // namespace

EarKey earKey(float cosine, int corner) {
    const float ordered = cosine + 0.0F; // -0 and 0 are equally sharp
    quint32 bits = 0;
    std::memcpy(&bits, &ordered, sizeof bits);
    bits = (bits & kSignBit) != 0 ? ~bits : bits | kSignBit;
    return EarKey(bits) << 32 | (~quint32(corner));
}

PolygonRing::PolygonRing(int cornerCount, PolygonScratch& memory)
    : scratch(memory),
      points(memory.points.constData()),
      directions(resized(memory.directions, cornerCount)),
      corners(resized(memory.corners, cornerCount)),
      keys(resized(memory.keys, cornerCount)),
      count(cornerCount),
      isQueued(isLarge(cornerCount)) {}

bool isBlocked(const PolygonRing& ring, int ear) {
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

void reportProgress(const PolygonRing& ring, int corner) {
    if (corner % kCornersPerReport == kCornersPerReport - 1 && ring.scratch.meter)
        ring.scratch.meter(kCornersPerReport / 2);
}

void UpdateEar(PolygonRing& ring, int i) {
    PolygonCorner& corner = ring.corners[i];
    const PlanePoint toAfter = ring.directions[i];
    const PlanePoint toBefore = -ring.directions[corner.before]; // exact, because rounding is symmetrical
    const bool isConvex = crossProduct(toAfter, toBefore) > 0;
    corner.updatedAt = ring.clipped;
    corner.isTested = ring.scratch.search == BlockerSearch::kNone;
    const bool mayBeEar = isConvex && (corner.isTested || !ring.isQueued || !isBlocked(ring, i));
    ring.keys[i] = mayBeEar ? earKey(dotProduct(toAfter, toBefore), i) : 0;
    if (mayBeEar && ring.isQueued)
        ring.scratch.queue.push(ring.keys[i]);
}

void link(PolygonRing& ring, int before, int after) {
    ring.corners[before].after = after;
    ring.corners[after].before = before;
    ring.directions[before] = normalized(ring.points[after] - ring.points[before]);
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

void makeCorners(bool clockwise, PolygonRing& ring) {
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

} // namespace Atelier::Vel
