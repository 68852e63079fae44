#include "drawdata/facetriangulator.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <velmodel/modeldataarray.h>

#include "geometry/allbelow.h"
#include "geometry/triangulation/fourwindings.h"
#include "memory/prefetch.h"

namespace Atelier::Vel {

namespace {

// Indices are handed on in blocks that stay in the second-level cache.
constexpr quint64 kBlock = 65536;

// As many are cut before a meter is told.
constexpr qint64 kCornersPerReport = 16384;

constexpr quint64 kPositionBytes = 3 * sizeof(float);

// More triangle indices than a stream of the library's own can hold; no polygon is let make them.
constexpr quint64 kTooManyIndices = quint64{1} << 29;

/// What the triangles of a face of so many corners need.
constexpr quint64 indicesOf(quint32 corners) {
    return corners < 3 ? 0 : 3 * (quint64{corners} - 2);
}

/// Where the corners of a face lie; none for a face that is not there.
struct FaceRange {
    const quint32* corners;
    quint32 count;
};

/// Asks memory for what faces ahead will need: the furthest one's place in the table, a nearer one's corners,
/// the positions of one still nearer. The faces of one material may lie anywhere in the mesh; those that
/// follow each other need no help.
class FacePrefetcher {
public:
    FacePrefetcher(const FaceTable& table, const WordView& faces) : _table(table), _faces(faces) {}

    void prefetchFor(quint64 k) const {
        if (k + kTableAhead >= _faces.count || isNext(k + kTableAhead))
            return;
        const quint32 face = _faces.words[k + kTableAhead];
        if (!_table.isUniform() && face < _table.faceCount()) {
            prefetch(_table.starts.constData() + face);
            prefetch(_table.counts.words + face);
        }
        prefetch(rangeOf(k + kCornersAhead).corners);
        const FaceRange near = rangeOf(k + kPositionsAhead);
        for (quint32 i = 0; i < std::min(near.count, kMaxCornersPrefetched); ++i)
            prefetch(_table.positions.bytes +
                     std::min(near.corners[i] * kPositionBytes, _table.positions.count));
    }

private:
    static constexpr quint64 kTableAhead = 24;
    static constexpr quint64 kCornersAhead = 16;
    static constexpr quint64 kPositionsAhead = 8;
    static constexpr quint32 kMaxCornersPrefetched = 16;

    bool isNext(quint64 k) const { return _faces.words[k] == _faces.words[k - 1] + 1; }

    FaceRange rangeOf(quint64 k) const {
        const quint32 face = _faces.words[k];
        if (face >= _table.faceCount())
            return {nullptr, 0};
        const quint32 start = _table.startOf(face);
        const quint32 count = _table.countOf(face);
        if (quint64{start} + count > _table.corners.count)
            return {nullptr, 0};
        return {_table.corners.words + start, count};
    }

    const FaceTable& _table;
    const WordView& _faces;
};

/// Positions that are there with all of their bytes.
quint32 wholePositionsOf(const FaceTable& table) {
    return static_cast<quint32>(
        std::min<quint64>(table.positions.count / kPositionBytes, std::numeric_limits<quint32>::max()));
}

/// Whether four numbers are `first` and what follows it in steps.
bool areFour(const quint32* numbers, quint32 first, quint32 step) {
    return ((numbers[0] ^ first) | (numbers[1] ^ (first + step)) | (numbers[2] ^ (first + 2 * step)) |
            (numbers[3] ^ (first + 3 * step))) == 0;
}

/// The number of corners of each of four faces, from number `face` on, that are all triangles or all
/// quadrilaterals, lie one after the other and use positions before the last one; 0 for any others.
quint32 cornersOfFour(const FaceTable& table, quint64 faceLimit, quint32 face) {
    if (quint64{face} + 4 > faceLimit)
        return 0;
    const quint32 count = table.countOf(face);
    const quint32 start = table.startOf(face);
    const bool areAlike = table.isUniform() || (areFour(table.counts.words + face, count, 0) &&
                                                areFour(table.starts.constData() + face, start, count));
    if ((count != 3 && count != 4) || !areAlike || quint64{start} + quint64{4} * count > table.corners.count)
        return 0;
    const quint32 wholePositions = wholePositionsOf(table);
    return wholePositions != 0 && allBelow(table.corners.words + start, 4 * count, wholePositions - 1) ? count
                                                                                                       : 0;
}

/// Whether all of `4 * Fours` vertices are so near to another one that their positions are in a cache with
/// its.
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

/// Asks memory for the positions of faces like these four that follow them: where the faces of a mesh are in
/// no order, their positions lie anywhere.
template<int Count>
void prefetchPositionsAhead(const FaceTable& table, quint32 start) {
    constexpr quint64 kFacesAhead = 16;
    constexpr quint64 kCorners = quint64{4} * Count;
    const quint64 first = start + kFacesAhead * Count;
    if (first + kCorners > table.corners.count)
        return;
    const quint32* const vertices = table.corners.words + first;
    if (areNear<Count>(vertices, table.corners.words[start]))
        return;
    for (quint64 i = 0; i < kCorners; ++i)
        prefetch(table.positions.bytes + vertices[i] * kPositionBytes);
}

/// The triangles of four counter-clockwise faces.
template<int Count>
unsigned int* writeFour(const int* corners, unsigned int* out) {
    for (int face = 0; face < 4; ++face, corners += Count)
        out = writeFixedPattern(Count, false, corners, out);
    return out;
}

} // namespace

FaceTriangulator::FaceTriangulator(quint64 expectedIndices, const WorkMeter& meter)
    : _expectedIndices(expectedIndices), _meter(meter) {
    if (meter)
        _triangulator.setMeter([this](int corners) {
            _unreportedCorners -= corners; // they are counted again with their face
            _meter(corners);
        });
}

bool FaceTriangulator::triangulate(const FaceTable& table, const WordView& faces,
                                   ModelDataStream& triangles) {
    const quint64 faceLimit = table.faceCount();
    const FacePrefetcher prefetcher(table, faces);
    _used = 0;
    for (quint64 k = 0; k < faces.count;) {
        const quint32 face = faces.words[k];
        if (k + 4 <= faces.count && areFour(faces.words + k, face, 1)) {
            const quint32 count = cornersOfFour(table, faceLimit, face);
            if (count != 0) {
                if (!makeRoom(4 * indicesOf(count), table, triangles))
                    return false;
                if (count == 3)
                    triangulateFour<3>(table, table.startOf(face));
                else
                    triangulateFour<4>(table, table.startOf(face));
                reportProgress(4 * count);
                k += 4;
                continue;
            }
        }
        prefetcher.prefetchFor(k);
        ++k;
        const quint32 count = face < faceLimit ? table.countOf(face) : 0;
        const quint32 start = face < faceLimit ? table.startOf(face) : 0;
        if (face >= faceLimit || quint64{start} + count > table.corners.count) {
            ++_untriangulatedFaces;
            continue;
        }
        if (!makeRoom(indicesOf(count), table, triangles))
            return false;
        unsigned int* const begin = _triangles.data() + _used;
        unsigned int* const end = triangulateFace(table, start, count, begin);
        _used += static_cast<quint64>(end - begin);
        _untriangulatedFaces += end == begin ? 1 : 0;
        reportProgress(count);
    }
    return flush(triangles);
}

quint64 FaceTriangulator::maxIndices(const WordView& counts) {
    return std::accumulate(counts.words, counts.words + counts.count, quint64{0},
                           [](quint64 sum, quint32 count) { return sum + indicesOf(count); });
}

quint64 FaceTriangulator::maxIndices(const UniformFaces& faces) {
    return faces.count * indicesOf(faces.corners);
}

bool FaceTriangulator::flush(ModelDataStream& triangles) {
    if (_used == 0)
        return true;
    auto* const array = triangles.size() == 0 ? dynamic_cast<ModelDataArray*>(&triangles) : nullptr;
    if (array != nullptr)
        array->reserve(_expectedIndices);
    return appendTo(triangles, std::exchange(_used, 0), _triangles.data(), sizeof(unsigned int));
}

void FaceTriangulator::reportProgress(quint32 corners) {
    _unreportedCorners += corners;
    if (_unreportedCorners < kCornersPerReport)
        return;
    const qint64 unreported = std::exchange(_unreportedCorners, 0);
    if (_meter)
        _meter(static_cast<int>(std::min<qint64>(unreported, std::numeric_limits<int>::max())));
}

bool FaceTriangulator::makeRoom(quint64 indices, const FaceTable& table, ModelDataStream& triangles) {
    if (_used + indices <= _triangles.size())
        return true;
    if (!flush(triangles))
        return false;
    if (indices >= kTooManyIndices)
        return false;
    if (indices > _triangles.size())
        _triangles.resize(std::max(indices, std::min(kBlock, 3 * table.corners.count)));
    return true;
}

template<int Count>
void FaceTriangulator::triangulateFour(const FaceTable& table, quint32 start) {
    const auto* const positions = reinterpret_cast<const float*>(table.positions.bytes);
    const quint32* const vertices = table.corners.words + start;
    prefetchPositionsAhead<Count>(table, start);
    const FourWindings windings = Count == 3 ? quickTriangleWindings(vertices, positions)
                                             : quickQuadrilateralWindings(vertices, positions);
    const auto* corners = reinterpret_cast<const int*>(vertices);
    unsigned int* out = _triangles.data() + _used;
    if ((windings.undecided | windings.clockwise) == 0) {
        out = writeFour<Count>(corners, out);
    } else {
        for (unsigned int face = 0; face < 4; ++face, corners += Count) {
            if ((windings.undecided >> face & 1) != 0) {
                unsigned int* const end = _triangulator.triangulate(Count, corners, positions, out);
                _untriangulatedFaces += end == out ? 1 : 0;
                out = end;
            } else {
                out = writeFixedPattern(Count, (windings.clockwise >> face & 1) != 0, corners, out);
            }
        }
    }
    _used = static_cast<quint64>(out - _triangles.data());
}

unsigned int* FaceTriangulator::triangulateFace(const FaceTable& table, quint32 start, quint32 count,
                                                unsigned int* out) {
    const quint32* const corners = table.corners.words + start;
    const quint32 wholePositions = wholePositionsOf(table);
    if (!allBelow(corners, count, wholePositions))
        return triangulateCopied(table, start, count, out);
    return _triangulator.triangulate(static_cast<int>(count), reinterpret_cast<const int*>(corners),
                                     reinterpret_cast<const float*>(table.positions.bytes), out);
}

unsigned int* FaceTriangulator::triangulateCopied(const FaceTable& table, quint32 start, quint32 count,
                                                  unsigned int* out) {
    const quint32* const corners = table.corners.words + start;
    _corners.resize(count);
    std::iota(_corners.begin(), _corners.end(), 0);
    _positions.assign(quint64{count} * 3, 0.0F);
    for (quint32 i = 0; i < count; ++i) {
        const quint64 first = quint64{corners[i]} * 3 * sizeof(float);
        if (first < table.positions.count)
            std::memcpy(&_positions[quint64{i} * 3], table.positions.bytes + first,
                        std::min<quint64>(table.positions.count - first, 3 * sizeof(float)));
    }
    unsigned int* const end =
        _triangulator.triangulate(static_cast<int>(count), _corners.data(), _positions.data(), out);
    std::transform(out, end, out, [corners](unsigned int corner) { return corners[corner]; });
    return end;
}

} // namespace Atelier::Vel
