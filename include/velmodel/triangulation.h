#pragma once

#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// Cuts one roughly planar polygon in space into triangles and appends them, three vertex numbers each.
/// `indices` holds the `count` vertex numbers of the polygon's corners in order; `positions` holds three
/// floats per vertex.
VELMODEL_EXPORT void Triangulate3D(const QVector3D& normal, int count, const int* indices,
                                   const float* positions, QVector<unsigned int>& triangles);
VELMODEL_EXPORT void Triangulate3D(int count, const int* indices, const float* positions,
                                   QVector<unsigned int>& triangles);
VELMODEL_EXPORT void Triangulate3D(int count, const int* indices, const float* positions,
                                   QVector<unsigned short>& triangles);
VELMODEL_EXPORT void Triangulate3D(const QVector3D& normal, int count, const int* indices,
                                   const float* positions, QVector<unsigned short>& triangles);

/// The position in `indices` of the first entry of the first (nearly) collinear triangle at or after `start`,
/// or -1. `count` is the number of index entries; `positions` holds two floats per vertex.
VELMODEL_EXPORT int FindDegenerateTriangle(int count, const unsigned int* indices, const float* positions,
                                           int start);

} // namespace Atelier::Vel
