#include "geometry/triangulation/projection.h"

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

namespace {

SpacePoint positionOf(const float* positions, int vertex) {
    const float* position = positions + 3 * qint64(vertex);
    return {position[0], position[1], position[2]};
}

} // namespace

SpacePoint PolygonNormal(int count, const int* indices, const float* positions) {
    SpacePoint sum = {};
    SpacePoint previous = positionOf(positions, indices[count - 1]);
    for (int k = 0; k < count; ++k) {
        const SpacePoint current = positionOf(positions, indices[k]);
        sum = sum + crossProduct(previous, current);
        previous = current;
    }
    normalize(sum);
    return sum;
}

void ProjectPolygon(const SpacePoint& normal, int count, const int* indices, const float* positions,
                    PlanePoint* points) {
    SpacePoint up = {0, 1, 0};
    if (std::fabs(dotProduct(normal, up)) > 0.9F)
        up = {0, 0, 1};
    const SpacePoint u = normalized(crossProduct(up, normal));
    const SpacePoint w = normalized(crossProduct(normal, u));
    const SpacePoint origin = positionOf(positions, indices[0]);
    points[0] = {0, 0};
    for (int k = 1; k < count; ++k) {
        const SpacePoint offset = positionOf(positions, indices[k]) - origin;
        points[k] = {dotProduct(offset, u), dotProduct(offset, w)};
    }
}

bool IsCounterClockwise(int count, const PlanePoint* points) {
    float sum = 0;
    PlanePoint previous = points[count - 1];
    for (int k = 0; k < count; ++k) {
        sum += (points[k].x - previous.x) * (points[k].y + previous.y);
        previous = points[k];
    }
    return sum <= 0;
}

} // namespace Atelier::Vel
