#include <cmath>

#include <QtGui/QWheelEvent>
#include <QtTest/QTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QStatusBar>

#include "partspanel.h"
#include "shownmodel.h"
#include "viewerfixture.h"

namespace Atelier::Vel::Viewer::Testing {

class GesturesTest : public ViewerTest {
public:
    GesturesTest() : window(makeWindow(write("two.obj", twoSquares()))), view(window.view()) {
        press(window, Qt::Key_1);
    }

    /// Two squares side by side, red on the left and blue on the right.
    static QByteArray twoSquares() {
        QByteArray text;
        for (const char* x : {"-2", "0", "2"})
            for (const char* y : {"-1", "1"})
                text += "v " + QByteArray(x) + ' ' + y + " 0\n";
        return text + "o left\nf 1 3 4 2\no right\nf 3 5 6 4\n";
    }
    static void drag(QWidget& widget, Qt::MouseButton button, Qt::KeyboardModifiers modifiers,
                     const QPoint& from, const QPoint& to) {
        QTest::mousePress(&widget, button, modifiers, from);
        for (const QPoint& at : {(from + to) / 2, to}) {
            QMouseEvent move(QEvent::MouseMove, at, widget.mapToGlobal(at), Qt::NoButton, button, modifiers);
            QCoreApplication::sendEvent(&widget, &move);
        }
        QTest::mouseRelease(&widget, button, modifiers, to);
    }
    void wheel(const QPoint& at, const QPoint& pixels, const QPoint& eighths) const {
        QWheelEvent event(QPointF(at), QPointF(view.mapToGlobal(at)), pixels, eighths, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&view, &event);
    }
    QPoint middle() const { return view.rect().center(); }
    /// Where a point of the model is drawn.
    QPoint place(const QVector3D& point) const { return view.camera().windowPoint(point).toPoint(); }
    QBitArray selected() const { return view.model()->selected(); }
    static QBitArray bits(bool first, bool second) {
        QBitArray made(2);
        made.setBit(0, first);
        made.setBit(1, second);
        return made;
    }
    static double distance(const QPointF& a, const QPointF& b) {
        return std::hypot(a.x() - b.x(), a.y() - b.y());
    }

    ViewerWindow& window;
    ModelView& view;
};

TEST_F(GesturesTest, LeftDragOrbits) {
    const QImage before = picture(window);
    drag(view, Qt::LeftButton, Qt::NoModifier, middle(), middle() + QPoint(60, 30));
    EXPECT_LT(view.camera().azimuth(), -10);
    EXPECT_GT(view.camera().elevation(), 5);
    EXPECT_GT(difference(before, picture(window)), 0.02);
}

TEST_F(GesturesTest, ShiftOrMiddleDragPans) {
    for (const auto& [button, modifiers] :
         {std::make_pair(Qt::LeftButton, Qt::KeyboardModifiers(Qt::ShiftModifier)),
          std::make_pair(Qt::MiddleButton, Qt::KeyboardModifiers())}) {
        press(window, Qt::Key_1);
        const QPoint before = place({0, 0, 0});
        drag(view, button, modifiers, middle(), middle() + QPoint(40, -20));
        EXPECT_LT(distance(place({0, 0, 0}), before + QPoint(40, -20)), 2);
        EXPECT_EQ(view.camera().azimuth(), 0);
    }
}

TEST_F(GesturesTest, RightDragZoomsTowardsTheStart) {
    const QVector3D point(1, 0.5F, 0);
    const QPoint at = place(point);
    const double height = view.camera().visibleHeight();
    drag(view, Qt::RightButton, Qt::NoModifier, at, at - QPoint(0, 75));
    EXPECT_NEAR(view.camera().visibleHeight(), height / std::sqrt(2), 0.01 * height);
    EXPECT_LT(distance(place(point), at), 2);
}

TEST_F(GesturesTest, TheWheelAndTwoFingersZoomTowardsThePointer) {
    const QVector3D point(-1, -0.5F, 0);
    const QPoint at = place(point);
    const double height = view.camera().visibleHeight();
    wheel(at, {}, {0, 240});
    EXPECT_NEAR(view.camera().visibleHeight(), height / std::sqrt(2), 0.01 * height);
    wheel(at, {0, -100}, {0, -999});
    EXPECT_NEAR(view.camera().visibleHeight(), height, 0.01 * height);
    EXPECT_LT(distance(place(point), at), 2);
}

TEST_F(GesturesTest, AClickSelectsThePartHit) {
    const QImage before = picture(window);
    QTest::mouseClick(&view, Qt::LeftButton, {}, place({1, 0, 0}));
    EXPECT_EQ(selected(), bits(false, true));
    EXPECT_GT(difference(before, picture(window)), 0.02) << "the selection is shown";
    QTest::mouseClick(&view, Qt::LeftButton, {}, place({-1, 0, 0}));
    EXPECT_EQ(selected(), bits(true, false));
    QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_EQ(selected(), bits(false, false)) << "a click beside the model";
}

TEST_F(GesturesTest, ADragAndOtherButtonsSelectNothing) {
    drag(view, Qt::LeftButton, Qt::NoModifier, place({1, 0, 0}), place({1, 0, 0}) + QPoint(20, 0));
    QTest::mouseClick(&view, Qt::RightButton, {}, middle() + QPoint(20, 0));
    EXPECT_EQ(selected(), bits(false, false));
}

TEST_F(GesturesTest, ADoubleClickCentresOnThePointHit) {
    QTest::mouseDClick(&view, Qt::LeftButton, {}, place({1, 0.5F, 0}));
    EXPECT_LT((view.camera().target() - QVector3D(1, 0.5F, 0)).length(), 0.02F);
    const QVector3D target = view.camera().target();
    QTest::mouseDClick(&view, Qt::LeftButton, {}, QPoint(2, 2));
    EXPECT_EQ(view.camera().target(), target);
}

TEST_F(GesturesTest, HiddenPartsAreNotHit) {
    view.model()->setVisible(bits(true, false));
    QTest::mouseClick(&view, Qt::LeftButton, {}, place({1, 0, 0}));
    EXPECT_EQ(selected(), bits(false, false));
}

TEST_F(GesturesTest, TwoClicksMeasureADistance) {
    press(window, Qt::Key_D);
    QTest::mouseClick(&view, Qt::LeftButton, {}, place({-1, 0, 0}));
    QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(2, 2)); // hits nothing
    QTest::mouseClick(&view, Qt::LeftButton, {}, place({1, 0, 0}));
    ASSERT_EQ(view.marks().measured.size(), 2);
    EXPECT_NEAR(double((view.marks().measured[1] - view.marks().measured[0]).length()), 2, 0.03);
    EXPECT_EQ(selected(), bits(false, false)) << "a measuring click selects nothing";
    EXPECT_TRUE(window.statusBar()->currentMessage().startsWith("Distance: "));
    keep(window, "measure");
    press(window, Qt::Key_Escape);
    EXPECT_TRUE(view.marks().isEmpty());
    EXPECT_FALSE(window.actions()[ActionId::Measure]->isChecked());
}

TEST_F(GesturesTest, AnOrthographicViewIsPickedAndMovedAlike) {
    press(window, Qt::Key_5);
    press(window, Qt::Key_9);
    QTest::mouseClick(&view, Qt::LeftButton, {}, place({1, 0, 0}));
    EXPECT_EQ(selected(), bits(false, true));
    const QPoint before = place({0, 0, 0});
    drag(view, Qt::MiddleButton, Qt::NoModifier, middle(), middle() + QPoint(30, 20));
    EXPECT_LT(distance(place({0, 0, 0}), before + QPoint(30, 20)), 2);
    keep(window, "orthographic");
}

} // namespace Atelier::Vel::Viewer::Testing
