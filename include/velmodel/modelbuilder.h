#pragma once

#include <memory>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <velgl/instancedata.h>
#include <velmodel/drawdata.h>
#include <velmodel/loadprogress.h>
#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

class GPUModel;

/// Collects separately indexed vertex attributes, faces and material groups, and uploads them as draw data.
///
/// Declare each attribute once and append its values and, face by face, one index per corner; append the
/// corner count of every face; create material groups and add the numbers of their faces; then upload. Counts
/// are always counts of scalar elements: a position of three floats is appended with a count of 3.
///
/// Data that does not fit together is never an error: a corner without a valid index takes a value of zeros,
/// and faces that do not exist are passed over. What a stream cannot hold is refused, see refusedStreams().
class VELMODEL_EXPORT ModelBuilder {
public:
    /// GL_UNSIGNED_INT, the type of all index streams, and the bytes of one index.
    static constexpr quint32 kIndexType = 0x1405;
    static constexpr qint32 kIndexStride = 4;

    using Statistics = PreparationStatistics;

    /// Every stream comes from `allocator`; null makes the builder use a ModelDataArrayAllocator of its own.
    /// Groups whose flags agree in the bits of `materialFlagsMask` are drawn by one drawable.
    ModelBuilder(QSharedPointer<ModelDataStreamAllocator> allocator = {}, quint64 materialFlagsMask = 0);
    ~ModelBuilder();
    ModelBuilder(const ModelBuilder&) = delete;
    ModelBuilder& operator=(const ModelBuilder&) = delete;

    /// Back to the state after construction; allocator and mask stay.
    void clear();
    /// Whether there are groups, faces and attributes, and every attribute has values and indices.
    /// Does not ask whether they fit together.
    bool isValid() const;

    bool hasMaterialGroup(const QString& name) const;
    /// A negative `id` stands for the number of groups before the call. Creating a name again drops the
    /// group's faces and object name.
    void createMaterialGroup(const QString& name, const InstanceData& material, int id, quint64 flags);
    /// -1 when there is no such group.
    int materialGroupId(const QString& name) const;
    /// 0 when there is no such group.
    quint64 materialGroupFlags(const QString& name) const;
    /// Adds `count` face numbers. The first non-null object name stays; another one is warned about.
    /// Returns: false when there is no such group.
    bool addFacesToMaterialGroup(const QString& name, quint64 count, const unsigned int* faces,
                                 const QString& objectName);

    bool hasVertexAttribute(const QString& name) const;
    /// `type` is a GL scalar type; both counts are initial sizes in elements, with unspecified contents.
    /// Creating a name again drops what it held.
    void createVertexAttribute(const QString& name, int components, unsigned int type, quint64 valueCount,
                               quint64 indexCount);
    /// Does nothing when there is no such attribute or it is of another type.
    void addValuesToVertexAttribute(const QString& name, quint64 count, const void* values,
                                    unsigned int type);
    /// Index i means the i-th value, not the i-th element. Does nothing when there is no such attribute.
    void addIndicesToVertexAttribute(const QString& name, quint64 count, const unsigned int* indices);
    /// One corner count per face.
    void addVertexCountsToFaces(quint64 count, const unsigned int* counts);

    /// Makes the first upload compute smooth normals into the attribute `name`; null turns that off.
    void generateNormals(const QString& name);
    /// Does nothing: unused vertices are kept.
    void removeUnusedVertices();
    /// Does nothing: an upload always merges equal vertices.
    void removeDuplicateVertices();

    /// Makes draw data of what the builder holds: corners merged, faces cut into triangles, normals made
    /// where generateNormals() asked for them. `positionAttribute` holds three floats per vertex. Needs no
    /// context. Returns: null draw data when the builder is not valid or there is no such attribute and,
    /// after a warning, when a stream cannot be had. Cost: the first call does the work; later ones share its
    /// streams, so input that was added in between is not seen before clear(). Materials, ids and object
    /// names of the groups are those at each call.
    DrawData prepare(const QString& positionAttribute, const LoadProgress& progress = {});

    /// Prepares the data on the first call and adds it to `model` as one drawable per draw key.
    /// `positionAttribute` holds three floats per vertex. `instanceData` is copied once per group; its member
    /// `groupIdMember` takes the group's id, 32 bits, or, when that name is null, the drawable gets the
    /// groups' materials instead. `usage` is a GL usage hint, `primitiveType` a GL primitive mode. Does
    /// nothing when the builder is not valid, there is no such attribute, or no context is current.
    void upload(GPUModel* model, const InstanceData& instanceData, const QString& positionAttribute,
                const QString& groupIdMember, unsigned int usage, unsigned int primitiveType);

    /// All zero before the first preparation.
    const Statistics& statistics() const;

    /// What has refused data since construction or clear() because it would have grown beyond what one stream
    /// can hold, in words; empty when everything handed in was taken.
    const QStringList& refusedStreams() const;

private:
    friend struct ModelBuilderAccess;

    struct VELMODEL_NO_EXPORT Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
