#include "geometry/polygontriangulator.h"

#include <algorithm>

#include <QtCore/QtDebug>

namespace Atelier::Vel {

namespace {

constexpr int kTriangle[2][3] = {{0, 1, 2}, {0, 2, 1}};
// Always along the diagonal from corner 1 to corner 3, concave or not: meant.
constexpr int kQuadrilateral[2][6] = {{0, 1, 3, 1, 2, 3}, {0, 3, 1, 1, 3, 2}};

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

bool isInside(const PlanePoint& point, const PlanePoint& start, const PlanePoint& direction) {
    return crossProduct(direction, normalized(point - start)) >= 0;
}

void UpdateEar(PolygonCorner* corners, const PlanePoint* points, int i) {
    PolygonCorner& corner = corners[i];
    const PlanePoint a = points[corner.after];
    const PlanePoint c = points[corner.before];
    const PlanePoint toAfter = normalized(a - points[i]);
    const PlanePoint toBefore = normalized(c - points[i]);
    corner.cross = crossProduct(toAfter, toBefore);
    corner.cosine = dotProduct(toAfter, toBefore);
    corner.ear = corner.cross > 0;
    if (!corner.ear)
        return;
    const PlanePoint opposite = normalized(c - a);
    // The corners still active are those of the ring.
    for (int j = corners[corner.after].after; j != corner.before; j = corners[j].after) {
        const PlanePoint& point = points[j];
        if (point == points[i] || point == a || point == c)
            continue;
        if (isInside(point, points[i], toAfter) && isInside(point, a, opposite) &&
            isInside(point, c, -toBefore)) {
            corner.ear = false;
            return;
        }
    }
}

int bestEar(int count, const PolygonCorner* corners) {
    int best = -1;
    for (int i = 0; i < count; ++i)
        if (corners[i].active && corners[i].ear && (best < 0 || corners[i].cosine > corners[best].cosine))
            best = i;
    return best;
}

void clipEar(PolygonCorner* corners, const PlanePoint* points, int b) {
    const int a = corners[b].after;
    const int c = corners[b].before;
    corners[c].after = a;
    corners[a].before = c;
    corners[b].active = false;
    UpdateEar(corners, points, c);
    UpdateEar(corners, points, a);
}

void makeCorners(int count, bool clockwise, PolygonScratch& scratch) {
    scratch.corners.resize(count);
    for (int i = 0; i < count; ++i) {
        PolygonCorner& corner = scratch.corners[i];
        corner = {(i + 1) % count, (i + count - 1) % count, 0, 0, true, false};
        if (clockwise)
            std::swap(corner.after, corner.before);
    }
    for (int i = 0; i < count; ++i)
        UpdateEar(scratch.corners.data(), scratch.points.data(), i);
}

void clipAllEars(int count, PolygonScratch& scratch) {
    PolygonCorner* corners = scratch.corners.data();
    int last = 0;
    for (int remaining = count; remaining > 3; --remaining) {
        const int ear = bestEar(count, corners);
        if (ear < 0) {
            QMessageLogger().warning("Unable to triangulate polygon.");
            scratch.triangles.clear();
            return;
        }
        scratch.triangles << corners[ear].before << ear << corners[ear].after;
        clipEar(corners, scratch.points.data(), ear);
    }
    while (!corners[last].active)
        ++last;
    scratch.triangles << corners[last].before << last << corners[last].after;
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
