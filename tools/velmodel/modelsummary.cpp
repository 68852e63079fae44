#include "modelsummary.h"

#include <algorithm>

#include <QtCore/QFileInfo>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/vertexarrayobject.h>
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

void addDrawable(ModelSummary& summary, const LoadedModel& loaded, int index) {
    const GPUModel& model = *loaded.model;
    const auto commands = model.drawable(index)->drawElementsIndirectCommands();
    InstanceDataCollection* materials = model.materials(index);
    summary.commands += commands.size();
    for (int number = 0; number < commands.size(); ++number) {
        ModelSummary::Material material{model.materialName(index, number), commands[number].count / 3, {}};
        if (materials != nullptr && number < materials->items().size())
            material.textures = textureFiles(materials->items()[number], loaded.files);
        summary.materials.append(material);
    }
    summary.gpuBytes += quint64(commands.size()) * sizeof(DrawElementsIndirectCommand);
    for (InstanceDataCollection* collection : {materials, model.instances(index)})
        if (collection != nullptr)
            summary.gpuBytes += quint64(collection->packed().size());
}

// All drawables of a model share their buffers.
void addBuffers(ModelSummary& summary, const DrawBuffers& buffers) {
    summary.gpuBytes += buffers.indexBuffer()->byteCount();
    for (const VertexArrayObject::Stream& stream : buffers.VAO()->streams()) {
        summary.attributes.append({stream.name, stream.components, glTypeName(stream.type)});
        summary.gpuBytes += stream.buffer->byteCount();
    }
    std::sort(summary.attributes.begin(), summary.attributes.end(),
              [](const auto& a, const auto& b) { return a.name < b.name; });
}

void note(QStringList& notes, quint64 count, const char* one, const char* many) {
    if (count > 0)
        notes.append(QString::number(count) + QLatin1String(count == 1 ? one : many));
}

QStringList notesOn(const LoadReport& report) {
    QStringList notes;
    note(notes, report.droppedFaces, " face was dropped, because one of its corners is no integer.",
         " faces were dropped, because one of their corners is no integer.");
    note(notes, report.facesWithoutGroup,
         " face belongs to no material: its material was not known when it was read. It is not drawn.",
         " faces belong to no material: theirs was not known when they were read. They are not drawn.");
    note(notes, report.untriangulatedFaces, " face could not be cut into triangles. It is not drawn.",
         " faces could not be cut into triangles. They are not drawn.");
    note(notes, report.substitutedCorners,
         " corner names a position, normal or texture coordinate that does not exist, and got zeros.",
         " corners name a position, normal or texture coordinate that does not exist, and got zeros.");
    if (report.triangles == 0)
        notes.append(QStringLiteral("There is nothing to draw: the model has no triangles."));
    return notes;
}

} // namespace

double ModelSummary::megabytesPerSecond() const {
    return seconds > 0 ? double(report.bytesRead) / seconds * 1e-6 : 0;
}

ModelSummary summarize(const QString& file, const LoadedModel& loaded) {
    ModelSummary summary;
    summary.file = file;
    summary.report = loaded.report;
    summary.seconds = loaded.seconds;
    summary.draws = loaded.model->drawableCount();
    for (int index = 0; index < summary.draws; ++index)
        addDrawable(summary, loaded, index);
    if (summary.draws > 0)
        addBuffers(summary, *loaded.model->drawable(0));
    summary.bounds = loaded.model->bounds();
    summary.notes = notesOn(loaded.report);
    return summary;
}

} // namespace Atelier::Vel::Tool
