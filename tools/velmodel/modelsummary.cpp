#include "modelsummary.h"

#include <algorithm>

#include <QtCore/QFileInfo>

#include <velgl/instancedatacollection.h>
#include <velmodel/textureloader.h>

#include "glnames.h"
#include "texturefiles.h"

namespace Atelier::Vel::Tool {

namespace {

ModelSummary::TextureFile textureState(const QString& map, const QString& named, const ModelFiles& files) {
    const QString path = textureFile(named);
    if (!QFileInfo(path).isFile())
        return {map, path, QStringLiteral("missing"), {}};
    const QSize size = readTextureSize(files, path);
    return {map, path, size.isValid() ? QStringLiteral("found") : QStringLiteral("unreadable"), size};
}

QVector<ModelSummary::TextureFile> textureFiles(const InstanceData& material, const ModelFiles& files) {
    QVector<ModelSummary::TextureFile> result;
    for (const QString& map : material.textureNames())
        if (!material.texturePath(map).isNull())
            result.append(textureState(map, material.texturePath(map), files));
    return result;
}

/// The bytes that an item takes in the storage buffer of its collection.
quint64 packedBytes(const InstanceData& item) {
    return quint64(InstanceDataCollection(item.name(), {item}).packed().size());
}

void include(DrawData::Box& bounds, const DrawData::Box& box) {
    if (!box.isValid)
        return;
    if (!bounds.isValid)
        bounds = box;
    for (int axis = 0; axis < 3; ++axis) {
        bounds.minimum[axis] = std::min(bounds.minimum[axis], box.minimum[axis]);
        bounds.maximum[axis] = std::max(bounds.maximum[axis], box.maximum[axis]);
    }
}

void addDrawable(ModelSummary& summary, const LoadedData& loaded, int drawable) {
    const int commands = loaded.data.commandCount(drawable);
    summary.commands += commands;
    for (int command = 0; command < commands; ++command) {
        const DrawData::Group group = loaded.data.group(drawable, command);
        summary.materials.append({group.name, loaded.data.command(drawable, command).count / 3,
                                  textureFiles(group.material, loaded.files)});
        include(summary.bounds, loaded.data.commandBox(drawable, command));
    }
    // All materials of a drawable have the layout of the first one.
    if (commands > 0)
        summary.gpuBytes += quint64(commands) * (sizeof(DrawElementsIndirectCommand) +
                                                 packedBytes(loaded.data.group(drawable, 0).material) +
                                                 packedBytes(makeIdentityInstance()));
}

/// The buffers that all drawables share.
void addBuffers(ModelSummary& summary, const DrawData& data) {
    const bool hasShortIndices = data.vertexCount() < 0xFFFF; // the rule of the upload
    summary.gpuBytes += data.indices().count * (hasShortIndices ? sizeof(quint16) : sizeof(quint32));
    for (const DrawData::Attribute& attribute : data.attributes()) {
        summary.attributes.append({attribute.name, attribute.components, glTypeName(attribute.type)});
        summary.gpuBytes += attribute.bytes;
    }
}

void note(QStringList& notes, quint64 count, const char* one, const char* many) {
    if (count > 0)
        notes.append(QString::number(count) + QLatin1String(count == 1 ? one : many));
}

QStringList notesOn(const LoadReport& report) {
    QStringList notes;
    note(notes, report.droppedFaces,
         " face was dropped, because one of its corners is not an integer or has no position.",
         " faces were dropped, because one of their corners is not an integer or has no position.");
    note(notes, report.facesWithoutGroup,
         " face belongs to no material, because its material was unknown when it was read. It is not drawn.",
         " faces belong to no material, because theirs was unknown when they were read. They are not drawn.");
    note(notes, report.statistics.untriangulatedFaces,
         " face could not be cut into triangles. It is not drawn.",
         " faces could not be cut into triangles. They are not drawn.");
    note(notes, report.statistics.substitutedCorners,
         " position, normal or texture coordinate of a corner is not named or does not exist. It is zero.",
         " positions, normals or texture coordinates of corners are not named or do not exist. They are "
         "zero.");
    if (report.statistics.triangles == 0)
        notes.append(QStringLiteral("There is nothing to draw: the model has no triangles."));
    return notes;
}

} // namespace

double ModelSummary::megabytesPerSecond() const {
    return seconds > 0 ? double(report.bytesRead) / seconds * 1e-6 : 0;
}

ModelSummary summarize(const QString& file, const LoadedData& loaded) {
    ModelSummary summary;
    summary.file = file;
    summary.report = loaded.report;
    summary.seconds = loaded.seconds;
    summary.draws = loaded.data.drawableCount();
    for (int drawable = 0; drawable < summary.draws; ++drawable)
        addDrawable(summary, loaded, drawable);
    if (summary.draws > 0)
        addBuffers(summary, loaded.data);
    if (DrawData::canOptimise())
        summary.cache = loaded.data.vertexCacheStatistics();
    summary.notes = notesOn(loaded.report);
    return summary;
}

} // namespace Atelier::Vel::Tool
