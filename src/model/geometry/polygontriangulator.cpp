#include "geometry/polygontriangulator.h"

#include <algorithm>

#include <QtCore/QtDebug>

#include "geometry/triangulationconvexity.h"
#include "geometry/triangulationwinding.h"

namespace Atelier::Vel {

namespace {

constexpr int kTriangle[2][3] = {{0, 1, 2}, {0, 2, 1}};
// Always along the diagonal from corner 1 to corner 3, concave or not: meant.
constexpr int kQuadrilateral[2][6] = {{0, 1, 3, 1, 2, 3}, {0, 3, 1, 1, 3, 2}};

// Up to this size looking at all corners is faster than an index of them.
constexpr int kMostCornersUnindexed = 64;

bool isLarge(int count) {
    return count > kMostCornersUnindexed;
}

/// The sharpest ear is clipped first, of two equally sharp ones the lower-numbered.
bool isClippedLater(const QueuedEar& a, const QueuedEar& b) {
    return a.cosine < b.cosine || (a.cosine == b.cosine && a.corner > b.corner);
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

/// Whether another corner lies in the triangle that clipping `ear` would cut off.
bool isBlocked(const PolygonScratch& scratch, int ear) {
    if (scratch.search == BlockerSearch::kNone)
        return false;
    const PolygonCorner* corners = scratch.corners.constData();
    const PlanePoint* points = scratch.points.constData();
    const int after = corners[ear].after;
    const int before = corners[ear].before;
    const EarTriangle triangle(points[ear], points[after], points[before], scratch.directions[ear],
                               -scratch.directions[before]);
    if (scratch.search == BlockerSearch::kIndex)
        return scratch.blockers.block(triangle);
    for (int j = corners[after].after; j != before; j = corners[j].after)
        if (triangle.isBlockedBy(points[j]))
            return true;
    return false;
}

void UpdateEar(PolygonScratch& scratch, int i) {
    PolygonCorner& corner = scratch.corners[i];
    const PlanePoint toAfter = scratch.directions[i];
    const PlanePoint toBefore = -scratch.directions[corner.before]; // exact: rounding is symmetrical
    corner.cross = crossProduct(toAfter, toBefore);
    corner.cosine = dotProduct(toAfter, toBefore);
    corner.ear = corner.cross > 0 && !isBlocked(scratch, i);
    if (corner.ear && isLarge(scratch.corners.size())) {
        scratch.ears.push_back({corner.cosine, i});
        std::push_heap(scratch.ears.begin(), scratch.ears.end(), isClippedLater);
    }
}

int sharpestEar(const PolygonScratch& scratch) {
    int best = -1;
    for (int i = 0; i < scratch.corners.size(); ++i) {
        const PolygonCorner& corner = scratch.corners[i];
        if (corner.active && corner.ear && (best < 0 || corner.cosine > scratch.corners[best].cosine))
            best = i;
    }
    return best;
}

int sharpestQueuedEar(PolygonScratch& scratch) {
    std::vector<QueuedEar>& ears = scratch.ears;
    while (!ears.empty()) {
        const QueuedEar top = ears.front();
        std::pop_heap(ears.begin(), ears.end(), isClippedLater);
        ears.pop_back();
        const PolygonCorner& corner = scratch.corners[top.corner];
        if (corner.active && corner.ear && corner.cosine == top.cosine)
            return top.corner;
    }
    return -1;
}

void link(PolygonScratch& scratch, int before, int after) {
    scratch.corners[before].after = after;
    scratch.corners[after].before = before;
    scratch.directions[before] = normalized(scratch.points[after] - scratch.points[before]);
}

void clipEar(PolygonScratch& scratch, int ear) {
    const int after = scratch.corners[ear].after;
    const int before = scratch.corners[ear].before;
    scratch.triangles << before << ear << after;
    scratch.corners[ear].active = false;
    if (scratch.search == BlockerSearch::kIndex)
        scratch.blockers.remove(ear);
    link(scratch, before, after);
    UpdateEar(scratch, before);
    UpdateEar(scratch, after);
}

BlockerSearch blockerSearch(int count, bool clockwise, const PlanePoint* points) {
    if (isClearlyConvex(count, points, clockwise))
        return BlockerSearch::kNone;
    return isLarge(count) ? BlockerSearch::kIndex : BlockerSearch::kRing;
}

void makeCorners(int count, bool clockwise, PolygonScratch& scratch) {
    scratch.corners.resize(count);
    scratch.directions.resize(count);
    scratch.ears.clear();
    for (int i = 0; i < count; ++i) {
        scratch.corners[i].active = true;
        const int next = i + 1 < count ? i + 1 : 0;
        link(scratch, clockwise ? next : i, clockwise ? i : next);
    }
    scratch.search = blockerSearch(count, clockwise, scratch.points.constData());
    if (scratch.search == BlockerSearch::kIndex)
        scratch.blockers.build(scratch.points.constData(), count);
    for (int i = 0; i < count; ++i)
        UpdateEar(scratch, i);
}

void clipAllEars(int count, PolygonScratch& scratch) {
    for (int remaining = count; remaining > 3; --remaining) {
        const int ear = isLarge(count) ? sharpestQueuedEar(scratch) : sharpestEar(scratch);
        if (ear < 0) {
            QMessageLogger().warning("Unable to triangulate polygon.");
            scratch.triangles.clear();
            return;
        }
        clipEar(scratch, ear);
    }
    int last = 0;
    while (!scratch.corners[last].active)
        ++last;
    scratch.triangles << scratch.corners[last].before << last << scratch.corners[last].after;
}

void EarClip(int count, bool clockwise, PolygonScratch& scratch) {
    scratch.triangles.clear();
    if (count < 3) {
        QMessageLogger().warning("Cannot triangulate a polygon with fewer than 3 vertices");
    } else if (count == 3) {
        scratch.triangles.append(kTriangle[clockwise], 3);
    } else if (count == 4) {
        scratch.triangles.append(kQuadrilateral[clockwise], 6);
    } else {
        makeCorners(count, clockwise, scratch);
        clipAllEars(count, scratch);
    }
}

template<int count>
Winding quickWinding(const int* corners, const float* positions) {
    if constexpr (count == 3)
        return quickTriangleWinding(corners, positions);
    else
        return quickQuadrilateralWinding(corners, positions);
}

Winding quickWinding(int count, const int* corners, const float* positions) {
    if (count == 3)
        return quickWinding<3>(corners, positions);
    if (count == 4)
        return quickWinding<4>(corners, positions);
    return Winding::kUnsure;
}

unsigned int* writeTriangle(unsigned int* out, int a, int b, int c) {
    out[0] = static_cast<unsigned int>(a);
    out[1] = static_cast<unsigned int>(b);
    out[2] = static_cast<unsigned int>(c);
    return out + 3;
}

template<int count>
unsigned int* writePattern(const int* corners, bool clockwise, unsigned int* out) {
    const int* pattern = count == 3 ? kTriangle[clockwise] : kQuadrilateral[clockwise];
    out = writeTriangle(out, corners[pattern[0]], corners[pattern[1]], corners[pattern[2]]);
    if constexpr (count == 4)
        out = writeTriangle(out, corners[pattern[3]], corners[pattern[4]], corners[pattern[5]]);
    return out;
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
    if (winding != Winding::kUnsure) {
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
    _uncutPolygons += _scratch.triangles.isEmpty() ? 1 : 0;
    return _scratch.triangles;
}

template<int count>
unsigned int* PolygonTriangulator::cutFixed(const int* corners, const float* positions, unsigned int* out) {
    const Winding winding = quickWinding<count>(corners, positions);
    if (winding == Winding::kUnsure)
        return cutGeneral(count, corners, positions, out);
    return writePattern<count>(corners, winding == Winding::kClockwise, out);
}

unsigned int* PolygonTriangulator::cutGeneral(int count, const int* corners, const float* positions,
                                              unsigned int* out) {
    for (int corner : cornerTriangles(count, corners, positions))
        *out++ = static_cast<unsigned int>(corners[corner]);
    return out;
}

unsigned int* PolygonTriangulator::cut(int count, const int* corners, const float* positions,
                                       unsigned int* out) {
    if (count == 3)
        return cutFixed<3>(corners, positions, out);
    if (count == 4)
        return cutFixed<4>(corners, positions, out);
    return cutGeneral(count, corners, positions, out);
}

unsigned int* PolygonTriangulator::cut(const PolygonFaces& faces, const unsigned int* faceNumbers,
                                       qint64 faceCount, unsigned int* out) {
    const PolygonFaces mesh = faces; // a copy of its own cannot change through `out`
    for (qint64 k = 0; k < faceCount; ++k) {
        const unsigned int face = faceNumbers[k];
        out = cut(static_cast<int>(mesh.counts[face]), mesh.corners + mesh.starts[face], mesh.positions, out);
    }
    return out;
}

} // namespace Atelier::Vel
