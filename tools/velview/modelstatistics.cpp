#include "modelstatistics.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QSet>

#include "shownmodel.h"

namespace Atelier::Vel::Viewer {

namespace {

constexpr quint64 kShortIndexLimit = 0xFFFF; // fewer vertices have indices of 16 bits
constexpr double kMipmapFactor = 4.0 / 3;    // of a texture with all its smaller levels
constexpr quint64 kBytesPerTexel = 4;

QString tr(const char* text) {
    return QCoreApplication::translate("ModelStatistics", text);
}

QString count(quint64 number) {
    return QLocale().toString(number);
}

QString milliseconds(double value) {
    return tr("%1 ms").arg(QLocale().toString(value, 'f', 1));
}

quint64 textureBytes(const ModelContents& contents) {
    QSet<QString> known;
    double bytes = 0;
    for (const ModelMaterial& material : contents.materials)
        for (const MaterialTexture& texture : material.textures)
            if (!texture.isMissing() && !known.contains(texture.path)) {
                known.insert(texture.path);
                bytes +=
                    double(texture.size.width()) * texture.size.height() * kBytesPerTexel * kMipmapFactor;
            }
    return quint64(bytes);
}

void addStages(const ShownModel& model, StatisticLines& lines) {
    double total = model.uploadMilliseconds();
    for (int stage = 0; stage < kLoadStages; ++stage) {
        const double time = model.read().milliseconds[stage];
        total += time;
        if (time > 0)
            lines.append({stageName(static_cast<LoadStage>(stage)), milliseconds(time)});
    }
    lines.append({tr("Upload"), milliseconds(model.uploadMilliseconds())});
    lines.append({tr("Load in all"), milliseconds(total)});
}

} // namespace

quint64 gpuBytes(const ShownModel& model) {
    const DrawData& data = model.read().data;
    quint64 bytes = textureBytes(model.contents());
    for (const DrawData::Attribute& attribute : data.attributes())
        bytes += attribute.bytes;
    return bytes + data.indices().count * (data.vertexCount() < kShortIndexLimit ? 2 : 4);
}

StatisticLines statisticsOf(const ShownModel& model) {
    const ReadModel& read = model.read();
    const PreparationStatistics& prepared = read.report.statistics;
    StatisticLines lines{
        {tr("File"), QFileInfo(read.path).fileName()},
        {tr("Size of the file"), QLocale().formattedDataSize(read.report.bytesRead)},
        {tr("Faces"), count(read.report.faces)},
        {tr("Triangles"), count(prepared.triangles)},
        {tr("Vertices before merging"), count(prepared.corners)},
        {tr("Vertices after merging"), count(prepared.vertices)},
        {tr("Draws"), count(quint64(read.contents.parts.size()))},
        {tr("Materials"), count(quint64(read.contents.materials.size()))},
        {tr("GPU memory"), QLocale().formattedDataSize(qint64(gpuBytes(model)))},
    };
    if (DrawData::canOptimise()) // which also counts
        lines.append({tr("Cache misses per triangle"), QLocale().toString(double(read.cache.acmr), 'f', 3)});
    addStages(model, lines);
    return lines;
}

} // namespace Atelier::Vel::Viewer
