#include "geometry/smoothing/smoothnormals.h"

#include <algorithm>
#include <vector>

#include "geometry/merging/vertexmerging.h"
#include "geometry/normals.h"
#include "memory/scratchblock.h"

namespace Atelier::Vel {

namespace {

constexpr ScratchBlock::Content kUnspecified = ScratchBlock::Content::Unspecified;

/// For each vertex the first vertex whose position has the same bytes.
class FirstVertices {
public:
    FirstVertices(const TriangleList& triangles, const MergeOptions& merging)
        : _count(triangles.vertexCount), _first(quint64{_count} * sizeof(quint32), kUnspecified) {
        CornerAttribute positions;
        positions.values = reinterpret_cast<const unsigned char*>(triangles.positions);
        positions.stride = 3 * sizeof(float);
        positions.valueCount = triangles.positionFloats / 3;
        positions.indexCount = positions.valueCount;
        const VertexMerging merged({positions}, _count, _first.as<quint32>(), merging);
        numberByVertex(merged.vertexCount());
    }

    /// Vertices that do not exist are unchanged.
    quint32 operator[](quint32 vertex) const {
        return vertex < _count ? _first.as<quint32>()[vertex] : vertex;
    }

private:
    // Positions are numbered in the order of their first appearance.
    void numberByVertex(quint32 positionCount) const {
        std::vector<quint32> vertexOf;
        vertexOf.reserve(positionCount);
        auto* const first = _first.as<quint32>();
        for (quint32 vertex = 0; vertex < _count; ++vertex) {
            if (first[vertex] == vertexOf.size())
                vertexOf.push_back(vertex);
            first[vertex] = vertexOf[first[vertex]];
        }
    }

    quint32 _count;
    ScratchBlock _first;
};

} // namespace

void generateSmoothNormals(const TriangleList& triangles, float* normals, const MergeOptions& merging,
                           const WorkMeter& meter) {
    const FirstVertices firstOf(triangles, merging);
    const ScratchBlock corners(triangles.indexCount * sizeof(quint32), kUnspecified);
    std::transform(triangles.indices, triangles.indices + triangles.indexCount, corners.as<quint32>(),
                   [&](quint32 vertex) { return firstOf[vertex]; });
    generateVertexNormals(triangles.positions, triangles.positionFloats, corners.as<quint32>(),
                          triangles.indexCount, triangles.vertexCount, normals, meter);
    for (quint32 vertex = 0; vertex < triangles.vertexCount; ++vertex)
        if (firstOf[vertex] != vertex)
            std::copy_n(normals + quint64{firstOf[vertex]} * 3, 3, normals + quint64{vertex} * 3);
}

} // namespace Atelier::Vel
