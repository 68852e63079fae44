#include "geometry/triangulation/facetriangulator.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "geometry/allbelow.h"
#include "geometry/triangulation/fourwindings.h"

namespace Atelier::Vel {

namespace {

/// The triangles of four counter-clockwise faces.
template<int Count>
unsigned int* writeFour(const int* corners, unsigned int* out) {
    for (int face = 0; face < 4; ++face, corners += Count)
        out = writeFixedPattern(Count, false, corners, out);
    return out;
}

} // namespace

/// The corners of the first of four faces, starting at number `face`. Returns no corners unless the faces are
/// all triangles or all quadrilaterals, their corners are consecutive, and they do not use the last position.
FaceCorners FaceTriangulator::cornersOfFour(const FaceTable& table, quint32 face) {
    if (quint64{face} + 4 > table.faceCount())
        return {};
    const quint32 count = table.countOf(face);
    const quint32 start = table.startOf(face);
    const bool areAlike = table.isUniform() || (areFour(table.counts.words + face, count, 0) &&
                                                areFour(table.starts + face, start, count));
    if ((count != 3 && count != 4) || !areAlike || quint64{start} + quint64{4} * count > table.corners.count)
        return {};
    const quint32 wholePositions = table.wholePositions();
    if (wholePositions == 0 || !allBelow(table.corners.words + start, 4 * count, wholePositions - 1))
        return {};
    return {table.corners.words + start, count, true};
}

template<int Count>
unsigned int* FaceTriangulator::triangulateFour(const FaceTable& table, const quint32* vertices,
                                                unsigned int* out) {
    const auto* const positions = reinterpret_cast<const float*>(table.positions.bytes);
    prefetchPositionsAhead<Count>(table, static_cast<quint32>(vertices - table.corners.words));
    const FourWindings windings = Count == 3 ? quickTriangleWindings(vertices, positions)
                                             : quickQuadrilateralWindings(vertices, positions);
    const auto* corners = reinterpret_cast<const int*>(vertices);
    if ((windings.undecided | windings.clockwise) == 0)
        return writeFour<Count>(corners, out);
    for (unsigned int face = 0; face < 4; ++face, corners += Count) {
        if ((windings.undecided >> face & 1) != 0)
            out = _polygons.triangulate(Count, corners, positions, out);
        else
            out = writeFixedPattern(Count, (windings.clockwise >> face & 1) != 0, corners, out);
    }
    return out;
}

template unsigned int* FaceTriangulator::triangulateFour<3>(const FaceTable&, const quint32*, unsigned int*);
template unsigned int* FaceTriangulator::triangulateFour<4>(const FaceTable&, const quint32*, unsigned int*);

unsigned int* FaceTriangulator::triangulateOne(const FaceTable& table, const FaceCorners& corners,
                                               unsigned int* out) {
    if (!allBelow(corners.vertices, corners.count, table.wholePositions()))
        return triangulateCopied(table, corners, out);
    return _polygons.triangulate(static_cast<int>(corners.count),
                                 reinterpret_cast<const int*>(corners.vertices),
                                 reinterpret_cast<const float*>(table.positions.bytes), out);
}

unsigned int* FaceTriangulator::triangulateCopied(const FaceTable& table, const FaceCorners& corners,
                                                  unsigned int* out) {
    _corners.resize(corners.count);
    std::iota(_corners.begin(), _corners.end(), 0);
    _positions.assign(quint64{corners.count} * 3, 0.0F);
    for (quint32 i = 0; i < corners.count; ++i) {
        const quint64 first = corners.vertices[i] * FaceTable::kPositionBytes;
        if (first < table.positions.count)
            std::memcpy(&_positions[quint64{i} * 3], table.positions.bytes + first,
                        std::min(table.positions.count - first, FaceTable::kPositionBytes));
    }
    unsigned int* const end =
        _polygons.triangulate(static_cast<int>(corners.count), _corners.data(), _positions.data(), out);
    std::transform(out, end, out, [&](unsigned int corner) { return corners.vertices[corner]; });
    return end;
}

} // namespace Atelier::Vel
