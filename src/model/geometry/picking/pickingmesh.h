#pragma once

#include <cstring>
#include <vector>

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// The positions of the corners of a triangle.
struct TriangleCorners {
    float at[3][3]; ///< corner, axis
};

/// Where vertices are: three floats at the beginning of every `stride` bytes. The pointer need not be
/// aligned.
struct VertexPositions {
    const void* data = nullptr;
    quint64 bytes = 0;
    quint64 stride = 0;

    /// Whether the three floats of a vertex exist.
    bool contains(quint64 vertex) const {
        return bytes >= 3 * sizeof(float) && vertex * stride <= bytes - 3 * sizeof(float);
    }
    /// Requires: contains() of each vertex.
    TriangleCorners cornersOf(const quint32* vertices) const {
        TriangleCorners corners;
        for (int i = 0; i < 3; ++i)
            std::memcpy(corners.at[i], static_cast<const char*>(data) + vertices[i] * stride,
                        sizeof corners.at[i]);
        return corners;
    }
};

/// Consecutive triangles of an index list.
struct TriangleRange {
    quint64 firstIndex = 0;
    quint32 triangles = 0;
};

/// Triangles over shared vertices. They are numbered through all ranges, in the order of the ranges. Ranges
/// may overlap. Requires: the ranges have fewer than 2^32 triangles together, and the list fewer than 2^32
/// indices.
struct PickingMesh {
    VertexPositions positions;
    const quint32* indices = nullptr;
    quint64 indexCount = 0;
    std::vector<TriangleRange> ranges;
};

} // namespace Atelier::Vel
