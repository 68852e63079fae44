#pragma once

#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// Cuts one simple, roughly planar polygon into triangles by clipping ears, the sharpest one first, and
/// appends them to `triangles`, three vertex numbers each; what was there before stays.
///
/// `indices` holds the `count` vertex numbers of the polygon's corners in order, `positions` three floats per
/// vertex. All triangles are counter-clockwise when viewed from the tip of `normal`, whichever way the
/// polygon is wound; without `normal` the polygon's own is taken, from whose tip it is counter-clockwise. A
/// quadrilateral is always cut from its second to its fourth corner. The 16-bit overloads keep the low 16
/// bits of a vertex number.
///
/// Requires: every vertex number lies in `positions`; this is not checked.
/// Errors:   a warning, and nothing appended, for fewer than three corners, and where no ear is left (the
/// polygon
///           crosses itself, or its area is all but zero).
/// Cost:     triangles and quadrilaterals constant; larger ones about O(count log count) for polygons as they
///           are found in models, O(count²) at worst.
VELMODEL_EXPORT void Triangulate3D(const QVector3D& normal, int count, const int* indices,
                                   const float* positions, QVector<unsigned int>& triangles);
VELMODEL_EXPORT void Triangulate3D(int count, const int* indices, const float* positions,
                                   QVector<unsigned int>& triangles);
VELMODEL_EXPORT void Triangulate3D(int count, const int* indices, const float* positions,
                                   QVector<unsigned short>& triangles);
VELMODEL_EXPORT void Triangulate3D(const QVector3D& normal, int count, const int* indices,
                                   const float* positions, QVector<unsigned short>& triangles);

/// Finds the first triangle whose corners are collinear, or nearly so, in a list of triangles in the plane.
///
/// `indices` holds `count` vertex numbers, three per triangle; `positions` two floats per vertex. Looks at
/// the triangles that begin at entry `start`, `start` + 3, and so on. A triangle of two equal corners is
/// degenerate, one of three equal corners is not.
///
/// Returns: the position in `indices` of the triangle's first entry, -1 if there is none.
/// Cost:    O(count − start).
VELMODEL_EXPORT int FindDegenerateTriangle(int count, const unsigned int* indices, const float* positions,
                                           int start);

} // namespace Atelier::Vel
