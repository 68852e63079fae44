#pragma once

#include <vector>

#include <QtGui/QColor>
#include <QtGui/QVector3D>

#include "modelbox.h"

namespace Atelier::Vel::Viewer {

/// Coloured points, in the units of the model: two for each line, or three for each triangle.
class PointList {
public:
    struct Point {
        float position[3];
        float colour[4]; ///< premultiplied, in linear light
    };

    void addLine(const QVector3D& from, const QVector3D& to, const QColor& colour);
    void addTriangle(const QVector3D& a, const QVector3D& b, const QVector3D& c, const QColor& colour);
    const std::vector<Point>& points() const { return _points; }
    bool isEmpty() const { return _points.empty(); }

private:
    void add(const QVector3D& position, const QColor& colour);

    std::vector<Point> _points;
};

/// A grid on the floor of the box, at right angles to `up`. The distance of its lines is a power of ten, or
/// two or five times that. Every fifth line is stronger.
PointList gridLines(const ModelBox& box, const QVector3D& up, const QColor& colour);

/// The distance of the lines of a grid for a box of that size.
float gridStep(float size);

/// The twelve edges of a box.
PointList boxLines(const ModelBox& box, const QColor& colour);

/// The maximum number of normals that normalLines() makes; of a larger model, every second, third, ... vertex
/// gets one.
constexpr quint64 kMaxNormals = 200'000;

/// A line along the normal of each vertex. Empty if the model has no normals.
PointList normalLines(const DrawData& data, const ModelBox& box, const QColor& colour);

} // namespace Atelier::Vel::Viewer
