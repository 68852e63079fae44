#include "geometry/merging/vertexmerging.h"

#include <algorithm>
#include <utility>

#include "geometry/merging/bytemerging.h"
#include "geometry/merging/indexblocks.h"
#include "geometry/merging/valuegathering.h"

namespace Atelier::Vel {

namespace {

quint64 countSubstitutedCorners(const CornerAttribute& attribute, quint32 cornerCount) {
    IndexBlock block;
    for (quint64 first = 0; first < cornerCount; first += IndexBlock::kSize)
        block.read(attribute, static_cast<quint32>(first),
                   static_cast<quint32>(std::min<quint64>(IndexBlock::kSize, cornerCount - first)));
    return block.substitutedCorners();
}

} // namespace

VertexMerging::VertexMerging(std::vector<CornerAttribute> attributes, quint32 cornerCount,
                             quint32* vertexOfCorner, const MergeOptions& options,
                             const std::function<quint32*()>& otherList)
    : _attributes(std::move(attributes)), _tuples(_attributes, cornerCount, vertexOfCorner, options) {
    for (std::size_t i = 0; i < _attributes.size(); ++i)
        _substituted.push_back(_tuples.isDone() ? _tuples.substitutedCorners(i)
                                                : countSubstitutedCorners(_attributes[i], cornerCount));
    if (_tuples.isDone()) {
        mergeTuples(cornerCount, vertexOfCorner, options);
        return;
    }
    VertexRemap remap(cornerCount, otherList ? otherList() : vertexOfCorner);
    mergeByBytes(_attributes, options, remap);
    keep(std::move(remap));
}

VertexMerging::VertexMerging(std::vector<CornerAttribute> attributes, TupleMerging tuples,
                             quint32 cornerCount, quint32* tupleOfCorner, const MergeOptions& options)
    : _attributes(std::move(attributes)), _tuples(std::move(tuples)) {
    for (std::size_t i = 0; i < _attributes.size(); ++i)
        _substituted.push_back(_tuples.substitutedCorners(i));
    mergeTuples(cornerCount, tupleOfCorner, options);
}

// Equal tuples have equal bytes, and tuples are numbered in the order of their appearance. So the vertices of
// the tuples are those of the corners, in the same order.
void VertexMerging::mergeTuples(quint32 cornerCount, quint32* vertexOfCorner, const MergeOptions& options) {
    const quint32 tupleCount = _tuples.tupleCount();
    _attributes = _tuples.tuples(_attributes);
    const ScratchBlock vertexOfTuple(quint64{tupleCount} * sizeof(quint32),
                                     ScratchBlock::Content::Unspecified);
    auto* const vertices = vertexOfTuple.as<quint32>();
    VertexRemap remap(tupleCount, vertices);
    mergeMostlyDistinct(_attributes, options, remap);
    if (remap.vertexCount() != tupleCount)
        std::transform(vertexOfCorner, vertexOfCorner + cornerCount, vertexOfCorner,
                       [vertices](quint32 tuple) { return vertices[tuple]; });
    keep(std::move(remap));
}

void VertexMerging::keep(VertexRemap remap) {
    _vertexCount = remap.vertexCount();
    _firstCorner = remap.takeFirstCorner();
}

void VertexMerging::gather(std::size_t attribute, unsigned char* out, const WorkMeter& meter) const {
    gatherValues(_attributes[attribute], _firstCorner ? _firstCorner->as<quint32>() : nullptr, _vertexCount,
                 out, meter);
}

} // namespace Atelier::Vel
