#include <cstdio>

#include <QtGui/QSurfaceFormat>
#include <QtWidgets/QApplication>

#include <gmock/gmock.h>

#include "support/sanitizer.h"
#if VELMODEL_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr int kSkipped = 77; // SKIP_RETURN_CODE in CMakeLists.txt

/// Runs the tests and then the sanitizer's check for leaks, if this program has one. The application still
/// exists: its destructor unloads the driver, after which memory that the driver keeps counts as leaked.
int runTests() {
    const int result = RUN_ALL_TESTS();
#if VELMODEL_ADDRESS_SANITIZER
    __lsan_do_leak_check();
#endif
    return result;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QCoreApplication::setOrganizationName("VelModel");
    QCoreApplication::setApplicationName("velview");
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QSurfaceFormat::setDefaultFormat(format);
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    testing::InitGoogleMock(&argc, argv);
    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        std::puts("Skipped: no X server: xvfb-run is missing");
        return kSkipped;
    }
    return runTests();
}
