#pragma once

#include <random>
#include <vector>

#include <QtGui/QVector3D>

/// Polygons to triangulate: well-behaved ones, and every kind of nasty one.
namespace Atelier::Vel::Testing {

struct TestPolygon {
    std::vector<float> positions; ///< three per vertex; the vertices that no corner uses are zero
    std::vector<int> corners;     ///< vertex numbers
    QVector3D normal;             ///< a normal to pass: right, reversed, or nonsense

    int count() const { return static_cast<int>(corners.size()); }
};

struct PlaneShape {
    std::vector<double> x;
    std::vector<double> y;

    void add(double px, double py) {
        x.push_back(px);
        y.push_back(py);
    }
    int count() const { return static_cast<int>(x.size()); }
};

/// Shapes that a size alone defines; `count` is reached exactly and must be 8 or more.
PlaneShape convexShape(int count);
PlaneShape combShape(int count);
PlaneShape starShape(int count);
PlaneShape spiralShape(int count);

/// The shape in the plane z = 0.
TestPolygon flatPolygon(const PlaneShape& shape);

/// A polygon of `count` corners of a kind that `random` chooses.
TestPolygon randomPolygon(int count, std::mt19937& random);

} // namespace Atelier::Vel::Testing
