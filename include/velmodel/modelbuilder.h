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
/// Declare each attribute once. Append its values and, face by face, one index per corner. Append the corner
/// count of every face. Create material groups and add the numbers of their faces. Then call upload() or
/// prepare().
///
/// Counts are always counts of scalar elements: a position of three floats is appended with a count of 3.
/// Arrays that are handed in are copied. They may be null if the count is 0.
///
/// Data that does not fit together is not an error: a corner without a valid index gets a value of zeros, and
/// faces that do not exist are skipped. A stream that cannot hold what is appended refuses all of it, after a
/// warning: see refusedStreams().
///
/// Errors:  throws std::bad_alloc when memory runs out.
/// Threads: a builder may be used on any thread, by one at a time, and several builders on several threads.
///          Only upload() needs a context.
class VELMODEL_EXPORT ModelBuilder {
public:
    /// GL_UNSIGNED_INT, the type of all index streams, and the bytes of one index.
    static constexpr quint32 kIndexType = 0x1405;
    static constexpr qint32 kIndexStride = 4;

    using Statistics = PreparationStatistics;

    /// `allocator` makes all streams; null stands for a ModelDataArrayAllocator. Draw data of the builder
    /// keeps the allocator alive. Groups whose flags agree in the bits of `materialFlagsMask` share a
    /// drawable; these bits are its draw key.
    ModelBuilder(QSharedPointer<ModelDataStreamAllocator> allocator = {}, quint64 materialFlagsMask = 0);
    ~ModelBuilder();
    ModelBuilder(const ModelBuilder&) = delete;
    ModelBuilder& operator=(const ModelBuilder&) = delete;

    /// Returns to the state after construction, with the same allocator and mask. Draw data made before does
    /// not change.
    void clear();
    /// Whether there are groups, faces and attributes, and every attribute has values and indices. Whether
    /// they fit together is not checked. Cost: linear in the number of attributes.
    bool isValid() const;

    /// Whether there is a group of that name. Names are case-sensitive.
    bool hasMaterialGroup(const QString& name) const;
    /// Creates a group, or replaces the group of that name: its faces and its object name are dropped. A
    /// negative `id` stands for the number of groups before the call, a replaced group included. `flags` have
    /// no meaning of their own; see the constructor. `material` is copied, which shares its content.
    void createMaterialGroup(const QString& name, const InstanceData& material, int id, quint64 flags);
    /// The group's id; -1 if there is no such group.
    int materialGroupId(const QString& name) const;
    /// The group's flags; 0 if there is no such group.
    quint64 materialGroupFlags(const QString& name) const;
    /// Appends `count` face numbers to a group. Faces are numbered from 0, in the order in which
    /// addVertexCountsToFaces() got them. The first `objectName` that is not null becomes the group's; a
    /// later, different one causes a warning and is ignored, but its faces are added.
    /// Returns: false, with nothing changed, if there is no such group.
    /// Cost:    amortised linear in `count`.
    bool addFacesToMaterialGroup(const QString& name, quint64 count, const unsigned int* faces,
                                 const QString& objectName);

    /// Whether there is an attribute of that name. Names are case-sensitive.
    bool hasVertexAttribute(const QString& name) const;
    /// Creates an attribute of `components` elements per value, each of the GL scalar type `type`. An
    /// attribute of that name is replaced. `valueCount` and `indexCount` are initial sizes in elements,
    /// usually 0: these elements are unspecified, and added data follows them.
    void createVertexAttribute(const QString& name, int components, unsigned int type, quint64 valueCount,
                               quint64 indexCount);
    /// Appends `count` elements of `type` to an attribute's values. Does nothing if there is no such
    /// attribute or its type is different. Cost: amortised linear in `count`.
    void addValuesToVertexAttribute(const QString& name, quint64 count, const void* values,
                                    unsigned int type);
    /// Appends one index for each of `count` corners, in the order of the faces. Index i refers to value i,
    /// which starts at element i · components. Does nothing if there is no such attribute. Cost: amortised
    /// linear in `count`.
    void addIndicesToVertexAttribute(const QString& name, quint64 count, const unsigned int* indices);
    /// Appends `count` faces; `counts` has the number of corners of each. Cost: amortised linear in `count`.
    void addVertexCountsToFaces(quint64 count, const unsigned int* counts);

    /// Lets the first preparation compute smooth normals, three floats per vertex, into the attribute `name`,
    /// which need not exist. A null name turns that off. A normal points to the side from which its triangles
    /// appear clockwise; this is intentional.
    void generateNormals(const QString& name);
    /// Does nothing. Unused vertices are always kept.
    void removeUnusedVertices();
    /// Does nothing. Equal vertices are always merged.
    void removeDuplicateVertices();

    /// Makes draw data of what the builder holds: merges corners, cuts faces into triangles, and makes
    /// normals if generateNormals() was called.
    /// Requires: the values of `positionAttribute` are three floats per vertex.
    /// Returns:  null draw data if isValid() is false, if there is no such attribute, if `progress` cancels,
    ///           or, after a warning, if a stream cannot be made. The call may be repeated after each of
    ///           these.
    /// Errors:   throws std::bad_alloc when memory runs out, and what `progress` throws.
    /// Cost:     linear in the corners, except for polygons of more than four. Once a call has made
    ///           triangles, later calls share its streams and are cheap: they use the current materials, ids
    ///           and object names of the groups, but ignore input that was added in between. clear() ends
    ///           that.
    DrawData prepare(const QString& positionAttribute, const LoadProgress& progress = {});

    /// Prepares the data as prepare() does and adds it to `model` as one drawable per draw key.
    /// `instanceData` is copied once per group. Its member `groupIdMember` is set to the group's id, 32 bits;
    /// if that name is null, the drawable gets the groups' materials instead. `usage` is a GL usage hint,
    /// `primitiveType` a GL primitive mode.
    /// Does nothing if `model` is null, if isValid() is false, if there is no such attribute, if no context
    /// is current, or, after a warning, if a stream or a buffer cannot be made: the model then has the same
    /// drawables as before. To find out whether it succeeded, call prepare() and Atelier::Vel::upload(),
    /// which return that.
    /// Threads: to be called on the thread whose context is current.
    void upload(GPUModel* model, const InstanceData& instanceData, const QString& positionAttribute,
                const QString& groupIdMember, unsigned int usage, unsigned int primitiveType);

    /// The counts of the last preparation; zeros before the first.
    const Statistics& statistics() const;

    /// Names the streams that have refused data since construction or clear() because the data did not fit,
    /// in words for people. Empty if all data was taken.
    const QStringList& refusedStreams() const;

private:
    friend struct ModelBuilderAccess;

    struct VELMODEL_NO_EXPORT Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
