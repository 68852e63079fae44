#include "soundmodel.h"

#include <algorithm>
#include <cstring>

#include <velgl/drawbuffers.h>

namespace Atelier::Vel::Testing {

namespace {

template<typename Index>
bool allBelow(const QByteArray& bytes, quint64 limit) {
    if (bytes.isEmpty())
        return true;
    std::vector<Index> indices(static_cast<std::size_t>(bytes.size()) / sizeof(Index));
    if (!indices.empty())
        std::memcpy(indices.data(), bytes.constData(), indices.size() * sizeof(Index));
    return std::all_of(indices.begin(), indices.end(), [limit](Index index) { return index < limit; });
}

QString unsoundCommand(const DrawBuffers& drawable) {
    const auto indexCount = static_cast<quint64>(drawable.indexCount());
    for (const DrawElementsIndirectCommand& command : drawable.drawElementsIndirectCommands())
        if (quint64{command.firstIndex} + command.count > indexCount || command.count % 3 != 0 ||
            command.baseVertex != 0)
            return QStringLiteral("a command of %1 indices from %2, of %3")
                .arg(command.count)
                .arg(command.firstIndex)
                .arg(indexCount);
    return {};
}

} // namespace

QString unsoundness(const GPUModel& model, const Recording& recording) {
    for (const Recording::Upload& upload : recording.uploads)
        if (static_cast<quint64>(upload.bytes.size()) !=
            static_cast<quint64>(upload.count) * upload.elementSize)
            return QStringLiteral("%1 bytes for %2 elements").arg(upload.bytes.size()).arg(upload.count);
    if (model.drawableCount() == 0)
        return {};
    if (recording.uploads.size() < 2)
        return QStringLiteral("a drawable without buffers");
    for (int i = 0; i < model.drawableCount(); ++i)
        if (QString command = unsoundCommand(*model.drawable(i)); !command.isNull())
            return command;
    // The first buffer holds the indices. Each of the others holds two or three components per vertex.
    const quint64 vertexCount = model.drawable(0)->vertexCount();
    const Recording::Upload& indices = recording.uploads.front();
    const bool isBelow = indices.elementSize == sizeof(quint16)
                             ? allBelow<quint16>(indices.bytes, vertexCount)
                             : allBelow<quint32>(indices.bytes, vertexCount);
    if (!isBelow)
        return QStringLiteral("an index that names none of %1 vertices").arg(vertexCount);
    for (std::size_t k = 1; k < recording.uploads.size(); ++k)
        if (static_cast<quint64>(recording.uploads[k].count) != 3 * vertexCount &&
            static_cast<quint64>(recording.uploads[k].count) != 2 * vertexCount)
            return QStringLiteral("%1 elements for %2 vertices")
                .arg(recording.uploads[k].count)
                .arg(vertexCount);
    return {};
}

} // namespace Atelier::Vel::Testing
