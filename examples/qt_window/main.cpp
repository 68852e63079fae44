// Shows OBJ files with their textures side by side, in a dock of a Qt window that draws with its own shaders.
// Usage: qt_window MODEL.obj... [--commands]
// Ctrl+O adds a model, F5 reads all files again. The dock can be dragged out of the window and back. With
// --commands, commands are read from standard input, see commands.h.
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenuBar>

#include "canvas.h"
#include "commands.h"
#include "shared/showmodel.h"

namespace {

void addMenu(QMainWindow& window, Canvas& canvas) {
    QMenu* const menu = window.menuBar()->addMenu(QStringLiteral("&Models"));
    const auto open = [&window, &canvas] {
        const QString filter = QStringLiteral("Models (*.obj)");
        for (const QString& path : QFileDialog::getOpenFileNames(&window, {}, {}, filter))
            canvas.add(path);
    };
    menu->addAction(QStringLiteral("&Add..."), open)->setShortcut(QKeySequence::Open);
    menu->addAction(QStringLiteral("&Reload"), [&canvas] { canvas.reload(); })
        ->setShortcut(QKeySequence::Refresh);
}

} // namespace

int main(int argc, char** argv) {
    useOpenGL43();
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts); // see canvas.h
    const QApplication application(argc, argv);

    QStringList paths = QApplication::arguments().mid(1);
    const bool hasCommands = paths.removeOne(QStringLiteral("--commands"));
    QMainWindow window;
    QDockWidget dock(QStringLiteral("Models"));
    Canvas canvas;
    canvas.setMinimumSize(200, 150);
    dock.setWidget(&canvas);
    window.addDockWidget(Qt::LeftDockWidgetArea, &dock);
    addMenu(window, canvas);
    for (const QString& path : paths)
        canvas.add(path);
    window.resize(800, 600);
    window.show();
    const Commands commands(dock, canvas);
    return hasCommands ? commands.run() : QApplication::exec();
}
