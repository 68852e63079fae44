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

/// Makes draw data from a mesh. The streams are made once; later calls return draw data that share them.
class Preparation {
public:
    /// Groups whose flags agree in the bits of `materialFlagsMask` are drawn by one drawable. Messages
    /// contain the address `owner`. `mesh` must outlive the preparation.
    Preparation(Mesh& mesh, quint64 materialFlagsMask, const void* owner);

    /// Requires: the mesh is complete and has the attribute.
    /// Throws Cancelled if `meter` does; a mesh that keeps its input can then be prepared again.
    /// Returns: null draw data, after a warning, if a stream is not available.
    DrawData prepare(const QString& positionAttribute, ProgressMeter& meter);
    void clear();
    const PreparationStatistics& statistics() const { return _statistics; }

private:
    friend struct ModelBuilderAccess;

    struct StreamBuild;
    /// The input from which the triangles of all groups are made.
    struct TriangulationInput {
        QSharedPointer<ModelDataStream> positions;
        QSharedPointer<ModelDataStream> corners; ///< the vertex of each corner
        const QVector<unsigned int>& faceStarts;
        TriangleWriter& writer;
        bool overwritesCorners; ///< the triangles are written over `corners`
    };

    bool prepareStreams(const QString& positionAttribute, ProgressMeter& meter);

    /// Makes the GPU streams of every attribute, with one shared index stream. `mergeCorners` affects only
    /// the vertex count before merging: if true, distinct tuples of indices are counted, otherwise corners.
    void buildGPUFriendlyStreams(bool mergeCorners, ProgressMeter& meter);
    /// Merges GPU vertices that have the same bytes.
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
    /// Whether the triangles can be written over the corners: at no time do they need more space than the
    /// corners of the faces that are already triangulated.
    bool trianglesFollowCorners(const std::vector<GroupStore::Entry>& groups) const;
    QSharedPointer<ModelDataStream> makeTriangleStream(const TriangulationInput& input) const;
    void abandon();
    bool makeNormals(const VertexAttribute& position, ProgressMeter& meter);
    bool completeNormals(const VertexAttribute& position, ProgressMeter& meter);
    /// Writes three floats for each vertex to `normals`.
    void generateNormals(const VertexAttribute& position, float* normals, ProgressMeter& meter) const;

    DrawData drawData(const QString& positionAttribute);
    DrawDataContent::Drawable drawable(quint64 drawKey);

    Mesh& _mesh;
    quint64 _materialFlagsMask;
    const void* _owner;
    quint64 _hashSeed; ///< differs between preparations, see MergeOptions
    QSharedPointer<ModelDataStream> _gpuIndices;
    QHash<quint64, QVector<DrawElementsIndirectCommand>> _drawCommands;
    QHash<quint64, QVector<QString>> _drawGroupNames; ///< in the store of groups
    PreparationStatistics _statistics;
};

} // namespace Atelier::Vel
