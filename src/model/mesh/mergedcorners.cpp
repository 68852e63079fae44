#include "mesh/mergedcorners.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "geometry/allbelow.h"
#include "geometry/merging/indexblocks.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

MergedCorners::MergedCorners(QStringList attributes, QSharedPointer<ModelDataStream> list)
    : _attributes(std::move(attributes)),
      _list(std::move(list)),
      _tuples(IndexTupleTable::make(static_cast<std::size_t>(_attributes.size()))) {}

bool MergedCorners::add(quint32* const* numbers, quint32 count, quint64 values) {
    if (!allBelow(numbers[0], count, static_cast<quint32>(values)) ||
        !MergePolicy().isReadingTuplesWorthwhile(_tuples->cost(), _list->size(), values))
        return false;
    _tuples->raiseLimit(values);
    _tuples->add(numbers, count, numbers[0]);
    _isRefused = !appendTo(*_list, count, numbers[0], sizeof *numbers[0]) || _isRefused;
    return true;
}

bool MergedCorners::areNumbersBelow(const QString& attribute, quint32 limit) const {
    return _tuples->greatest(static_cast<std::size_t>(_attributes.indexOf(attribute))) < limit;
}

void MergedCorners::unmerge(int attribute,
                            const std::function<void(const quint32* numbers, quint64 count)>& take) const {
    std::array<quint32, IndexBlock::kSize> block;
    const quint32* const numbers = _tuples->numbersAt(static_cast<std::size_t>(attribute));
    const WordView corners = WordView::of(_list.data());
    for (quint64 first = 0; first < corners.count; first += block.size()) {
        const quint64 count = std::min<quint64>(block.size(), corners.count - first);
        std::transform(corners.words + first, corners.words + first + count, block.begin(),
                       [&](quint32 tuple) { return numbers[quint64{tuple} * _tuples->places()]; });
        take(block.data(), count);
    }
}

TupleMerging MergedCorners::take(const std::vector<QString>& listOwners,
                                 const std::vector<CornerAttribute>& attributes) {
    std::vector<std::size_t> places;
    std::transform(
        listOwners.begin(), listOwners.end(), std::back_inserter(places),
        [this](const QString& owner) { return static_cast<std::size_t>(_attributes.indexOf(owner)); });
    const WordView corners = WordView::of(_list.data());
    return {attributes, std::move(_tuples), std::move(places), static_cast<quint32>(corners.count),
            corners.words};
}

} // namespace Atelier::Vel
