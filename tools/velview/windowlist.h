#pragma once

#include <QtCore/QObject>

#include "vieweroptions.h"

namespace Atelier::Vel::Viewer {

class ViewerWindow;

/// Opens the windows of the program. A window deletes itself when it is closed.
class WindowList : public QObject {
    Q_OBJECT
public:
    explicit WindowList(const ViewerOptions& options, QObject* parent = nullptr);

    /// Opens a window for each file of the options, or an empty one if there are none.
    void openFiles();
    /// Opens a window, with a model unless `path` is null.
    ViewerWindow* openWindow(const QString& path);

Q_SIGNALS:
    /// A window cannot show anything.
    void openGLFailed(const QString& error);

private:
    ViewerOptions _options;
};

} // namespace Atelier::Vel::Viewer
