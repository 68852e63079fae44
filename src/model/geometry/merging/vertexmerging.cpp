#include "geometry/merging/vertexmerging.h"

#include <algorithm>
#include <utility>

#include "geometry/merging/bytemerging.h"
#include "geometry/merging/indexblocks.h"

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
                             quint32* vertexOfCorner, const std::function<quint32*()>& elsewhere,
                             const WorkMeter& meter)
    : _attributes(std::move(attributes)), _tuples(_attributes, cornerCount, vertexOfCorner, meter) {
    for (std::size_t i = 0; i < _attributes.size(); ++i)
        _substituted.push_back(_tuples.isDone() ? _tuples.substitutedCorners(i)
                                                : countSubstitutedCorners(_attributes[i], cornerCount));
    if (!_tuples.isDone()) {
        if (elsewhere)
            vertexOfCorner = elsewhere();
        _corners = std::make_unique<ScratchBlock>(quint64{cornerCount} * sizeof(quint32),
                                                  ScratchBlock::Content::Unspecified);
        _vertexCount = mergeByBytes(_attributes, cornerCount, vertexOfCorner, _corners->as<quint32>(), meter);
        return;
    }
    mergeTuples(cornerCount, vertexOfCorner, meter);
}

VertexMerging::VertexMerging(std::vector<CornerAttribute> attributes, TupleMerging tuples,
                             quint32 cornerCount, quint32* tupleOfCorner, const WorkMeter& meter)
    : _attributes(std::move(attributes)), _tuples(std::move(tuples)) {
    for (std::size_t i = 0; i < _attributes.size(); ++i)
        _substituted.push_back(_tuples.substitutedCorners(i));
    mergeTuples(cornerCount, tupleOfCorner, meter);
}

// Equal tuples are equal bytes, and tuples are numbered as they appear: so the vertices of the tuples are
// those of the corners, in the same order.
void VertexMerging::mergeTuples(quint32 cornerCount, quint32* vertexOfCorner, const WorkMeter& meter) {
    const quint32 tupleCount = _tuples.tupleCount();
    _attributes = _tuples.tuples(_attributes);
    const auto firstTuples = [&] {
        _corners = std::make_unique<ScratchBlock>(quint64{tupleCount} * sizeof(quint32),
                                                  ScratchBlock::Content::Unspecified);
        return _corners->as<quint32>();
    };
    const ScratchBlock vertexOfTuple(quint64{tupleCount} * sizeof(quint32),
                                     ScratchBlock::Content::Unspecified);
    auto* const vertices = vertexOfTuple.as<quint32>();
    _vertexCount = mergeMostlyDistinct(_attributes, tupleCount, vertices, firstTuples, meter);
    if (_vertexCount != tupleCount)
        std::transform(vertexOfCorner, vertexOfCorner + cornerCount, vertexOfCorner,
                       [vertices](quint32 tuple) { return vertices[tuple]; });
}

void VertexMerging::gather(std::size_t attribute, unsigned char* out, const WorkMeter& meter) const {
    gatherValues(_attributes[attribute], _corners ? _corners->as<quint32>() : nullptr, _vertexCount, out,
                 meter);
}

} // namespace Atelier::Vel
