#include <algorithm>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include <QtCore/QMessageLogger>

#include <velmodel/modeldataarray.h>

#include "diagnostics.h"
#include "drawdata/preparation.h"
#include "geometry/merging/vertexmerging.h"
#include "glconstants.h"
#include "mesh/mergedcorners.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

/// The attributes of one merging, in order, and the streams that hold the result.
struct Preparation::StreamBuild {
    std::vector<QString> names;
    std::vector<QString> listOwners; ///< the attributes that own the index lists
    std::vector<VertexAttribute*> records;
    std::vector<CornerAttribute> attributes;
    std::vector<QSharedPointer<ModelDataStream>> results;
};

namespace {

/// The values of an attribute, without indices. `valueCount` is 0 if the stream holds no complete value or
/// values have no bytes.
CornerAttribute valuesOf(ModelDataStream* stream, qint32 components) {
    CornerAttribute attribute;
    const ByteView view = ByteView::of(stream);
    attribute.values = view.bytes;
    if (components > 0)
        attribute.stride = ModelDataStream::typeSize(stream->type()) * static_cast<quint64>(components);
    if (attribute.stride != 0)
        attribute.valueCount =
            std::min<quint64>(view.count / attribute.stride, std::numeric_limits<quint32>::max());
    return attribute;
}

/// The memory to which the merging writes the vertex of each corner. This is the memory of an index stream,
/// or separate memory if a client made that stream with a narrower type, so that it cannot hold all entries.
class CornerTarget {
public:
    CornerTarget(ModelDataStream* stream, quint32 cornerCount)
        : _stream(WordView::of(stream)),
          _beside(_stream.count < cornerCount ? quint64{cornerCount} * sizeof(quint32) : 0),
          _entries(_stream.count < cornerCount ? _beside.as<quint32>() : _stream.words) {}

    quint32* entries() const { return _entries; }
    /// Copies entries from separate memory to the stream, up to its capacity.
    void finish() const {
        if (_entries != _stream.words)
            std::copy_n(_entries, _stream.count, _stream.words);
    }

private:
    WordView _stream;
    ScratchBlock _beside;
    quint32* _entries;
};

/// The number of distinct tuples of value numbers among the corners. Merges vertices whose values are the
/// value numbers.
quint32 countTuples(const std::vector<CornerAttribute>& attributes, quint32 cornerCount,
                    const MergeOptions& options) {
    const quint64 count = cornerCount;
    const ScratchBlock scratch((attributes.size() + 1) * count * sizeof(quint32));
    auto* words = scratch.as<quint32>();
    std::vector<CornerAttribute> numbered(attributes.size());
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        numbered[i].values = reinterpret_cast<const unsigned char*>(words);
        numbered[i].indexCount = numbered[i].valueCount = count;
        numbered[i].stride = sizeof(quint32);
        for (quint64 corner = 0; corner < count; ++corner)
            *words++ = static_cast<quint32>(attributes[i].valueOf(corner));
    }
    return VertexMerging(numbered, cornerCount, words, options).vertexCount();
}

/// Whether an index stream has memory for fewer than `count` entries. Returns false for a stream of another
/// type, which is reported by an assertion instead.
bool lacksEntries(ModelDataStream& indices, quint32 count) {
    return indices.type() == kGlUnsignedInt && WordView::of(&indices).count < count;
}

} // namespace

void Preparation::buildGPUFriendlyStreams(bool mergeCorners, ProgressMeter& meter) {
    if (allHaveGPUStreams())
        return;
    _statistics = {};
    const quint32 cornerCount = _mesh.cornerCount();
    const std::unique_ptr<MergedCorners> merged = _mesh.attributes.takeMergedCorners();
    QSharedPointer<ModelDataStream> indices =
        merged ? merged->list() : _mesh.attributes.disposableList(cornerCount);
    const bool overwritesInput = !indices.isNull();
    if (!overwritesInput)
        indices = _mesh.streams.make(kGlUnsignedInt, cornerCount);
    if (indices.isNull())
        return reportMissingStream(QStringLiteral("the corner indices"));
    StreamBuild build = collectInput(cornerCount);
    const quint32 before =
        mergeCorners ? countTuples(build.attributes, cornerCount, {_hashSeed, {}, {}}) : cornerCount;

    meter.begin(LoadPhase::Merging, qint64{cornerCount} * (1 + static_cast<qint64>(build.names.size())));
    // Corners are merged directly. One vertex per corner, merged afterwards, gives the same vertices in the
    // same order.
    auto target = std::make_unique<CornerTarget>(indices.data(), cornerCount);
    const auto otherTarget = [&] {
        if (overwritesInput) {
            indices = _mesh.streams.make(kGlUnsignedInt, cornerCount);
            target = std::make_unique<CornerTarget>(indices.data(), cornerCount);
        }
        return target->entries();
    };
    const MergeOptions options{_hashSeed, meter.meter(cornerCount), {}};
    const VertexMerging merging =
        merged ? VertexMerging(build.attributes, merged->take(build.listOwners, build.attributes),
                               cornerCount, target->entries(), options)
               : VertexMerging(build.attributes, cornerCount, target->entries(), options, otherTarget);
    if (indices.isNull() || lacksEntries(*indices, cornerCount))
        return reportMissingStream(QStringLiteral("the corner indices"));
    target->finish();
    const quint64 substituted = warnAboutSubstitutes(build, merging);
    assertReduction(before, merging.vertexCount(), *indices);
    if (!merging.needsIndices())
        releaseIndexLists(build);
    if (!makeResults(build, merging, meter))
        return;
    adoptResults(build, indices);
    releaseIndexLists(build);
    for (VertexAttribute& record : _mesh.attributes.records())
        record.streams[kGPUIndices] = indices;
    _statistics.corners = cornerCount;
    _statistics.vertices = merging.vertexCount();
    _statistics.substitutedCorners = substituted;
    reportReduction(before, merging.vertexCount(), *indices);
}

void Preparation::optimizeGPUStreams(ProgressMeter& meter) {
    StreamBuild build;
    QSharedPointer<ModelDataStream> indices;
    quint64 vertexCount = 0;
    for (const QString& name : _mesh.attributes.names()) {
        VertexAttribute& record = _mesh.attributes[name];
        if (record.streams[kGPUValues].isNull() || record.streams[kGPUIndices].isNull())
            continue;
        indices = record.streams[kGPUIndices];
        build.names.push_back(name);
        build.records.push_back(&record);
        build.attributes.push_back(valuesOf(record.streams[kGPUValues].data(), record.components));
        // An attribute without bytes does not determine the vertex count.
        if (build.attributes.back().stride != 0)
            vertexCount = build.attributes.back().valueCount;
    }
    if (indices.isNull())
        return;
    for (CornerAttribute& attribute : build.attributes)
        attribute.indexCount = vertexCount;

    const ScratchBlock oldToNew(vertexCount * sizeof(quint32));
    const auto count = static_cast<qint64>(vertexCount);
    meter.begin(LoadPhase::Merging, count * (1 + static_cast<qint64>(build.names.size())));
    const VertexMerging merging(build.attributes, static_cast<quint32>(vertexCount), oldToNew.as<quint32>(),
                                {_hashSeed, meter.meter(count), {}});
    assertReduction(static_cast<qint64>(vertexCount), merging.vertexCount(), *indices);
    if (!makeResults(build, merging, meter))
        return;
    const WordView entries = WordView::of(indices.data());
    for (quint32* entry = entries.words; entry != entries.words + entries.count; ++entry)
        if (*entry < vertexCount)
            *entry = oldToNew.as<quint32>()[*entry];
    adoptResults(build, indices);
    reportReduction(static_cast<qint64>(vertexCount), merging.vertexCount(), *indices);
}

bool Preparation::allHaveGPUStreams() const {
    const QHash<QString, VertexAttribute>& records = _mesh.attributes.records();
    return std::all_of(records.begin(), records.end(), [](const VertexAttribute& record) {
        return !record.streams[kGPUValues].isNull() && !record.streams[kGPUIndices].isNull();
    });
}

Preparation::StreamBuild Preparation::collectInput(quint32 cornerCount) {
    StreamBuild build;
    // The first of several attributes with the same number of values is the key of a merging. The owner of a
    // list, such as the positions, separates vertices better than an attribute that shares it.
    QStringList names = _mesh.attributes.names();
    std::stable_partition(names.begin(), names.end(),
                          [this](const QString& name) { return _mesh.attributes[name].listOwner.isNull(); });
    for (const QString& name : qAsConst(names)) {
        VertexAttribute& record = _mesh.attributes[name];
        record.streams[kGPUValues].reset();
        record.streams[kGPUIndices].reset();
        if (record.streams[kValues].isNull())
            continue;
        CornerAttribute attribute = valuesOf(record.streams[kValues].data(), record.components);
        const WordView indices = WordView::of(record.streams[kIndices].data());
        attribute.indices = indices.words;
        attribute.indexCount = std::min<quint64>(indices.count, cornerCount);
        build.names.push_back(name);
        build.listOwners.push_back(record.listOwner.isNull() ? name : record.listOwner);
        build.records.push_back(&record);
        build.attributes.push_back(attribute);
    }
    return build;
}

quint64 Preparation::warnAboutSubstitutes(const StreamBuild& build, const VertexMerging& merging) {
    quint64 total = 0;
    for (std::size_t i = 0; i < build.attributes.size(); ++i) {
        const quint64 count = merging.substitutedCorners(i);
        total += count;
        if (count == 1)
            QMessageLogger().warning(
                "1 corner has no valid index into vertex attribute '%s' and takes a value of zeros",
                qPrintable(build.names[i]));
        else if (count != 0)
            QMessageLogger().warning(
                "%llu corners have no valid index into vertex attribute '%s' and take a value of zeros",
                count, qPrintable(build.names[i]));
    }
    return total;
}

bool Preparation::makeResults(StreamBuild& build, const VertexMerging& merging, ProgressMeter& meter) const {
    const qint64 corners = meter.total() / (1 + static_cast<qint64>(build.names.size()));
    for (std::size_t i = 0; i < build.records.size(); ++i) {
        const VertexAttribute& record = *build.records[i];
        const bool isInput = record.streams[kGPUValues].isNull();
        const unsigned int type = record.streams[isInput ? kValues : kGPUValues]->type();
        const quint64 components = static_cast<quint64>(std::max(record.components, 0));
        const QSharedPointer<ModelDataStream> result =
            _mesh.streams.make(type, components * merging.vertexCount());
        const ByteView bytes = ByteView::of(result.data());
        const quint64 stride = build.attributes[i].stride;
        if (result.isNull() || result->type() != type || bytes.count < stride * merging.vertexCount()) {
            reportMissingStream(describeAttribute(build.names[i]));
            return false;
        }
        if (bytes.count != 0)
            merging.gather(i, bytes.bytes, meter.meter(corners, merging.vertexCount()));
        _mesh.attributes.releaseValues(*build.records[i]);
        build.results.push_back(result);
    }
    return true;
}

void Preparation::releaseIndexLists(const StreamBuild& build) const {
    for (VertexAttribute* record : build.records)
        _mesh.attributes.releaseIndices(*record);
}

void Preparation::adoptResults(StreamBuild& build, const QSharedPointer<ModelDataStream>& indices) {
    for (std::size_t i = 0; i < build.records.size(); ++i) {
        build.records[i]->streams[kGPUValues] = build.results[i];
        build.records[i]->streams[kGPUIndices] = indices;
    }
}

void Preparation::assertReduction(qint64 before, qint64 after, const ModelDataStream& indices) {
    if (after > before)
        reportAssertion(QStringLiteral("newVertexCount <= vertexCount"),
                        QStringLiteral("%1 <= %2").arg(after).arg(before), 804);
    if (indices.type() != kGlUnsignedInt)
        reportAssertion(QStringLiteral("oldIndices->type() == GL_UNSIGNED_INT"),
                        QString::asprintf("Index not uint32 0x%X", indices.type()), 848);
}

void Preparation::reportReduction(qint64 before, qint64 after, const ModelDataStream& indices) const {
    QMessageLogger().debug("%p Vertices Map %8lld -> %8lld d %8lld (%3lld %%) %llu",
                           static_cast<const void*>(_owner), before, after, before - after,
                           before == 0 ? 0 : after * 100 / before, ModelDataStream::typeSize(indices.type()));
}

} // namespace Atelier::Vel
