#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

namespace Atelier::Vel {

// For inspection from a debugger; nothing in the library calls the two. Both warn when the file cannot be
// written.

/// Writes a polygon as an OBJ file with one face. `points` has two floats for each of `count` corners.
void DumpPolygonOBJ(const QString& fileName, int count, const float* points);

/// Writes the triangles of a polygon, three corner numbers each, as an OBJ file.
void DumpTrianglesOBJ(const QString& fileName, int count, const float* points,
                      const QVector<unsigned int>& triangles);

} // namespace Atelier::Vel
