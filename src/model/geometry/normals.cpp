#include "geometry/normals.h"

#include <algorithm>

#include "geometry/triangulationmath.h"

namespace Atelier::Vel {

namespace {

SpacePoint read(const float* floats, quint32 vertex) {
    const float* const first = floats + quint64{vertex} * 3;
    return {first[0], first[1], first[2]};
}

void write(float* floats, quint32 vertex, const SpacePoint& point) {
    float* const first = floats + quint64{vertex} * 3;
    first[0] = point.x;
    first[1] = point.y;
    first[2] = point.z;
}

/// Positions of which some may lie behind the end, where they are zero.
struct Positions {
    const float* floats;
    quint64 count;

    bool contains(quint32 vertex) const { return quint64{vertex} * 3 + 3 <= count; }
    SpacePoint operator[](quint32 vertex) const {
        if (contains(vertex))
            return read(floats, vertex);
        float padded[3] = {0.0F, 0.0F, 0.0F};
        const quint64 first = std::min(quint64{vertex} * 3, count);
        std::copy(floats + first, floats + count, padded);
        return read(padded, 0);
    }
};

/// As long as the sine of the angle at `a`, and on the side from which the triangle is clockwise: meant.
SpacePoint faceNormal(const SpacePoint& a, const SpacePoint& b, const SpacePoint& c) {
    return crossProduct(normalized(c - a), normalized(b - a));
}

} // namespace

void generateVertexNormals(const float* positions, quint64 positionFloats, const quint32* indices,
                           quint64 indexCount, quint32 vertexCount, float* normals) {
    const Positions points{positions, positionFloats};
    std::fill_n(normals, quint64{vertexCount} * 3, 0.0F);
    for (quint64 i = 0; i + 2 < indexCount; i += 3) {
        const quint32* const corners = indices + i;
        const SpacePoint normal = faceNormal(points[corners[0]], points[corners[1]], points[corners[2]]);
        for (int corner = 0; corner < 3; ++corner)
            if (corners[corner] < vertexCount)
                write(normals, corners[corner], read(normals, corners[corner]) + normal);
    }
    for (quint32 vertex = 0; vertex < vertexCount; ++vertex) {
        SpacePoint normal = read(normals, vertex);
        normalize(normal);
        write(normals, vertex, normal);
    }
}

} // namespace Atelier::Vel
