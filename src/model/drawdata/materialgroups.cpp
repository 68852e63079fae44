#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "diagnostics.h"
#include "drawdata/facecutter.h"
#include "modelbuilderdata.h"

namespace Atelier::Vel {

namespace {

/// Calls `take` with the faces of a group, many at a time. Returns: false when that returned false.
template<typename GroupFaces, typename Take>
bool forFaces(const GroupFaces& group, const Take& take) {
    std::array<quint32, 2048> faces;
    quint64 used = 0;
    const auto hasTaken = [&] { return take(WordView{faces.data(), std::exchange(used, 0)}); };
    const auto hasTakenRun = [&](quint32 first, quint32 count) {
        for (quint32 i = 0; i < count; ++i) {
            if (used == faces.size() && !hasTaken())
                return false;
            faces[used++] = first + i;
        }
        return true;
    };
    if (!take(WordView::of(group.others().stream.data())))
        return false;
    const std::vector<quint32>& before = group.others().before;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const quint32 first = before[i];
        const bool isAlone = i + 1 == before.size() || (before[i + 1] & GroupFaces::kFollow) == 0;
        if (!hasTakenRun(first, isAlone ? 1 : (before[++i] & ~GroupFaces::kFollow) + 1))
            return false;
    }
    return hasTakenRun(group.first, group.count) && hasTaken();
}

} // namespace

void ModelBuilder::Data::prepareMaterialGroupForUpload(const QString& groupName, const MaterialGroup& group,
                                                       const QSharedPointer<ModelDataStream>& positions,
                                                       const QSharedPointer<ModelDataStream>& cornerIndices,
                                                       const QVector<unsigned int>& faceStarts) {
    if (!_verticesPerFace.isNull() && _verticesPerFace->type() != kIndexType)
        reportAssertion(
            QStringLiteral("GL_UNSIGNED_INT == _verticesPerFace->type()"),
            QString::asprintf("Wrong Face type 0x%X, needs to be 0x%X", _verticesPerFace->type(), kIndexType),
            923);
    if (isEmpty(_gpuIndices.data()))
        _gpuIndices = makeTriangleStream(cornerIndices);
    if (_gpuIndices.isNull()) {
        abandonPreparation();
        reportMissingStream(QStringLiteral("the triangle indices"));
        return;
    }

    DrawElementsIndirectCommand command;
    command.instanceCount = 1;
    command.firstIndex = static_cast<quint32>(_gpuIndices->size());
    const FaceTable table{WordView::of(_verticesPerFace.data()), faceStarts,
                          _uniformFaces ? *_uniformFaces : UniformFaces(), WordView::of(cornerIndices.data()),
                          ByteView::of(positions.data())};
    FaceCutter local;
    FaceCutter& cutter = _faceCutter ? *_faceCutter : local;
    const quint64 uncutBefore = cutter.uncutFaces();
    const auto cut = [&](const WordView& faces) { return cutter.cut(table, faces, *_gpuIndices); };
    if (!forFaces(group.faces, cut)) {
        abandonPreparation();
        reportRefusedData(QStringLiteral("the triangle indices"));
        return;
    }
    command.count = static_cast<quint32>(_gpuIndices->size()) - command.firstIndex;
    _statistics.triangles += command.count / 3;
    _statistics.untriangulatedFaces += cutter.uncutFaces() - uncutBefore;

    const quint64 drawKey = group.flags & _materialFlagsMask;
    _drawCommands[drawKey].append(command);
    _drawGroupNames[drawKey].append(groupName);
}

} // namespace Atelier::Vel
