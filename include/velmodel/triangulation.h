#pragma once

#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velmodel/velmodel_export.h>

namespace Atelier::Vel {

/// Cuts one simple, roughly planar polygon into triangles by clipping ears, the sharpest ear first. Appends
/// three vertex numbers per triangle to `triangles`, after what it holds already.
///
/// `indices` holds the `count` vertex numbers of the polygon's corners in order. `positions` holds three
/// floats per vertex. All triangles are counter-clockwise when viewed from the tip of `normal`, whichever way
/// the polygon is wound. Without `normal` the polygon's own is used, from whose tip it is counter-clockwise.
/// A quadrilateral is always cut from its second to its fourth corner, even if it is concave; this is
/// intentional. The 16-bit overloads keep the low 16 bits of a vertex number.
///
/// Requires: every vertex number lies in `positions`; this is not checked.
/// Errors:   a warning, and nothing appended, if there are fewer than three corners, or if no ear is left:
///           the polygon crosses itself, or its area is nearly zero.
/// Threads:  any thread, several at a time.
/// Cost:     constant for triangles and quadrilaterals; about O(count log count) for larger polygons as
///           models have them, O(count²) in the worst case.
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
/// `indices` holds `count` vertex numbers, three per triangle. `positions` holds two floats per vertex.
/// Checks the triangles that begin at entry `start`, `start` + 3, and so on; a negative `start` counts as 0.
/// A triangle with two equal corners is degenerate; a triangle with three equal corners is not.
///
/// Requires: every vertex number lies in `positions`; this is not checked.
/// Returns:  the position in `indices` of the triangle's first entry; -1 if there is none.
/// Threads:  any thread, several at a time.
/// Cost:     O(count − start).
VELMODEL_EXPORT int FindDegenerateTriangle(int count, const unsigned int* indices, const float* positions,
                                           int start);

} // namespace Atelier::Vel
