#include "viewerwindow.h"

#include <algorithm>

#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QDropEvent>
#include <QtGui/QPalette>
#include <QtGui/QWheelEvent>
#include <QtTest/QTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

#include "messagebar.h"
#include "shownmodel.h"
#include "viewerfixture.h"
#include "viewersettings.h"
#include "windowlist.h"

namespace Atelier::Vel::Viewer::Testing {

using ::testing::ElementsAre;

class ViewerWindowTest : public ViewerTest {
protected:
    static void drop(ViewerWindow& window, const QStringList& files) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& file : files)
            urls.append(QUrl::fromLocalFile(file));
        data.setUrls(urls);
        QDragEnterEvent enter({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent dropped({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &dropped);
    }
    static bool isRed(const QColor& colour) {
        return colour.red() > 2 * std::max(colour.green(), colour.blue());
    }
    static bool isBlue(const QColor& colour) {
        return colour.blue() > 2 * std::max(colour.green(), colour.red());
    }
    /// The colour in the middle of the view.
    static QColor middle(ViewerWindow& window) {
        const QImage image = picture(window);
        return image.pixelColor(image.width() / 2, image.height() / 2);
    }
};

TEST_F(ViewerWindowTest, AnEmptyWindowSaysHowToOpenAFile) {
    ViewerWindow& window = makeWindow();
    keep(window, "empty");
    const QImage image = picture(window);
    int dark = 0;
    for (int x = 0; x < image.width(); ++x)
        dark += qGray(image.pixel(x, image.height() / 2)) < 120 ? 1 : 0;
    EXPECT_GT(dark, 5) << "the text";
    EXPECT_EQ(window.windowTitle(), "velview");
}

TEST_F(ViewerWindowTest, AModelFillsTheView) {
    ViewerWindow& window = makeWindow(write("red.obj", squareObj("1 0 0")));
    press(window, Qt::Key_1);
    EXPECT_TRUE(isRed(middle(window)));
    EXPECT_EQ(window.windowTitle(), "red.obj - velview");
    EXPECT_THAT(ViewerSettings::recentFiles(), ElementsAre(path("red.obj")));
}

TEST_F(ViewerWindowTest, ALoadThatFailsInALineNamesIt) {
    ViewerOptions exact = forgiving();
    exact.load = {};
    ViewerWindow& window = makeWindow(exact);
    open(window, write("a.obj", "v 0 0 0\nmtllib gone.mtl\n"));
    EXPECT_EQ(window.messages().text(), path("a.obj") + ":2: '" + path("gone.mtl") + "': no such file");
}

TEST_F(ViewerWindowTest, AFailedLoadSaysWhyAndKeepsTheModel) {
    ViewerWindow& window = makeWindow(write("red.obj", squareObj("1 0 0")));
    const QImage before = picture(window);
    open(window, path("gone.obj"));
    EXPECT_TRUE(window.messages().isVisible());
    EXPECT_EQ(window.messages().text(), "Failed to load OBJ file '" + path("gone.obj") + "': No such file");
    EXPECT_EQ(window.view().model()->read().path, path("red.obj"));
    EXPECT_TRUE(waitUntil([&] { return window.messages().isVisible(); }));
    keep(window, "failed");
    open(window, path("red.obj"));
    EXPECT_FALSE(window.messages().isVisible());
    EXPECT_LT(difference(before, picture(window)), kSame);
}

TEST_F(ViewerWindowTest, ACancelledLoadKeepsTheModel) {
    QByteArray large;
    for (int copy = 0; copy < 200'000; ++copy)
        large += "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -1 -2 -3\n";
    ViewerWindow& window = makeWindow(write("red.obj", squareObj("1 0 0")));
    window.open(write("large.obj", large));
    waitForFrame(window);
    keep(window, "loading");
    press(window, Qt::Key_Escape);
    waitForLoad(window);
    EXPECT_EQ(window.view().model()->read().path, path("red.obj"));
    EXPECT_FALSE(window.messages().isVisible());
}

TEST_F(ViewerWindowTest, TheCancelButtonEndsALoad) {
    QByteArray large;
    for (int copy = 0; copy < 200'000; ++copy)
        large += "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -1 -2 -3\n";
    ViewerWindow& window = makeWindow();
    auto* const button = window.findChild<QToolButton*>("cancelLoad");
    ASSERT_NE(button, nullptr);
    EXPECT_FALSE(button->isVisible());
    window.open(write("large.obj", large));
    EXPECT_TRUE(button->isVisible());
    button->click();
    waitForLoad(window);
    EXPECT_EQ(window.view().model(), nullptr);
    EXPECT_FALSE(button->isVisible());
}

TEST_F(ViewerWindowTest, TheOldModelTurnsDuringALoad) {
    QByteArray large;
    for (int copy = 0; copy < 400'000; ++copy)
        large += "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -1 -2 -3\n";
    ViewerWindow& window = makeWindow(write("red.obj", squareObj("1 0 0")));
    const QImage before = picture(window);
    window.open(write("large.obj", large));
    press(window, Qt::Key_3);
    const QImage turned = picture(window);
    EXPECT_TRUE(window.loads().isLoading());
    EXPECT_GT(difference(before, turned), 0.05);
    window.loads().cancel();
    waitForLoad(window);
}

TEST_F(ViewerWindowTest, UpReloadsWithTheCameraKept) {
    ViewerWindow& window = makeWindow(write("square.obj", squareObj("1 0 0")));
    press(window, Qt::Key_9);
    const double azimuth = window.view().camera().azimuth();
    write("square.obj", squareObj("0 0 1"));
    press(window, Qt::Key_Up);
    waitForLoad(window);
    EXPECT_TRUE(isBlue(middle(window)));
    EXPECT_EQ(window.view().camera().azimuth(), azimuth);
}

TEST_F(ViewerWindowTest, ArrowsOpenTheNeighboursInTheFolder) {
    write("b.obj", squareObj("0 1 0"));
    write("c.obj", squareObj("0 0 1"));
    ViewerWindow& window = makeWindow(write("a.obj", squareObj("1 0 0")));
    press(window, Qt::Key_Right);
    waitForLoad(window);
    EXPECT_EQ(window.view().model()->read().path, path("b.obj"));
    press(window, Qt::Key_Left);
    waitForLoad(window);
    press(window, Qt::Key_Left);
    waitForLoad(window);
    EXPECT_EQ(window.view().model()->read().path, path("c.obj"));
}

TEST_F(ViewerWindowTest, ADroppedFileOpensAndOthersWantWindows) {
    ViewerWindow& window = makeWindow();
    QStringList wanted;
    QObject::connect(&window, &ViewerWindow::windowWanted, [&](const QString& file) { wanted.append(file); });
    drop(window, {write("a.obj", squareObj("1 0 0")), write("b.obj", squareObj("0 1 0"))});
    waitForLoad(window);
    EXPECT_EQ(window.view().model()->read().path, path("a.obj"));
    EXPECT_THAT(wanted, ElementsAre(path("b.obj")));
}

TEST_F(ViewerWindowTest, WatchedFilesAreLoadedAgain) {
    ViewerOptions options = forgiving();
    options.isWatching = true;
    ViewerWindow& window = makeWindow(options);
    const QByteArray square = "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nusemtl m\nf 1 2 3 4\n";
    write("m.mtl", "newmtl m\nKd 1 0 0\n");
    open(window, write("square.obj", square));
    press(window, Qt::Key_1);
    EXPECT_TRUE(isRed(middle(window)));
    write("new.mtl", "newmtl m\nKd 0 0 1\n");
    ASSERT_TRUE(QFile::remove(path("m.mtl")) && QFile::rename(path("new.mtl"), path("m.mtl")));
    EXPECT_TRUE(waitUntil([&] { return isBlue(middle(window)); }));
}

TEST_F(ViewerWindowTest, TheWatchBeginsAndEndsWithItsKey) {
    ViewerWindow& window = makeWindow(write("square.obj", squareObj("1 0 0")));
    press(window, Qt::Key_1);
    press(window, Qt::Key_W);
    write("square.obj", squareObj("0 0 1"));
    EXPECT_TRUE(waitUntil([&] { return isBlue(middle(window)); }));
    press(window, Qt::Key_W);
    EXPECT_FALSE(window.actions()[ActionId::Watch]->isChecked());
    write("square.obj", squareObj("1 0 0"));
    QTest::qWait(2 * FileWatch::kQuietMilliseconds);
    waitForLoad(window);
    EXPECT_TRUE(isBlue(middle(window)));
}

TEST_F(ViewerWindowTest, RecentFilesAreInTheMenu) {
    ViewerWindow& window = makeWindow(write("a.obj", squareObj("1 0 0")));
    open(window, write("b.obj", squareObj("0 1 0")));
    QMenu* const menu = window.actions().recentFiles();
    emit menu->aboutToShow();
    ASSERT_EQ(menu->actions().size(), 4); // with a separator and "Clear"
    EXPECT_EQ(menu->actions()[1]->text(), path("a.obj"));
    menu->actions()[1]->trigger();
    waitForLoad(window);
    EXPECT_EQ(window.view().model()->read().path, path("a.obj"));
    menu->actions()[3]->trigger();
    EXPECT_THAT(ViewerSettings::recentFiles(), ::testing::IsEmpty());
}

TEST_F(ViewerWindowTest, ClosingWhileLoadingDoesNotWaitLong) {
    QByteArray large;
    for (int copy = 0; copy < 400'000; ++copy)
        large += "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -1 -2 -3\n";
    const QString file = write("large.obj", large);
    QElapsedTimer timer;
    {
        ViewerWindow window(forgiving());
        window.QWidget::show();
        window.open(file);
        timer.start();
    }
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_TRUE(waitUntil([] { return RunningWork::count() == 0; }));
}

TEST_F(ViewerWindowTest, TwoWindowsShowTwoModels) {
    ViewerWindow& red = makeWindow(write("red.obj", squareObj("1 0 0")));
    ViewerWindow& blue = makeWindow(write("blue.obj", squareObj("0 0 1")));
    press(red, Qt::Key_1);
    press(blue, Qt::Key_1);
    EXPECT_TRUE(isRed(middle(red)));
    EXPECT_TRUE(isBlue(middle(blue)));
    open(red, path("blue.obj"));
    EXPECT_TRUE(isBlue(middle(red)));
}

TEST_F(ViewerWindowTest, EachFileOpensAWindow) {
    ViewerOptions options = forgiving();
    options.files = QStringList{write("red.obj", squareObj("1 0 0")), write("blue.obj", squareObj("0 0 1"))};
    WindowList list(options);
    list.openFiles();
    const auto windows = [] {
        QVector<ViewerWindow*> found;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* const window = qobject_cast<ViewerWindow*>(widget))
                found.append(window);
        return found;
    };
    ASSERT_EQ(windows().size(), 2);
    QSet<QString> shown;
    for (ViewerWindow* window : windows()) {
        waitForLoad(*window);
        shown.insert(window->view().model()->read().path);
    }
    EXPECT_EQ(shown, QSet<QString>({path("red.obj"), path("blue.obj")}));
    Q_EMIT windows().first()->windowWanted({});
    EXPECT_EQ(windows().size(), 3);
    for (ViewerWindow* window : windows())
        window->close();
    EXPECT_TRUE(waitUntil([&] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return windows().isEmpty();
    }));
}

TEST_F(ViewerWindowTest, AViewThatMovesToAnotherWindowShowsItsModel) {
    ViewerWindow& window = makeWindow(sample("vase/vase.obj"));
    const QImage before = picture(window);
    QWidget other;
    new QVBoxLayout(&other);
    other.layout()->setContentsMargins({});
    window.view().setFixedSize(window.view().size());
    other.layout()->addWidget(&window.view());
    other.show();
    window.view().show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&other));
    EXPECT_LT(difference(before, picture(window)), kSame) << "in another window";
    window.centralWidget()->layout()->addWidget(&window.view());
    window.view().show();
    EXPECT_LT(difference(before, picture(window)), kSame);
}

TEST_F(ViewerWindowTest, AScreenshotIsWhatTheViewShows) {
    ViewerWindow& window = makeWindow(write("red.obj", squareObj("1 0 0")));
    const QImage before = picture(window);
    press(window, Qt::Key_F12);
    EXPECT_LT(difference(QImage(path("red.png")), before), kSame);
    press(window, Qt::Key_F12);
    EXPECT_TRUE(QFile::exists(path("red-2.png")));
}

TEST_F(ViewerWindowTest, ASlowModelIsSimplifiedWhileItMoves) {
    ViewerWindow& window = makeWindow(sample("gear/gear.obj"));
    press(window, Qt::Key_E);
    const QImage complete = picture(window);
    ASSERT_GT(window.view().frameMilliseconds(), 0);
    QWheelEvent stay({5, 5}, window.mapToGlobal(QPoint(5, 5)), {}, {0, 0}, Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&window.view(), &stay);
    EXPECT_TRUE(window.view().isMoving());
    const bool isSlow = window.view().frameMilliseconds() > ModelView::kMaxMovingMilliseconds;
    EXPECT_EQ(difference(complete, window.view().grabFramebuffer()) > 0.01, isSlow);
    EXPECT_LT(difference(complete, picture(window)), kSame) << "the complete frame follows";
}

TEST_F(ViewerWindowTest, TheBackgroundFollowsThePalette) {
    ViewerWindow& window = makeWindow(write("red.obj", squareObj("1 0 0")));
    const QPalette before = QApplication::palette();
    EXPECT_GT(qGray(picture(window).pixel(2, 2)), 180);
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(45, 45, 48));
    dark.setColor(QPalette::Base, QColor(30, 30, 32));
    dark.setColor(QPalette::Button, QColor(60, 60, 64));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(role, Qt::white);
    QApplication::setPalette(dark);
    EXPECT_LT(qGray(picture(window).pixel(2, 2)), 80);
    window.actions()[ActionId::Parts]->trigger();
    keep(window, "dark");
    QApplication::setPalette(before);
}

TEST_F(ViewerWindowTest, TheShowpieceWithAllPanels) {
    ViewerWindow& window = makeWindow();
    window.resize(1180, 760);
    const QImage empty = picture(window);
    open(window, sample("showpiece/showpiece.obj"));
    EXPECT_GT(difference(empty, picture(window)), 0.1);
    window.actions()[ActionId::Parts]->trigger();
    window.actions()[ActionId::Statistics]->trigger();
    QCoreApplication::processEvents();
    window.view().resetCamera();
    QTest::mouseClick(&window.view(), Qt::LeftButton, {}, window.view().rect().center());
    EXPECT_TRUE(window.view().model()->hasSelection());
    keep(window, "velview");
}

TEST_F(ViewerWindowTest, TheWindowIsRemembered) {
    {
        ViewerWindow& window = makeWindow();
        window.resize(500, 420);
        window.actions()[ActionId::Parts]->trigger();
        QCoreApplication::processEvents();
        window.close();
    }
    ViewerWindow window(forgiving());
    EXPECT_EQ(window.size(), QSize(500, 420));
    window.QWidget::show();
    EXPECT_TRUE(window.actions()[ActionId::Parts]->isChecked());
}

} // namespace Atelier::Vel::Viewer::Testing
