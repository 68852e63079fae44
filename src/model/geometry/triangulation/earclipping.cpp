#include "geometry/triangulation/earclipping.h"

#include <algorithm>

#include "geometry/triangulation/fixedpattern.h"
#include "geometry/triangulation/polygonring.h"

namespace Atelier::Vel {

namespace {

/// The key of the ear to clip next in a small polygon, zero if there is none.
EarKey sharpestTestedEar(PolygonRing& ring) {
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
EarKey sharpestEar(PolygonRing& ring) {
    if (!ring.isQueued)
        return sharpestTestedEar(ring);
    reportProgress(ring, ring.clipped);
    EarKey best = 0;
    std::priority_queue<EarKey>& queue = ring.scratch.queue;
    while (!queue.empty() && best == 0) {
        const EarKey top = queue.top();
        queue.pop();
        best = ring.keys[cornerOf(top)] == top ? top : 0; // otherwise outdated
    }
    return best;
}

void clipEar(PolygonRing& ring, int ear) {
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

void clipAllEars(PolygonRing& ring) {
    PolygonScratch::Triangles& triangles = ring.scratch.triangles;
    for (int remaining = ring.count; remaining > 3; --remaining) {
        const EarKey ear = sharpestEar(ring);
        if (ear == 0) {
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

} // namespace

void EarClip(int count, bool clockwise, PolygonScratch& scratch) {
    scratch.triangles.clear();
    if (count < 3)
        return;
    if (count <= 4) {
        scratch.triangles.append(fixedPattern(count, clockwise), 3 * (count - 2));
    } else {
        prepareSearch(count, clockwise, scratch);
        PolygonRing ring(count, scratch);
        makeCorners(clockwise, ring);
        clipAllEars(ring);
    }
}

} // namespace Atelier::Vel
