#include "geometry/merging/tuplemerging.h"

#include <algorithm>
#include <array>
#include <utility>

#include "geometry/merging/indexblocks.h"

namespace Atelier::Vel {

namespace {

bool haveSameNumbers(const CornerAttribute& a, const CornerAttribute& b) {
    return a.indices == b.indices && a.indexStep == b.indexStep && a.indexCount == b.indexCount &&
           a.valueCount == b.valueCount;
}

/// The first attribute with the same value numbers as `attribute`.
std::size_t firstAlike(const std::vector<CornerAttribute>& attributes, const CornerAttribute& attribute) {
    const auto first =
        std::find_if(attributes.begin(), attributes.end(), [&attribute](const CornerAttribute& other) {
            return haveSameNumbers(other, attribute);
        });
    return static_cast<std::size_t>(first - attributes.begin());
}

/// The attributes whose numbers make a tuple, the largest first. Attributes with the same list have the same
/// numbers, so a tuple has them once.
std::vector<std::size_t> attributesOfTuple(const std::vector<CornerAttribute>& attributes) {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < attributes.size(); ++i)
        if (firstAlike(attributes, attributes[i]) == i)
            result.push_back(i);
    std::swap(result.front(), *std::find(result.begin(), result.end(), largestAttribute(attributes)));
    return result;
}

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
    const std::vector<std::size_t> read = attributesOfTuple(attributes);
    std::transform(attributes.begin(), attributes.end(), _places.begin(), [&](const CornerAttribute& each) {
        const auto place = std::find(read.begin(), read.end(), firstAlike(attributes, each));
        return static_cast<std::size_t>(place - read.begin());
    });
    auto tuples = IndexTupleTable::make(read.size());
    tuples->raiseLimit(attributes[read.front()].valueCount + 1);
    std::array<IndexBlock, MergePolicy::kMaxTuplePlaces> blocks;
    std::array<const quint32*, MergePolicy::kMaxTuplePlaces> numbers{};
    for (quint64 start = 0; start < cornerCount; start += IndexBlock::kSize) {
        if (!options.policy.isTupleTableWorthwhile(tuples->cost(), start, cornerCount)) {
            restoreList(attributes, _places, *tuples, start, tupleOfCorner);
            return;
        }
        const auto first = static_cast<quint32>(start);
        const quint32 count = std::min(IndexBlock::kSize, cornerCount - first);
        for (std::size_t place = 0; place < read.size(); ++place)
            numbers[place] = blocks[place].read(attributes[read[place]], first, count);
        tuples->add(numbers.data(), count, tupleOfCorner + first);
        if (options.meter)
            options.meter(static_cast<int>(count));
    }
    for (const std::size_t place : _places)
        _substituted.push_back(blocks[place].substitutedCorners());
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
