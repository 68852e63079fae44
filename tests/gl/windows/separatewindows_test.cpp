#include <QtCore/QFile>
#include <QtCore/QHash>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/program.h>
#include <velgl/vertexarrayobject.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "windows/windowsfixture.h"

// Windows whose contexts do not share objects, and widgets whose context is made anew in another window.
namespace Atelier::Vel::Testing {

namespace {

using ::testing::ElementsAre;

UploadOptions keptData() {
    UploadOptions options{makeIdentityInstance()};
    options.keepData = true;
    return options;
}

/// The contents of all buffers of a model.
class BufferContents {
public:
    /// Reads them back. Requires: a context that knows the buffers is current.
    explicit BufferContents(const GPUModel& model) {
        for (BufferObject* buffer : buffersOf(model))
            _bytes[buffer] = buffer->readBack();
    }
    /// Uploads them to the same buffers in the current context.
    bool restore(const GPUModel& model) const {
        bool restored = true;
        for (BufferObject* buffer : buffersOf(model)) {
            const QByteArray bytes = _bytes.value(buffer);
            restored =
                buffer->uploadArbitraryData(bytes.constData(), bytes.size(), kStaticDraw, 1) && restored;
        }
        return restored;
    }

private:
    static constexpr unsigned int kStaticDraw = 0x88E4; // GL_STATIC_DRAW

    static QVector<BufferObject*> buffersOf(const GPUModel& model) {
        QVector<BufferObject*> buffers;
        for (int i = 0; i < model.drawableCount(); ++i) {
            buffers.append(model.drawable(i)->indexBuffer().data());
            for (const VertexArrayObject::Stream& stream : model.drawable(i)->VAO()->streams())
                buffers.append(stream.buffer.data());
        }
        return buffers;
    }

    QHash<BufferObject*, QByteArray> _bytes;
};

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
