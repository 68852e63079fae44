#include <velmodel/modelbuilder.h>

#include <utility>

#include <velgl/opengldevicecontext.h>
#include <velgl/texturetoken.h>

#include "builder/modelbuilderdata.h"
#include "upload/instanceplans.h"
#include "upload/modelupload.h"

namespace Atelier::Vel {

namespace {

// These are constructed in this order when the library is loaded.
[[maybe_unused]] const TextureToken builderToken;
[[maybe_unused]] const QString planarTag = QStringLiteral("[PLANAR]");
[[maybe_unused]] const bool isInstanceInfoRegistered = (registerInstanceInfoPlan(), true);

} // namespace

ModelBuilder::ModelBuilder(QSharedPointer<ModelDataStreamAllocator> allocator, quint64 materialFlagsMask)
    : _data(std::make_unique<Data>(this, std::move(allocator), materialFlagsMask)) {}

ModelBuilder::~ModelBuilder() = default;

void ModelBuilder::clear() {
    _data->mesh.clear();
    _data->preparation.clear();
}

bool ModelBuilder::isValid() const {
    return _data->mesh.isComplete();
}

bool ModelBuilder::hasMaterialGroup(const QString& name) const {
    return _data->mesh.groups.contains(name);
}

void ModelBuilder::createMaterialGroup(const QString& name, const InstanceData& material, int id,
                                       quint64 flags) {
    _data->mesh.groups.create(name, material, id, flags);
}

int ModelBuilder::materialGroupId(const QString& name) const {
    const MaterialGroup* const group = _data->mesh.groups.find(name);
    return group == nullptr ? -1 : group->id;
}

quint64 ModelBuilder::materialGroupFlags(const QString& name) const {
    const MaterialGroup* const group = _data->mesh.groups.find(name);
    return group == nullptr ? 0 : group->flags;
}

bool ModelBuilder::addFacesToMaterialGroup(const QString& name, quint64 count, const unsigned int* faces,
                                           const QString& objectName) {
    return _data->mesh.groups.addFaces(name, count, faces, objectName);
}

bool ModelBuilder::hasVertexAttribute(const QString& name) const {
    return _data->mesh.attributes.contains(name);
}

void ModelBuilder::createVertexAttribute(const QString& name, int components, unsigned int type,
                                         quint64 valueCount, quint64 indexCount) {
    _data->mesh.attributes.create(name, components, type, valueCount, indexCount);
}

void ModelBuilder::addValuesToVertexAttribute(const QString& name, quint64 count, const void* values,
                                              unsigned int type) {
    _data->mesh.attributes.addValues(name, count, values, type);
}

void ModelBuilder::addIndicesToVertexAttribute(const QString& name, quint64 count,
                                               const unsigned int* indices) {
    _data->mesh.attributes.addIndices(name, count, indices);
}

void ModelBuilder::addVertexCountsToFaces(quint64 count, const unsigned int* counts) {
    _data->mesh.faces.add(count, counts);
}

void ModelBuilder::generateNormals(const QString& name) {
    _data->mesh.normalsAttribute = name;
}

void ModelBuilder::removeUnusedVertices() {}

void ModelBuilder::removeDuplicateVertices() {}

DrawData ModelBuilder::prepare(const QString& positionAttribute, const LoadProgress& progress) {
    if (!isValid() || !hasVertexAttribute(positionAttribute))
        return {};
    try {
        ProgressMeter meter(progress);
        return _data->preparation.prepare(positionAttribute, meter);
    } catch (const Cancelled&) {
        return {};
    }
}

void ModelBuilder::upload(GPUModel* model, const InstanceData& instanceData, const QString& positionAttribute,
                          const QString& groupIdMember, unsigned int usage, unsigned int primitiveType) {
    if (model == nullptr || !isValid() || !hasVertexAttribute(positionAttribute))
        return;
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    if (!context.isNull())
        uploadTo(*context, prepare(positionAttribute), *model,
                 {instanceData, groupIdMember, usage, primitiveType});
}

const ModelBuilder::Statistics& ModelBuilder::statistics() const {
    return _data->preparation.statistics();
}

const QStringList& ModelBuilder::refusedStreams() const {
    return _data->mesh.streams.refused();
}

} // namespace Atelier::Vel
