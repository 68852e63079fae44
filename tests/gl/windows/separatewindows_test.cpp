#include <QtCore/QFile>

#include <velgl/program.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "windows/windowsfixture.h"

// Windows whose contexts do not share objects.
namespace Atelier::Vel::Testing {

namespace {

using ::testing::ElementsAre;

} // namespace

TEST_F(SeparateWindowsTest, SecondWindowShowsTexturesByColourAndByPath) {
    std::unique_ptr<GPUModel> models[2];
    Texture* textures[2] = {};
    const CanvasFrame frames[2];
    for (int i : {0, 1}) {
        frames[i].canvas().within([&] {
            models[i] = uploadedModel();
            textures[i] = LoadTexture(picture());
        });
        frames[i].canvas().showModel(models[i].get());
    }
    EXPECT_EQ(textures[0], textures[1]);
    for (int round = 0; round < 3; ++round)
        for (const CanvasFrame& frame : frames)
            EXPECT_THAT(cellsOf(frame.canvas()), looksLike(scene())) << "round " << round;
}

TEST_F(SeparateWindowsTest, TextureWhoseFileHasGoneIsWhiteInTheSecondWindow) {
    std::unique_ptr<GPUModel> models[2];
    const CanvasFrame first;
    first.canvas().within([&] { models[0] = uploadedModel(); });
    first.canvas().showModel(models[0].get());
    EXPECT_THAT(cellsOf(first.canvas()), looksLike(scene()));
    ASSERT_TRUE(QFile::remove(picture()));
    const CanvasFrame second;
    second.canvas().within([&] { models[1] = uploadedModel(); });
    second.canvas().showModel(models[1].get());
    for (int round = 0; round < 3; ++round)
        EXPECT_THAT(cellsOf(second.canvas()), looksLike(sceneWithoutPicture()));
    EXPECT_THAT(takeWarnings(), ElementsAre(mentions(picture())));
    EXPECT_THAT(cellsOf(first.canvas()), looksLike(scene()));
}

TEST_F(SeparateWindowsTest, TextureWhoseFileHasAnotherSizeIsWhiteInTheSecondWindow) {
    std::unique_ptr<GPUModel> models[2];
    const CanvasFrame first;
    first.canvas().within([&] { models[0] = uploadedModel(); });
    first.canvas().showModel(models[0].get());
    EXPECT_THAT(cellsOf(first.canvas()), looksLike(scene()));
    writePicture(2 * kPictureSide);
    const CanvasFrame second;
    second.canvas().within([&] { models[1] = uploadedModel(); });
    second.canvas().showModel(models[1].get());
    for (int round = 0; round < 3; ++round)
        EXPECT_THAT(cellsOf(second.canvas()), looksLike(sceneWithoutPicture()));
    EXPECT_THAT(takeWarnings(), ElementsAre(mentions(picture())));
    EXPECT_THAT(cellsOf(first.canvas()), looksLike(scene()));
}

TEST_F(SeparateWindowsTest, ModelWithKeptDataIsShownInTwoWindowsAtATime) {
    std::unique_ptr<GPUModel> model;
    auto first = std::make_unique<const CanvasFrame>();
    first->canvas().within([&] { model = uploadedModel(keptData()); });
    first->canvas().showModel(model.get());
    const QImage expected = first->canvas().picture();
    EXPECT_THAT(cellsOf(expected), looksLike(scene()));
    const CanvasFrame second(model.get());
    for (int round = 0; round < 3; ++round)
        for (const CanvasFrame* frame : {first.get(), &second}) {
            EXPECT_THAT(frame->canvas().picture(), hasThePixelsOf(expected)) << "round " << round;
            EXPECT_TRUE(frame->canvas().within([&] { return model->isUsable(); }));
        }
    first.reset();
    for (int round = 0; round < 3; ++round)
        EXPECT_THAT(second.canvas().picture(), hasThePixelsOf(expected)) << "round " << round;
}

TEST_F(SeparateWindowsTest, ModelWithKeptDataIsDeletedInBothWindows) {
    const CanvasFrame frames[2];
    std::vector<LiveObjects> without[2];
    for (int round = 0; round < 3; ++round) {
        auto model = frames[0].canvas().within([&] { return uploadedModel(keptData()); });
        for (const CanvasFrame& frame : frames) {
            frame.canvas().showModel(model.get());
            EXPECT_THAT(cellsOf(frame.canvas()), looksLike(scene()));
            frame.canvas().showModel(nullptr);
        }
        model.reset();
        for (int i : {0, 1}) {
            frames[i].canvas().waitForFrame();
            without[i].push_back(frames[i].canvas().liveObjects());
        }
    }
    for (const std::vector<LiveObjects>& rounds : without)
        EXPECT_THAT(rounds, ::testing::Each(rounds.front()));
}

TEST_F(SeparateWindowsTest, ModelWithKeptDataIsShownInTheNextWindowAfterItsOwnWasClosed) {
    auto frame = std::make_unique<CanvasFrame>();
    const auto model = frame->canvas().within([&] { return uploadedModel(keptData()); });
    frame->canvas().showModel(model.get());
    const QImage expected = frame->canvas().picture();
    EXPECT_THAT(cellsOf(expected), looksLike(scene()));
    for (int round = 0; round < 3; ++round) {
        frame.reset();
        frame = std::make_unique<CanvasFrame>(model.get());
        EXPECT_THAT(frame->canvas().picture(), hasThePixelsOf(expected)) << "round " << round;
    }
}

TEST_F(SeparateWindowsTest, ModelDeletedInTheNewContextLeavesNoObjectsInTheOldWindow) {
    CanvasFrame first;
    Frame second;
    WidgetCanvas& canvas = first.canvas();
    std::vector<LiveObjects> live;
    for (int round = 0; round < 4; ++round) {
        auto model = canvas.within([&] { return loadedModel(); });
        canvas.showModel(model.get());
        EXPECT_THAT(cellsOf(canvas), looksLike(scene())) << "round " << round;
        canvas.showModel(nullptr);
        second.dock(canvas);
        model.reset();
        first.dock(canvas);
        live.push_back(canvas.liveObjects());
    }
    EXPECT_THAT(live, ::testing::Each(live.front()));
}

TEST_F(SeparateWindowsTest, ModelDeletedWhileAnotherWindowIsCurrentLeavesNoObjects) {
    const CanvasFrame frames[2];
    std::vector<LiveObjects> live[2];
    for (int round = 0; round < 4; ++round) {
        auto model = frames[0].canvas().within([&] { return loadedModel(); });
        frames[0].canvas().showModel(model.get());
        EXPECT_THAT(cellsOf(frames[0].canvas()), looksLike(scene())) << "round " << round;
        frames[0].canvas().showModel(nullptr);
        frames[1].canvas().within([&] { model.reset(); });
        for (int i : {0, 1}) {
            frames[i].canvas().waitForFrame();
            live[i].push_back(frames[i].canvas().liveObjects());
        }
    }
    for (const std::vector<LiveObjects>& rounds : live)
        EXPECT_THAT(rounds, ::testing::Each(rounds.front()));
}

TEST_F(SeparateWindowsTest, ProgramIsNotKnownInTheOtherWindow) {
    const CanvasFrame first;
    const CanvasFrame second;
    Program* const program = first.canvas().program();
    EXPECT_FALSE(second.canvas().within([&] { return program->bind(); }));
    EXPECT_TRUE(second.canvas().within([&] { return program->name() == 0; }));
    EXPECT_NE(second.canvas().within([&] { return second.canvas().program()->name(); }), 0U);
    takeWarnings(); // one may say that the program belongs to another context
}

} // namespace Atelier::Vel::Testing
