#pragma once

#include <vector>

#include "geometry/triangulation/facetriangulator.h"

namespace Atelier::Vel {

/// Triangulates faces into streams, a block of indices at a time; keeps its working memory from call to call.
class TriangleWriter {
public:
    /// `expectedIndices` are reserved in a stream that is empty yet, if it is one of the library's own.
    /// `meter` counts the corners of faces.
    explicit TriangleWriter(quint64 expectedIndices = 0, const WorkMeter& meter = {});
    TriangleWriter(const TriangleWriter&) = delete;
    TriangleWriter& operator=(const TriangleWriter&) = delete;

    /// Appends the vertex numbers of the triangles of the given faces to `triangles`. Warns about each face
    /// that exists and cannot be triangulated. Returns: false if that stream refused them.
    bool append(const FaceTable& table, const WordView& faces, ModelDataStream& triangles);

    /// The number of faces that gave no triangle so far.
    quint64 untriangulatedFaces() const { return _untriangulatedFaces; }

private:
    /// Appends what is in _block to the stream. Returns: false if it refused that.
    bool flush(ModelDataStream& triangles);
    /// Makes the block take `indices` more indices, if need be by a flush. Returns: false if it cannot.
    bool ensureCapacity(quint64 indices, const FaceTable& table, ModelDataStream& triangles);
    void countUntriangulated(const FaceBatch& batch);
    /// Reports progress after every few thousand corners.
    void reportProgress(quint64 corners);

    FaceTriangulator _triangulator;
    std::vector<unsigned int> _block; ///< not appended yet
    quint64 _used = 0;                ///< indices in it
    quint64 _untriangulatedFaces = 0;
    quint64 _expectedIndices;
    WorkMeter _meter;
    qint64 _unreportedCorners = 0;
};

/// The number of vertex numbers that the triangles of faces with so many corners need at most.
quint64 maxTriangleIndices(const WordView& counts);
quint64 maxTriangleIndices(const UniformFaces& faces);

} // namespace Atelier::Vel
