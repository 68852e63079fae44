#include "geometry/merging/tuplemerging.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "geometry/merging/indexblocks.h"

namespace Atelier::Vel {

namespace {

/// Restores the value numbers of the first `count` corners in the list that was overwritten with tuples, if
/// any.
void restoreList(const std::vector<CornerAttribute>& attributes, const std::vector<std::size_t>& places,
                 const IndexTupleTable& tuples, quint64 count, quint32* tupleOfCorner) {
    for (std::size_t i = 0; i < attributes.size(); ++i)
        if (attributes[i].indices == tupleOfCorner) {
            const quint32* const numbers = tuples.numbersAt(places[i]);
            std::transform(tupleOfCorner, tupleOfCorner + count, tupleOfCorner,
                           [&](quint32 tuple) { return numbers[quint64{tuple} * tuples.places()]; });
            return;
        }
}

/// The number of corners whose tuple has no valid number for the attribute.
quint64 countSubstituted(const CornerAttribute& tuples, quint32 cornerCount, const quint32* tupleOfCorner) {
    const auto hasNone = [&tuples](quint32 tuple) { return tuples.valueOf(tuple) == tuples.valueCount; };
    return static_cast<quint64>(std::count_if(tupleOfCorner, tupleOfCorner + cornerCount, hasNone));
}

} // namespace

TupleMerging::TupleMerging(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                           quint32* tupleOfCorner, const MergeOptions& options)
    : _places(attributes.size()) {
    if (!options.policy.mayNumberTuples(attributes, cornerCount))
        return;
    const std::size_t pivot = largestAttribute(attributes);
    std::iota(_places.begin(), _places.end(), std::size_t{0});
    std::swap(_places[0], _places[pivot]);
    auto tuples = IndexTupleTable::make(attributes.size());
    tuples->raiseLimit(attributes[pivot].valueCount + 1);
    std::array<IndexBlock, MergePolicy::kMaxTuplePlaces> blocks;
    std::array<const quint32*, MergePolicy::kMaxTuplePlaces> numbers{};
    for (quint64 start = 0; start < cornerCount; start += IndexBlock::kSize) {
        if (!options.policy.isTupleTableWorthwhile(tuples->cost(), start, cornerCount)) {
            restoreList(attributes, _places, *tuples, start, tupleOfCorner);
            return;
        }
        const auto first = static_cast<quint32>(start);
        const quint32 count = std::min(IndexBlock::kSize, cornerCount - first);
        for (std::size_t i = 0; i < attributes.size(); ++i)
            numbers[_places[i]] = blocks[i].read(attributes[i], first, count);
        tuples->add(numbers.data(), count, tupleOfCorner + first);
        if (options.meter)
            options.meter(static_cast<int>(count));
    }
    for (std::size_t i = 0; i < attributes.size(); ++i)
        _substituted.push_back(blocks[i].substitutedCorners());
    _tuples = std::move(tuples);
    _tuples->finish();
}

TupleMerging::TupleMerging(const std::vector<CornerAttribute>& attributes,
                           std::unique_ptr<IndexTupleTable> tuples, std::vector<std::size_t> places,
                           quint32 cornerCount, const quint32* tupleOfCorner)
    : _tuples(std::move(tuples)), _places(std::move(places)) {
    _tuples->finish();
    const std::vector<CornerAttribute> corners = this->tuples(attributes);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const bool allNameValues = _tuples->greatest(_places[i]) < corners[i].valueCount;
        _substituted.push_back(allNameValues ? 0 : countSubstituted(corners[i], cornerCount, tupleOfCorner));
    }
}

std::vector<CornerAttribute> TupleMerging::tuples(const std::vector<CornerAttribute>& attributes) const {
    std::vector<CornerAttribute> result = attributes;
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i].indices = _tuples->numbersAt(_places[i]);
        result[i].indexCount = _tuples->tupleCount();
        result[i].indexStep = _tuples->places();
    }
    return result;
}

} // namespace Atelier::Vel
