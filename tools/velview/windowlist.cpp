#include "windowlist.h"

#include <QtCore/QTimer>

#include "modelview.h"
#include "viewerwindow.h"

namespace Atelier::Vel::Viewer {

WindowList::WindowList(const ViewerOptions& options, QObject* parent) : QObject(parent), _options(options) {}

void WindowList::openFiles() {
    if (_options.files.isEmpty())
        openWindow({});
    for (const QString& file : _options.files)
        openWindow(file);
}

ViewerWindow* WindowList::openWindow(const QString& path) {
    auto* const window = new ViewerWindow(_options);
    window->setAttribute(Qt::WA_DeleteOnClose);
    connect(window, &ViewerWindow::windowWanted, this, &WindowList::openWindow);
    connect(window, &ViewerWindow::openGLFailed, this, &WindowList::openGLFailed);
    // The file is read while the window comes up.
    if (!path.isNull())
        window->open(path);
    window->QWidget::show();
    QTimer::singleShot(0, window, [this, window] {
        if (!window->view().isValid())
            Q_EMIT openGLFailed(tr("Qt makes no OpenGL context"));
    });
    return window;
}

} // namespace Atelier::Vel::Viewer
