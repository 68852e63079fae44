#pragma once

#include <utility>
#include <vector>

#include "geometry/triangulation/faceprefetch.h"
#include "geometry/triangulation/facetable.h"
#include "geometry/triangulation/polygontriangulator.h"

namespace Atelier::Vel {

/// The maximum number of triangle indices for a face with `corners` corners.
constexpr quint64 maxTriangleIndices(quint32 corners) {
    return corners < 3 ? 0 : 3 * (quint64{corners} - 2);
}

/// The faces that are triangulated in one step: one face, or four consecutive faces.
struct FaceBatch {
    quint32 faceCount = 1;
    FaceCorners corners; ///< of the first face; the others have the same number

    quint64 cornerCount() const { return quint64{faceCount} * corners.count; }
    quint64 maxIndices() const { return faceCount * maxTriangleIndices(corners.count); }
};

/// Triangulates faces. This is the entry point of triangulation for lists of faces. Keeps its working memory
/// between calls.
///
///     for (quint64 k = 0; k < faces.count;) {
///         const FaceBatch batch = triangulator.batchAt(table, faces, k);
///         out = triangulator.triangulate(table, batch, out);
///         k += batch.faceCount;
///     }
class FaceTriangulator {
public:
    /// Sets the meter that counts the corners of large polygons during their triangulation.
    void setMeter(WorkMeter meter) { _polygons.setMeter(std::move(meter)); }

    /// The next faces of a list, starting at entry `k`.
    static FaceBatch batchAt(const FaceTable& table, const WordView& faces, quint64 k) {
        const quint32 face = faces.words[k];
        if (k + 4 <= faces.count && areFour(faces.words + k, face, 1)) {
            const FaceCorners four = cornersOfFour(table, face);
            if (four.count != 0)
                return {4, four};
        }
        FacePrefetcher(table, faces).prefetchFor(k);
        return {1, table.cornersOf(face)};
    }

    /// Writes the vertex numbers of the triangles of a batch to `out`, which has capacity for
    /// batch.maxIndices() numbers.
    /// Returns: the end of the output; `out` itself for a face without triangles.
    unsigned int* triangulate(const FaceTable& table, const FaceBatch& batch, unsigned int* out) {
        if (batch.faceCount == 1)
            return triangulateOne(table, batch.corners, out);
        return batch.corners.count == 3 ? triangulateFour<3>(table, batch.corners.vertices, out)
                                        : triangulateFour<4>(table, batch.corners.vertices, out);
    }

private:
    /// Whether four numbers start at `first` and increase by `step`.
    static bool areFour(const quint32* numbers, quint32 first, quint32 step) {
        return ((numbers[0] ^ first) | (numbers[1] ^ (first + step)) | (numbers[2] ^ (first + 2 * step)) |
                (numbers[3] ^ (first + 3 * step))) == 0;
    }
    static FaceCorners cornersOfFour(const FaceTable& table, quint32 face);
    template<int Count>
    unsigned int* triangulateFour(const FaceTable& table, const quint32* vertices, unsigned int* out);
    unsigned int* triangulateOne(const FaceTable& table, const FaceCorners& corners, unsigned int* out);
    unsigned int* triangulateCopied(const FaceTable& table, const FaceCorners& corners, unsigned int* out);

    PolygonTriangulator _polygons;
    std::vector<int> _corners;
    std::vector<float> _positions;
};

} // namespace Atelier::Vel
