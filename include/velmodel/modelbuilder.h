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

/// Collects separately indexed vertex attributes, faces and material groups, and makes draw data of them.
///
/// Declare each attribute once and append its values and, face by face, one index per corner; append the
/// corner count of every face; create material groups and add the numbers of their faces; then upload.
///
/// Counts are always counts of scalar elements: a position of three floats is appended with a count of 3.
/// Arrays that are handed in are copied; they may be null where the count is 0.
///
/// Data that does not fit together is never an error: a corner without a valid index takes a value of zeros,
/// and faces that do not exist are skipped. A stream that cannot hold what is appended refuses all of it,
/// after a warning: see refusedStreams().
///
/// Threads: a builder may be used on any thread, by one at a time; several builders on several threads. Only
/// upload() needs a context.
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

    /// Back to the state after construction; allocator and mask stay. Draw data made before is not changed.
    void clear();
    /// Returns: whether there are groups, faces and attributes, and every attribute has values and indices.
    /// Does not check whether they fit together. Cost: linear in the number of attributes.
    bool isValid() const;

    /// Returns: whether a group of that name was created. Names are case-sensitive.
    bool hasMaterialGroup(const QString& name) const;
    /// Creates a group. A negative `id` stands for the number of groups before the call. `flags` are the
    /// caller's; see the constructor. `material` is copied, which shares its content. Creating a name again
    /// replaces the group: its faces and its object name are gone, and it counts for a negative `id`.
    void createMaterialGroup(const QString& name, const InstanceData& material, int id, quint64 flags);
    /// Returns: the group's id; -1 when there is no such group.
    int materialGroupId(const QString& name) const;
    /// Returns: the group's flags; 0 when there is no such group.
    quint64 materialGroupFlags(const QString& name) const;
    /// Appends `count` face numbers to a group: the face numbered f is the f-th that was given to
    /// addVertexCountsToFaces(). The first object name that is not null stays; another one is warned about,
    /// and the faces are added nevertheless.
    /// Returns: false, with nothing done, when there is no such group. Cost: amortised linear in `count`.
    bool addFacesToMaterialGroup(const QString& name, quint64 count, const unsigned int* faces,
                                 const QString& objectName);

    /// Returns: whether an attribute of that name was created. Names are case-sensitive.
    bool hasVertexAttribute(const QString& name) const;
    /// Creates an attribute of `components` elements per value, each of the GL scalar type `type`. Both
    /// counts are initial sizes in elements, with unspecified contents; what is added comes behind. Creating
    /// a name again drops what it held.
    void createVertexAttribute(const QString& name, int components, unsigned int type, quint64 valueCount,
                               quint64 indexCount);
    /// Appends `count` elements of `type`. Does nothing when there is no such attribute or it is of another
    /// type. Cost: amortised linear in `count`.
    void addValuesToVertexAttribute(const QString& name, quint64 count, const void* values,
                                    unsigned int type);
    /// Appends an index for each of `count` corners. Index i means the i-th value, not the i-th element. Does
    /// nothing when there is no such attribute. Cost: amortised linear in `count`.
    void addIndicesToVertexAttribute(const QString& name, quint64 count, const unsigned int* indices);
    /// Appends `count` faces: the number of corners of each. Cost: amortised linear in `count`.
    void addVertexCountsToFaces(quint64 count, const unsigned int* counts);

    /// Makes the first preparation compute smooth normals into the attribute `name`, which need not exist;
    /// null turns that off.
    void generateNormals(const QString& name);
    /// Does nothing: unused vertices are kept.
    void removeUnusedVertices();
    /// Does nothing: a preparation always merges equal vertices.
    void removeDuplicateVertices();

    /// Makes draw data of what the builder holds: corners merged, faces cut into triangles, normals made
    /// where generateNormals() asked for them. `positionAttribute` holds three floats per vertex.
    /// Returns: null draw data when isValid() is false, there is no such attribute or `progress` cancels, and
    /// after a warning when a stream cannot be had. It can be tried again then.
    /// Cost: the first call does the work, linear in the corners but for polygons of more than four; later
    /// calls share its streams, so input that was added in between is not seen before clear(). Materials, ids
    /// and object names of the groups are those at each call.
    /// Throws std::bad_alloc when memory runs out, and what `progress` throws.
    DrawData prepare(const QString& positionAttribute, const LoadProgress& progress = {});

    /// Prepares the data as prepare() does and adds it to `model` as one drawable per draw key.
    /// `instanceData` is copied once per group; its member `groupIdMember` takes the group's id, 32 bits, or,
    /// when that name is null, the drawable gets the groups' materials instead. `usage` is a GL usage hint,
    /// `primitiveType` a GL primitive mode.
    /// Does nothing when `model` is null, isValid() is false, there is no such attribute, or no context is
    /// current, and after a warning when a stream or a buffer cannot be had: the number of drawables in the
    /// model is the same as before then. To learn which it was, call prepare() and Atelier::Vel::upload(),
    /// which return it.
    /// Threads: that of the context that is current.
    void upload(GPUModel* model, const InstanceData& instanceData, const QString& positionAttribute,
                const QString& groupIdMember, unsigned int usage, unsigned int primitiveType);

    /// Returns: what the last preparation found; all zero before the first.
    const Statistics& statistics() const;

    /// Returns: what has refused data since construction or clear() because it would have grown beyond what
    /// one stream can hold, in words; empty when everything handed in was taken.
    const QStringList& refusedStreams() const;

private:
    friend struct ModelBuilderAccess;

    struct VELMODEL_NO_EXPORT Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
