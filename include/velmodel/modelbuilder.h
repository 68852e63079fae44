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

    /// What the preparation of an upload found; all zero before the first upload.
    struct Statistics {
        quint64 corners = 0;             ///< vertices before merging
        quint64 vertices = 0;            ///< vertices after merging
        quint64 triangles = 0;           ///< triangles of all commands
        quint64 untriangulatedFaces = 0; ///< faces in a group that gave no triangle
        quint64 substitutedCorners = 0;  ///< attribute values taken as zero for want of a valid index
    };

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

    const Statistics& statistics() const { return _statistics; }

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
    Statistics _statistics;
};

} // namespace Atelier::Vel
