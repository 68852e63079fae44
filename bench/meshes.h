#pragma once

#include <QtCore/QString>

namespace Atelier::Vel::Bench {

enum class GridFaces { Triangles, Quads };
enum class GridOrder { Rows, Random };
enum class GridAttributes { All, PositionsOnly };

/// The form of a grid over a bumpy surface.
struct GridOptions {
    GridFaces faces = GridFaces::Triangles;
    GridOrder order = GridOrder::Rows;
    GridAttributes attributes = GridAttributes::All;
};

/// A rectangular grid of about `triangles` triangles. All numbers have six decimals.
void writeGrid(const QString& path, int triangles, const GridOptions& options);
/// The triangles of a grid, in which every corner has its own "v", "vt" and "vn" line.
void writeSoup(const QString& path, int triangles);
/// Rows of polygons of 5 to 12 corners that share their borders, about `triangles` triangles when cut. There
/// are 50 materials, and consecutive polygons have different ones.
void writePolygons(const QString& path, int triangles);
/// A grid whose material changes `switches` times between 10 materials.
void writeMaterialSwitches(const QString& path, int switches);
/// `groups` materials with one triangle each.
void writeManyGroups(const QString& path, int groups);

/// One polygon of `corners` corners.
enum class PolygonShape { Circle, Comb, Star, Spiral };
void writeOnePolygon(const QString& path, int corners, PolygonShape shape);

} // namespace Atelier::Vel::Bench
