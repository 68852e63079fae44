#include "geometry/polygontriangulator.h"

#include <algorithm>

#include <QtCore/QtDebug>

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

QVector3D positionOf(const float* positions, int vertex) {
    const float* position = positions + 3 * qint64(vertex);
    return {position[0], position[1], position[2]};
}

QVector3D PolygonNormal(int count, const int* indices, const float* positions) {
    QVector3D sum;
    QVector3D previous = positionOf(positions, indices[count - 1]);
    for (int k = 0; k < count; ++k) {
        const QVector3D current = positionOf(positions, indices[k]);
        sum += QVector3D::crossProduct(previous, current);
        previous = current;
    }
    sum.normalize();
    return sum;
}

void ProjectPolygon(const QVector3D& normal, int count, const int* indices, const float* positions,
                    PlanePoint* points) {
    QVector3D up(0, 1, 0);
    if (std::fabs(dotProduct(normal, up)) > 0.9f)
        up = QVector3D(0, 0, 1);
    const QVector3D u = QVector3D::crossProduct(up, normal).normalized();
    const QVector3D w = QVector3D::crossProduct(normal, u).normalized();
    const QVector3D origin = positionOf(positions, indices[0]);
    points[0] = {0, 0};
    for (int k = 1; k < count; ++k) {
        const QVector3D offset = positionOf(positions, indices[k]) - origin;
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
    const PolygonCorner* corners = scratch.corners.constData();
    const PlanePoint* points = scratch.points.constData();
    const int after = corners[ear].after;
    const int before = corners[ear].before;
    const EarTriangle triangle(points[ear], points[after], points[before], scratch.directions[ear],
                               -scratch.directions[before]);
    if (isLarge(scratch.corners.size()))
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
    if (isLarge(scratch.corners.size()))
        scratch.blockers.remove(ear);
    link(scratch, before, after);
    UpdateEar(scratch, before);
    UpdateEar(scratch, after);
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
    if (isLarge(count))
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

unsigned int* writeFixedPattern(int count, bool clockwise, const int* corners, unsigned int* out) {
    const int* pattern = count == 3 ? kTriangle[clockwise] : kQuadrilateral[clockwise];
    const int indexCount = count == 3 ? 3 : 6;
    for (int k = 0; k < indexCount; ++k)
        *out++ = static_cast<unsigned int>(corners[pattern[k]]);
    return out;
}

} // namespace

const QVarLengthArray<int, 96>& PolygonTriangulator::cornerTriangles(const QVector3D& normal, int count,
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

const QVarLengthArray<int, 96>& PolygonTriangulator::cornerTriangles(int count, const int* corners,
                                                                     const float* positions) {
    const QVector3D normal = count < 3 ? QVector3D() : PolygonNormal(count, corners, positions);
    return cornerTriangles(normal, count, corners, positions);
}

unsigned int* PolygonTriangulator::cut(int count, const int* corners, const float* positions,
                                       unsigned int* out) {
    Winding winding = Winding::kUnsure;
    if (count == 3)
        winding = quickTriangleWinding(corners, positions);
    else if (count == 4)
        winding = quickQuadrilateralWinding(corners, positions);
    if (winding != Winding::kUnsure)
        return writeFixedPattern(count, winding == Winding::kClockwise, corners, out);
    for (int corner : cornerTriangles(count, corners, positions))
        *out++ = static_cast<unsigned int>(corners[corner]);
    return out;
}

unsigned int* PolygonTriangulator::cut(const PolygonFaces& faces, const unsigned int* faceNumbers,
                                       qint64 faceCount, unsigned int* out) {
    for (qint64 k = 0; k < faceCount; ++k) {
        const unsigned int face = faceNumbers[k];
        out = cut(static_cast<int>(faces.counts[face]), faces.corners + faces.starts[face], faces.positions,
                  out);
    }
    return out;
}

} // namespace Atelier::Vel
