#pragma once

#include <vector>

#include <QtCore/QVector>
#include <QtGui/QVector2D>
#include <QtGui/QVector3D>

/// The triangulation of a polygon, step by step as defined: quadratic, with Qt's own vectors. The reference
/// for the library; shares no code with it.
namespace Atelier::Vel::Literal {

struct Corner {
    int after;
    int before;
    float cross;
    float cosine;
    bool active;
    bool ear;
};

QVector3D polygonNormal(int count, const int* indices, const float* positions);
QVector<QVector2D> projectPolygon(const QVector3D& normal, int count, const int* indices,
                                  const float* positions);
bool isCounterClockwise(const QVector<QVector2D>& points);
void updateEar(std::vector<Corner>& corners, const QVector<QVector2D>& points, int i);
QVector<int> earClip(const QVector<QVector2D>& points, bool clockwise);

void triangulate3D(const QVector3D& normal, int count, const int* indices, const float* positions,
                   QVector<unsigned int>& triangles);
void triangulate3D(int count, const int* indices, const float* positions, QVector<unsigned int>& triangles);
void triangulate3D(int count, const int* indices, const float* positions, QVector<unsigned short>& triangles);
void triangulate3D(const QVector3D& normal, int count, const int* indices, const float* positions,
                   QVector<unsigned short>& triangles);

int findDegenerateTriangle(int count, const unsigned int* indices, const float* positions, int start);

} // namespace Atelier::Vel::Literal
