#include "drawdata/trianglewriter.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include <velmodel/modeldataarray.h>

#include "diagnostics.h"

namespace Atelier::Vel {

namespace {

// The indices of a block. A block has 256 KiB and stays in the second-level cache.
constexpr quint64 kBlock = 65536;

// Corners between two reports of progress: less than a millisecond of work.
constexpr qint64 kCornersPerReport = 16384;

// More triangle indices than one of the library's own streams can hold. A polygon that needs them is refused.
constexpr quint64 kTooManyIndices = quint64{1} << 29;

} // namespace

TriangleWriter::TriangleWriter(quint64 expectedIndices, const WorkMeter& meter)
    : _expectedIndices(expectedIndices), _meter(meter) {
    if (meter)
        _triangulator.setMeter([this](int corners) {
            _unreportedCorners -= corners; // reportProgress() adds them again with their face
            _meter(corners);
        });
}

bool TriangleWriter::append(const FaceTable& table, const WordView& faces, ModelDataStream& triangles) {
    _used = 0;
    for (quint64 k = 0; k < faces.count;) {
        const FaceBatch batch = FaceTriangulator::batchAt(table, faces, k);
        if (!ensureCapacity(batch.maxIndices(), table, triangles))
            return false;
        unsigned int* const begin = _block.data() + _used;
        unsigned int* const end = _triangulator.triangulate(table, batch, begin);
        if (end == begin)
            countUntriangulated(batch);
        _used += static_cast<quint64>(end - begin);
        reportProgress(batch.cornerCount());
        k += batch.faceCount;
    }
    return flush(triangles);
}

bool TriangleWriter::flush(ModelDataStream& triangles) {
    if (_used == 0)
        return true;
    auto* const array = triangles.size() == 0 ? dynamic_cast<ModelDataArray*>(&triangles) : nullptr;
    if (array != nullptr)
        array->reserve(_expectedIndices);
    return appendTo(triangles, std::exchange(_used, 0), _block.data(), sizeof(unsigned int));
}

bool TriangleWriter::ensureCapacity(quint64 indices, const FaceTable& table, ModelDataStream& triangles) {
    if (_used + indices <= _block.size())
        return true;
    if (!flush(triangles) || indices >= kTooManyIndices)
        return false;
    if (indices > _block.size())
        _block.resize(std::max(indices, std::min(kBlock, 3 * table.corners.count)));
    return true;
}

void TriangleWriter::countUntriangulated(const FaceBatch& batch) {
    ++_untriangulatedFaces;
    if (batch.corners.exist)
        reportUntriangulated(batch.corners.count);
}

void TriangleWriter::reportProgress(quint64 corners) {
    _unreportedCorners += static_cast<qint64>(corners);
    if (_unreportedCorners < kCornersPerReport)
        return;
    const qint64 unreported = std::exchange(_unreportedCorners, 0);
    if (_meter)
        _meter(static_cast<int>(std::min<qint64>(unreported, std::numeric_limits<int>::max())));
}

quint64 maxTriangleIndices(const WordView& counts) {
    return std::accumulate(counts.words, counts.words + counts.count, quint64{0},
                           [](quint64 sum, quint32 count) { return sum + maxTriangleIndices(count); });
}

quint64 maxTriangleIndices(const UniformFaces& faces) {
    return faces.count * maxTriangleIndices(faces.corners);
}

} // namespace Atelier::Vel
