#pragma once

#include <initializer_list>
#include <vector>

#include "geometry/qtvectormath.h"

namespace Atelier::Vel::Testing {

/// Points from pairs of coordinates.
inline std::vector<PlanePoint> planePoints(std::initializer_list<float> xy) {
    std::vector<PlanePoint> points;
    for (const float* p = xy.begin(); p != xy.end(); p += 2)
        points.push_back({p[0], p[1]});
    return points;
}

} // namespace Atelier::Vel::Testing
