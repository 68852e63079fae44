#pragma once

#include <vector>

#include <QtCore/QHash>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <velgl/drawelementsindirectcommand.h>
#include <velmodel/drawdata.h>
#include <velmodel/modeldatastream.h>

#include "drawdata/drawdatacontent.h"
#include "drawdata/progressmeter.h"
#include "mesh/mesh.h"

namespace Atelier::Vel {

class TriangleWriter;
class VertexMerging;

/// Makes draw data of a mesh, once: what is asked for later shares the streams of the first time.
class Preparation {
public:
    /// Groups whose flags agree in the bits of `materialFlagsMask` are drawn by one drawable. Messages name
    /// the address `owner`. `mesh` must outlive the preparation.
    Preparation(Mesh& mesh, quint64 materialFlagsMask, const void* owner);

    /// Requires: the mesh is complete and has the attribute. Throws Cancelled where `meter` does; a mesh that
    /// keeps its input can be prepared again then.
    /// Returns: null draw data, after a warning, when a stream cannot be had.
    DrawData prepare(const QString& positionAttribute, ProgressMeter& meter);
    void clear();
    const PreparationStatistics& statistics() const { return _statistics; }

private:
    friend struct ModelBuilderAccess;

    struct StreamBuild;
    /// What the triangles of all groups are cut from, and how.
    struct TriangulationInput {
        QSharedPointer<ModelDataStream> positions;
        QSharedPointer<ModelDataStream> corners; ///< the vertex of each
        const QVector<unsigned int>& faceStarts;
        TriangleWriter& writer;
        bool overwritesCorners; ///< with the triangles
    };

    bool prepareStreams(const QString& positionAttribute, ProgressMeter& meter);

    /// Gives every attribute GPU streams over one shared index stream. `mergeCorners` says only what counts
    /// as a vertex before merging: a corner, or a distinct tuple of indices.
    void buildGPUFriendlyStreams(bool mergeCorners, ProgressMeter& meter);
    /// Merges GPU vertices of the same bytes.
    void optimizeGPUStreams(ProgressMeter& meter);
    bool allHaveGPUStreams() const;
    StreamBuild collectInput(quint32 cornerCount);
    static quint64 warnAboutSubstitutes(const StreamBuild& build, const VertexMerging& merging);
    bool makeResults(StreamBuild& build, const VertexMerging& merging, ProgressMeter& meter) const;
    static void adoptResults(StreamBuild& build, const QSharedPointer<ModelDataStream>& indices);
    void releaseIndexLists(const StreamBuild& build) const;
    static void assertReduction(qint64 before, qint64 after, const ModelDataStream& indices);
    void reportReduction(qint64 before, qint64 after, const ModelDataStream& indices) const;

    void prepareMaterialGroups(const VertexAttribute& position, ProgressMeter& meter);
    void prepareMaterialGroupForUpload(const QString& groupName, const MaterialGroup& group,
                                       const TriangulationInput& input);
    /// Whether triangles never need more room than the corners of the faces that were cut already, so that
    /// they can be written over those.
    bool trianglesFollowCorners(const std::vector<GroupStore::Entry>& groups) const;
    QSharedPointer<ModelDataStream> makeTriangleStream(const TriangulationInput& input) const;
    void abandon();
    bool makeNormals(const VertexAttribute& position, ProgressMeter& meter);

    DrawData drawData(const QString& positionAttribute);
    DrawDataContent::Drawable drawable(quint64 drawKey);

    Mesh& _mesh;
    quint64 _materialFlagsMask;
    const void* _owner;
    quint64 _hashSeed; ///< another one in each preparation, see MergeOptions
    QSharedPointer<ModelDataStream> _gpuIndices;
    QHash<quint64, QVector<DrawElementsIndirectCommand>> _drawCommands;
    QHash<quint64, QVector<QString>> _drawGroupNames;
    PreparationStatistics _statistics;
};

} // namespace Atelier::Vel
