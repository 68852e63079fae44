#include <velmodel/objloader.h>

#include "windows/bluetexture.h"
#include "windows/buffercontents.h"
#include "windows/windowsfixture.h"

// Widgets that are moved into another window, where their context is made anew.
namespace Atelier::Vel::Testing {

namespace {

using ::testing::ElementsAre;

} // namespace

TEST_F(SeparateWindowsTest, ModelThatTookItsDrawDataKeepsItToo) {
    GPUModel model;
    CanvasFrame first;
    Frame second;
    WidgetCanvas& canvas = first.canvas();
    EXPECT_TRUE(canvas.within([&] { return upload(drawData(), model, keptData()); }));
    canvas.showModel(&model);
    const QImage expected = canvas.picture();
    second.dock(canvas);
    EXPECT_EQ(canvas.contextCount(), 2);
    EXPECT_THAT(canvas.picture(), hasThePixelsOf(expected));
}

TEST_F(SeparateWindowsTest, ModelWithKeptDataHasTheSamePixelsInTheNewContext) {
    CanvasFrame first;
    Frame second;
    WidgetCanvas& canvas = first.canvas();
    const auto model = canvas.within([&] { return uploadedModel(keptData()); });
    canvas.showModel(model.get());
    const QImage expected = canvas.picture();
    EXPECT_THAT(cellsOf(expected), looksLike(scene()));
    second.dock(canvas);
    EXPECT_EQ(canvas.contextCount(), 2);
    EXPECT_THAT(canvas.picture(), hasThePixelsOf(expected));
    EXPECT_TRUE(canvas.within([&] { return model->isUsable(); }));
}

TEST_F(SeparateWindowsTest, ModelWithARefillFunctionHasTheSamePixelsInTheNewContext) {
    CanvasFrame first;
    Frame second;
    WidgetCanvas& canvas = first.canvas();
    const auto model = canvas.within([&] { return loadedModel(); });
    const auto contents = canvas.within([&] { return BufferContents(*model); });
    int calls = 0;
    model->setRefill([&](GPUModel& lost) {
        ++calls;
        EXPECT_EQ(&lost, model.get());
        return contents.restore(lost);
    });
    canvas.showModel(model.get());
    const QImage expected = canvas.picture();
    EXPECT_THAT(cellsOf(expected), looksLike(scene()));
    EXPECT_EQ(calls, 0);
    second.dock(canvas);
    for (int round = 0; round < 3; ++round)
        EXPECT_THAT(canvas.picture(), hasThePixelsOf(expected)) << "round " << round;
    EXPECT_EQ(canvas.contextCount(), 2);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(canvas.within([&] { return model->isUsable(); }));
}

TEST_F(SeparateWindowsTest, ModelWithARefillFunctionIsShownInTwoWindowsAtATime) {
    auto first = std::make_unique<const CanvasFrame>();
    const auto model = first->canvas().within([&] { return loadedModel(); });
    const auto contents = first->canvas().within([&] { return BufferContents(*model); });
    int calls = 0;
    model->setRefill([&](GPUModel& lost) {
        ++calls;
        return contents.restore(lost);
    });
    first->canvas().showModel(model.get());
    const QImage expected = first->canvas().picture();
    EXPECT_THAT(cellsOf(expected), looksLike(scene()));
    const CanvasFrame second(model.get());
    for (int round = 0; round < 3; ++round)
        for (const CanvasFrame* frame : {first.get(), &second})
            EXPECT_THAT(frame->canvas().picture(), hasThePixelsOf(expected)) << "round " << round;
    first.reset();
    EXPECT_THAT(second.canvas().picture(), hasThePixelsOf(expected));
    EXPECT_EQ(calls, 1);
}

TEST_F(SeparateWindowsTest, ModelWhoseRefillFunctionFailsDrawsNothing) {
    CanvasFrame first;
    Frame second;
    WidgetCanvas& canvas = first.canvas();
    const auto model = canvas.within([&] { return loadedModel(); });
    model->setRefill([](GPUModel& /*lost*/) { return false; });
    canvas.showModel(model.get());
    EXPECT_THAT(cellsOf(canvas), looksLike(scene()));
    second.dock(canvas);
    for (int round = 0; round < 3; ++round)
        EXPECT_THAT(cellsOf(canvas), looksLike(nothing()));
    EXPECT_FALSE(canvas.within([&] { return model->isUsable(); }));
    EXPECT_EQ(takeWarnings().size(), 1U);
}

TEST_F(SeparateWindowsTest, ModelWithoutItsDataDrawsNothingInTheNewContextAndWarnsOnce) {
    CanvasFrame first;
    Frame second;
    WidgetCanvas& canvas = first.canvas();
    const auto model = canvas.within([&] { return uploadedModel(); });
    canvas.showModel(model.get());
    EXPECT_THAT(cellsOf(canvas), looksLike(scene()));
    EXPECT_TRUE(canvas.within([&] { return model->isUsable(); }));
    second.dock(canvas);
    for (int round = 0; round < 3; ++round)
        EXPECT_THAT(cellsOf(canvas), looksLike(nothing()));
    EXPECT_EQ(canvas.contextCount(), 2);
    EXPECT_FALSE(canvas.within([&] { return model->isUsable(); }));
    EXPECT_THAT(takeWarnings(), ElementsAre(mentions("lost its context")));
}

// The context of the first window is still that of the window's own surface, which outlives the widget's.
TEST_F(SeparateWindowsTest, ModelWithoutItsDataWarnsOnceInEachWindow) {
    CanvasFrame first;
    Frame others[2];
    WidgetCanvas& canvas = first.canvas();
    const auto model = canvas.within([&] { return uploadedModel(); });
    canvas.showModel(model.get());
    EXPECT_THAT(cellsOf(canvas), looksLike(scene()));
    for (Frame& other : others) {
        other.dock(canvas);
        EXPECT_THAT(cellsOf(canvas), looksLike(nothing()));
        EXPECT_THAT(takeWarnings(), ElementsAre(mentions("lost its context")));
    }
}

// A widget that draws before it is shown gets another context when it is shown.
TEST_F(SeparateWindowsTest, ModelWithKeptDataIsShownAfterItWasDrawnInAHiddenWidget) {
    Frame frame;
    WidgetCanvas canvas;
    canvas.setFixedSize(kPictureSize);
    ASSERT_FALSE(canvas.grabFramebuffer().isNull());
    const auto model = canvas.within([&] { return uploadedModel(keptData()); });
    canvas.showModel(model.get());
    EXPECT_THAT(cellsOf(canvas.grabFramebuffer()), looksLike(scene()));
    frame.dock(canvas);
    EXPECT_EQ(canvas.contextCount(), 2);
    EXPECT_THAT(cellsOf(canvas), looksLike(scene()));
}

TEST_F(SeparateWindowsTest, TextureOfAModelsOwnLoaderIsFilledAgainByItsRefillFunction) {
    CanvasFrame first;
    Frame second;
    WidgetCanvas& canvas = first.canvas();
    const auto model = canvas.within([&] { return uploadedModel(keptData()); });
    int fills = 0;
    model->setTextureLoader([&](const QString& /*path*/) {
        std::shared_ptr<Texture> texture = blueTexture();
        texture->setRefill([&](Texture& lost) {
            ++fills;
            fillBlue(lost);
            return true;
        });
        return texture;
    });
    canvas.showModel(model.get());
    QVector<Cell> withBlue = scene();
    withBlue[1] = Cell::plain(Qt::blue);
    EXPECT_THAT(cellsOf(canvas), looksLike(withBlue));
    EXPECT_EQ(fills, 0);
    second.dock(canvas);
    for (int round = 0; round < 3; ++round)
        EXPECT_THAT(cellsOf(canvas), looksLike(withBlue)) << "round " << round;
    EXPECT_EQ(fills, 1);
}

} // namespace Atelier::Vel::Testing
