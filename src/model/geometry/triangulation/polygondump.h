#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

namespace Atelier::Vel {

// These functions are for inspection from a debugger. The library does not call them. Both warn if the file
// cannot be written.

/// Writes a polygon as an OBJ file with one face. `points` has two floats for each of `count` corners.
void DumpPolygonOBJ(const QString& fileName, int count, const float* points);

/// Writes the triangles of a polygon, three corner numbers each, as an OBJ file.
void DumpTrianglesOBJ(const QString& fileName, int count, const float* points,
                      const QVector<unsigned int>& triangles);

} // namespace Atelier::Vel
