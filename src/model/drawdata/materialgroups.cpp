#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include <velgl/sharedpointer.h>

#include "diagnostics.h"
#include "drawdata/overwritingstream.h"
#include "drawdata/preparation.h"
#include "drawdata/trianglewriter.h"
#include "glconstants.h"
#include "streams/streamview.h"

namespace Atelier::Vel {

void Preparation::prepareMaterialGroups(const VertexAttribute& position, ProgressMeter& meter) {
    const UniformFaces uniform = _mesh.faces.uniform();
    const WordView counts = WordView::of(_mesh.faces.listed().data());
    QVector<unsigned int> faceStarts(static_cast<int>(counts.count));
    std::exclusive_scan(counts.words, counts.words + counts.count, faceStarts.begin(), quint32{0});
    const auto cornerCount = static_cast<qint64>(WordView::of(position.streams[kGPUIndices].data()).count);
    meter.begin(LoadPhase::Triangulating, cornerCount);
    TriangleWriter writer(maxTriangleIndices(uniform) + maxTriangleIndices(counts), meter.meter(cornerCount));
    const std::vector<GroupStore::Entry> groups = _mesh.groups.inOrder();
    const TriangulationInput input{position.streams[kGPUValues], position.streams[kGPUIndices], faceStarts,
                                   writer, trianglesFollowCorners(groups)};
    for (const GroupStore::Entry& group : groups) {
        if (!_gpuIndices.isNull() && !group->faces.isEmpty())
            prepareMaterialGroupForUpload(group.key(), *group, input);
        // Releasing memory is cheapest in this order, which is usually the order of allocation.
        _mesh.groups.releaseFaces(*group);
    }
}

bool Preparation::trianglesFollowCorners(const std::vector<GroupStore::Entry>& groups) const {
    const UniformFaces faces = _mesh.faces.uniform();
    if (faces.corners == 0 || faces.corners > 3)
        return false;
    quint64 next = 0;
    return std::all_of(groups.begin(), groups.end(), [&next](const GroupStore::Entry& group) {
        return group->faces.followsAsOneRun(next);
    });
}

QSharedPointer<ModelDataStream> Preparation::makeTriangleStream(const TriangulationInput& input) const {
    if (input.overwritesCorners)
        return shared<ModelDataStream>(std::make_unique<OverwritingStream>(input.corners));
    return _mesh.streams.make(kGlUnsignedInt, 0);
}

void Preparation::prepareMaterialGroupForUpload(const QString& groupName, const MaterialGroup& group,
                                                const TriangulationInput& input) {
    ModelDataStream* const counts = _mesh.faces.listed().data();
    if (counts != nullptr && counts->type() != kGlUnsignedInt)
        reportAssertion(
            QStringLiteral("GL_UNSIGNED_INT == _verticesPerFace->type()"),
            QString::asprintf("Wrong Face type 0x%X, needs to be 0x%X", counts->type(), kGlUnsignedInt), 923);
    if (isEmpty(_gpuIndices.data()))
        _gpuIndices = makeTriangleStream(input);
    if (_gpuIndices.isNull()) {
        abandon();
        reportMissingStream(QStringLiteral("the triangle indices"));
        return;
    }

    DrawElementsIndirectCommand command;
    command.instanceCount = 1;
    command.firstIndex = static_cast<quint32>(_gpuIndices->size());
    const FaceTable table{WordView::of(counts),
                          input.faceStarts.constData(),
                          static_cast<quint64>(input.faceStarts.size()),
                          _mesh.faces.uniform(),
                          WordView::of(input.corners.data()),
                          ByteView::of(input.positions.data())};
    const quint64 untriangulatedBefore = input.writer.untriangulatedFaces();
    const auto triangulate = [&](const WordView& faces) {
        return input.writer.append(table, faces, *_gpuIndices);
    };
    if (!group.faces.forEach(triangulate)) {
        abandon();
        reportRefusedData(QStringLiteral("the triangle indices"));
        return;
    }
    command.count = static_cast<quint32>(_gpuIndices->size()) - command.firstIndex;
    _statistics.triangles += command.count / 3;
    _statistics.untriangulatedFaces += input.writer.untriangulatedFaces() - untriangulatedBefore;

    const quint64 drawKey = group.flags & _materialFlagsMask;
    _drawCommands[drawKey].append(command);
    _drawGroupNames[drawKey].append(groupName);
}

} // namespace Atelier::Vel
