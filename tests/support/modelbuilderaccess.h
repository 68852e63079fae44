#pragma once

#include <memory>

#include "builder/modelbuilderdata.h"
#include "drawdata/trianglewriter.h"

namespace Atelier::Vel {

/// Gives tests access to a builder's data and private steps.
struct ModelBuilderAccess {
    explicit ModelBuilderAccess(ModelBuilder& builder) : data(*builder._data) {}

    /// Makes a new builder consume its input, as loads do. It can then prepare only once.
    static void consumeInput(ModelBuilder& builder,
                             const QSharedPointer<ModelDataStreamAllocator>& allocator = {}) {
        builder._data = std::make_unique<ModelBuilder::Data>(&builder, allocator, 0, Input::Consumed);
    }

    Mesh& mesh() const { return data.mesh; }
    QHash<QString, MaterialGroup>& groups() const { return mesh().groups.records(); }
    QHash<QString, VertexAttribute>& attributes() const { return mesh().attributes.records(); }
    VertexAttribute& attribute(const char* name) const { return attributes()[QString::fromLatin1(name)]; }
    QSharedPointer<ModelDataStream>& verticesPerFace() const { return mesh().faces.listed(); }
    QString& normalsAttributeName() const { return mesh().normalsAttribute; }
    bool addFaceRun(const QString& group, quint32 first, quint32 count) const {
        return mesh().groups.addFaceRun(group, first, count);
    }
    void addCorners(const CornerList* lists, std::size_t listCount, quint32 count) const {
        mesh().attributes.addCorners(lists, listCount, count);
    }

    QSharedPointer<ModelDataStream>& gpuIndices() const { return data.preparation._gpuIndices; }
    QHash<quint64, QVector<DrawElementsIndirectCommand>>& drawCommands() const {
        return data.preparation._drawCommands;
    }
    QHash<quint64, QVector<QString>>& drawGroupNames() const { return data.preparation._drawGroupNames; }

    void buildGPUFriendlyStreams(bool mergeCorners) const {
        ProgressMeter meter{{}};
        data.preparation.buildGPUFriendlyStreams(mergeCorners, meter);
    }
    void optimizeGPUStreams() const {
        ProgressMeter meter{{}};
        data.preparation.optimizeGPUStreams(meter);
    }
    static void assertReduction(qint64 before, qint64 after, const ModelDataStream& indices) {
        Preparation::assertReduction(before, after, indices);
    }
    void prepare(const QString& groupName, const QSharedPointer<ModelDataStream>& positions,
                 const QSharedPointer<ModelDataStream>& cornerIndices,
                 const QVector<unsigned int>& faceStarts) const {
        TriangleWriter writer;
        data.preparation.prepareMaterialGroupForUpload(groupName, groups()[groupName],
                                                       {positions, cornerIndices, faceStarts, writer, false});
    }
    ModelBuilder::Data& data;
};

} // namespace Atelier::Vel
