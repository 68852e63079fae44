#pragma once

#include "geometry/triangulation/facetable.h"
#include "memory/prefetch.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Atelier::Vel {

/// Prefetches the data that later faces of a list need. The faces of one material may be anywhere in the
/// mesh; consecutive faces need no prefetch.
class FacePrefetcher {
public:
    FacePrefetcher(const FaceTable& table, const WordView& faces) : _table(table), _faces(faces) {}

    /// Must be called for each face of the list. Prefetches the table entry of a face far ahead, the corners
    /// of a nearer face and the positions of a still nearer face.
    void prefetchFor(quint64 k) const {
        if (k + kTableAhead >= _faces.count || isNext(k + kTableAhead))
            return;
        const quint32 face = _faces.words[k + kTableAhead];
        if (!_table.isUniform() && face < _table.faceCount()) {
            prefetch(_table.starts + face);
            prefetch(_table.counts.words + face);
        }
        prefetch(_table.cornersOf(_faces.words[k + kCornersAhead]).vertices);
        const FaceCorners near = _table.cornersOf(_faces.words[k + kPositionsAhead]);
        for (quint32 i = 0; i < std::min(near.count, kMaxCornersPrefetched); ++i)
            prefetch(_table.positions.bytes +
                     std::min(near.vertices[i] * FaceTable::kPositionBytes, _table.positions.count));
    }

private:
    // Prefetch distances in faces. Each stage needs what the previous one fetched, so the stages are eight
    // faces apart: enough work to cover one memory latency.
    static constexpr quint64 kTableAhead = 24;
    static constexpr quint64 kCornersAhead = 16;
    static constexpr quint64 kPositionsAhead = 8;
    // The triangulation of a larger polygon takes longer than fetching the rest of it.
    static constexpr quint32 kMaxCornersPrefetched = 16;

    bool isNext(quint64 k) const { return _faces.words[k] == _faces.words[k - 1] + 1; }

    const FaceTable& _table;
    const WordView& _faces;
};

/// Whether all of `4 * Fours` vertices are so near to `other` that their positions are in the same cache as
/// its position: at most 2^15 vertices away, which is 384 KiB.
template<int Fours>
bool areNear(const quint32* vertices, quint32 other) {
#if defined(__SSE2__)
    constexpr int kNearBits = 15;
    const __m128i lowest = _mm_set1_epi32(static_cast<int>(other - (1U << kNearBits)));
    __m128i distances = _mm_setzero_si128();
    for (int i = 0; i < Fours; ++i, vertices += 4) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(vertices));
        distances = _mm_or_si128(distances, _mm_sub_epi32(four, lowest));
    }
    const __m128i tooFar = _mm_srli_epi32(distances, kNearBits + 1);
    return _mm_movemask_epi8(_mm_cmpeq_epi8(tooFar, _mm_setzero_si128())) == 0xFFFF;
#else
    return false;
#endif
}

/// Prefetches the positions of four later faces of `Count` corners. If the faces of a mesh are in no order,
/// their positions may be anywhere in memory. `start` is the first corner of the current four faces.
template<int Count>
void prefetchPositionsAhead(const FaceTable& table, quint32 start) {
    constexpr quint64 kFacesAhead = 16; // four rounds of four faces: about one memory latency
    constexpr quint64 kCorners = quint64{4} * Count;
    const quint64 first = start + kFacesAhead * Count;
    if (first + kCorners > table.corners.count)
        return;
    const quint32* const vertices = table.corners.words + first;
    if (areNear<Count>(vertices, table.corners.words[start]))
        return;
    for (quint64 i = 0; i < kCorners; ++i)
        prefetch(table.positions.bytes + vertices[i] * FaceTable::kPositionBytes);
}

} // namespace Atelier::Vel
