#include "viewerfixture.h"

#include <algorithm>
#include <cstdlib>

#include <QtCore/QDir>
#include <QtCore/QSettings>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>

#include "shownmodel.h"

namespace Atelier::Vel::Viewer::Testing {

namespace {

constexpr QSize kWindowSize(480, 400);

bool areAlike(QRgb one, QRgb other, int tolerance) {
    return std::abs(qRed(one) - qRed(other)) <= tolerance &&
           std::abs(qGreen(one) - qGreen(other)) <= tolerance &&
           std::abs(qBlue(one) - qBlue(other)) <= tolerance;
}

} // namespace

double difference(const QImage& one, const QImage& other, int tolerance) {
    if (one.size() != other.size() || one.isNull())
        return 1;
    int different = 0;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x)
            different += areAlike(one.pixel(x, y), other.pixel(x, y), tolerance) ? 0 : 1;
    return double(different) / (double(one.width()) * one.height());
}

ViewerTest::ViewerTest() {
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, _folder.filePath("settings"));
    QSettings().setValue("screenshotFolder", _folder.path());
}

ViewerTest::~ViewerTest() = default;

void ViewerTest::TearDown() {
    _windows.clear();
    EXPECT_THAT(takeWarnings(), ::testing::IsEmpty());
}

ViewerWindow& ViewerTest::makeWindow(const ViewerOptions& options) {
    _windows.push_back(std::make_unique<ViewerWindow>(options));
    ViewerWindow& window = *_windows.back();
    window.resize(kWindowSize);
    window.QWidget::show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    window.activateWindow();
    waitForFrame(window);
    return window;
}

ViewerWindow& ViewerTest::makeWindow(const QString& file) {
    ViewerWindow& window = makeWindow();
    open(window, file);
    return window;
}

ViewerOptions ViewerTest::forgiving() {
    ExitCode exitCode = ExitCode::Done;
    return *readViewerOptions({}, exitCode);
}

QString ViewerTest::sample(const QString& name) {
    return QStringLiteral(VELMODEL_SOURCE_DIR "/samples/") + name;
}

QString ViewerTest::write(const QString& name, const QByteArray& text) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    return file.fileName();
}

QByteArray ViewerTest::squareObj(const QByteArray& colour) {
    QByteArray text;
    for (const char* position : {"-1 -1 0", "1 -1 0", "1 1 0", "-1 1 0"})
        text += "v " + QByteArray(position) + ' ' + colour + '\n';
    return text + "f 1 2 3 4\n";
}

void ViewerTest::open(ViewerWindow& window, const QString& file) {
    window.open(file);
    waitForLoad(window);
    waitForFrame(window);
}

void ViewerTest::waitForLoad(ViewerWindow& window) {
    EXPECT_TRUE(waitUntil([&] { return !window.loads().isLoading(); })) << "the load does not end";
    EXPECT_TRUE(waitUntil([&] {
        return !window.view().model() || window.view().model()->read().textures.waitingCount() == 0;
    })) << "the textures do not come";
}

void ViewerTest::waitForFrame(ViewerWindow& window) {
    EXPECT_TRUE(waitUntil([&] { return !window.view().isMoving(); })) << "the view does not rest";
    const int before = window.view().frameCount();
    window.view().update();
    EXPECT_TRUE(waitUntil([&] { return window.view().frameCount() > before; })) << "no frame was drawn";
}

QImage ViewerTest::picture(ViewerWindow& window) {
    waitForFrame(window);
    return window.view().grabFramebuffer();
}

void ViewerTest::press(ViewerWindow& window, int key, Qt::KeyboardModifiers modifiers) {
    window.activateWindow();
    EXPECT_TRUE(waitUntil([&] { return QApplication::activeWindow() == &window; }));
    window.view().setFocus();
    QTest::keyClick(&window.view(), static_cast<Qt::Key>(key), modifiers);
}

void ViewerTest::keep(ViewerWindow& window, const QString& name) {
    const QString folder = qEnvironmentVariable("VELVIEW_PICTURES");
    if (folder.isEmpty())
        return;
    waitForFrame(window);
    // Not grab(), which leaves out what a view paints over its model.
    const QPixmap onScreen = window.windowHandle()->screen()->grabWindow(window.winId());
    EXPECT_TRUE(onScreen.save(QDir(folder).filePath(name + ".png")));
}

std::vector<QString> ViewerTest::takeWarnings() {
    std::vector<QString> warnings = _log.texts(QtWarningMsg);
    for (const QtMsgType worse : {QtCriticalMsg, QtFatalMsg})
        for (const QString& text : _log.texts(worse))
            warnings.push_back(text);
    _log.clear();
    // Without a window manager, a window that is focused may be gone.
    const auto isOfServer = [](const QString& text) { return text.startsWith("QXcbConnection: XCB error"); };
    warnings.erase(std::remove_if(warnings.begin(), warnings.end(), isOfServer), warnings.end());
    return warnings;
}

} // namespace Atelier::Vel::Viewer::Testing
