#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

namespace Atelier::Vel::Viewer {

/// What the viewer remembers between its runs, in the QSettings of the application.
namespace ViewerSettings {

constexpr int kMaxRecentFiles = 10;

/// The last files that were opened, the newest first.
QStringList recentFiles();
void addRecentFile(const QString& path);
void clearRecentFiles();

/// The folder of the open dialog.
QString lastFolder();
/// The folder of screenshots: that of the user's pictures, unless another one is set.
QString screenshotFolder();

/// The geometry of a window, and the state of its panels.
QByteArray geometry();
QByteArray panels();
void setWindow(const QByteArray& geometry, const QByteArray& panels);

} // namespace ViewerSettings

} // namespace Atelier::Vel::Viewer
