#include "upload/facecutter.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>

#include "prefetch.h"

namespace Atelier::Vel {

namespace {

// Indices are handed on in blocks that stay in the second-level cache.
constexpr quint64 kBlock = 65536;

// More triangle indices than a stream of the library's own can hold; no polygon is let make them.
constexpr quint64 kTooManyIndices = quint64{1} << 29;

/// Hands `count` indices on; false when the stream did not take them.
bool flush(const std::vector<unsigned int>& indices, quint64 count, ModelDataStream& stream) {
    if (count == 0)
        return true;
    const quint64 before = stream.size();
    stream.append(count, indices.data());
    return stream.size() == before + count;
}

bool allBelow(const quint32* numbers, quint32 count, quint64 limit) {
    return std::all_of(numbers, numbers + count, [limit](quint32 number) { return number < limit; });
}

/// Where the corners of a face lie; none for a face that is not there.
struct FaceRange {
    const quint32* corners;
    quint32 count;
};

/// Asks memory for what faces ahead will need: the furthest one's place in the table, a nearer one's corners,
/// the positions of one still nearer. The faces of one material may lie anywhere in the mesh; those that
/// follow each other need no help.
class FaceFetcher {
public:
    FaceFetcher(const FaceTable& table, const WordView& faces) : _table(table), _faces(faces) {}

    void fetchFor(quint64 k) const {
        if (k + kTableAhead >= _faces.count || isNext(k + kTableAhead))
            return;
        const quint32 face = _faces.words[k + kTableAhead];
        if (face < static_cast<quint64>(_table.starts.size()))
            prefetch(_table.starts.constData() + face);
        if (face < _table.counts.count)
            prefetch(_table.counts.words + face);
        prefetch(rangeOf(k + kCornersAhead).corners);
        const FaceRange near = rangeOf(k + kPositionsAhead);
        for (quint32 i = 0; i < std::min(near.count, kMostCornersFetched); ++i)
            prefetch(_table.positions.bytes +
                     std::min(near.corners[i] * kPositionBytes, _table.positions.count));
    }

private:
    static constexpr quint64 kTableAhead = 24;
    static constexpr quint64 kCornersAhead = 16;
    static constexpr quint64 kPositionsAhead = 8;
    static constexpr quint32 kMostCornersFetched = 16;
    static constexpr quint64 kPositionBytes = 3 * sizeof(float);

    bool isNext(quint64 k) const { return _faces.words[k] == _faces.words[k - 1] + 1; }

    FaceRange rangeOf(quint64 k) const {
        const quint32 face = _faces.words[k];
        if (face >= _table.counts.count || face >= static_cast<quint64>(_table.starts.size()))
            return {nullptr, 0};
        const quint32 start = _table.starts.at(static_cast<int>(face));
        const quint32 count = _table.counts.words[face];
        if (quint64{start} + count > _table.corners.count)
            return {nullptr, 0};
        return {_table.corners.words + start, count};
    }

    const FaceTable& _table;
    const WordView& _faces;
};

} // namespace

bool FaceCutter::cut(const FaceTable& table, const WordView& faces, ModelDataStream& triangles) {
    const quint64 faceLimit =
        std::min<quint64>(table.counts.count, static_cast<quint64>(table.starts.size()));
    const FaceFetcher fetcher(table, faces);
    quint64 used = 0;
    for (quint64 k = 0; k < faces.count; ++k) {
        fetcher.fetchFor(k);
        const quint32 face = faces.words[k];
        const quint32 count = face < faceLimit ? table.counts.words[face] : 0;
        const quint32 start = face < faceLimit ? table.starts.at(static_cast<int>(face)) : 0;
        if (face >= faceLimit || quint64{start} + count > table.corners.count) {
            ++_uncutFaces;
            continue;
        }
        const quint64 bound = count < 3 ? 0 : 3 * (quint64{count} - 2);
        if (used + bound > _triangles.size()) {
            if (!flush(_triangles, used, triangles))
                return false;
            used = 0;
            if (bound >= kTooManyIndices)
                return false;
            if (bound > _triangles.size())
                _triangles.resize(std::max(bound, std::min(kBlock, 3 * table.corners.count)));
        }
        unsigned int* const begin = _triangles.data() + used;
        unsigned int* const end = cutFace(table, start, count, begin);
        used += static_cast<quint64>(end - begin);
        _uncutFaces += end == begin ? 1 : 0;
    }
    return flush(_triangles, used, triangles);
}

unsigned int* FaceCutter::cutFace(const FaceTable& table, quint32 start, quint32 count, unsigned int* out) {
    const quint32* const corners = table.corners.words + start;
    const quint64 wholePositions = table.positions.count / (3 * sizeof(float));
    if (!allBelow(corners, count, wholePositions))
        return cutCopied(table, start, count, out);
    return _triangulator.cut(static_cast<int>(count), reinterpret_cast<const int*>(corners),
                             reinterpret_cast<const float*>(table.positions.bytes), out);
}

unsigned int* FaceCutter::cutCopied(const FaceTable& table, quint32 start, quint32 count, unsigned int* out) {
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
        _triangulator.cut(static_cast<int>(count), _corners.data(), _positions.data(), out);
    std::transform(out, end, out, [corners](unsigned int corner) { return corners[corner]; });
    return end;
}

} // namespace Atelier::Vel
