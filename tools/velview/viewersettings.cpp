#include "viewersettings.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtCore/QStandardPaths>

namespace Atelier::Vel::Viewer::ViewerSettings {

namespace {

const QString kRecentFiles = QStringLiteral("recentFiles");
const QString kLastFolder = QStringLiteral("lastFolder");
const QString kScreenshotFolder = QStringLiteral("screenshotFolder");
const QString kGeometry = QStringLiteral("window/geometry");
const QString kPanels = QStringLiteral("window/panels");

} // namespace

QStringList recentFiles() {
    return QSettings().value(kRecentFiles).toStringList();
}

void addRecentFile(const QString& path) {
    const QFileInfo file(path);
    QStringList files = recentFiles();
    files.removeAll(file.absoluteFilePath());
    files.prepend(file.absoluteFilePath());
    QSettings settings;
    settings.setValue(kRecentFiles, QStringList(files.mid(0, kMaxRecentFiles)));
    settings.setValue(kLastFolder, file.absolutePath());
}

void clearRecentFiles() {
    QSettings().remove(kRecentFiles);
}

QString lastFolder() {
    return QSettings().value(kLastFolder).toString();
}

QString screenshotFolder() {
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QSettings()
        .value(kScreenshotFolder, QDir(pictures).exists() ? pictures : QDir::homePath())
        .toString();
}

QByteArray geometry() {
    return QSettings().value(kGeometry).toByteArray();
}

QByteArray panels() {
    return QSettings().value(kPanels).toByteArray();
}

void setWindow(const QByteArray& geometry, const QByteArray& panels) {
    QSettings settings;
    settings.setValue(kGeometry, geometry);
    settings.setValue(kPanels, panels);
}

} // namespace Atelier::Vel::Viewer::ViewerSettings
