#pragma once

#include <QtCore/QString>
#include <QtGui/QImage>

namespace Atelier::Vel::Viewer {

/// Writes a picture into `folder`, as PNG, under a name that no file has: "NAME.png", "NAME-2.png" and so on.
/// Returns: its path; null, and the cause in `error`, if it cannot be written.
QString saveNumbered(const QImage& picture, const QString& folder, const QString& name, QString& error);

} // namespace Atelier::Vel::Viewer
