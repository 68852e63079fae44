#include "pickingmeshes.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "geometry/picking/hierarchybuild.h"

namespace Atelier::Vel::Testing {

namespace {

using Corner = std::array<float, 3>;
using LongVector = std::array<long double, 3>;

float coordinate(std::mt19937& random) {
    if (random() % 2 == 0)
        return float(int(random() % 5)) - 2;
    return std::uniform_real_distribution<float>(-2, 2)(random);
}

quint32 vertexBetween(quint32 a, quint32 b, std::vector<Corner>& vertices,
                      std::map<std::pair<quint32, quint32>, quint32>& known) {
    const auto [place, isNew] = known.emplace(std::minmax(a, b), quint32(vertices.size()));
    if (isNew)
        vertices.push_back({vertices[a][0] + vertices[b][0], vertices[a][1] + vertices[b][1],
                            vertices[a][2] + vertices[b][2]});
    return place->second;
}

std::vector<quint32> subdivided(const std::vector<quint32>& triangles, std::vector<Corner>& vertices) {
    std::map<std::pair<quint32, quint32>, quint32> known;
    std::vector<quint32> result;
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        const quint32* const t = &triangles[i];
        const quint32 middle[3] = {vertexBetween(t[0], t[1], vertices, known),
                                   vertexBetween(t[1], t[2], vertices, known),
                                   vertexBetween(t[2], t[0], vertices, known)};
        result.insert(result.end(), {t[0], middle[0], middle[2], middle[0], t[1], middle[1], middle[2],
                                     middle[1], t[2], middle[0], middle[1], middle[2]});
    }
    return result;
}

LongVector difference(const LongVector& a, const LongVector& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

LongVector cross(const LongVector& a, const LongVector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

long double dot(const LongVector& a, const LongVector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

} // namespace

void PlainMesh::addTriangle(const TriangleCorners& corners) {
    for (const auto& corner : corners.at) {
        indices.push_back(quint32(positions.size() / 3));
        positions.insert(positions.end(), corner, corner + 3);
    }
}

PickingMesh PlainMesh::mesh() const {
    return {{positions.data(), positions.size() * sizeof(float), 3 * sizeof(float)},
            indices.data(),
            indices.size(),
            {{0, quint32(indices.size() / 3)}}};
}

PlainMesh closedMesh(int subdivisions, float inner, float outer, std::mt19937& random) {
    std::vector<Corner> vertices = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    PlainMesh mesh;
    mesh.indices = {0, 2, 4, 2, 1, 4, 1, 3, 4, 3, 0, 4, 2, 0, 5, 1, 2, 5, 3, 1, 5, 0, 3, 5};
    for (int i = 0; i < subdivisions; ++i)
        mesh.indices = subdivided(mesh.indices, vertices);
    std::uniform_real_distribution<float> radius(inner, outer);
    for (const Corner& vertex : vertices) {
        const float factor = radius(random) / std::hypot(vertex[0], vertex[1], vertex[2]);
        for (const float number : vertex)
            mesh.positions.push_back(number * factor);
    }
    return mesh;
}

TriangleCorners randomTriangle(std::mt19937& random) {
    TriangleCorners corners{};
    for (auto& corner : corners.at)
        for (float& number : corner)
            number = coordinate(random);
    return corners;
}

std::pair<SpaceVector, SpaceVector> randomLine(std::mt19937& random) {
    SpaceVector origin{};
    SpaceVector direction{};
    do
        for (std::size_t axis = 0; axis < 3; ++axis) {
            origin[axis] = double(coordinate(random));
            direction[axis] = double(coordinate(random));
        }
    while (direction == SpaceVector{});
    return {origin, direction};
}

LiteralHit literalHit(const SpaceVector& origin, const SpaceVector& direction,
                      const TriangleCorners& corners) {
    const auto corner = [&](int i) -> LongVector {
        return {corners.at[i][0], corners.at[i][1], corners.at[i][2]};
    };
    const LongVector d = {direction[0], direction[1], direction[2]};
    const LongVector a = difference(corner(1), corner(0));
    const LongVector b = difference(corner(2), corner(0));
    const LongVector p = cross(d, b);
    const LongVector t = difference({origin[0], origin[1], origin[2]}, corner(0));
    const LongVector q = cross(t, a);
    const long double determinant = dot(a, p);
    const long double u = dot(t, p) / determinant;
    const long double v = dot(d, q) / determinant;
    const long double distance = dot(b, q) / determinant * std::sqrt(dot(d, d));
    LiteralHit hit;
    hit.isHit = u >= 0 && v >= 0 && u + v <= 1 && distance >= 0;
    hit.distance = double(distance);
    hit.margin = double(std::min(
        {std::fabs(u), std::fabs(v), std::fabs(1 - u - v), std::fabs(distance), std::fabs(determinant)}));
    return hit;
}

TriangleHit nearestOfAll(const PickingMesh& mesh, const PickingRay& ray, const TriangleFilter& accepts) {
    TriangleHit nearest;
    quint32 number = 0;
    for (const TriangleRange& range : mesh.ranges)
        for (quint32 i = 0; i < range.triangles; ++i, ++number) {
            const quint64 first = range.firstIndex + quint64{i} * 3;
            if (first + 3 > mesh.indexCount)
                continue;
            const quint32* const vertices = mesh.indices + first;
            const bool isWhole = std::all_of(vertices, vertices + 3,
                                             [&](quint32 vertex) { return mesh.positions.contains(vertex); });
            TriangleHit hit;
            hit.number = number;
            if (isWhole && canBeHit(mesh.positions.cornersOf(vertices)) &&
                ray.meets(mesh.positions.cornersOf(vertices), hit) && hit.isNearerThan(nearest) &&
                (!accepts || accepts(number)))
                nearest = hit;
        }
    return nearest;
}

} // namespace Atelier::Vel::Testing
