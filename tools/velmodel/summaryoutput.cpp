#include <QtCore/QJsonArray>

#include "console.h"
#include "jsonoutput.h"
#include "modelsummary.h"
#include "repairs.h"

namespace Atelier::Vel::Tool {

namespace {

QString row(const char* label, const QString& text) {
    return QStringLiteral("  %1 %2\n").arg(QLatin1String(label), -12).arg(text);
}

QString counted(quint64 count, const char* what) {
    return QStringLiteral("%1 %2%3").arg(count).arg(QLatin1String(what),
                                                    QLatin1String(count == 1 ? "" : "s"));
}

QString numbers(const QVector3D& v) {
    return QStringLiteral("%1 %2 %3").arg(double(v.x())).arg(double(v.y())).arg(double(v.z()));
}

QString boundsText(const DrawData::Box& bounds) {
    return bounds.isValid ? QStringLiteral("%1 to %2").arg(numbers(bounds.minimum), numbers(bounds.maximum))
                          : QStringLiteral("none");
}

QString attributesText(const ModelSummary& summary) {
    QStringList texts;
    for (const ModelSummary::Attribute& attribute : summary.attributes)
        texts.append(
            QStringLiteral("%1 (%2 x %3)")
                .arg(onOneLine(attribute.name), QString::number(attribute.components), attribute.type));
    return texts.isEmpty() ? QStringLiteral("none") : texts.join(QStringLiteral(", "));
}

QString textureText(const ModelSummary::TextureFile& texture) {
    const QString state = texture.size.isValid()
                              ? QStringLiteral("%1 x %2").arg(texture.size.width()).arg(texture.size.height())
                              : texture.status;
    return QStringLiteral("      %1 %2 (%3)\n").arg(texture.map, -7).arg(onOneLine(texture.path), state);
}

QString cacheText(const DrawData::VertexCacheStatistics& cache) {
    return row("ACMR",
               QStringLiteral("%1 vertices transformed per triangle").arg(double(cache.acmr), 0, 'f', 3)) +
           row("ATVR", QStringLiteral("%1 transformations per vertex").arg(double(cache.atvr), 0, 'f', 3));
}

QString materialsText(const ModelSummary& summary) {
    QString text = QStringLiteral("  materials\n");
    for (const ModelSummary::Material& material : summary.materials) {
        text += QStringLiteral("    %1: %2\n")
                    .arg(onOneLine(material.name), counted(material.triangles, "triangle"));
        for (const ModelSummary::TextureFile& texture : material.textures)
            text += textureText(texture);
    }
    return summary.materials.isEmpty() ? QString() : text;
}

QJsonValue boundsJson(const DrawData::Box& bounds) {
    if (!bounds.isValid)
        return {};
    const auto array = [](const QVector3D& v) {
        return QJsonArray{jsonFloat(v.x()), jsonFloat(v.y()), jsonFloat(v.z())};
    };
    return QJsonObject{{QStringLiteral("minimum"), array(bounds.minimum)},
                       {QStringLiteral("maximum"), array(bounds.maximum)}};
}

QJsonArray attributesJson(const ModelSummary& summary) {
    QJsonArray result;
    for (const ModelSummary::Attribute& attribute : summary.attributes)
        result.append(QJsonObject{{QStringLiteral("name"), attribute.name},
                                  {QStringLiteral("components"), attribute.components},
                                  {QStringLiteral("type"), attribute.type}});
    return result;
}

QJsonObject textureJson(const ModelSummary::TextureFile& texture) {
    QJsonObject result{{QStringLiteral("map"), texture.map},
                       {QStringLiteral("path"), texture.path},
                       {QStringLiteral("status"), texture.status}};
    if (texture.size.isValid()) {
        result.insert(QStringLiteral("width"), texture.size.width());
        result.insert(QStringLiteral("height"), texture.size.height());
    }
    return result;
}

QJsonArray materialsJson(const ModelSummary& summary) {
    QJsonArray result;
    for (const ModelSummary::Material& material : summary.materials) {
        QJsonArray textures;
        for (const ModelSummary::TextureFile& texture : material.textures)
            textures.append(textureJson(texture));
        result.append(QJsonObject{{QStringLiteral("name"), material.name},
                                  {QStringLiteral("triangles"), qint64(material.triangles)},
                                  {QStringLiteral("textures"), textures}});
    }
    return result;
}

} // namespace

QString summaryText(const ModelSummary& summary) {
    const LoadReport& report = summary.report;
    QString text = onOneLine(summary.file) + QLatin1Char('\n');
    text += row("vertices", QStringLiteral("%1 before merging, %2 after")
                                .arg(report.statistics.corners)
                                .arg(report.statistics.vertices));
    text += row("faces", QString::number(report.faces));
    text += row("triangles", QString::number(report.statistics.triangles));
    text += row(
        "draws",
        QStringLiteral("%1 with %2").arg(summary.draws).arg(counted(quint64(summary.commands), "command")));
    text += row("attributes", attributesText(summary));
    text += row("bounds", boundsText(summary.bounds));
    text += row("on the GPU", QStringLiteral("%1 bytes").arg(summary.gpuBytes));
    if (summary.cache)
        text += cacheText(*summary.cache);
    text += row("loaded in", QStringLiteral("%1 ms (%2 MB/s)")
                                 .arg(summary.seconds * 1e3, 0, 'f', 2)
                                 .arg(summary.megabytesPerSecond(), 0, 'f', 1));
    text += materialsText(summary);
    for (const QString& note : summary.notes)
        text += row("note", note);
    return text;
}

QJsonObject summaryJson(const ModelSummary& summary) {
    const LoadReport& report = summary.report;
    QJsonObject result{{QStringLiteral("file"), summary.file},
                       {QStringLiteral("corners"), qint64(report.statistics.corners)},
                       {QStringLiteral("vertices"), qint64(report.statistics.vertices)},
                       {QStringLiteral("faces"), qint64(report.faces)},
                       {QStringLiteral("triangles"), qint64(report.statistics.triangles)},
                       {QStringLiteral("draws"), summary.draws},
                       {QStringLiteral("commands"), summary.commands},
                       {QStringLiteral("attributes"), attributesJson(summary)},
                       {QStringLiteral("materials"), materialsJson(summary)},
                       {QStringLiteral("bounds"), boundsJson(summary.bounds)},
                       {QStringLiteral("gpuBytes"), qint64(summary.gpuBytes)},
                       {QStringLiteral("bytesRead"), report.bytesRead},
                       {QStringLiteral("seconds"), summary.seconds},
                       {QStringLiteral("megabytesPerSecond"), summary.megabytesPerSecond()},
                       {QStringLiteral("droppedFaces"), qint64(report.droppedFaces)},
                       {QStringLiteral("facesWithoutGroup"), qint64(report.facesWithoutGroup)},
                       {QStringLiteral("untriangulatedFaces"), qint64(report.statistics.untriangulatedFaces)},
                       {QStringLiteral("substitutedCorners"), qint64(report.statistics.substitutedCorners)},
                       {QStringLiteral("repairs"), QJsonArray::fromStringList(repairLines(report))},
                       {QStringLiteral("notes"), QJsonArray::fromStringList(summary.notes)}};
    if (summary.cache) {
        result.insert(QStringLiteral("acmr"), double(summary.cache->acmr));
        result.insert(QStringLiteral("atvr"), double(summary.cache->atvr));
    }
    return result;
}

} // namespace Atelier::Vel::Tool
