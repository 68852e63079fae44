#include <velmodel/triangulation.h>

#include "geometry/polygontriangulator.h"

namespace Atelier::Vel {

namespace {

template<typename Triangles, typename Index>
void appendVertices(const Triangles& cornerTriangles, const int* indices, QVector<Index>& triangles) {
    if (cornerTriangles.isEmpty())
        return;
    triangles.reserve(triangles.size() + cornerTriangles.size());
    for (int corner : cornerTriangles)
        triangles.append(static_cast<Index>(indices[corner]));
}

} // namespace

void Triangulate3D(const QVector3D& normal, int count, const int* indices, const float* positions,
                   QVector<unsigned int>& triangles) {
    PolygonTriangulator triangulator;
    appendVertices(triangulator.cornerTriangles(normal, count, indices, positions), indices, triangles);
}

void Triangulate3D(int count, const int* indices, const float* positions, QVector<unsigned int>& triangles) {
    PolygonTriangulator triangulator;
    appendVertices(triangulator.cornerTriangles(count, indices, positions), indices, triangles);
}

void Triangulate3D(int count, const int* indices, const float* positions,
                   QVector<unsigned short>& triangles) {
    PolygonTriangulator triangulator;
    appendVertices(triangulator.cornerTriangles(count, indices, positions), indices, triangles);
}

void Triangulate3D(const QVector3D& normal, int count, const int* indices, const float* positions,
                   QVector<unsigned short>& triangles) {
    PolygonTriangulator triangulator;
    appendVertices(triangulator.cornerTriangles(normal, count, indices, positions), indices, triangles);
}

} // namespace Atelier::Vel
