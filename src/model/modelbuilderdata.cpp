#include "modelbuilderdata.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <numeric>
#include <utility>

#include <QtCore/QMessageLogger>

#include <velgl/sharedpointer.h>
#include <velmodel/modeldataarray.h>

#include "diagnostics.h"
#include "drawdata/drawdatacontent.h"
#include "drawdata/facecutter.h"
#include "drawdata/overwritingstream.h"
#include "geometry/normals.h"
#include "mesh/mergedcorners.h"
#include "streams/streamrequest.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

namespace {

constexpr unsigned int kFloat = 0x1406; // GL_FLOAT

QString describeAttribute(const QString& name) {
    return QStringLiteral("vertex attribute '%1'").arg(name);
}

/// False when the stream did not take the data. A null stream takes nothing and loses nothing.
bool appendIfThere(ModelDataStream* stream, quint64 count, const void* data, quint64 elementSize) {
    return stream == nullptr || count == 0 || appendTo(*stream, count, data, elementSize);
}

bool appendWords(ModelDataStream* stream, quint64 count, const unsigned int* words) {
    return appendIfThere(stream, count, words, sizeof *words);
}

/// Walking a hash gives another order in every process; what can be seen from outside has to keep one.
template<typename List>
List sorted(List list) {
    std::sort(list.begin(), list.end());
    return list;
}

} // namespace

ModelBuilder::Data::Data(const ModelBuilder* owner, QSharedPointer<ModelDataStreamAllocator> allocator,
                         quint64 materialFlagsMask)
    : _owner(owner), _allocator(std::move(allocator)), _materialFlagsMask(materialFlagsMask) {
    if (_allocator.isNull())
        _allocator = shared<ModelDataStreamAllocator>(std::make_unique<ModelDataArrayAllocator>());
    _verticesPerFace = makeStream(kIndexType, 0);
    _gpuIndices = makeStream(kIndexType, 0);
}

ModelBuilder::Data::~Data() = default;

void ModelBuilder::Data::clear() {
    _materialGroups.clear();
    _verticesPerFace = makeStream(kIndexType, 0);
    _vertexAttributes.clear();
    _normalsAttributeName.clear();
    _gpuIndices = makeStream(kIndexType, 0);
    _drawCommands.clear();
    _drawGroupNames.clear();
    _statistics = {};
    _refusedStreams.clear();
}

bool ModelBuilder::Data::isValid() const {
    if (_materialGroups.isEmpty() || !hasFaces() || _vertexAttributes.isEmpty())
        return false;
    return std::all_of(_vertexAttributes.begin(), _vertexAttributes.end(),
                       [this](const VertexAttribute& record) {
                           ModelDataStream* const values = record.streams[kValues].data();
                           return values == nullptr || (!isEmpty(values) && hasIndices(record));
                       });
}

bool ModelBuilder::Data::hasIndices(const VertexAttribute& record) const {
    return !isEmpty(_mergedCorners ? _mergedCorners->list().data() : record.streams[kIndices].data());
}

void ModelBuilder::Data::createMaterialGroup(const QString& name, const InstanceData& material, int id,
                                             quint64 flags) {
    const int groupCount = _materialGroups.size();
    MaterialGroup& group = _materialGroups[name];
    group.material = material;
    group.id = id < 0 ? groupCount : id;
    group.flags = flags;
    group.whiteMaps = WhiteMaps();
    group.objectName = QString();
    group.faces = GroupFaces();
    if (_keepsInput)
        group.faces.setStream(makeStream(kIndexType, 0));
}

bool ModelBuilder::Data::addFacesToMaterialGroup(const QString& name, quint64 count,
                                                 const unsigned int* faces, const QString& objectName) {
    const auto group = _materialGroups.find(name);
    if (group == _materialGroups.end())
        return false;
    if (group->objectName.isNull())
        group->objectName = objectName;
    if (group->objectName != objectName)
        QMessageLogger().warning("adding object '%s'' to material group for object '%s'",
                                 objectName.toLocal8Bit().constData(),
                                 group->objectName.toLocal8Bit().constData());
    if (!appendWords(group->faces.others().stream.data(), count, faces))
        refuse(QStringLiteral("material group '%1'").arg(name));
    return true;
}

void ModelBuilder::Data::createVertexAttribute(const QString& name, int components, unsigned int type,
                                               quint64 valueCount, quint64 indexCount) {
    if (_mergedCorners)
        listCorners();
    VertexAttribute& record = _vertexAttributes[name];
    record = VertexAttribute();
    record.streams[kValues] = makeStream(type, valueCount);
    record.streams[kIndices] = makeStream(kIndexType, indexCount);
    record.components = components;
    const bool isWithoutValues =
        record.streams[kValues].isNull() && !ModelDataArray::canHold(type, valueCount);
    const bool isWithoutIndices =
        record.streams[kIndices].isNull() && !ModelDataArray::canHold(kIndexType, indexCount);
    if (isWithoutValues || isWithoutIndices)
        refuse(describeAttribute(name));
}

void ModelBuilder::Data::addValuesToVertexAttribute(const QString& name, quint64 count, const void* values,
                                                    unsigned int type) {
    const auto record = _vertexAttributes.find(name);
    if (record == _vertexAttributes.end())
        return;
    ModelDataStream* const stream = record->streams[kValues].data();
    if (stream != nullptr && stream->type() == type &&
        !appendIfThere(stream, count, values, ModelDataStream::typeSize(type)))
        refuse(describeAttribute(name));
}

void ModelBuilder::Data::addIndicesToVertexAttribute(const QString& name, quint64 count,
                                                     const unsigned int* indices) {
    const auto record = _vertexAttributes.find(name);
    if (record == _vertexAttributes.end())
        return;
    if (!_listsCorners)
        listCorners();
    if (!appendWords(record->streams[kIndices].data(), count, indices))
        refuse(describeAttribute(name));
}

bool ModelBuilder::Data::addCorners(const CornerList* lists, std::size_t listCount, quint32 count) {
    if (_listsCorners)
        return false;
    std::array<quint32*, TupleNumbering::kMostPlaces> numbers{};
    std::transform(lists, lists + listCount, numbers.begin(),
                   [](const CornerList& list) { return list.indices; });
    if (!_mergedCorners) {
        QStringList names;
        std::transform(lists, lists + listCount, std::back_inserter(names),
                       [](const CornerList& list) { return *list.attribute; });
        const QSharedPointer<ModelDataStream> list = makeStream(kIndexType, 0);
        if (!list.isNull() && list->type() == kIndexType)
            _mergedCorners = std::make_unique<MergedCorners>(names, list);
    }
    const quint64 values = _vertexAttributes[*lists->attribute].valueCount(kValues);
    if (!_mergedCorners || !_mergedCorners->add(numbers.data(), count, values)) {
        listCorners();
        return false;
    }
    if (_mergedCorners->isRefused())
        refuse(describeAttribute(*lists->attribute));
    return true;
}

void ModelBuilder::Data::listCorners() {
    _listsCorners = true;
    const std::unique_ptr<MergedCorners> merged = std::move(_mergedCorners);
    for (int i = 0; merged && i < merged->attributes().size(); ++i)
        merged->unmerge(i, [&](const quint32* numbers, quint64 count) {
            addIndicesToVertexAttribute(merged->attributes()[i], count, numbers);
        });
}

bool ModelBuilder::Data::addFaceRun(const QString& name, unsigned int first, unsigned int count) {
    const auto group = _materialGroups.find(name);
    if (group == _materialGroups.end())
        return false;
    group->faces.addRun(first, count);
    return true;
}

const ModelBuilder::Data::GroupFaces::More& ModelBuilder::Data::GroupFaces::others() const {
    static const More none;
    return more ? *more : none;
}

void ModelBuilder::Data::GroupFaces::addRun(unsigned int firstAdded, unsigned int countAdded) {
    if (count != 0 && firstAdded == first + count) {
        count += countAdded;
        return;
    }
    if (count != 0) {
        if (!more)
            more = new More;
        std::vector<unsigned int>& before = more->before;
        before.push_back(first);
        if (count > 1)
            before.push_back((count - 1) | kFollow);
    }
    first = firstAdded;
    count = countAdded;
}

void ModelBuilder::Data::GroupFaces::setStream(const QSharedPointer<ModelDataStream>& stream) {
    if (!more)
        more = new More;
    more->stream = stream;
}

void ModelBuilder::Data::addVertexCountsToFaces(quint64 count, const unsigned int* counts) {
    if (count == 0)
        return;
    if (_uniformFaces) {
        const unsigned int corners = _uniformFaces->count == 0 ? counts[0] : _uniformFaces->corners;
        const auto isOther = [corners](unsigned int other) { return other != corners; };
        if (corners != 0 && std::none_of(counts, counts + count, isOther)) {
            _uniformFaces->corners = corners;
            _uniformFaces->count += count;
            return;
        }
        listFaceCounts();
    }
    if (!appendWords(_verticesPerFace.data(), count, counts))
        refuse(QStringLiteral("the faces"));
}

void ModelBuilder::Data::listFaceCounts() {
    const std::unique_ptr<UniformFaces> faces = std::move(_uniformFaces);
    const std::vector<unsigned int> counts(std::min<quint64>(faces->count, 4096), faces->corners);
    for (quint64 left = faces->count; left != 0; left -= std::min<quint64>(left, counts.size()))
        addVertexCountsToFaces(std::min<quint64>(left, counts.size()), counts.data());
}

bool ModelBuilder::Data::hasFaces() const {
    return _uniformFaces ? _uniformFaces->count != 0 : !isEmpty(_verticesPerFace.data());
}

quint32 ModelBuilder::Data::cornerCount() const {
    if (_mergedCorners)
        return static_cast<quint32>(_mergedCorners->list()->size());
    if (_uniformFaces)
        return static_cast<quint32>(_uniformFaces->count * _uniformFaces->corners);
    const WordView counts = WordView::of(_verticesPerFace.data());
    return std::accumulate(counts.words, counts.words + counts.count, quint32{0});
}

DrawData ModelBuilder::Data::prepare(const QString& positionAttribute) {
    if (isEmpty(_gpuIndices.data()) && !prepareUpload(positionAttribute))
        return {};
    // Not those that the triangles were made of, or declared anew since.
    if (_vertexAttributes[positionAttribute].streams[kGPUValues].isNull()) {
        reportMissingStream(describeAttribute(positionAttribute));
        return {};
    }
    return drawData(positionAttribute);
}

DrawData ModelBuilder::Data::drawData(const QString& positionAttribute) {
    auto content = std::make_shared<DrawDataContent>();
    content->allocator = _allocator;
    content->indices = _gpuIndices;
    content->indexWords = WordView::of(_gpuIndices.data());
    for (const QString& name : attributeNames()) {
        const VertexAttribute& record = _vertexAttributes[name];
        if (record.streams[kGPUValues].isNull())
            continue;
        if (name == positionAttribute)
            content->position = static_cast<int>(content->attributes.size());
        content->attributes.emplace_back(name, record.components, record.streams[kGPUValues]);
    }
    content->vertexCount = _vertexAttributes[positionAttribute].valueCount(kGPUValues);
    if (!_keepsInput) {
        _vertexAttributes.clear();
        _gpuIndices.reset();
    }
    for (const quint64 drawKey : sorted(_drawCommands.keys()))
        content->drawables.push_back(drawable(drawKey));
    if (!_keepsInput)
        _materialGroups.clear(); // its table, too: groups may be many
    return DrawDataAccess::make(std::move(content));
}

DrawDataContent::Drawable ModelBuilder::Data::drawable(quint64 drawKey) {
    DrawDataContent::Drawable result;
    result.key = drawKey;
    result.commands = _keepsInput ? _drawCommands.value(drawKey) : _drawCommands.take(drawKey);
    result.names = _keepsInput ? _drawGroupNames.value(drawKey) : _drawGroupNames.take(drawKey);
    result.ids.reserve(result.names.size());
    result.materials.reserve(result.names.size());
    for (int command = 0; command < result.names.size(); ++command) {
        const auto group = _materialGroups.constFind(result.names[command]);
        const bool isThere = group != _materialGroups.constEnd();
        result.ids.append(isThere ? group->id : 0);
        result.materials.append(isThere ? group->material : InstanceData());
        if (isThere && !group->objectName.isNull())
            result.objectNames.append({command, group->objectName});
        if (isThere && !group->whiteMaps.isEmpty())
            result.whites.append({command, group->whiteMaps});
        if (isThere && !_keepsInput)
            _materialGroups.erase(group);
    }
    return result;
}

quint64 ModelBuilder::Data::VertexAttribute::valueCount(StreamSlot slot) const {
    if (components < 1 || streams[slot].isNull())
        return 0;
    return streams[slot]->size() / static_cast<quint64>(components);
}

bool ModelBuilder::Data::prepareUpload(const QString& positionAttribute) {
    // A preparation that gave no triangle is followed by another one.
    _statistics.untriangulatedFaces = 0;
    buildGPUFriendlyStreams(false);
    for (const VertexAttribute& record : qAsConst(_vertexAttributes))
        if (!record.streams[kValues].isNull() && record.streams[kGPUValues].isNull())
            return false;
    // A copy: the table may grow below.
    const VertexAttribute position = _vertexAttributes.value(positionAttribute);
    if (position.streams[kGPUValues].isNull()) {
        reportMissingStream(describeAttribute(positionAttribute));
        return false;
    }
    if (_gpuIndices.isNull())
        _gpuIndices = makeStream(kIndexType, 0);
    if (_gpuIndices.isNull()) {
        reportMissingStream(QStringLiteral("the triangle indices"));
        return false;
    }
    prepareMaterialGroups(position);
    return !_gpuIndices.isNull() && (_normalsAttributeName.isNull() || makeNormals(position));
}

void ModelBuilder::Data::prepareMaterialGroups(const VertexAttribute& position) {
    const WordView counts = WordView::of(_verticesPerFace.data());
    QVector<unsigned int> faceStarts(static_cast<int>(counts.count));
    std::exclusive_scan(counts.words, counts.words + counts.count, faceStarts.begin(), quint32{0});
    _faceCutter = std::make_unique<FaceCutter>(
        _uniformFaces ? FaceCutter::mostIndices(*_uniformFaces) : FaceCutter::mostIndices(counts), _cutMeter);
    const std::vector<GroupEntry> groups = groupsInOrder();
    const QSharedPointer<ModelDataStream>& corners = position.streams[kGPUIndices];
    _overwritesCorners = trianglesFollowCorners(groups);
    for (const GroupEntry& group : groups) {
        if (!_gpuIndices.isNull() &&
            (!isEmpty(group->faces.others().stream.data()) || group->faces.count != 0))
            prepareMaterialGroupForUpload(group.key(), *group, position.streams[kGPUValues], corners,
                                          faceStarts);
        if (!_keepsInput)
            group->faces = GroupFaces(); // in this order, which is that of making, it costs least
    }
    _faceCutter.reset();
}

bool ModelBuilder::Data::trianglesFollowCorners(const std::vector<GroupEntry>& groups) const {
    if (_keepsInput || !_uniformFaces || _uniformFaces->corners > 3)
        return false;
    quint64 next = 0;
    return std::all_of(groups.begin(), groups.end(), [&next](const GroupEntry& group) {
        const GroupFaces& faces = group->faces;
        const bool follows = faces.count == 0 || (faces.others().before.empty() && faces.first >= next);
        next = std::max(next, quint64{faces.first} + faces.count);
        return follows;
    });
}

QSharedPointer<ModelDataStream>
ModelBuilder::Data::makeTriangleStream(const QSharedPointer<ModelDataStream>& corners) const {
    if (_overwritesCorners)
        return shared<ModelDataStream>(std::make_unique<OverwritingStream>(corners));
    return makeStream(kIndexType, 0);
}

void ModelBuilder::Data::abandonPreparation() {
    _gpuIndices.reset();
    _drawCommands.clear();
    _drawGroupNames.clear();
    _statistics.triangles = 0;
    _statistics.untriangulatedFaces = 0;
}

bool ModelBuilder::Data::makeNormals(const VertexAttribute& position) {
    const quint64 vertexCount = position.valueCount(kGPUValues);
    const QSharedPointer<ModelDataStream> values = makeStream(kFloat, vertexCount * 3);
    const ByteView normals = ByteView::of(values.data());
    if (values.isNull() || values->type() != kFloat || normals.count < vertexCount * 3 * sizeof(float)) {
        abandonPreparation();
        reportMissingStream(describeAttribute(_normalsAttributeName));
        return false;
    }
    const ByteView positions = ByteView::of(position.streams[kGPUValues].data());
    const WordView indices = WordView::of(_gpuIndices.data());
    generateVertexNormals(reinterpret_cast<const float*>(positions.bytes), positions.count / sizeof(float),
                          indices.words, indices.count, static_cast<quint32>(vertexCount),
                          reinterpret_cast<float*>(normals.bytes));
    VertexAttribute& record = _vertexAttributes[_normalsAttributeName];
    record.streams[kGPUValues] = values;
    record.streams[kGPUIndices] = position.streams[kGPUIndices];
    record.components = 3;
    return true;
}

QSharedPointer<ModelDataStream> ModelBuilder::Data::makeStream(unsigned int type, quint64 count) const {
    return requestStream(*_allocator, type, count);
}

void ModelBuilder::Data::refuse(const QString& purpose) {
    if (_refusedStreams.contains(purpose))
        return;
    _refusedStreams.append(purpose);
    reportRefusedData(purpose);
}

QStringList ModelBuilder::Data::attributeNames() const {
    return sorted(QStringList(_vertexAttributes.keys()));
}

std::vector<ModelBuilder::Data::GroupEntry> ModelBuilder::Data::groupsInOrder() {
    std::vector<GroupEntry> groups;
    groups.reserve(static_cast<std::size_t>(_materialGroups.size()));
    for (auto group = _materialGroups.begin(); group != _materialGroups.end(); ++group)
        groups.push_back(group);
    std::sort(groups.begin(), groups.end(), [](const GroupEntry& a, const GroupEntry& b) {
        return a->id != b->id ? a->id < b->id : a.key() < b.key();
    });
    return groups;
}

} // namespace Atelier::Vel
