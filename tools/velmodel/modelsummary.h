#pragma once

#include <optional>

#include <QtCore/QJsonObject>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <velmodel/drawdata.h>

#include "modelsession.h"

namespace Atelier::Vel::Tool {

/// What `velmodel info` prints about a model.
struct ModelSummary {
    struct Attribute {
        QString name;
        int components = 0;
        QString type;
    };
    struct TextureFile {
        QString map; ///< the material's member, such as "map_Kd"
        QString path;
        QString status; ///< "found", "missing" or "unreadable"
        QSize size;     ///< in pixels, if found
    };
    struct Material {
        QString name;
        quint64 triangles = 0;
        QVector<TextureFile> textures;
    };

    QString file;
    LoadReport report;
    double seconds = 0;
    int draws = 0;
    int commands = 0;
    QVector<Attribute> attributes; ///< sorted by name
    QVector<Material> materials;   ///< in the order of the commands
    DrawData::Box bounds;
    quint64 gpuBytes = 0; ///< of an upload: buffers, commands and instance data, without textures
    std::optional<DrawData::VertexCacheStatistics> cache; ///< none if this build cannot measure it
    QStringList notes;                                    ///< sentences about problems of the file

    /// 10^6 bytes of OBJ text per second.
    double megabytesPerSecond() const;
};

ModelSummary summarize(const QString& file, const LoadedData& loaded);

QString summaryText(const ModelSummary& summary);
QJsonObject summaryJson(const ModelSummary& summary);

} // namespace Atelier::Vel::Tool
