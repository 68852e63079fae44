#include "drawdata/preparation.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <QtCore/QRandomGenerator>

#include "diagnostics.h"
#include "geometry/normals.h"
#include "geometry/smoothing/smoothnormals.h"
#include "glconstants.h"
#include "memory/scratchblock.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

Preparation::Preparation(Mesh& mesh, quint64 materialFlagsMask, const void* owner)
    : _mesh(mesh),
      _materialFlagsMask(materialFlagsMask),
      _owner(owner),
      _hashSeed(QRandomGenerator::system()->generate64()),
      _gpuIndices(mesh.streams.make(kGlUnsignedInt, 0)) {}

void Preparation::clear() {
    _gpuIndices = _mesh.streams.make(kGlUnsignedInt, 0);
    _drawCommands.clear();
    _drawGroupNames.clear();
    _statistics = {};
}

DrawData Preparation::prepare(const QString& positionAttribute, ProgressMeter& meter) {
    try {
        if (isEmpty(_gpuIndices.data()) && !prepareStreams(positionAttribute, meter))
            return {};
    } catch (...) {
        abandon();
        throw;
    }
    // The attribute may differ from that of the previous call, or it may have been declared again since.
    if (_mesh.attributes[positionAttribute].streams[kGPUValues].isNull()) {
        reportMissingStream(describeAttribute(positionAttribute));
        return {};
    }
    return drawData(positionAttribute);
}

bool Preparation::prepareStreams(const QString& positionAttribute, ProgressMeter& meter) {
    // This may not be the first preparation: one without any triangle is repeated.
    _statistics.untriangulatedFaces = 0;
    buildGPUFriendlyStreams(false, meter);
    for (const VertexAttribute& record : qAsConst(_mesh.attributes.records()))
        if (!record.streams[kValues].isNull() && record.streams[kGPUValues].isNull())
            return false;
    // A copy, because makeNormals() may add an attribute and so invalidate references.
    const VertexAttribute position = _mesh.attributes.records().value(positionAttribute);
    if (position.streams[kGPUValues].isNull()) {
        reportMissingStream(describeAttribute(positionAttribute));
        return false;
    }
    if (_gpuIndices.isNull())
        _gpuIndices = _mesh.streams.make(kGlUnsignedInt, 0);
    if (_gpuIndices.isNull()) {
        reportMissingStream(QStringLiteral("the triangle indices"));
        return false;
    }
    prepareMaterialGroups(position, meter);
    return !_gpuIndices.isNull() && (_mesh.normalsAttribute.isNull() || makeNormals(position, meter));
}

void Preparation::abandon() {
    _gpuIndices.reset();
    _drawCommands.clear();
    _drawGroupNames.clear();
    _statistics.triangles = 0;
    _statistics.untriangulatedFaces = 0;
}

bool Preparation::makeNormals(const VertexAttribute& position, ProgressMeter& meter) {
    if (_mesh.generatedNormals.onlyMissing)
        return completeNormals(position, meter);
    const quint64 vertexCount = position.valueCount(kGPUValues);
    const QSharedPointer<ModelDataStream> values = _mesh.streams.make(kGlFloat, vertexCount * 3);
    const ByteView normals = ByteView::of(values.data());
    if (values.isNull() || values->type() != kGlFloat || normals.count < vertexCount * 3 * sizeof(float)) {
        abandon();
        reportMissingStream(describeAttribute(_mesh.normalsAttribute));
        return false;
    }
    generateNormals(position, reinterpret_cast<float*>(normals.bytes), meter);
    VertexAttribute& record = _mesh.attributes[_mesh.normalsAttribute];
    record.streams[kGPUValues] = values;
    record.streams[kGPUIndices] = position.streams[kGPUIndices];
    record.components = 3;
    return true;
}

bool Preparation::completeNormals(const VertexAttribute& position, ProgressMeter& meter) {
    const ByteView bytes = ByteView::of(_mesh.attributes[_mesh.normalsAttribute].streams[kGPUValues].data());
    const quint64 vertexCount = position.valueCount(kGPUValues);
    const ScratchBlock generated(vertexCount * 3 * sizeof(float), ScratchBlock::Content::Unspecified);
    generateNormals(position, generated.as<float>(), meter);
    auto* const normals = reinterpret_cast<quint32*>(bytes.bytes);
    for (quint64 i = 0; i < std::min(vertexCount * 3, bytes.count / sizeof(float)); i += 3)
        if (isMissingNormal(normals + i))
            std::copy_n(generated.as<quint32>() + i, 3, normals + i);
    return true;
}

void Preparation::generateNormals(const VertexAttribute& position, float* normals,
                                  ProgressMeter& meter) const {
    const ByteView positions = ByteView::of(position.streams[kGPUValues].data());
    const WordView indices = WordView::of(_gpuIndices.data());
    const auto vertexCount = static_cast<quint32>(position.valueCount(kGPUValues));
    const TriangleList list = {reinterpret_cast<const float*>(positions.bytes),
                               positions.count / sizeof(float), indices.words, indices.count, vertexCount};
    const auto triangles = static_cast<qint64>(indices.count / 3);
    const GeneratedNormals& options = _mesh.generatedNormals;
    meter.begin(LoadPhase::MakingNormals, options.sharePositions ? triangles + vertexCount : triangles);
    if (options.sharePositions)
        generateSmoothNormals(list, normals, {_hashSeed, meter.meter(vertexCount), {}},
                              meter.meter(triangles));
    else
        generateVertexNormals(list.positions, list.positionFloats, list.indices, list.indexCount, vertexCount,
                              normals, meter.meter(triangles));
    // Zero minus zero, unlike minus zero, is positive.
    if (options.outward)
        std::transform(normals, normals + quint64{vertexCount} * 3, normals,
                       [](float value) { return 0.0F - value; });
}

DrawData Preparation::drawData(const QString& positionAttribute) {
    auto content = std::make_shared<DrawDataContent>();
    content->allocator = _mesh.streams.allocator();
    content->indices = _gpuIndices;
    content->indexWords = WordView::of(_gpuIndices.data());
    for (const QString& name : _mesh.attributes.names()) {
        const VertexAttribute& record = _mesh.attributes[name];
        if (record.streams[kGPUValues].isNull())
            continue;
        if (name == positionAttribute)
            content->position = static_cast<int>(content->attributes.size());
        content->attributes.emplace_back(name, record.components, record.streams[kGPUValues]);
    }
    content->vertexCount = _mesh.attributes[positionAttribute].valueCount(kGPUValues);
    _mesh.attributes.releaseAll();
    QList<quint64> drawKeys = _drawCommands.keys();
    std::sort(drawKeys.begin(), drawKeys.end());
    for (const quint64 drawKey : qAsConst(drawKeys))
        content->drawables.push_back(drawable(drawKey));
    _mesh.groups.releaseAll();
    return DrawDataAccess::make(std::move(content));
}

DrawDataContent::Drawable Preparation::drawable(quint64 drawKey) {
    DrawDataContent::Drawable result;
    result.key = drawKey;
    result.commands = _drawCommands.value(drawKey);
    const QVector<QString> keys = _drawGroupNames.value(drawKey);
    result.names.reserve(keys.size());
    result.ids.reserve(keys.size());
    result.materials.reserve(keys.size());
    for (int command = 0; command < keys.size(); ++command) {
        const MaterialGroup group = _mesh.groups.handOver(keys[command]);
        result.names.append(group.name);
        result.ids.append(group.id);
        result.materials.append(group.material);
        if (!group.objectName.isNull())
            result.objectNames.append({command, group.objectName});
        if (!group.whiteMaps.isEmpty())
            result.whites.append({command, group.whiteMaps});
    }
    return result;
}

} // namespace Atelier::Vel
