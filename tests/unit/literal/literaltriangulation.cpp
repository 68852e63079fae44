#include "literal/literaltriangulation.h"

#include <cmath>
#include <cstddef>

#include <QtCore/QtDebug>

namespace Atelier::Vel::Literal {

namespace {

QVector3D position(const float* positions, int vertex) {
    const float* first = positions + 3 * std::ptrdiff_t(vertex);
    return QVector3D(first[0], first[1], first[2]);
}

float absolute(float value) {
    return static_cast<float>(std::fabs(static_cast<double>(value)));
}

float cross(const QVector2D& p, const QVector2D& q) {
    return p.x() * q.y() - p.y() * q.x();
}

QVector2D direction(const QVector2D& from, const QVector2D& to) {
    return (to - from).normalized();
}

// QVector2D's own operator == is this too.
bool samePoint(const QVector2D& p, const QVector2D& q) {
    return p.x() == q.x() && p.y() == q.y();
}

int bestEar(const std::vector<Corner>& corners) {
    int best = -1;
    for (int i = 0; i < static_cast<int>(corners.size()); ++i) {
        if (!corners[i].active || !corners[i].ear)
            continue;
        if (best < 0 || corners[i].cosine > corners[best].cosine)
            best = i;
    }
    return best;
}

template<typename Index>
void triangulate(const QVector3D& normal, int count, const int* indices, const float* positions,
                 QVector<Index>& triangles) {
    if (count < 3) {
        qWarning("Cannot triangulate a polygon with fewer than 3 vertices");
        return;
    }
    const QVector<QVector2D> points = projectPolygon(normal, count, indices, positions);
    for (int corner : earClip(points, !isCounterClockwise(points)))
        triangles.append(static_cast<Index>(indices[corner]));
}

} // namespace

QVector3D polygonNormal(int count, const int* indices, const float* positions) {
    QVector3D sum;
    QVector3D previous = position(positions, indices[count - 1]);
    for (int k = 0; k < count; ++k) {
        const QVector3D current = position(positions, indices[k]);
        sum += QVector3D::crossProduct(previous, current);
        previous = current;
    }
    sum.normalize();
    return sum;
}

QVector<QVector2D> projectPolygon(const QVector3D& normal, int count, const int* indices,
                                  const float* positions) {
    QVector3D up(0, 1, 0);
    if (absolute(QVector3D::dotProduct(normal, up)) > 0.9f)
        up = QVector3D(0, 0, 1);
    const QVector3D u = QVector3D::crossProduct(up, normal).normalized();
    const QVector3D w = QVector3D::crossProduct(normal, u).normalized();
    const QVector3D origin = position(positions, indices[0]);
    QVector<QVector2D> points;
    points.append(QVector2D(0, 0));
    for (int k = 1; k < count; ++k) {
        const QVector3D offset = position(positions, indices[k]) - origin;
        points.append(QVector2D(QVector3D::dotProduct(offset, u), QVector3D::dotProduct(offset, w)));
    }
    return points;
}

bool isCounterClockwise(const QVector<QVector2D>& points) {
    float sum = 0;
    QVector2D previous = points.last();
    for (const QVector2D& point : points) {
        sum += (point.x() - previous.x()) * (point.y() + previous.y());
        previous = point;
    }
    return sum <= 0;
}

void updateEar(std::vector<Corner>& corners, const QVector<QVector2D>& points, int i) {
    Corner& corner = corners[i];
    const int a = corner.after;
    const int c = corner.before;
    const QVector2D da = direction(points[i], points[a]);
    const QVector2D dc = direction(points[i], points[c]);
    corner.cross = cross(da, dc);
    corner.cosine = QVector2D::dotProduct(da, dc);
    corner.ear = corner.cross > 0;
    if (!corner.ear)
        return;
    const QVector2D e1 = direction(points[i], points[a]);
    const QVector2D e2 = direction(points[a], points[c]);
    const QVector2D e3 = direction(points[c], points[i]);
    for (int j = 0; j < points.size(); ++j) {
        if (j == i || j == a || j == c || !corners[j].active)
            continue;
        const QVector2D& p = points[j];
        if (samePoint(p, points[i]) || samePoint(p, points[a]) || samePoint(p, points[c]))
            continue;
        if (cross(e1, direction(points[i], p)) >= 0 && cross(e2, direction(points[a], p)) >= 0 &&
            cross(e3, direction(points[c], p)) >= 0) {
            corner.ear = false;
            return;
        }
    }
}

QVector<int> earClip(const QVector<QVector2D>& points, bool clockwise) {
    const int count = points.size();
    if (count < 3) {
        qWarning("Cannot triangulate a polygon with fewer than 3 vertices");
        return {};
    }
    if (count == 3)
        return clockwise ? QVector<int>{0, 2, 1} : QVector<int>{0, 1, 2};
    if (count == 4)
        return clockwise ? QVector<int>{0, 3, 1, 1, 3, 2} : QVector<int>{0, 1, 3, 1, 2, 3};
    std::vector<Corner> corners(count);
    for (int i = 0; i < count; ++i) {
        corners[i] = {(i + 1) % count, (i - 1 + count) % count, 0, 0, true, false};
        if (clockwise)
            std::swap(corners[i].after, corners[i].before);
    }
    for (int i = 0; i < count; ++i)
        updateEar(corners, points, i);
    QVector<int> triangles;
    for (int remaining = count; remaining > 3; --remaining) {
        const int b = bestEar(corners);
        if (b < 0) {
            qWarning("Unable to triangulate polygon.");
            return {};
        }
        const int a = corners[b].after;
        const int c = corners[b].before;
        triangles << c << b << a;
        corners[c].after = a;
        corners[a].before = c;
        corners[b].active = false;
        updateEar(corners, points, c);
        updateEar(corners, points, a);
    }
    for (int f = 0; f < count; ++f)
        if (corners[f].active)
            return triangles << corners[f].before << f << corners[f].after;
    return triangles;
}

void triangulate3D(const QVector3D& normal, int count, const int* indices, const float* positions,
                   QVector<unsigned int>& triangles) {
    triangulate(normal, count, indices, positions, triangles);
}

void triangulate3D(int count, const int* indices, const float* positions, QVector<unsigned int>& triangles) {
    const QVector3D normal = count > 0 ? polygonNormal(count, indices, positions) : QVector3D();
    triangulate(normal, count, indices, positions, triangles);
}

void triangulate3D(int count, const int* indices, const float* positions,
                   QVector<unsigned short>& triangles) {
    const QVector3D normal = count > 0 ? polygonNormal(count, indices, positions) : QVector3D();
    triangulate(normal, count, indices, positions, triangles);
}

void triangulate3D(const QVector3D& normal, int count, const int* indices, const float* positions,
                   QVector<unsigned short>& triangles) {
    triangulate(normal, count, indices, positions, triangles);
}

int findDegenerateTriangle(int count, const unsigned int* indices, const float* positions, int start) {
    if (start >= count)
        return -1;
    const auto point = [positions](unsigned int vertex) {
        const float* first = positions + 2 * std::ptrdiff_t(vertex);
        return QVector2D(first[0], first[1]);
    };
    for (int i = start; i < count; i += 3) {
        const QVector2D a = point(indices[i]);
        const QVector2D b = point(indices[i + 1]);
        const QVector2D c = point(indices[i + 2]);
        const QVector2D e1 = (b - a).normalized();
        const QVector2D e2 = (c - b).normalized();
        const QVector2D e3 = (a - c).normalized();
        for (float d :
             {QVector2D::dotProduct(e1, e2), QVector2D::dotProduct(e2, e3), QVector2D::dotProduct(e3, e1)})
            if (1 - absolute(d) < 1e-5F)
                return i;
    }
    return -1;
}

} // namespace Atelier::Vel::Literal
