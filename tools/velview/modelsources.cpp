#include "modelsources.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <velmodel/modelfiles.h>

namespace Atelier::Vel::Viewer {

namespace {

// Longer lines hold no names that matter.
constexpr qint64 kMaxLine = 4096;

QStringList namedLibraries(const QString& path) {
    QStringList libraries;
    const std::unique_ptr<QFile> file = ModelFiles().open(path);
    if (!file)
        return libraries;
    const QDir folder = QFileInfo(path).dir();
    while (!file->atEnd()) {
        const QByteArray line = file->readLine(kMaxLine).trimmed();
        if (line.startsWith("mtllib"))
            libraries.append(folder.filePath(QString::fromLocal8Bit(line.mid(6).trimmed())));
    }
    return libraries;
}

QStringList librariesBeside(const QString& path) {
    const QDir folder = QFileInfo(path).dir();
    QStringList libraries;
    for (const QString& name : folder.entryList({QStringLiteral("*.mtl")}, QDir::Files))
        libraries.append(folder.filePath(name));
    return libraries;
}

} // namespace

QStringList sourcesOf(const QString& path, const DrawData& data) {
    QStringList sources = QStringList(path) + namedLibraries(path) + librariesBeside(path);
    for (QString texture : data.texturePaths())
        sources.append(texture.replace(QLatin1Char('\\'), QLatin1Char('/')));
    sources.removeDuplicates();
    return sources;
}

} // namespace Atelier::Vel::Viewer
