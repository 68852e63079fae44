#include "texturefiles.h"

#include <QtCore/QFileInfo>

#include <velgl/texturemanager.h>
#include <velmodel/modelfiles.h>
#include <velmodel/textureloader.h>

namespace Atelier::Vel::Tool {

QString textureFile(const QString& path) {
    if (QFileInfo::exists(path))
        return path;
    QString withSlashes = path;
    withSlashes.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return QFileInfo::exists(withSlashes) ? withSlashes : path;
}

void installTextureLoader(const ModelFiles& files) {
    TextureManager::Instance().setLoader(
        [files](const QString& path) { return loadTextureFrom(files, textureFile(path)); });
}

} // namespace Atelier::Vel::Tool
