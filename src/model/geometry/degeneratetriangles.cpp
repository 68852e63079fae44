#include <velmodel/triangulation.h>

#include <algorithm>
#include <cmath>

#include "geometry/qtvectormath.h"

namespace Atelier::Vel {

namespace {

constexpr float kCollinearTolerance = 1e-5F;

PlanePoint pointOf(const float* positions, unsigned int vertex) {
    return {positions[2 * quint64(vertex)], positions[2 * quint64(vertex) + 1]};
}

bool isCollinear(const PlanePoint& p, const PlanePoint& q) {
    return 1 - std::fabs(dotProduct(p, q)) < kCollinearTolerance;
}

bool isDegenerate(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c) {
    const PlanePoint e1 = normalized(b - a);
    const PlanePoint e2 = normalized(c - b);
    const PlanePoint e3 = normalized(a - c);
    return isCollinear(e1, e2) || isCollinear(e2, e3) || isCollinear(e3, e1);
}

} // namespace

int FindDegenerateTriangle(int count, const unsigned int* indices, const float* positions, int start) {
    // An incomplete triangle at the end of the list is ignored.
    for (qint64 i = std::max(start, 0); i + 2 < count; i += 3)
        if (isDegenerate(pointOf(positions, indices[i]), pointOf(positions, indices[i + 1]),
                         pointOf(positions, indices[i + 2])))
            return static_cast<int>(i);
    return -1;
}

} // namespace Atelier::Vel
