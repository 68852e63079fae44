#include "screenshot.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtGui/QImageWriter>

namespace Atelier::Vel::Viewer {

namespace {

QString freePath(const QDir& folder, const QString& name) {
    QString path = folder.filePath(name + QStringLiteral(".png"));
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = folder.filePath(QStringLiteral("%1-%2.png").arg(name).arg(number));
    return path;
}

} // namespace

QString saveNumbered(const QImage& picture, const QString& folder, const QString& name, QString& error) {
    QString path = freePath(folder, name.isEmpty() ? QStringLiteral("velview") : name);
    QImageWriter writer(path);
    if (writer.write(picture))
        return path;
    error = QCoreApplication::translate("Screenshot", "%1: The picture cannot be written: %2")
                .arg(path, writer.errorString());
    return {};
}

} // namespace Atelier::Vel::Viewer
