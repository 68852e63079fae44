#pragma once

#include <velmodel/modelbuilder.h>

namespace Atelier::Vel {

/// Lets tests look into a builder and run its private steps by themselves.
struct ModelBuilderAccess {
    using MaterialGroup = ModelBuilder::MaterialGroup;
    using VertexAttribute = ModelBuilder::VertexAttribute;
    static constexpr auto kValues = ModelBuilder::kValues;
    static constexpr auto kIndices = ModelBuilder::kIndices;
    static constexpr auto kGPUValues = ModelBuilder::kGPUValues;
    static constexpr auto kGPUIndices = ModelBuilder::kGPUIndices;

    explicit ModelBuilderAccess(ModelBuilder& accessed) : builder(accessed) {}

    QHash<QString, MaterialGroup>& groups() const { return builder._materialGroups; }
    QHash<QString, VertexAttribute>& attributes() const { return builder._vertexAttributes; }
    VertexAttribute& attribute(const char* name) const {
        return builder._vertexAttributes[QString::fromLatin1(name)];
    }
    QSharedPointer<ModelDataStream>& verticesPerFace() const { return builder._verticesPerFace; }
    QString& normalsAttributeName() const { return builder._normalsAttributeName; }
    QSharedPointer<ModelDataStream>& gpuIndices() const { return builder._gpuIndices; }
    QHash<quint64, QVector<DrawElementsIndirectCommand>>& drawCommands() const {
        return builder._drawCommands;
    }
    QHash<quint64, QVector<QString>>& drawGroupNames() const { return builder._drawGroupNames; }

    void buildGPUFriendlyStreams(bool mergeCorners) const { builder.buildGPUFriendlyStreams(mergeCorners); }
    void optimizeGPUStreams() const { builder.optimizeGPUStreams(); }
    static void assertReduction(qint64 before, qint64 after, const ModelDataStream& indices) {
        ModelBuilder::assertReduction(before, after, indices);
    }
    void prepare(const QString& groupName, const QSharedPointer<ModelDataStream>& positions,
                 const QSharedPointer<ModelDataStream>& cornerIndices,
                 const QVector<unsigned int>& faceStarts) const {
        builder.prepareMaterialGroupForUpload(groupName, builder._materialGroups[groupName], positions,
                                              cornerIndices, faceStarts);
    }

    ModelBuilder& builder;
};

} // namespace Atelier::Vel
