#pragma once

#include <vector>

#include "geometry/triangulation/facetriangulator.h"

namespace Atelier::Vel {

/// Triangulates faces and appends the triangles to streams in blocks. Keeps its working memory between calls.
class TriangleWriter {
public:
    /// Reserves `expectedIndices` in a stream that is still empty, if it is one of the library's own. `meter`
    /// counts the corners of faces.
    explicit TriangleWriter(quint64 expectedIndices = 0, const WorkMeter& meter = {});
    TriangleWriter(const TriangleWriter&) = delete;
    TriangleWriter& operator=(const TriangleWriter&) = delete;

    /// Appends the vertex numbers of the triangles of the given faces to `triangles`. Warns about each face
    /// that exists and cannot be triangulated.
    /// Returns: false if that stream refused them.
    bool append(const FaceTable& table, const WordView& faces, ModelDataStream& triangles);

    /// The number of faces so far that gave no triangle.
    quint64 untriangulatedFaces() const { return _untriangulatedFaces; }

private:
    /// Appends the content of _block to the stream. Returns: false if the stream refused it.
    bool flush(ModelDataStream& triangles);
    /// Ensures that the block can hold `indices` more indices, by a flush if necessary. Returns: false if it
    /// cannot.
    bool ensureCapacity(quint64 indices, const FaceTable& table, ModelDataStream& triangles);
    void countUntriangulated(const FaceBatch& batch);
    /// Counts corners, and reports progress after every few thousand.
    void reportProgress(quint64 corners);

    FaceTriangulator _triangulator;
    std::vector<unsigned int> _block; ///< not appended yet
    quint64 _used = 0;                ///< indices in _block
    quint64 _untriangulatedFaces = 0;
    quint64 _expectedIndices;
    WorkMeter _meter;
    qint64 _unreportedCorners = 0;
};

/// The maximum number of triangle indices for faces with these corner counts.
quint64 maxTriangleIndices(const WordView& counts);
quint64 maxTriangleIndices(const UniformFaces& faces);

} // namespace Atelier::Vel
