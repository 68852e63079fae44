#include <QtCore/QFile>

#include <velgl/program.h>

#include "windows/windowsfixture.h"

// What sharing contexts make possible: objects of one window are used in the others.
namespace Atelier::Vel::Testing {

TEST_F(SharingWindowsTest, ModelIsShownInTwoWindowsAtATime) {
    std::unique_ptr<GPUModel> model;
    const CanvasFrame first;
    first.canvas().within([&] { model = loadedModel(); });
    first.canvas().showModel(model.get());
    const CanvasFrame second(model.get());
    for (int round = 0; round < 3; ++round)
        for (const CanvasFrame* frame : {&first, &second})
            EXPECT_THAT(cellsOf(frame->canvas()), looksLike(scene())) << "round " << round;
}

// The image file is deleted, so that the textures have to keep what was read.
TEST_F(SharingWindowsTest, LoadedModelIsShownInTheNextWindowAfterItsOwnWasClosed) {
    auto frame = std::make_unique<CanvasFrame>();
    const auto model = frame->canvas().within([&] { return loadedModel(); });
    frame->canvas().showModel(model.get());
    const QImage before = frame->canvas().picture();
    ASSERT_THAT(cellsOf(before), looksLike(scene()));
    ASSERT_TRUE(QFile::remove(picture()));
    for (int round = 0; round < 3; ++round) {
        frame.reset();
        frame = std::make_unique<CanvasFrame>(model.get());
        EXPECT_THAT(frame->canvas().picture(), hasThePixelsOf(before)) << "round " << round;
        EXPECT_TRUE(frame->canvas().within([&] { return model->isUsable(); }));
    }
}

TEST_F(SharingWindowsTest, UploadedModelIsShownInTheNextWindowAfterItsOwnWasClosed) {
    auto frame = std::make_unique<CanvasFrame>();
    const auto model = frame->canvas().within([&] { return uploadedModel(); });
    frame->canvas().showModel(model.get());
    const QImage before = frame->canvas().picture();
    ASSERT_THAT(cellsOf(before), looksLike(scene()));
    frame.reset();
    frame = std::make_unique<CanvasFrame>(model.get());
    EXPECT_THAT(frame->canvas().picture(), hasThePixelsOf(before));
}

TEST_F(SharingWindowsTest, ModelThatWasNotDrawnBeforeItsWindowClosedIsDrawnInTheNext) {
    auto frame = std::make_unique<CanvasFrame>();
    const auto model = frame->canvas().within([&] { return loadedModel(); });
    frame.reset();
    frame = std::make_unique<CanvasFrame>(model.get());
    EXPECT_THAT(cellsOf(frame->canvas()), looksLike(scene()));
}

TEST_F(SharingWindowsTest, ModelDeletedBetweenTwoWindowsLeavesNoObjects) {
    std::vector<LiveObjects> live;
    for (int round = 0; round < 4; ++round) {
        std::unique_ptr<GPUModel> model;
        {
            const CanvasFrame frame;
            live.push_back(frame.canvas().liveObjects());
            frame.canvas().within([&] { model = loadedModel(); });
            frame.canvas().showModel(model.get());
            frame.canvas().waitForFrame();
        }
        model.reset();
    }
    live.erase(live.begin()); // the textures by path are kept
    EXPECT_THAT(live, ::testing::Each(live.front()));
}

TEST_F(SharingWindowsTest, WidgetKeepsItsContextInAnotherWindow) {
    CanvasFrame first;
    Frame second;
    WidgetCanvas& canvas = first.canvas();
    const auto model = canvas.within([&] { return loadedModel(); });
    canvas.showModel(model.get());
    second.dock(canvas);
    EXPECT_THAT(cellsOf(canvas), looksLike(scene()));
    EXPECT_EQ(canvas.contextCount(), 1);
}

TEST_F(SharingWindowsTest, ProgramIsKnownInTheOtherWindow) {
    const CanvasFrame first;
    const CanvasFrame second;
    Program* const program = first.canvas().program();
    EXPECT_TRUE(second.canvas().within([&] {
        const bool bound = program->bind();
        program->unbind();
        return bound;
    }));
}

TEST_F(SharingWindowsTest, PlainWindowThatSharesWithTheWidgetsShowsTheirModel) {
    std::unique_ptr<GPUModel> model;
    auto frame = std::make_unique<CanvasFrame>();
    frame->canvas().within([&] { model = loadedModel(); });
    for (int round = 0; round < 2; ++round) {
        WindowCanvas canvas(QOpenGLContext::globalShareContext());
        canvas.resize(kPictureSize);
        canvas.showModel(model.get());
        canvas.show();
        EXPECT_THAT(cellsOf(canvas.picture()), looksLike(scene())) << "round " << round;
        frame.reset();
    }
}

} // namespace Atelier::Vel::Testing
