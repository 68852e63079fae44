#include "import/references/filecause.h"

#include <QtCore/QFileInfo>

namespace Atelier::Vel {

QString causeOfUnreadable(const QString& path) {
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return QStringLiteral("no such file");
    if (info.isDir())
        return QStringLiteral("is a directory");
    if (!info.isFile())
        return QStringLiteral("is not a regular file");
    return info.isReadable() ? QStringLiteral("cannot be read") : QStringLiteral("permission denied");
}

} // namespace Atelier::Vel
