#include "glhooks.h"

#include <velgl/gpumodel.h>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "scenefixture.h"

// The box of a model whose buffers OpenGL has: it follows all changes, and costs no call for what is known.
namespace Atelier::Vel::Testing {

namespace {

const QString kPosition = QStringLiteral("va_Vertex");

using Commands = QVector<DrawElementsIndirectCommand>;

/// Points with the coordinates (n, n, n), and the indices 0 to 3. The first two points are drawn.
class ModelBoundsBuffersTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        _model = std::make_unique<GPUModel>();
        _buffers = addPoints(*_model, {0, 1, 2, 3});
    }
    void TearDown() override {
        _model.reset();
        FeatureFixture::TearDown();
    }

    static QVector<float> positionsAt(const QVector<float>& places) {
        QVector<float> positions;
        for (const float place : places)
            positions << place << place << place;
        return positions;
    }
    static QSharedPointer<BufferObject> points(const QVector<float>& places) {
        return bufferOf(positionsAt(places));
    }
    static QSharedPointer<VertexArrayObject> vertexArray(const QVector<float>& places) {
        auto vao = QSharedPointer<VertexArrayObject>::create();
        vao->registerBO(kPosition, points(places), 3, GL_FLOAT);
        return vao;
    }
    static DrawBuffers* addPoints(GPUModel& model, const QVector<float>& places) {
        auto* buffers = new DrawBuffers;
        buffers->setVAO(vertexArray(places));
        buffers->setIndexedDraw(bufferOf(QVector<unsigned short>{0, 1, 2, 3}), 4, GL_UNSIGNED_SHORT);
        setCommands(*buffers, {{2, 1, 0, 0, 0}});
        model.add(buffers, 1, nullptr, nullptr, 0);
        return buffers;
    }
    static void setCommands(DrawBuffers& buffers, const Commands& commands) {
        buffers.setDrawElementsIndirectCommands(commands.constData(), commands.size());
    }
    void setCommands(const Commands& commands) const { setCommands(*_buffers, commands); }

    void expectBox(float minimum, float maximum, const char* what) const {
        const GPUModel::Bounds bounds = _model->bounds();
        EXPECT_TRUE(bounds.isValid) << what;
        EXPECT_EQ(bounds.minimum, QVector3D(minimum, minimum, minimum)) << what;
        EXPECT_EQ(bounds.maximum, QVector3D(maximum, maximum, maximum)) << what;
    }
    /// Expects that bounds() makes no call of OpenGL.
    void expectFreeBox(float minimum, float maximum, const char* what) const {
        const StateCalls calls;
        expectBox(minimum, maximum, what);
        EXPECT_EQ(calls.count(), 0) << what;
    }
    void expectFreeInvalidBox(const char* what) const {
        EXPECT_FALSE(_model->bounds().isValid) << what;
        const StateCalls calls;
        EXPECT_FALSE(_model->bounds().isValid) << what;
        EXPECT_EQ(calls.count(), 0) << what;
    }

    std::unique_ptr<GPUModel> _model;
    DrawBuffers* _buffers = nullptr;
};

} // namespace

INSTANTIATE_FOR_DRIVERS(ModelBoundsBuffersTest);

TEST_P(ModelBoundsBuffersTest, HookCountsTheCallsOfAReadBack) {
    const StateCalls calls;
    expectBox(0, 1, "first call");
    EXPECT_GT(calls.count(), 0);
}

TEST_P(ModelBoundsBuffersTest, UnchangedModelCostsNoCall) {
    expectBox(0, 1, "first call");
    expectFreeBox(0, 1, "second call");
    _context->doneCurrent();
    expectBox(0, 1, "without a context");
    ASSERT_TRUE(_context->makeCurrent());
}

TEST_P(ModelBoundsBuffersTest, UnchangedModelWithoutABoxCostsNoCall) {
    setCommands({});
    expectFreeInvalidBox("no commands");
    setCommands({{2, 0, 0, 0, 0}, {0, 1, 1, 0, 0}});
    expectFreeInvalidBox("nothing drawn");
    setCommands({{1, 1, 0, 4, 0}});
    expectFreeInvalidBox("no such vertex");
    setCommands({{5, 1, 0, 0, 0}});
    expectFreeInvalidBox("no such index");
    _buffers->setIndexedDraw(_buffers->indexBuffer(), 5, GL_UNSIGNED_SHORT);
    expectFreeInvalidBox("no such index in the buffer");
    setCommands({{4, 1, 0, 0, 0}});
    _buffers->setVAO(vertexArray({}));
    expectFreeInvalidBox("no positions");
    _buffers->VAO()->registerBO(kPosition, QSharedPointer<BufferObject>::create(), 3, GL_FLOAT);
    expectFreeInvalidBox("a buffer that was never filled");
    EXPECT_FALSE(_model->bounds(QStringLiteral("unknown")).isValid);
    const StateCalls calls;
    EXPECT_FALSE(_model->bounds(QStringLiteral("unknown")).isValid);
    EXPECT_EQ(calls.count(), 0);
}

TEST_P(ModelBoundsBuffersTest, BoxFollowsTheVisibilityOfCommands) {
    setCommands({{1, 1, 0, 0, 0}, {1, 1, 3, 0, 0}});
    expectBox(0, 3, "both");
    _buffers->setVisibility(1, DrawBuffers::Visibility::Hidden);
    expectFreeBox(0, 0, "the second one is hidden");
    _buffers->setVisibility(0, DrawBuffers::Visibility::Hidden);
    expectFreeInvalidBox("both are hidden");
    _buffers->setVisibility(1, DrawBuffers::Visibility::Shown);
    expectFreeBox(3, 3, "the second one is shown again");
}

TEST_P(ModelBoundsBuffersTest, BoxFollowsTheCommands) {
    expectBox(0, 1, "as set first");
    setCommands({{1, 1, 3, 0, 0}});
    expectBox(3, 3, "another first index");
    setCommands({{4, 1, 0, 0, 0}});
    expectBox(0, 3, "another count");
    setCommands({{1, 1, 0, 2, 0}});
    expectBox(2, 2, "another base vertex");
    setCommands({{1, 0, 0, 2, 0}, {1, 1, 1, 0, 0}});
    expectBox(1, 1, "a command without instances");
    setCommands({});
    EXPECT_FALSE(_model->bounds().isValid);
}

TEST_P(ModelBoundsBuffersTest, KnownRangesCostNoCall) {
    const Commands low = {{2, 1, 0, 0, 0}};
    const Commands high = {{2, 1, 2, 0, 0}};
    const Commands moved = {{2, 1, 0, 1, 0}};
    expectBox(0, 1, "low");
    setCommands(high);
    expectBox(2, 3, "high");
    setCommands(moved);
    expectBox(1, 2, "moved");
    setCommands(low);
    expectFreeBox(0, 1, "low again");
    setCommands(high);
    expectFreeBox(2, 3, "high again");
    setCommands(moved);
    expectFreeBox(1, 2, "moved again");
    setCommands(low + moved);
    expectFreeBox(0, 2, "two known ranges");
    setCommands({{2, 7, 2, 0, 9}});
    expectFreeBox(2, 3, "instances do not matter");
    setCommands({{1, 1, 2, 0, 0}});
    expectBox(2, 2, "a part of a known range");
    setCommands({});
    EXPECT_FALSE(_model->bounds().isValid);
    setCommands(low);
    expectFreeBox(0, 1, "after no commands");
}

TEST_P(ModelBoundsBuffersTest, AttributesHaveTheirOwnBoxes) {
    _buffers->VAO()->registerBO(QStringLiteral("other"), points({5, 6, 7, 8}), 3, GL_FLOAT);
    expectBox(0, 1, "positions");
    EXPECT_EQ(_model->bounds(QStringLiteral("other")).maximum, QVector3D(6, 6, 6));
    const StateCalls calls;
    expectBox(0, 1, "positions again");
    EXPECT_EQ(_model->bounds(QStringLiteral("other")).maximum, QVector3D(6, 6, 6));
    EXPECT_EQ(calls.count(), 0);
}

TEST_P(ModelBoundsBuffersTest, BoxFollowsTheIndices) {
    expectBox(0, 1, "as set first");
    _buffers->setIndexedDraw(bufferOf(QVector<unsigned short>{3, 2, 1, 0}), 4, GL_UNSIGNED_SHORT);
    expectBox(2, 3, "another buffer");
    _buffers->setIndexedDraw(bufferOf(QVector<unsigned char>{1, 0, 2, 0}), 4, GL_UNSIGNED_BYTE);
    expectBox(0, 1, "another type");
    _buffers->setIndexedDraw(_buffers->indexBuffer(), 2, GL_UNSIGNED_SHORT);
    expectBox(1, 2, "the same bytes as another type");
}

// A command beyond the announced indices draws nothing.
TEST_P(ModelBoundsBuffersTest, BoxFollowsTheNumberOfIndices) {
    setCommands({{1, 1, 0, 0, 0}, {2, 1, 2, 0, 0}});
    expectBox(0, 3, "all indices");
    for (const int count : {3, 1}) {
        _buffers->setIndexedDraw(_buffers->indexBuffer(), count, GL_UNSIGNED_SHORT);
        expectFreeBox(0, 0, "fewer indices");
    }
    for (const int count : {0, -1}) {
        _buffers->setIndexedDraw(_buffers->indexBuffer(), count, GL_UNSIGNED_SHORT);
        expectFreeInvalidBox("no indices");
    }
    _buffers->setIndexedDraw(_buffers->indexBuffer(), 4, GL_UNSIGNED_SHORT);
    expectFreeBox(0, 3, "all indices again");
}

TEST_P(ModelBoundsBuffersTest, BoxFollowsTheStreams) {
    expectBox(0, 1, "as set first");
    _buffers->setVAO(vertexArray({4, 5, 6, 7}));
    expectBox(4, 5, "another vertex array");
    _buffers->VAO()->registerBO(kPosition, points({8, 9, 0, 0}), 3, GL_FLOAT);
    expectBox(8, 9, "another stream");
    const QSharedPointer<BufferObject> positions = _buffers->VAO()->streams()[0].buffer;
    _buffers->VAO()->registerBO(kPosition, positions, 1, GL_FLOAT);
    EXPECT_EQ(_model->bounds().minimum, QVector3D(8, 0, 0)) << "other components";
    _buffers->VAO()->registerBO(kPosition, positions, 3, GL_UNSIGNED_INT);
    EXPECT_GT(_model->bounds().minimum.x(), 9) << "another type";
    _buffers->VAO()->registerBO(kPosition, {}, 3, GL_FLOAT);
    EXPECT_FALSE(_model->bounds().isValid) << "no buffer";
}

TEST_P(ModelBoundsBuffersTest, BoxFollowsEachUpload) {
    const QSharedPointer<BufferObject> positions = _buffers->VAO()->streams()[0].buffer;
    const QSharedPointer<BufferObject> indices = _buffers->indexBuffer();
    expectBox(0, 1, "as uploaded first");
    const QVector<float> others = positionsAt({4, 5, 6, 7});
    ASSERT_TRUE(positions->uploadArbitraryData(others.constData(), 12, GL_STATIC_DRAW, sizeof(float)));
    expectBox(4, 5, "positions");
    const unsigned short backwards[] = {3, 2, 1, 0};
    ASSERT_TRUE(indices->uploadGLushortData(backwards, 4, GL_STATIC_DRAW));
    expectBox(6, 7, "16-bit indices");
    const unsigned int words[] = {0x10000, 0};
    ASSERT_TRUE(indices->uploadGLuintData(words, 2, GL_STATIC_DRAW));
    expectBox(4, 5, "32-bit indices");
    ASSERT_TRUE(positions->uploadArbitraryData(nullptr, 0, GL_STATIC_DRAW, 1));
    EXPECT_FALSE(_model->bounds().isValid) << "no content";
    ASSERT_TRUE(positions->uploadArbitraryData(others.constData(), 12, GL_STATIC_DRAW, sizeof(float)));
    expectBox(4, 5, "content again");
}

TEST_P(ModelBoundsBuffersTest, UploadOfOneDrawableLeavesTheBoxesOfTheOthers) {
    DrawBuffers* second = addPoints(*_model, {5, 6, 7, 8});
    expectBox(0, 6, "both");
    int callsOfBoth = 0;
    {
        const std::unique_ptr<GPUModel> model = std::make_unique<GPUModel>();
        addPoints(*model, {0, 1, 2, 3});
        const StateCalls calls;
        EXPECT_TRUE(model->bounds().isValid);
        callsOfBoth = 2 * calls.count();
    }
    const QVector<float> others = positionsAt({9, 9, 9, 9});
    const QSharedPointer<BufferObject> positions = second->VAO()->streams()[0].buffer;
    ASSERT_TRUE(positions->uploadArbitraryData(others.constData(), 12, GL_STATIC_DRAW, sizeof(float)));
    const StateCalls calls;
    expectBox(0, 9, "after the upload");
    EXPECT_EQ(calls.count(), callsOfBoth / 2);
}

TEST_P(ModelBoundsBuffersTest, DrawableAddedLaterIsRead) {
    expectBox(0, 1, "one");
    addPoints(*_model, {5, 6, 7, 8});
    expectBox(0, 6, "both");
    expectFreeBox(0, 6, "both again");
}

TEST_P(ModelBoundsBuffersTest, BuffersThatDrawablesShareAreReadOnce) {
    int callsOfOne = 0;
    {
        const StateCalls calls;
        expectBox(0, 1, "one");
        callsOfOne = calls.count();
    }
    GPUModel model;
    for (int i = 0; i < 3; ++i) {
        auto* further = new DrawBuffers;
        further->setVAO(_buffers->VAO());
        further->setIndexedDraw(_buffers->indexBuffer(), 4, GL_UNSIGNED_SHORT);
        setCommands(*further, {{1, 1, std::uint32_t(i), 0, 0}});
        model.add(further, 1, nullptr, nullptr, 0);
    }
    const StateCalls calls;
    EXPECT_EQ(model.bounds().maximum, QVector3D(2, 2, 2));
    EXPECT_EQ(calls.count(), callsOfOne);
}

// What could not be read is tried again.
TEST_P(ModelBoundsBuffersTest, BoxIsFoundAgainInAContextThatKnowsTheBuffers) {
    const auto unrelated = makeContext(options());
    ASSERT_TRUE(unrelated->makeCurrent());
    EXPECT_FALSE(_model->bounds().isValid) << "the buffers belong to another context";
    unrelated->doneCurrent();
    EXPECT_FALSE(_model->bounds().isValid) << "there is no context";
    ASSERT_TRUE(_context->makeCurrent());
    expectBox(0, 1, "in the context of the buffers");
    ASSERT_TRUE(unrelated->makeCurrent());
    expectBox(0, 1, "a known box");
    setCommands({{1, 1, 3, 0, 0}});
    EXPECT_FALSE(_model->bounds().isValid) << "a new range";
    ASSERT_TRUE(_context->makeCurrent());
    expectBox(3, 3, "a new range");
}

// The new buffer of the other context is empty.
TEST_P(ModelBoundsBuffersTest, ContentThatIsLostWithItsContextHasNoBox) {
    expectBox(0, 1, "in the first context");
    _context.reset();
    _context = makeContext(options());
    ASSERT_TRUE(_context->makeCurrent());
    watchMessages();
    expectBox(0, 1, "a known box");
    const QSharedPointer<BufferObject> positions = _buffers->VAO()->streams()[0].buffer;
    EXPECT_TRUE(positions->bind());
    positions->unbind();
    EXPECT_FALSE(_model->bounds().isValid);
}

// The memory for boxes stays small although the commands change all the time.
TEST_P(ModelBoundsBuffersTest, NumberOfKeptBoxesIsLimited) {
    const auto manyCommands = [](std::uint32_t firstVertex) {
        Commands commands(40000);
        for (DrawElementsIndirectCommand& command : commands)
            command = {1, 1, 0, firstVertex++, 0};
        return commands;
    };
    const Commands first = manyCommands(0);
    const Commands second = manyCommands(40000) + Commands{{1, 1, 1, 0, 0}};
    setCommands(first);
    expectBox(0, 3, "first");
    setCommands(second);
    expectBox(1, 1, "second");
    expectFreeBox(1, 1, "second again");
    setCommands(first);
    {
        const StateCalls calls;
        expectBox(0, 3, "first again");
        EXPECT_GT(calls.count(), 0);
    }
    expectFreeBox(0, 3, "unchanged");
}

} // namespace Atelier::Vel::Testing
