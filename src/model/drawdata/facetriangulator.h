#pragma once

#include <algorithm>
#include <vector>

#include <QtCore/QVector>

#include "geometry/triangulation/polygontriangulator.h"
#include "mesh/facestore.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

/// What a face number refers to. Nothing in it is trusted: faces that do not lie inside it do not exist, and
/// positions behind the end are zero.
struct FaceTable {
    WordView counts;                     ///< corners per face
    const QVector<unsigned int>& starts; ///< first corner per face
    UniformFaces uniform;                ///< where there are any, in place of both
    WordView corners;                    ///< vertex number per corner
    ByteView positions;                  ///< three floats per vertex

    bool isUniform() const { return uniform.corners != 0; }
    /// The faces that are there; the functions below are for those.
    quint64 faceCount() const {
        return isUniform() ? uniform.count
                           : std::min<quint64>(counts.count, static_cast<quint64>(starts.size()));
    }
    quint32 countOf(quint32 face) const { return isUniform() ? uniform.corners : counts.words[face]; }
    quint32 startOf(quint32 face) const {
        return isUniform() ? face * uniform.corners : starts.at(static_cast<int>(face));
    }
};

/// Cuts faces into triangles; keeps its working memory from call to call.
class FaceTriangulator {
public:
    /// `expectedIndices` is what room is made for in a stream that is empty yet, if it is one of the
    /// library's own. `meter` counts the corners of faces.
    explicit FaceTriangulator(quint64 expectedIndices = 0, const WorkMeter& meter = {});
    FaceTriangulator(const FaceTriangulator&) = delete;
    FaceTriangulator& operator=(const FaceTriangulator&) = delete;

    /// Appends the vertex numbers of the triangles of the given faces to `triangles`.
    /// Returns: false when that stream refused them.
    bool triangulate(const FaceTable& table, const WordView& faces, ModelDataStream& triangles);

    /// The most vertex numbers that faces of so many corners can give.
    static quint64 maxIndices(const WordView& counts);
    static quint64 maxIndices(const UniformFaces& faces);

    /// Faces that gave no triangle so far.
    quint64 untriangulatedFaces() const { return _untriangulatedFaces; }

private:
    /// Hands on what is in _triangles. Returns: false when the stream did not take it.
    bool flush(ModelDataStream& triangles);
    /// Counts corners of faces that have been passed.
    void reportProgress(quint32 corners);
    /// Makes room in _triangles for so many indices, in `triangles` if need be. Returns: false when there is
    /// none.
    bool makeRoom(quint64 indices, const FaceTable& table, ModelDataStream& triangles);
    /// Cuts four faces of `Count` corners each, the first of them from corner `start` on.
    template<int Count>
    void triangulateFour(const FaceTable& table, quint32 start);
    unsigned int* triangulateFace(const FaceTable& table, quint32 start, quint32 count, unsigned int* out);
    unsigned int* triangulateCopied(const FaceTable& table, quint32 start, quint32 count, unsigned int* out);

    PolygonTriangulator _triangulator;
    std::vector<unsigned int> _triangles; ///< not handed on yet
    quint64 _used = 0;                    ///< indices in it
    std::vector<int> _corners;
    std::vector<float> _positions;
    quint64 _untriangulatedFaces = 0;
    quint64 _expectedIndices;
    WorkMeter _meter;
    qint64 _unreportedCorners = 0;
};

} // namespace Atelier::Vel
