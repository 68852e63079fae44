#include "mesh/attributestore.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>
#include <vector>

#include <velmodel/modeldataarray.h>

#include "geometry/allbelow.h"
#include "glconstants.h"
#include "mesh/mergedcorners.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

namespace {

// Elements that are appended with one call: 16 KiB, which stay in the first-level cache.
constexpr quint64 kBlock = 4096;

bool isWithout(const QSharedPointer<ModelDataStream>& stream, unsigned int type, quint64 count) {
    return stream.isNull() && !ModelDataArray::canHold(type, count);
}

} // namespace

quint64 VertexAttribute::valueCount(StreamSlot slot) const {
    if (components < 1 || streams[slot].isNull())
        return 0;
    return streams[slot]->size() / static_cast<quint64>(components);
}

AttributeStore::AttributeStore(StreamSource& streams, Input input)
    : _streams(streams), _input(input), _mergesCorners(input == Input::Consumed) {}

AttributeStore::~AttributeStore() = default;

void AttributeStore::clear() {
    _records.clear();
    _merged.reset();
    _mergesCorners = _input == Input::Consumed;
}

bool AttributeStore::isComplete() const {
    return std::all_of(_records.begin(), _records.end(), [this](const VertexAttribute& record) {
        ModelDataStream* const values = record.streams[kValues].data();
        return values == nullptr || (!Vel::isEmpty(values) && hasIndices(record));
    });
}

bool AttributeStore::hasIndices(const VertexAttribute& record) const {
    return !Vel::isEmpty(_merged ? _merged->list().data() : record.streams[kIndices].data());
}

void AttributeStore::create(const QString& name, int components, unsigned int type, quint64 valueCount,
                            quint64 indexCount) {
    if (_merged)
        unmerge();
    VertexAttribute& record = _records[name];
    record = VertexAttribute();
    record.streams[kValues] = _streams.make(type, valueCount);
    record.streams[kIndices] = _streams.make(kGlUnsignedInt, indexCount);
    record.components = components;
    if (isWithout(record.streams[kValues], type, valueCount) ||
        isWithout(record.streams[kIndices], kGlUnsignedInt, indexCount))
        _streams.refuse(describeAttribute(name));
}

void AttributeStore::createAlongside(const QString& name, int components, unsigned int type,
                                     const QString& listOwner) {
    VertexAttribute record;
    record.streams[kValues] = _streams.make(type, 0);
    record.streams[kIndices] = _records[listOwner].streams[kIndices];
    record.components = components;
    record.listOwner = listOwner;
    _records[name] = record;
}

void AttributeStore::addValues(const QString& name, quint64 count, const void* values, unsigned int type) {
    const auto record = _records.find(name);
    if (record == _records.end())
        return;
    ModelDataStream* const stream = record->streams[kValues].data();
    if (stream != nullptr && stream->type() == type &&
        !appendIfThere(stream, count, values, ModelDataStream::typeSize(type)))
        _streams.refuse(describeAttribute(name));
}

void AttributeStore::addIndices(const QString& name, quint64 count, const unsigned int* indices) {
    const auto record = _records.find(name);
    if (record == _records.end())
        return;
    if (_mergesCorners)
        unmerge();
    listOmitted(name, *record);
    append(name, *record, count, indices);
}

void AttributeStore::append(const QString& name, VertexAttribute& record, quint64 count,
                            const unsigned int* indices) const {
    if (!appendWords(record.streams[kIndices].data(), count, indices))
        _streams.refuse(describeAttribute(name));
}

void AttributeStore::listOmitted(const QString& name, VertexAttribute& record) const {
    const std::vector<quint32> none(std::min<quint64>(record.omitted, kBlock), kNoIndex);
    while (record.omitted != 0) {
        const quint64 count = std::min<quint64>(record.omitted, none.size());
        append(name, record, count, none.data());
        record.omitted -= count;
    }
}

void AttributeStore::addCorners(const CornerList* lists, std::size_t listCount, quint32 count) {
    if (_mergesCorners && merge(lists, listCount, count))
        return;
    if (_mergesCorners)
        unmerge();
    std::for_each(lists, lists + listCount, [&](const CornerList& list) { addOrOmit(list, count); });
}

bool AttributeStore::merge(const CornerList* lists, std::size_t listCount, quint32 count) {
    if (listCount == 0)
        return false;
    std::array<quint32*, MergePolicy::kMaxTuplePlaces> numbers{};
    std::transform(lists, lists + listCount, numbers.begin(),
                   [](const CornerList& list) { return list.indices; });
    if (!_merged) {
        QStringList names;
        std::transform(lists, lists + listCount, std::back_inserter(names),
                       [](const CornerList& list) { return *list.attribute; });
        const QSharedPointer<ModelDataStream> list = _streams.make(kGlUnsignedInt, 0);
        if (list.isNull() || list->type() != kGlUnsignedInt)
            return false;
        _merged = std::make_unique<MergedCorners>(names, list);
    }
    if (!_merged->add(numbers.data(), count, _records[*lists->attribute].valueCount(kValues)))
        return false;
    if (_merged->isRefused())
        _streams.refuse(describeAttribute(*lists->attribute));
    return true;
}

void AttributeStore::unmerge() {
    _mergesCorners = false;
    const std::unique_ptr<MergedCorners> merged = std::move(_merged);
    for (int i = 0; merged && i < merged->attributes().size(); ++i)
        merged->unmerge(i, [&](const quint32* numbers, quint64 count) {
            addIndices(merged->attributes()[i], count, numbers);
        });
}

void AttributeStore::addOrOmit(const CornerList& list, quint32 count) {
    VertexAttribute& record = _records[*list.attribute];
    const auto isNone = [](quint32 index) { return index == kNoIndex; };
    if (!std::all_of(list.indices, list.indices + count, isNone))
        return addIndices(*list.attribute, count, list.indices);
    // An attribute without any index would make the mesh incomplete.
    const quint32 listed = count != 0 && !hasIndices(record) ? 1 : 0;
    append(*list.attribute, record, listed, list.indices);
    record.omitted += count - listed;
}

bool AttributeStore::areIndicesBelow(const QString& name, quint32 cornerCount, quint32 limit) const {
    if (_merged)
        return _merged->areNumbersBelow(name, limit);
    const VertexAttribute record = _records.value(name);
    const WordView list = WordView::of(record.streams[kIndices].data());
    return list.count >= cornerCount && allBelow(list.words, cornerCount, limit);
}

WordView AttributeStore::listCorners(const QString& name, quint32 cornerCount) {
    if (_mergesCorners)
        unmerge();
    VertexAttribute& record = _records[name];
    listOmitted(name, record);
    const quint64 listed = WordView::of(record.streams[kIndices].data()).count;
    record.omitted = cornerCount - std::min<quint64>(listed, cornerCount);
    listOmitted(name, record);
    const WordView list = WordView::of(record.streams[kIndices].data());
    return list.count < cornerCount ? WordView() : list;
}

QStringList AttributeStore::names() const {
    QStringList names = _records.keys();
    std::sort(names.begin(), names.end());
    return names;
}

std::unique_ptr<MergedCorners> AttributeStore::takeMergedCorners() {
    return std::move(_merged);
}

QSharedPointer<ModelDataStream> AttributeStore::disposableList(quint32 cornerCount) const {
    if (_input == Input::Kept)
        return {};
    for (const VertexAttribute& record : _records) {
        const auto* const list = dynamic_cast<ModelDataArray*>(record.streams[kIndices].data());
        if (list != nullptr && list->type() == kGlUnsignedInt && list->size() == cornerCount)
            return record.streams[kIndices];
    }
    return {};
}

void AttributeStore::releaseValues(VertexAttribute& record) const {
    if (_input == Input::Consumed)
        record.streams[kValues].reset();
}

void AttributeStore::releaseIndices(VertexAttribute& record) const {
    if (_input == Input::Consumed)
        record.streams[kIndices].reset();
}

void AttributeStore::releaseAll() {
    if (_input == Input::Consumed)
        _records.clear();
}

} // namespace Atelier::Vel
