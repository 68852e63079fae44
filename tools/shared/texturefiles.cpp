#include "texturefiles.h"

#include <QtCore/QFileInfo>

namespace Atelier::Vel::Tool {

QString textureFile(const QString& path) {
    if (QFileInfo::exists(path))
        return path;
    QString withSlashes = path;
    withSlashes.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return QFileInfo::exists(withSlashes) ? withSlashes : path;
}

} // namespace Atelier::Vel::Tool
