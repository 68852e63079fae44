#include <algorithm>
#include <vector>

#include <velmodel/modelbuilder.h>

#include "diagnostics.h"
#include "upload/facecutter.h"

namespace Atelier::Vel {

void ModelBuilder::prepareMaterialGroupForUpload(const QString& groupName, const MaterialGroup& group,
                                                 const QSharedPointer<ModelDataStream>& positions,
                                                 const QSharedPointer<ModelDataStream>& cornerIndices,
                                                 const QVector<unsigned int>& faceStarts) {
    const WordView faces = WordView::of(group.faces.data());
    if (!_verticesPerFace.isNull() && _verticesPerFace->type() != kIndexType)
        reportAssertion(
            QStringLiteral("GL_UNSIGNED_INT == _verticesPerFace->type()"),
            QString::asprintf("Wrong Face type 0x%X, needs to be 0x%X", _verticesPerFace->type(), kIndexType),
            923);
    if (isEmpty(_gpuIndices.data()))
        _gpuIndices = makeStream(kIndexType, 0);
    if (_gpuIndices.isNull()) {
        abandonPreparation();
        reportMissingStream(QStringLiteral("the triangle indices"));
        return;
    }

    DrawElementsIndirectCommand command;
    command.instanceCount = 1;
    command.firstIndex = static_cast<quint32>(_gpuIndices->size());
    const FaceTable table{WordView::of(_verticesPerFace.data()), faceStarts,
                          WordView::of(cornerIndices.data()), ByteView::of(positions.data())};
    FaceCutter local;
    FaceCutter& cutter = _faceCutter ? *_faceCutter : local;
    const quint64 uncutBefore = cutter.uncutFaces();
    if (!cutter.cut(table, faces, *_gpuIndices)) {
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
