#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>

#include "keylist.h"
#include "partspanel.h"
#include "problemspanel.h"
#include "shownmodel.h"
#include "statisticspanel.h"
#include "viewerfixture.h"

namespace Atelier::Vel::Viewer::Testing {

class KeysTest : public ViewerTest {
public:
    KeysTest() : window(makeWindow(sample("gear/gear.obj"))), view(window.view()) {}

    /// How much of the picture a key changes, and that the same key changes it back.
    void expectSwitch(int key, double least) {
        const QImage before = picture(window);
        press(window, key);
        EXPECT_GT(difference(before, picture(window)), least) << "key " << key;
        press(window, key);
        EXPECT_LT(difference(before, picture(window)), kSame) << "key " << key;
    }

    ViewerWindow& window;
    ModelView& view;
};

TEST_F(KeysTest, DigitsLookFromTheStandardDirections) {
    press(window, Qt::Key_1);
    EXPECT_EQ(view.camera().azimuth(), 0);
    EXPECT_EQ(view.camera().elevation(), 0);
    press(window, Qt::Key_3);
    EXPECT_EQ(view.camera().azimuth(), 90);
    press(window, Qt::Key_7);
    EXPECT_EQ(view.camera().elevation(), 90);
    press(window, Qt::Key_9);
    EXPECT_EQ(view.camera().azimuth(), 45);
    EXPECT_NEAR(view.camera().elevation(), 35.26, 0.01);
}

TEST_F(KeysTest, FiveSwitchesToOrthographic) {
    press(window, Qt::Key_9);
    expectSwitch(Qt::Key_5, 0.005);
}

TEST_F(KeysTest, EnterResetsTheCamera) {
    const QImage before = picture(window);
    press(window, Qt::Key_7);
    view.setProjection(Projection::Perspective);
    press(window, Qt::Key_Return);
    EXPECT_LT(difference(before, picture(window)), kSame);
    press(window, Qt::Key_7);
    press(window, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_LT(difference(before, picture(window)), kSame);
}

TEST_F(KeysTest, LettersSwitchWhatIsShown) {
    expectSwitch(Qt::Key_E, 0.01);
    expectSwitch(Qt::Key_N, 0.005);
    expectSwitch(Qt::Key_G, 0.01);
    expectSwitch(Qt::Key_X, 0.001);
    expectSwitch(Qt::Key_C, 0.002);
}

TEST_F(KeysTest, TSwitchesTextures) {
    open(window, sample("vase/vase.obj"));
    keep(window, "vase");
    expectSwitch(Qt::Key_T, 0.02);
}

TEST_F(KeysTest, QDarkensCorners) {
    open(window, sample("stairs/stairs.obj"));
    expectSwitch(Qt::Key_Q, 0.005);
    press(window, Qt::Key_Q);
    keep(window, "occlusion");
}

TEST_F(KeysTest, BShowsAllBackgrounds) {
    const QImage before = picture(window);
    QSet<QRgb> corners;
    for (int background = 0; background < kBackgrounds; ++background) {
        corners.insert(picture(window).pixel(2, 2));
        press(window, Qt::Key_B);
    }
    EXPECT_EQ(corners.size(), kBackgrounds);
    EXPECT_LT(difference(before, picture(window)), kSame);
}

TEST_F(KeysTest, FShowsTheViewOnTheFullScreen) {
    press(window, Qt::Key_F);
    EXPECT_TRUE(window.isFullScreen());
    EXPECT_FALSE(window.menuBar()->isVisible());
    press(window, Qt::Key_Escape);
    EXPECT_FALSE(window.isFullScreen());
    EXPECT_TRUE(window.menuBar()->isVisible());
}

TEST_F(KeysTest, LettersShowPanels) {
    for (const auto& [key, panel] : {std::make_pair(Qt::Key_M, static_cast<QWidget*>(&window.parts())),
                                     std::make_pair(Qt::Key_S, static_cast<QWidget*>(&window.statistics())),
                                     std::make_pair(Qt::Key_P, static_cast<QWidget*>(&window.problems()))}) {
        EXPECT_FALSE(panel->isVisible());
        press(window, key);
        EXPECT_TRUE(panel->isVisible()) << "key " << key;
        press(window, key);
        EXPECT_FALSE(panel->isVisible()) << "key " << key;
    }
}

TEST_F(KeysTest, HListsAllKeys) {
    QString text;
    QTimer::singleShot(0, [&] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        text = box->text();
        box->close();
    });
    press(window, Qt::Key_H);
    EXPECT_EQ(text, keyList(window.actions()));
    for (const QAction* action : window.actions().all()) {
        const QString key = action->shortcut().toString(QKeySequence::NativeText);
        EXPECT_TRUE(key.isEmpty() || text.contains(">" + key.toHtmlEscaped() + "<")) << key.toStdString();
    }
}

TEST_F(KeysTest, EveryActionIsInAMenuWithAKeyOfItsOwn) {
    QSet<QString> keys;
    QSet<QAction*> inMenus;
    for (QAction* menu : window.menuBar()->actions())
        for (QAction* action : menu->menu()->actions())
            inMenus.insert(action);
    for (QAction* action : window.actions().all()) {
        EXPECT_TRUE(inMenus.contains(action)) << action->text().toStdString();
        const QString key = action->shortcut().toString();
        EXPECT_TRUE(key.isEmpty() || !keys.contains(key)) << key.toStdString();
        keys.insert(key);
    }
}

TEST_F(KeysTest, CtrlWClosesTheWindow) {
    press(window, Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(KeysTest, CtrlQClosesAllWindows) {
    ViewerWindow& other = makeWindow();
    press(window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(window.isVisible() || other.isVisible());
}

TEST_F(KeysTest, CtrlNWantsAnotherWindow) {
    int wanted = 0;
    QObject::connect(&window, &ViewerWindow::windowWanted,
                     [&](const QString& path) { wanted += path.isNull() ? 1 : 0; });
    press(window, Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(wanted, 1);
}

TEST_F(KeysTest, WSwitchesTheWatch) {
    press(window, Qt::Key_W);
    EXPECT_TRUE(window.actions()[ActionId::Watch]->isChecked());
    press(window, Qt::Key_W);
    EXPECT_FALSE(window.actions()[ActionId::Watch]->isChecked());
}

} // namespace Atelier::Vel::Viewer::Testing
