#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtWidgets/QApplication>

#include <gmock/gmock.h>

#include "support/sanitizer.h"
#if VELMODEL_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr int kSkipped = 77; // SKIP_RETURN_CODE in CMakeLists.txt

QSurfaceFormat core43() {
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    return format;
}

bool wantsEgl() {
    return qEnvironmentVariable("QT_XCB_GL_INTEGRATION") == QLatin1String("xcb_egl");
}

/// Why Qt makes no context of OpenGL 4.3 in the way that QT_XCB_GL_INTEGRATION selects; empty if it does.
std::string obstacle() {
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface))
        return "Qt makes no context";
    if (context.format().version() < qMakePair(4, 3))
        return "Qt makes no context of OpenGL 4.3";
    const bool isEgl = std::strstr(context.nativeHandle().typeName(), "EGL") != nullptr;
    return isEgl == wantsEgl() ? "" : "Qt has no plug-in for this QT_XCB_GL_INTEGRATION";
}

int skip(const std::string& reason) {
    std::printf("Skipped: %s\n", reason.c_str());
    return kSkipped;
}

/// Runs the tests and then the sanitizer's check for leaks, if this program has one. The application still
/// exists: its destructor unloads the driver, after which memory that the driver keeps counts as leaked.
int runTests() {
    const int result = RUN_ALL_TESTS();
#if VELMODEL_ADDRESS_SANITIZER
    __lsan_do_leak_check();
#endif
    return result;
}

/// Leaves out the tests of a suite.
void leaveOut(const std::string& suite) {
    std::string& filter = testing::GTEST_FLAG(filter);
    filter += (filter.find('-') == std::string::npos ? "-" : ":") + suite + ".*";
}

} // namespace

// Usage: windows_test --sharing | --separate     Whether the contexts of all widgets share their objects.
int main(int argc, char** argv) {
    const bool sharing = std::find(argv, argv + argc, std::string("--sharing")) != argv + argc;
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, sharing);
    QSurfaceFormat::setDefaultFormat(core43());
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    testing::InitGoogleMock(&argc, argv);
    leaveOut(sharing ? "SeparateWindowsTest" : "SharingWindowsTest");
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return skip("no X server: xvfb-run is missing");
    const std::string reason = obstacle();
    if (reason.empty())
        return runTests();
    // Every driver of X makes contexts through GLX, but not every one through EGL.
    if (wantsEgl())
        return skip(reason);
    std::fprintf(stderr, "%s\n", reason.c_str());
    return 1;
}
