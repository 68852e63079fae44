#pragma once

#include <vector>

#include <QtCore/QVector>

#include "geometry/polygontriangulator.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

/// What a face number refers to. Nothing in it is trusted: faces that do not lie inside it do not exist, and
/// positions behind the end are zero.
struct FaceTable {
    WordView counts;                     ///< corners per face
    const QVector<unsigned int>& starts; ///< first corner per face
    WordView corners;                    ///< vertex number per corner
    ByteView positions;                  ///< three floats per vertex
};

/// Cuts faces into triangles; keeps its working memory from call to call.
class FaceCutter {
public:
    /// Appends the vertex numbers of the triangles of the given faces to `triangles`.
    /// Returns: false when that stream refused them.
    bool cut(const FaceTable& table, const WordView& faces, ModelDataStream& triangles);

    /// Faces that gave no triangle so far.
    quint64 uncutFaces() const { return _uncutFaces; }

private:
    unsigned int* cutFace(const FaceTable& table, quint32 start, quint32 count, unsigned int* out);
    unsigned int* cutCopied(const FaceTable& table, quint32 start, quint32 count, unsigned int* out);

    PolygonTriangulator _triangulator;
    std::vector<unsigned int> _triangles;
    std::vector<int> _corners;
    std::vector<float> _positions;
    quint64 _uncutFaces = 0;
};

} // namespace Atelier::Vel
