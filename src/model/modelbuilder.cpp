#include <velmodel/modelbuilder.h>

#include <utility>

#include <velgl/opengldevicecontext.h>
#include <velgl/texturetoken.h>

#include "modelbuilderdata.h"
#include "upload/instanceplans.h"
#include "upload/modelupload.h"

namespace Atelier::Vel {

namespace {

// Made in this order when the library is loaded.
[[maybe_unused]] const TextureToken builderToken;
[[maybe_unused]] const QString planarTag = QStringLiteral("[PLANAR]");
[[maybe_unused]] const bool isInstanceInfoRegistered = (registerInstanceInfoPlan(), true);

} // namespace

ModelBuilder::ModelBuilder(QSharedPointer<ModelDataStreamAllocator> allocator, quint64 materialFlagsMask)
    : _data(std::make_unique<Data>(this, std::move(allocator), materialFlagsMask)) {}

ModelBuilder::~ModelBuilder() = default;

void ModelBuilder::clear() {
    _data->clear();
}

bool ModelBuilder::isValid() const {
    return _data->isValid();
}

bool ModelBuilder::hasMaterialGroup(const QString& name) const {
    return _data->_materialGroups.contains(name);
}

void ModelBuilder::createMaterialGroup(const QString& name, const InstanceData& material, int id,
                                       quint64 flags) {
    _data->createMaterialGroup(name, material, id, flags);
}

int ModelBuilder::materialGroupId(const QString& name) const {
    const auto found = _data->_materialGroups.constFind(name);
    return found == _data->_materialGroups.constEnd() ? -1 : found->id;
}

quint64 ModelBuilder::materialGroupFlags(const QString& name) const {
    const auto found = _data->_materialGroups.constFind(name);
    return found == _data->_materialGroups.constEnd() ? 0 : found->flags;
}

bool ModelBuilder::addFacesToMaterialGroup(const QString& name, quint64 count, const unsigned int* faces,
                                           const QString& objectName) {
    return _data->addFacesToMaterialGroup(name, count, faces, objectName);
}

bool ModelBuilder::hasVertexAttribute(const QString& name) const {
    return _data->_vertexAttributes.contains(name);
}

void ModelBuilder::createVertexAttribute(const QString& name, int components, unsigned int type,
                                         quint64 valueCount, quint64 indexCount) {
    _data->createVertexAttribute(name, components, type, valueCount, indexCount);
}

void ModelBuilder::addValuesToVertexAttribute(const QString& name, quint64 count, const void* values,
                                              unsigned int type) {
    _data->addValuesToVertexAttribute(name, count, values, type);
}

void ModelBuilder::addIndicesToVertexAttribute(const QString& name, quint64 count,
                                               const unsigned int* indices) {
    _data->addIndicesToVertexAttribute(name, count, indices);
}

void ModelBuilder::addVertexCountsToFaces(quint64 count, const unsigned int* counts) {
    _data->addVertexCountsToFaces(count, counts);
}

void ModelBuilder::generateNormals(const QString& name) {
    _data->_normalsAttributeName = name;
}

void ModelBuilder::removeUnusedVertices() {}

void ModelBuilder::removeDuplicateVertices() {}

DrawData ModelBuilder::prepare(const QString& positionAttribute) {
    return isValid() && hasVertexAttribute(positionAttribute) ? _data->prepare(positionAttribute)
                                                              : DrawData();
}

void ModelBuilder::upload(GPUModel* model, const InstanceData& instanceData, const QString& positionAttribute,
                          const QString& groupIdMember, unsigned int usage, unsigned int primitiveType) {
    if (model == nullptr || !isValid() || !hasVertexAttribute(positionAttribute))
        return;
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    if (!context.isNull())
        uploadTo(*context, _data->prepare(positionAttribute), *model,
                 {instanceData, groupIdMember, usage, primitiveType});
}

const ModelBuilder::Statistics& ModelBuilder::statistics() const {
    return _data->_statistics;
}

const QStringList& ModelBuilder::refusedStreams() const {
    return _data->_refusedStreams;
}

} // namespace Atelier::Vel
