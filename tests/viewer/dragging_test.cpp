#include "dragging.h"

#include <gmock/gmock.h>

namespace Atelier::Vel::Viewer::Testing {

TEST(DraggingTest, ButtonsAndShiftChooseTheAction) {
    EXPECT_EQ(dragAction(Qt::LeftButton, Qt::NoModifier), DragAction::Orbit);
    EXPECT_EQ(dragAction(Qt::LeftButton, Qt::ShiftModifier), DragAction::Pan);
    EXPECT_EQ(dragAction(Qt::MiddleButton, Qt::NoModifier), DragAction::Pan);
    EXPECT_EQ(dragAction(Qt::RightButton, Qt::NoModifier), DragAction::Zoom);
    EXPECT_EQ(dragAction(Qt::BackButton, Qt::NoModifier), DragAction::None);
}

TEST(DraggingTest, AShakyPressIsAClick) {
    Dragging dragging;
    dragging.press(Qt::LeftButton, Qt::NoModifier, {100, 100});
    EXPECT_EQ(dragging.moveTo({103, 98}), QPointF(100, 100));
    EXPECT_TRUE(dragging.isClick());
    EXPECT_EQ(dragging.moveTo({105, 100}), QPointF(103, 98));
    EXPECT_FALSE(dragging.isClick());
    dragging.moveTo({100, 100});
    EXPECT_FALSE(dragging.isClick()) << "a drag that comes back stays a drag";
    dragging.release();
    EXPECT_EQ(dragging.action(), DragAction::None);
}

TEST(DraggingTest, UpAndForwardEnlarge) {
    EXPECT_DOUBLE_EQ(dragZoom(-150), 2);
    EXPECT_DOUBLE_EQ(dragZoom(150), 0.5);
    EXPECT_DOUBLE_EQ(wheelZoom(480), 2);
    EXPECT_DOUBLE_EQ(wheelZoom(-120) * wheelZoom(120), 1);
    EXPECT_DOUBLE_EQ(scrollZoom(200), 2);
}

} // namespace Atelier::Vel::Viewer::Testing
