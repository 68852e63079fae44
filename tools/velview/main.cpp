#include <cstdio>
#include <cstdlib>

#include <QtGui/QSurfaceFormat>
#include <QtWidgets/QApplication>

#include "backgroundwork.h"
#include "console.h"
#include "vieweroptions.h"
#include "windowlist.h"

namespace Atelier::Vel::Viewer {

namespace {

void prepareApplication() {
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // Textures and buffers are the same in all windows.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QCoreApplication::setOrganizationName(QStringLiteral("VelModel"));
    QCoreApplication::setApplicationName(QStringLiteral("velview"));
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QSurfaceFormat::setDefaultFormat(format);
}

// Qt aborts without a display. The answers of the command line need none.
bool hasDisplay() {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (!qEnvironmentVariableIsEmpty(variable))
            return true;
    return false;
}

ExitCode answerWithoutDisplay(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ExitCode exitCode = ExitCode::Done;
    if (!readViewerOptions(QCoreApplication::arguments().mid(1), exitCode))
        return exitCode;
    Tool::reportError(QStringLiteral("There is no display"));
    return ExitCode::NoOpenGL;
}

ExitCode runWindows(int argc, char** argv) {
    const QApplication application(argc, argv);
    ExitCode exitCode = ExitCode::Done;
    const auto options = readViewerOptions(QCoreApplication::arguments().mid(1), exitCode);
    if (!options)
        return exitCode;
    Tool::installMessageLog(options->verbosity);
    WindowList windows(*options);
    QObject::connect(&windows, &WindowList::openGLFailed, [](const QString& error) {
        Tool::reportError(QStringLiteral("No OpenGL: %1").arg(error));
        QCoreApplication::exit(static_cast<int>(ExitCode::NoOpenGL));
    });
    windows.openFiles();
    return static_cast<ExitCode>(QApplication::exec());
}

} // namespace

} // namespace Atelier::Vel::Viewer

int main(int argc, char** argv) {
    using namespace Atelier::Vel;
    Tool::prepareStandardStreams();
    Tool::setConsoleName("velview");
    Tool::installMessageLog();
    Viewer::prepareApplication();
    const Viewer::ExitCode exitCode =
        Viewer::hasDisplay() ? Viewer::runWindows(argc, argv) : Viewer::answerWithoutDisplay(argc, argv);
    // Work that is still running uses static objects, so those must not be destroyed.
    if (Viewer::RunningWork::count() > 0) {
        std::fflush(nullptr);
        std::_Exit(static_cast<int>(exitCode));
    }
    return static_cast<int>(exitCode);
}
