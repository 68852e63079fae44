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
#include <velmodel/modelbuilder.h>

#include "drawdata/drawdatacontent.h"

namespace Atelier::Vel {

class FaceCutter;
class MergedCorners;
class VertexMerging;
struct UniformFaces;

/// What a builder is given and what it makes of it.
class VELMODEL_NO_EXPORT ModelBuilder::Data {
public:
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
        WhiteMaps whiteMaps; ///< of the material
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

    /// `owner` is the builder that these are the data of.
    Data(const ModelBuilder* owner, QSharedPointer<ModelDataStreamAllocator> allocator,
         quint64 materialFlagsMask);
    ~Data();

    void clear();
    bool isValid() const;
    void createMaterialGroup(const QString& name, const InstanceData& material, int id, quint64 flags);
    bool addFacesToMaterialGroup(const QString& name, quint64 count, const unsigned int* faces,
                                 const QString& objectName);
    void createVertexAttribute(const QString& name, int components, unsigned int type, quint64 valueCount,
                               quint64 indexCount);
    void addValuesToVertexAttribute(const QString& name, quint64 count, const void* values,
                                    unsigned int type);
    void addIndicesToVertexAttribute(const QString& name, quint64 count, const unsigned int* indices);
    void addVertexCountsToFaces(quint64 count, const unsigned int* counts);
    /// Requires: the builder is valid and has the attribute.
    DrawData prepare(const QString& positionAttribute);

    /// Adds `count` faces from number `first` on, where the input is not kept. Returns: false when there is
    /// no such group.
    bool addFaceRun(const QString& name, unsigned int first, unsigned int count);
    /// Merges corners as they come, see SingleUpload.
    bool addCorners(const CornerList* lists, std::size_t listCount, quint32 count);

private:
    friend class ModelBuilder;
    friend struct ModelBuilderAccess;
    friend struct SingleUpload;

    struct StreamBuild;
    using GroupEntry = QHash<QString, MaterialGroup>::iterator;

    QSharedPointer<ModelDataStream> makeStream(unsigned int type, quint64 count) const;
    void refuse(const QString& purpose);
    /// Sorted.
    QStringList attributeNames() const;
    /// By id, then by name.
    std::vector<GroupEntry> groupsInOrder();

    /// Gives each face a corner count of its own in _verticesPerFace.
    void listFaceCounts();
    bool hasFaces() const;
    quint32 cornerCount() const;
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
    /// What has been prepared; where the input is not kept, it is gone from here then.
    DrawData drawData(const QString& positionAttribute);
    DrawDataContent::Drawable drawable(quint64 drawKey);

    const ModelBuilder* _owner;
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
