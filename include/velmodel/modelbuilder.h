#pragma once

#include <QtCore/QHash>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/instancedata.h>
#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

class GPUModel;

/// Collects separately indexed vertex attributes, faces and material groups, and uploads them as draw data.
class VELMODEL_EXPORT ModelBuilder {
public:
    /// GL_UNSIGNED_INT, the type of all index streams, and the bytes of one index.
    static constexpr quint32 kIndexType = 0x1405;
    static constexpr qint32 kIndexStride = 4;

    explicit ModelBuilder(QSharedPointer<ModelDataStreamAllocator> allocator = {},
                          quint64 materialFlagsMask = 0);
    ~ModelBuilder();
    ModelBuilder(const ModelBuilder&) = delete;
    ModelBuilder& operator=(const ModelBuilder&) = delete;

    void clear();
    bool isValid() const;

    bool hasMaterialGroup(const QString& name) const;
    void createMaterialGroup(const QString& name, const InstanceData& material, int id, quint64 flags);
    int materialGroupId(const QString& name) const;
    quint64 materialGroupFlags(const QString& name) const;
    bool addFacesToMaterialGroup(const QString& name, quint64 count, const unsigned int* faces,
                                 const QString& objectName);

    bool hasVertexAttribute(const QString& name) const;
    void createVertexAttribute(const QString& name, int components, unsigned int type, quint64 valueCount,
                               quint64 indexCount);
    void addValuesToVertexAttribute(const QString& name, quint64 count, const void* values,
                                    unsigned int type);
    void addIndicesToVertexAttribute(const QString& name, quint64 count, const unsigned int* indices);
    void addVertexCountsToFaces(quint64 count, const unsigned int* counts);

    void generateNormals(const QString& name);
    void removeUnusedVertices();
    void removeDuplicateVertices();

    void upload(GPUModel* model, const InstanceData& instanceData, const QString& positionAttribute,
                const QString& groupIdMember, unsigned int usage, unsigned int primitiveType);

private:
    friend struct ModelBuilderAccess;

    struct MaterialGroup {
        InstanceData material;
        qint32 id;
        QSharedPointer<ModelDataStream> faces;
        quint64 flags;
        QString objectName;
    };

    enum StreamSlot { kValues, kIndices, kGPUValues, kGPUIndices, kStreamSlots };

    struct VertexAttribute {
        QSharedPointer<ModelDataStream> streams[kStreamSlots];
        qint32 components;
    };

    void buildGPUFriendlyStreams(bool mergeCorners);
    void optimizeGPUStreams();
    void prepareMaterialGroupForUpload(const QString& groupName, const MaterialGroup& group,
                                       const QSharedPointer<ModelDataStream>& positions,
                                       const QSharedPointer<ModelDataStream>& cornerIndices,
                                       const QVector<unsigned int>& faceStarts);

    QSharedPointer<ModelDataStreamAllocator> _allocator;
    QHash<QString, MaterialGroup> _materialGroups;
    QSharedPointer<ModelDataStream> _verticesPerFace;
    QHash<QString, VertexAttribute> _vertexAttributes;
    QString _normalsAttributeName;
    QSharedPointer<ModelDataStream> _gpuIndices;
    QHash<quint64, QVector<DrawElementsIndirectCommand>> _drawCommands;
    QHash<quint64, QVector<QString>> _drawGroupNames;
    quint64 _materialFlagsMask;
};

} // namespace Atelier::Vel
