#include <velmodel/picking.h>

#include <array>
#include <cmath>

#include "geometry/picking/inversematrix.h"

namespace Atelier::Vel {

namespace {

SpaceMatrix rowsOf(const QMatrix4x4& matrix) {
    SpaceMatrix rows{};
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            rows[std::size_t(row)][std::size_t(column)] = double(matrix(row, column));
    return rows;
}

using Homogeneous = std::array<double, 4>;

QVector3D pointOf(const Homogeneous& point) {
    return {float(point[0] / point[3]), float(point[1] / point[3]), float(point[2] / point[3])};
}

/// The direction from one point to another, which may be at infinity, with the length 1.
QVector3D directionBetween(const Homogeneous& from, const Homogeneous& to) {
    double parts[3];
    for (std::size_t i = 0; i < 3; ++i)
        parts[i] = to[i] * from[3] - from[i] * to[3];
    const double length = std::sqrt(parts[0] * parts[0] + parts[1] * parts[1] + parts[2] * parts[2]);
    return {float(parts[0] / length), float(parts[1] / length), float(parts[2] / length)};
}

} // namespace

PickRay PickRay::through(const QPointF& position, const QSize& size, const QMatrix4x4& viewProjection) {
    const std::optional<SpaceMatrix> inverse = inverseOf(rowsOf(viewProjection));
    if (size.isEmpty() || !inverse)
        return {};
    const double x = 2 * position.x() / size.width() - 1;
    const double y = 1 - 2 * position.y() / size.height();
    const Homogeneous near = mapped(*inverse, {x, y, -1, 1});
    const Homogeneous far = mapped(*inverse, {x, y, 1, 1});
    return {pointOf(near), directionBetween(near, far)};
}

} // namespace Atelier::Vel
