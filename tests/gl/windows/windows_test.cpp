#include <thread>

#include <QtCore/QMap>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QMainWindow>

#include <velmodel/objloader.h>

#include "windows/bluetexture.h"
#include "windows/windowsfixture.h"

// What holds for windows whether their contexts share objects or not.
namespace Atelier::Vel::Testing {

namespace {

constexpr int kRounds = 4;

/// The objects in a new window that shows nothing.
LiveObjects objectsOfANewWindow() {
    const CanvasFrame frame;
    return frame.canvas().liveObjects();
}

class MovedWidgetTest : public WindowsTest {
protected:
    /// Moves a widget five times to another window and back, and compares pixels and live objects.
    void moveBackAndForth(Cleanup cleanup, Restoring restoring) const {
        std::unique_ptr<GPUModel> model;
        Frame frames[2];
        WidgetCanvas canvas;
        canvas.setCleanup(cleanup);
        frames[0].dock(canvas);
        canvas.within([&] { model = restorableModel(restoring); });
        canvas.showModel(model.get());
        std::vector<LiveObjects> live[2];
        for (int round = 0; round <= 2 * 5; ++round) {
            frames[round % 2].dock(canvas);
            EXPECT_THAT(cellsOf(canvas), looksLike(scene())) << "round " << round;
            live[round % 2].push_back(canvas.liveObjects());
        }
        for (std::vector<LiveObjects>& rounds : live) {
            rounds.erase(rounds.begin()); // Qt makes its own objects in the first round
            EXPECT_THAT(rounds, ::testing::Each(rounds.front()));
        }
    }
};

} // namespace

TEST_F(WindowsTest, LoadedModelShowsItsTexturesThoughTheProgramSetNoLoader) {
    std::unique_ptr<GPUModel> model;
    const CanvasFrame frame;
    frame.canvas().within([&] { model = loadedModel(); });
    frame.canvas().showModel(model.get());
    EXPECT_THAT(cellsOf(frame.canvas()), looksLike(scene()));
    EXPECT_TRUE(waitUntil([&] { return ::testing::Value(cellsOf(frame.onScreen()), looksLike(scene())); }))
        << ::testing::PrintToString(cellsOf(frame.onScreen()));
}

TEST_F(WindowsTest, UploadedModelShowsItsTexturesThoughTheProgramSetNoLoader) {
    std::unique_ptr<GPUModel> model;
    const CanvasFrame frame;
    frame.canvas().within([&] { model = uploadedModel(); });
    frame.canvas().showModel(model.get());
    EXPECT_THAT(cellsOf(frame.canvas()), looksLike(scene()));
}

TEST_F(WindowsTest, ModelDeletedInItsWindowLeavesNoObjects) {
    const CanvasFrame frame;
    std::vector<LiveObjects> without;
    for (int round = 0; round < kRounds; ++round) {
        auto model = frame.canvas().within([&] { return loadedModel(); });
        frame.canvas().showModel(model.get());
        EXPECT_THAT(cellsOf(frame.canvas()), looksLike(scene()));
        const LiveObjects with = frame.canvas().liveObjects();
        frame.canvas().showModel(nullptr);
        model.reset(); // no context is current
        frame.canvas().waitForFrame();
        without.push_back(frame.canvas().liveObjects());
        EXPECT_GT(with.buffers, without.back().buffers);
        EXPECT_GT(with.vertexArrays, without.back().vertexArrays);
    }
    EXPECT_THAT(without, ::testing::Each(without.front()));
}

TEST_F(WindowsTest, DocumentsClosedAfterTheirWindowsLeaveNoObjects) {
    const auto openAndClose = [this] {
        auto frame = std::make_unique<CanvasFrame>();
        auto loaded = frame->canvas().within([&] { return loadedModel(); });
        auto uploaded = frame->canvas().within([&] { return uploadedModel(); });
        ModelPainter other; // its program outlives the context
        frame->canvas().within([&] { other.begin(); });
        for (GPUModel* model : {loaded.get(), uploaded.get()}) {
            frame->canvas().showModel(model);
            EXPECT_THAT(cellsOf(frame->canvas()), looksLike(scene()));
        }
        frame.reset();
    };
    openAndClose();
    const LiveObjects afterOne = objectsOfANewWindow();
    for (int round = 1; round < kRounds; ++round)
        openAndClose();
    EXPECT_EQ(objectsOfANewWindow(), afterOne);
}

TEST_F(WindowsTest, ModelDeletedOnAnotherThreadLeavesNoObjects) {
    const CanvasFrame frame;
    std::vector<LiveObjects> without;
    for (int round = 0; round < kRounds; ++round) {
        auto model = frame.canvas().within([&] { return loadedModel(); });
        frame.canvas().showModel(model.get());
        EXPECT_THAT(cellsOf(frame.canvas()), looksLike(scene()));
        frame.canvas().showModel(nullptr);
        std::thread([&] { model.reset(); }).join();
        frame.canvas().waitForFrame();
        without.push_back(frame.canvas().liveObjects());
    }
    EXPECT_THAT(without, ::testing::Each(without.front()));
}

// The static object is destroyed after the application and all windows. A crash makes the program fail.
TEST_F(WindowsTest, ModelMayOutliveTheApplication) {
    static std::unique_ptr<GPUModel> survivor;
    const CanvasFrame frame;
    survivor = frame.canvas().within([&] { return loadedModel(); });
    frame.canvas().showModel(survivor.get());
    EXPECT_THAT(cellsOf(frame.canvas()), looksLike(scene()));
}

TEST_F(WindowsTest, ModelIsShownByTwoWidgetsOfOneWindowAndByTheOneThatRemains) {
    QWidget window;
    QHBoxLayout layout(&window);
    auto first = std::make_unique<WidgetCanvas>();
    WidgetCanvas second;
    for (WidgetCanvas* canvas : {first.get(), &second}) {
        canvas->setFixedSize(kPictureSize);
        layout.addWidget(canvas);
    }
    window.show();
    first->waitForFrame();
    const auto model = first->within([&] { return loadedModel(); });
    for (WidgetCanvas* canvas : {first.get(), &second}) {
        canvas->showModel(model.get());
        EXPECT_THAT(cellsOf(*canvas), looksLike(scene()));
    }
    const QImage expected = second.picture();
    first.reset();
    for (int round = 0; round < 3; ++round)
        EXPECT_THAT(second.picture(), hasThePixelsOf(expected)) << "round " << round;
}

TEST_F(WindowsTest, ModelIsNotUsableWithoutAContext) {
    const CanvasFrame frame;
    const auto model = frame.canvas().within([&] { return loadedModel(); });
    EXPECT_TRUE(frame.canvas().within([&] { return model->isUsable(); }));
    EXPECT_FALSE(QOpenGLContext::currentContext());
    EXPECT_FALSE(model->isUsable());
}

TEST_F(MovedWidgetTest, KeepsItsPixelsAndTheNumberOfObjects) {
    moveBackAndForth(Cleanup::BeforeVelGL, Restoring::KeptData);
    moveBackAndForth(Cleanup::BeforeVelGL, Restoring::Refill);
}

TEST_F(MovedWidgetTest, MayDeleteItsProgramAfterVelGLHasForgottenTheContext) {
    moveBackAndForth(Cleanup::AfterVelGL, Restoring::KeptData);
    moveBackAndForth(Cleanup::AfterVelGL, Restoring::Refill);
}

TEST_F(MovedWidgetTest, MayUseVelGLAfterThatHasForgottenTheContext) {
    moveBackAndForth(Cleanup::UseAfterVelGL, Restoring::KeptData);
    moveBackAndForth(Cleanup::UseAfterVelGL, Restoring::Refill);
}

TEST_F(WindowsTest, FloatingDockWidgetKeepsItsPixelsAndTheNumberOfObjects) {
    QMainWindow window;
    auto* const canvas = new WidgetCanvas;
    canvas->setFixedSize(kPictureSize);
    QDockWidget dock;
    dock.setWidget(canvas);
    window.addDockWidget(Qt::LeftDockWidgetArea, &dock);
    window.show();
    canvas->waitForFrame();
    const auto model = canvas->within([&] { return uploadedModel(keptData()); });
    canvas->showModel(model.get());
    std::vector<LiveObjects> docked;
    for (int round = 0; round < 2 * 4; ++round) {
        dock.setFloating(round % 2 == 0);
        EXPECT_THAT(cellsOf(*canvas), looksLike(scene())) << "round " << round;
        EXPECT_EQ(canvas->window() == &dock, round % 2 == 0);
        if (round % 2 != 0)
            docked.push_back(canvas->liveObjects());
    }
    EXPECT_THAT(docked, ::testing::Each(docked.front()));
}

TEST_F(WindowsTest, WidgetKeepsItsPixelsAsAWindowOfItsOwn) {
    CanvasFrame frame;
    WidgetCanvas& canvas = frame.canvas();
    const auto model = canvas.within([&] { return uploadedModel(keptData()); });
    canvas.showModel(model.get());
    const QImage expected = canvas.picture();
    EXPECT_THAT(cellsOf(expected), looksLike(scene()));
    for (int round = 0; round < 3; ++round) {
        canvas.setParent(nullptr);
        canvas.show();
        EXPECT_THAT(canvas.picture(), hasThePixelsOf(expected)) << "round " << round;
        frame.dock(canvas);
        EXPECT_THAT(canvas.picture(), hasThePixelsOf(expected)) << "round " << round;
    }
}

TEST_F(WindowsTest, WindowThatWasClosedAndShownAgainKeepsItsPixels) {
    CanvasFrame frame;
    const auto model = frame.canvas().within([&] { return loadedModel(); });
    frame.canvas().showModel(model.get());
    const QImage expected = frame.canvas().picture();
    EXPECT_THAT(cellsOf(expected), looksLike(scene()));
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(frame.close());
        frame.show();
        EXPECT_THAT(frame.canvas().picture(), hasThePixelsOf(expected)) << "round " << round;
    }
}

TEST_F(WindowsTest, TextureLoaderOfAModelIsCalledOnceForEachPath) {
    QMap<QString, int> calls;
    std::unique_ptr<GPUModel> models[2];
    const CanvasFrame frame;
    for (std::unique_ptr<GPUModel>& model : models) {
        frame.canvas().within([&] { model = loadedModel(); });
        model->setTextureLoader([&](const QString& path) {
            ++calls[path];
            return blueTexture();
        });
    }
    QVector<Cell> withBlue = scene();
    withBlue[1] = Cell::plain(Qt::blue);
    for (int numberOfModels = 1; numberOfModels <= 2; ++numberOfModels) {
        frame.canvas().showModel(models[numberOfModels - 1].get());
        for (int round = 0; round < 3; ++round)
            EXPECT_THAT(cellsOf(frame.canvas()), looksLike(withBlue));
        EXPECT_EQ(calls, (QMap<QString, int>{{picture(), numberOfModels}}));
    }
}

TEST_F(WindowsTest, TexturesOfAModelsOwnLoaderAreDeletedWithTheModel) {
    const CanvasFrame frame;
    std::vector<LiveObjects> without;
    for (int round = 0; round < kRounds; ++round) {
        auto model = frame.canvas().within([&] { return loadedModel(); });
        model->setTextureLoader([](const QString& /*path*/) { return blueTexture(); });
        frame.canvas().showModel(model.get());
        frame.canvas().waitForFrame();
        const LiveObjects with = frame.canvas().liveObjects();
        frame.canvas().showModel(nullptr);
        model.reset();
        frame.canvas().waitForFrame();
        without.push_back(frame.canvas().liveObjects());
        EXPECT_EQ(with.textures, without.back().textures + 1);
    }
    EXPECT_THAT(without, ::testing::Each(without.front()));
}

TEST_F(WindowsTest, PlainWindowsShowTheirModelsAndLeaveNoObjects) {
    std::vector<LiveObjects> live;
    for (int round = 0; round < kRounds; ++round) {
        WindowCanvas canvas;
        canvas.resize(kPictureSize);
        canvas.show();
        canvas.waitForFrame();
        live.push_back(canvas.liveObjects());
        const auto model = canvas.within([&] { return loadedModel(); });
        canvas.showModel(model.get());
        EXPECT_THAT(cellsOf(canvas.picture()), looksLike(scene())) << "round " << round;
    }
    live.erase(live.begin()); // from the first model on, the texture by path is kept
    EXPECT_THAT(live, ::testing::Each(live.front()));
}

} // namespace Atelier::Vel::Testing
