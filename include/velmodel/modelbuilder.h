#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include <QtCore/QHash>
#include <QtCore/QSharedData>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/instancedata.h>
#include <velmodel/modeldatastream.h>

namespace Atelier::Vel {

class FaceCutter;
class GPUModel;
class MergedCorners;
class VertexMerging;
struct UniformFaces;
struct DrawGroup;

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

    /// What the preparation of an upload found; all zero before the first upload.
    struct Statistics {
        quint64 corners = 0;             ///< vertices before merging
        quint64 vertices = 0;            ///< vertices after merging
        quint64 triangles = 0;           ///< triangles of all commands
        quint64 untriangulatedFaces = 0; ///< faces in a group that gave no triangle
        quint64 substitutedCorners = 0;  ///< attribute values taken as zero for want of a valid index
    };

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

    /// Prepares the data on the first call and adds it to `model` as one drawable per draw key.
    /// `positionAttribute` holds three floats per vertex. `instanceData` is copied once per group; its member
    /// `groupIdMember` takes the group's id, 32 bits, or, when that name is null, the drawable gets the
    /// groups' materials instead. `usage` is a GL usage hint, `primitiveType` a GL primitive mode. Does
    /// nothing when the builder is not valid, there is no such attribute, or no context is current.
    void upload(GPUModel* model, const InstanceData& instanceData, const QString& positionAttribute,
                const QString& groupIdMember, unsigned int usage, unsigned int primitiveType);

    const Statistics& statistics() const { return _statistics; }

    /// What has refused data since construction or clear() because it would have grown beyond what one stream
    /// can hold, in words; empty when everything handed in was taken.
    const QStringList& refusedStreams() const { return _refusedStreams; }

private:
    friend struct ModelBuilderAccess;
    friend struct SingleUpload;

    /// The face numbers of a group: a stream of them or, where the input is not kept, runs of consecutive
    /// ones. Small for one run, which is what groups have that are many.
    struct GroupFaces {
        unsigned int first = 0; ///< of the last run
        unsigned int count = 0; ///< of the last run
        struct More : QSharedData {
            /// The other runs: the first number of each and, where it is not alone, how many follow it, with
            /// kFollow set.
            std::vector<unsigned int> before;
            QSharedPointer<ModelDataStream> stream;
        };
        QSharedDataPointer<More> more; ///< null where there is neither
        static constexpr unsigned int kFollow = 0x80000000;

        const More& others() const;
        void addRun(unsigned int firstAdded, unsigned int countAdded);
        void setStream(const QSharedPointer<ModelDataStream>& stream);
    };

    struct MaterialGroup {
        InstanceData material;
        qint32 id;
        quint64 flags;
        QString objectName;
        GroupFaces faces;
    };

    /// Values and indices are the input; the GPU's are made from them and indexed all by the same list.
    enum StreamSlot { kValues, kIndices, kGPUValues, kGPUIndices, kStreamSlots };

    struct VertexAttribute {
        std::array<QSharedPointer<ModelDataStream>, kStreamSlots> streams;
        qint32 components;

        /// The whole values of a stream; 0 without one.
        quint64 valueCount(StreamSlot slot) const;
    };

    /// An index for each of some corners.
    struct CornerList {
        const QString* attribute;
        unsigned int* indices;
    };

    struct StreamBuild;
    using GroupEntry = QHash<QString, MaterialGroup>::iterator;

    QSharedPointer<ModelDataStream> makeStream(unsigned int type, quint64 count) const;
    void refuse(const QString& purpose);
    /// Sorted.
    QStringList attributeNames() const;
    /// By id, then by name.
    std::vector<GroupEntry> groupsInOrder();

    /// Adds `count` faces from number `first` on, where the input is not kept. Returns: false when there is
    /// no such group.
    bool addFaceRun(const QString& name, unsigned int first, unsigned int count);
    /// Gives each face a corner count of its own in _verticesPerFace.
    void listFaceCounts();
    bool hasFaces() const;
    quint32 cornerCount() const;
    /// Merges corners as they come, see SingleUpload.
    bool addCorners(const CornerList* lists, std::size_t listCount, quint32 count);
    /// Puts merged corners into the index list of each attribute; from then on, all are listed there.
    void listCorners();
    bool hasIndices(const VertexAttribute& record) const;

    /// Gives every attribute GPU streams over one shared index stream. `mergeCorners` says only what counts
    /// as a vertex before merging: a corner, or a distinct tuple of indices.
    void buildGPUFriendlyStreams(bool mergeCorners);
    /// Merges GPU vertices of the same bytes.
    void optimizeGPUStreams();
    bool allHaveGPUStreams() const;
    /// An index list of the input that may become the shared one; null where the input is kept.
    QSharedPointer<ModelDataStream> listToOverwrite(quint32 cornerCount) const;
    StreamBuild collectInput(quint32 cornerCount);
    static quint64 warnAboutSubstitutes(const StreamBuild& build, const VertexMerging& merging);
    bool makeResults(StreamBuild& build, const VertexMerging& merging) const;
    void dropIndexLists(const StreamBuild& build) const;
    static void adoptResults(StreamBuild& build, const QSharedPointer<ModelDataStream>& indices);
    static void assertReduction(qint64 before, qint64 after, const ModelDataStream& indices);
    void reportReduction(qint64 before, qint64 after, const ModelDataStream& indices) const;

    bool prepareUpload(const QString& positionAttribute);
    void abandonPreparation();
    void prepareMaterialGroups(const VertexAttribute& position);
    /// Whether triangles never need more room than the corners before the faces that are still to be cut, so
    /// that they can be written over those.
    bool trianglesFollowCorners(const std::vector<GroupEntry>& groups) const;
    /// An empty stream for triangles.
    QSharedPointer<ModelDataStream> makeTriangleStream(const QSharedPointer<ModelDataStream>& corners) const;
    void prepareMaterialGroupForUpload(const QString& groupName, const MaterialGroup& group,
                                       const QSharedPointer<ModelDataStream>& positions,
                                       const QSharedPointer<ModelDataStream>& cornerIndices,
                                       const QVector<unsigned int>& faceStarts);
    bool makeNormals(const VertexAttribute& position);
    /// What of a group is drawn; where the input is not kept, the group is gone then.
    DrawGroup drawGroup(const QString& name);

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
    QStringList _refusedStreams;
    bool _keepsInput = true;                       ///< beyond the first upload
    std::unique_ptr<UniformFaces> _uniformFaces;   ///< in place of _verticesPerFace
    bool _listsCorners = true;                     ///< attribute by attribute
    std::unique_ptr<MergedCorners> _mergedCorners; ///< of all attributes, in place of their lists
    bool _overwritesCorners = false;               ///< with the triangles made of them
    std::unique_ptr<FaceCutter> _faceCutter;       ///< working memory while groups are prepared
    std::function<void(int corners)> _cutMeter;    ///< of faces, see SingleUpload; may be empty
};

} // namespace Atelier::Vel
