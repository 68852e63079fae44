#include <velmodel/triangulation.h>

#include <algorithm>

#include "diagnostics.h"
#include "geometry/triangulation/polygontriangulator.h"

namespace Atelier::Vel {

namespace {

template<typename Index>
void appendVertices(const PolygonScratch::Triangles& cornerTriangles, int count, const int* indices,
                    QVector<Index>& triangles) {
    if (cornerTriangles.isEmpty())
        reportUntriangulated(static_cast<quint64>(std::max(count, 0)));
    const int size = triangles.size();
    triangles.resize(size + cornerTriangles.size());
    std::transform(cornerTriangles.begin(), cornerTriangles.end(), triangles.begin() + size,
                   [indices](int corner) { return static_cast<Index>(indices[corner]); });
}

} // namespace

void Triangulate3D(const QVector3D& normal, int count, const int* indices, const float* positions,
                   QVector<unsigned int>& triangles) {
    PolygonTriangulator triangulator;
    appendVertices(triangulator.cornerTriangles(normal, count, indices, positions), count, indices,
                   triangles);
}

void Triangulate3D(int count, const int* indices, const float* positions, QVector<unsigned int>& triangles) {
    PolygonTriangulator triangulator;
    appendVertices(triangulator.cornerTriangles(count, indices, positions), count, indices, triangles);
}

void Triangulate3D(int count, const int* indices, const float* positions,
                   QVector<unsigned short>& triangles) {
    PolygonTriangulator triangulator;
    appendVertices(triangulator.cornerTriangles(count, indices, positions), count, indices, triangles);
}

void Triangulate3D(const QVector3D& normal, int count, const int* indices, const float* positions,
                   QVector<unsigned short>& triangles) {
    PolygonTriangulator triangulator;
    appendVertices(triangulator.cornerTriangles(normal, count, indices, positions), count, indices,
                   triangles);
}

} // namespace Atelier::Vel
