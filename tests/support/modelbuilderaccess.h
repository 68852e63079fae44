#pragma once

#include "modelbuilderdata.h"

namespace Atelier::Vel {

/// Lets tests look into a builder and run its private steps by themselves.
struct ModelBuilderAccess {
    using MaterialGroup = ModelBuilder::Data::MaterialGroup;
    using VertexAttribute = ModelBuilder::Data::VertexAttribute;
    static constexpr auto kValues = ModelBuilder::Data::kValues;
    static constexpr auto kIndices = ModelBuilder::Data::kIndices;
    static constexpr auto kGPUValues = ModelBuilder::Data::kGPUValues;
    static constexpr auto kGPUIndices = ModelBuilder::Data::kGPUIndices;

    explicit ModelBuilderAccess(ModelBuilder& builder) : data(*builder._data) {}

    QHash<QString, MaterialGroup>& groups() const { return data._materialGroups; }
    QHash<QString, VertexAttribute>& attributes() const { return data._vertexAttributes; }
    VertexAttribute& attribute(const char* name) const {
        return data._vertexAttributes[QString::fromLatin1(name)];
    }
    QSharedPointer<ModelDataStream>& verticesPerFace() const { return data._verticesPerFace; }
    QString& normalsAttributeName() const { return data._normalsAttributeName; }
    QSharedPointer<ModelDataStream>& gpuIndices() const { return data._gpuIndices; }
    QHash<quint64, QVector<DrawElementsIndirectCommand>>& drawCommands() const { return data._drawCommands; }
    QHash<quint64, QVector<QString>>& drawGroupNames() const { return data._drawGroupNames; }

    void buildGPUFriendlyStreams(bool mergeCorners) const { data.buildGPUFriendlyStreams(mergeCorners); }
    void optimizeGPUStreams() const { data.optimizeGPUStreams(); }
    static void assertReduction(qint64 before, qint64 after, const ModelDataStream& indices) {
        ModelBuilder::Data::assertReduction(before, after, indices);
    }
    void prepare(const QString& groupName, const QSharedPointer<ModelDataStream>& positions,
                 const QSharedPointer<ModelDataStream>& cornerIndices,
                 const QVector<unsigned int>& faceStarts) const {
        data.prepareMaterialGroupForUpload(groupName, data._materialGroups[groupName], positions,
                                           cornerIndices, faceStarts);
    }

    ModelBuilder::Data& data;
};

} // namespace Atelier::Vel
