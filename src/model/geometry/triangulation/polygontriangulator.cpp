#include "geometry/triangulation/polygontriangulator.h"

#include "geometry/triangulation/projection.h"

namespace Atelier::Vel {

const PolygonScratch::Triangles& PolygonTriangulator::cornerTriangles(const QVector3D& normal, int count,
                                                                      const int* corners,
                                                                      const float* positions) {
    return projectAndClip({normal.x(), normal.y(), normal.z()}, count, corners, positions);
}

const PolygonScratch::Triangles& PolygonTriangulator::cornerTriangles(int count, const int* corners,
                                                                      const float* positions) {
    const Winding winding = quickWinding(count, corners, positions);
    if (winding != Winding::kUndecided) {
        EarClip(count, winding == Winding::kClockwise, _scratch);
        return _scratch.triangles;
    }
    const SpacePoint normal = count < 3 ? SpacePoint() : PolygonNormal(count, corners, positions);
    return projectAndClip(normal, count, corners, positions);
}

const PolygonScratch::Triangles& PolygonTriangulator::projectAndClip(const SpacePoint& normal, int count,
                                                                     const int* corners,
                                                                     const float* positions) {
    bool clockwise = false;
    if (count >= 3) {
        _scratch.points.resize(count);
        ProjectPolygon(normal, count, corners, positions, _scratch.points.data());
        clockwise = !IsCounterClockwise(count, _scratch.points.constData());
    }
    EarClip(count, clockwise, _scratch);
    return _scratch.triangles;
}

unsigned int* PolygonTriangulator::triangulateGeneral(int count, const int* corners, const float* positions,
                                                      unsigned int* out) {
    for (int corner : cornerTriangles(count, corners, positions))
        *out++ = static_cast<unsigned int>(corners[corner]);
    return out;
}

} // namespace Atelier::Vel
