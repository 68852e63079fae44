#include <epoxy/gl.h>

#include <fstream>

#include <malloc.h>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>

#include "glhooks.h"
#include "support/glfixture.h"
#include "support/messagelog.h"
#include "support/sanitizer.h"
#include "testscene.h"

// Objects that outlive their context, move to another one, or are shared between contexts.
namespace Atelier::Vel::Testing {

namespace {

class LifetimeTest : public GLFixture {
protected:
    void SetUp() override {
        GLFixture::SetUp();
        registerTestPlans();
    }

    QSharedPointer<OpenGLDeviceContext> sharingContext() {
        OpenGLDeviceContext::HeadlessOptions shared = options();
        shared.shareWith = _context;
        return makeContext(shared);
    }
};

// The address sanitizer keeps freed memory for a while.
constexpr bool kCountsMemory = VELMODEL_ADDRESS_SANITIZER == 0;

constexpr unsigned int kValues[] = {1, 2, 3};

// One of each kind of object, with a GL name in the current context.
struct Everything {
    BufferObject buffer;
    VertexArrayObject vao;
    Texture texture{GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr};
    std::unique_ptr<Program> program = sceneProgram();
    GPUModel model;

    Everything() {
        buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
        for (Bindable* bindable : std::initializer_list<Bindable*>{&vao, &texture})
            const AutoBinder binder(bindable);
        addRow(model, {Qt::red, Qt::green});
        draw();
    }
    void draw() {
        const AutoBinder binder(program.get());
        model.draw();
    }
};

int liveNames() {
    constexpr GLuint kHighestName = 2000;
    int count = 0;
    for (GLuint name = 1; name <= kHighestName; ++name)
        count += glIsBuffer(name) + glIsTexture(name) + glIsVertexArray(name) + glIsProgram(name) +
                 glIsShader(name) + glIsSampler(name);
    return count;
}

qint64 residentBytes() {
    std::ifstream statistics("/proc/self/statm");
    qint64 total = 0;
    qint64 resident = 0;
    statistics >> total >> resident;
    return resident * 4096;
}

} // namespace

TEST_F(LifetimeTest, ObjectsMayOutliveTheirContext) {
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    auto everything = std::make_unique<Everything>();
    _context.reset();
    EXPECT_EQ(everything->buffer.name(), 0U);
    EXPECT_FALSE(everything->buffer.bind());
    everything->draw();
    everything.reset();
    EXPECT_FALSE(OpenGLDeviceContext::current());
}

TEST_F(LifetimeTest, NamesOfAnotherContextAreDeletedWhenItIsNextCurrent) {
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const int before = liveNames();
    auto everything = std::make_unique<Everything>();
    EXPECT_GT(liveNames(), before);
    const auto other = makeContext(options());
    other->makeCurrent();
    watchMessages();
    Framebuffer othersPicture(QSize(4, 4));
    othersPicture.begin();
    const Everything others;
    const int othersBefore = liveNames();
    everything.reset();
    EXPECT_EQ(liveNames(), othersBefore) << "objects of the unrelated context were deleted";
    ASSERT_TRUE(_context->makeCurrent());
    EXPECT_EQ(liveNames(), before + 1) << "only the white texture of the manager remains";
    other->makeCurrent();
}

TEST_F(LifetimeTest, NamesAreDeletedLaterWhenNothingIsCurrent) {
    BufferObject bystander;
    bystander.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    const int before = liveNames();
    auto buffer = std::make_unique<BufferObject>();
    buffer->uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    EXPECT_EQ(liveNames(), before + 1);
    _context->doneCurrent();
    buffer.reset();
    _context->makeCurrent();
    EXPECT_EQ(liveNames(), before);
}

TEST_F(LifetimeTest, QueuedNamesAreDiscardedWithTheirContext) {
    auto buffer = std::make_unique<BufferObject>();
    buffer->uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    _context->doneCurrent();
    buffer.reset();
    _context.reset();
    const auto other = makeContext(options());
    other->makeCurrent();
    BufferObject others;
    EXPECT_TRUE(others.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    EXPECT_TRUE(glIsBuffer(others.name()));
}

TEST_F(LifetimeTest, ContextsOfVelGLAreNotAskedWhoTheyAre) {
    GPUModel model;
    addRow(model, {Qt::red});
    const LabelQueries queries;
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
    EXPECT_EQ(queries.count(), 0);
}

TEST_F(LifetimeTest, SharingContextsDrawTheSameModel) {
    GPUModel model;
    addRow(model, {Qt::red});
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
    const auto sharing = sharingContext();
    ASSERT_TRUE(sharing && sharing->makeCurrent());
    watchMessages();
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
    _context->makeCurrent();
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
}

TEST_F(LifetimeTest, ModelRemainsUsableInASharingContext) {
    GPUModel model;
    addRow(model, {Qt::red});
    const auto sharing = sharingContext();
    _context.reset();
    ASSERT_TRUE(sharing && sharing->makeCurrent());
    watchMessages();
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
}

TEST_F(LifetimeTest, VertexArraysOfSharingContextsAreDeletedInEach) {
    const auto sharing = sharingContext();
    auto vao = std::make_unique<VertexArrayObject>();
    { const AutoBinder binder(vao.get()); }
    sharing->makeCurrent();
    watchMessages();
    const int before = liveNames();
    { const AutoBinder binder(vao.get()); }
    EXPECT_EQ(liveNames(), before + 1);
    _context->makeCurrent();
    const int mine = liveNames();
    vao.reset();
    EXPECT_EQ(liveNames(), mine - 1);
    sharing->makeCurrent();
    EXPECT_EQ(liveNames(), before);
}

TEST_F(LifetimeTest, UnrelatedContextCannotUseABuffer) {
    BufferObject buffer;
    buffer.setLabel(QStringLiteral("mine"));
    buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    const MessageLog log;
    EXPECT_EQ(buffer.name(), 0U);
    EXPECT_TRUE(buffer.readBack().isEmpty());
    EXPECT_FALSE(buffer.bind());
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(QStringLiteral(
                    "Buffer 'mine' belongs to a context that does not share with the current one")));
    _context->makeCurrent();
    buffer.unbind();
    EXPECT_EQ(buffer.readBack().size(), 12);
}

TEST_F(LifetimeTest, UploadFillsTheBufferInUnrelatedContextsAsWell) {
    BufferObject buffer;
    buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    const unsigned int name = buffer.name();
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    const MessageLog log;
    EXPECT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    EXPECT_EQ(buffer.readBack().size(), 12);
    _context->makeCurrent();
    EXPECT_EQ(buffer.name(), name);
    EXPECT_EQ(buffer.readBack().size(), 12);
    EXPECT_THAT(log.texts(QtWarningMsg), testing::IsEmpty());
    unrelated->makeCurrent();
}

// Draws rely on the size of a buffer, which is one for all groups.
TEST_F(LifetimeTest, UploadOfAnotherSizeDropsTheContentInUnrelatedContexts) {
    BufferObject buffer;
    buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    const unsigned int name = buffer.name();
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    EXPECT_TRUE(buffer.uploadGLuintData(kValues, 2, GL_STATIC_DRAW));
    EXPECT_EQ(buffer.byteCount(), 8U);
    EXPECT_EQ(buffer.readBack().size(), 8);
    _context->makeCurrent();
    EXPECT_EQ(buffer.name(), 0U);
    EXPECT_FALSE(glIsBuffer(name)) << "deleted with the next use of VelGL";
    unrelated->makeCurrent();
}

TEST_F(LifetimeTest, BufferCanBeFilledAgainAfterItsContextIsGone) {
    BufferObject buffer;
    buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    _context = makeContext(options());
    _context->makeCurrent();
    watchMessages();
    EXPECT_TRUE(buffer.readBack().isEmpty());
    EXPECT_TRUE(buffer.uploadGLuintData(kValues, 2, GL_STATIC_DRAW));
    EXPECT_EQ(buffer.readBack().size(), 8);
}

TEST_F(LifetimeTest, UnbindInAnotherContextChangesNothing) {
    BufferObject buffer;
    buffer.bind();
    const auto other = makeContext(options());
    other->makeCurrent();
    BufferObject others;
    others.bind();
    buffer.unbind();
    GLint bound = 0;
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bound);
    EXPECT_EQ(GLuint(bound), others.name());
    others.unbind();
}

TEST_F(LifetimeTest, CommandsAndCollectionsAreUploadedAgainInANewContext) {
    GPUModel model;
    addRow(model, {Qt::red, Qt::green});
    const QByteArray packed = model.materials(0)->readBack();
    EXPECT_EQ(packed.size(), 64);
    EXPECT_EQ(model.drawable(0)->readBackCommands().size(), 2);
    const auto other = makeContext(options());
    other->makeCurrent();
    watchMessages();
    EXPECT_EQ(model.materials(0)->readBack(), packed);
    EXPECT_EQ(model.drawable(0)->readBackCommands().size(), 2);
}

TEST_F(LifetimeTest, SolidColoursWorkInEveryContext) {
    Texture* texture = TextureManager::Instance().colorTexture(QColor(1, 2, 3));
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(texture->bind());
        texture->unbind();
        EXPECT_EQ(texture->readBack().pixelColor(0, 0), QColor(1, 2, 3));
        _context = makeContext(options());
        _context->makeCurrent();
        watchMessages();
    }
}

TEST_F(LifetimeTest, ReadOnlyTextureIsNotRecreatedEmpty) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    texture.setLabel(QStringLiteral("wood"));
    { const AutoBinder binder(&texture); }
    texture.setReadOnly();
    _context = makeContext(options());
    _context->makeCurrent();
    watchMessages();
    const MessageLog log;
    EXPECT_FALSE(texture.bind());
    EXPECT_FALSE(texture.bind());
    texture.unbind();
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(QStringLiteral(
                    "Texture 'wood' belongs to a context that does not share with the current one")));
}

TEST_F(LifetimeTest, TextureWithoutARefillIsNotMadeBesideItsContent) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    texture.setLabel(QStringLiteral("mine"));
    { const AutoBinder binder(&texture); }
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    const MessageLog log;
    EXPECT_FALSE(texture.bind());
    texture.unbind();
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(QStringLiteral(
                    "Texture 'mine' belongs to a context that does not share with the current one")));
    _context->makeCurrent();
    EXPECT_TRUE(texture.bind());
    texture.unbind();
}

TEST_F(LifetimeTest, MaterialWithALostTextureDrawsWhite) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    { const AutoBinder binder(&texture); }
    texture.setReadOnly();
    _context = makeContext(options());
    _context->makeCurrent();
    watchMessages();
    InstanceData material = coloredMaterial(Qt::red);
    material.setTexture(QStringLiteral("first"), &texture);
    GPUModel model;
    model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
}

TEST_F(LifetimeTest, RepeatedBindsUseNoMemory) {
    BufferObject buffer;
    buffer.bind();
    glFinish(); // the threads of the driver allocate as well
    const auto before = mallinfo2().uordblks;
    for (int i = 0; i < 100000; ++i)
        buffer.bind();
    if (kCountsMemory) {
        EXPECT_LT(mallinfo2().uordblks, before + 100000) << "a byte per bind";
    }
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

TEST_F(LifetimeTest, ThousandCyclesLeaveNothingBehind) {
    Framebuffer picture(QSize(8, 8));
    const auto cycle = [&] {
        picture.begin();
        Everything everything;
        everything.texture.setReadOnly();
        everything.draw();
        glFinish(); // the driver holds memory for unfinished work
    };
    // The driver's caches fill up in the first rounds.
    for (int i = 0; i < 200; ++i)
        cycle();
    const int names = liveNames();
    const qint64 resident = residentBytes();
    const auto allocated = static_cast<qint64>(mallinfo2().uordblks);
    for (int i = 0; i < 1000; ++i)
        cycle();
    EXPECT_EQ(liveNames(), names);
    if (kCountsMemory) {
        EXPECT_LT(qint64(mallinfo2().uordblks) - allocated, 256 * 1000) << "256 bytes per cycle";
        EXPECT_LT(residentBytes() - resident, 8'000'000);
    }
}

TEST_F(LifetimeTest, ContextsThatComeAndGoLeaveNothingBehind) {
    GPUModel model;
    addRow(model, {Qt::red});
    const auto comeAndGo = [this](int contexts) {
        for (int i = 0; i < contexts; ++i) {
            const auto temporary = makeContext(options());
            ASSERT_TRUE(temporary && temporary->makeCurrent());
            Framebuffer picture(QSize(8, 8));
            picture.begin();
            const Everything everything;
        }
    };
    comeAndGo(10); // the driver's caches fill up
    const qint64 resident = residentBytes();
    comeAndGo(30);
    if (kCountsMemory) {
        EXPECT_LT(residentBytes() - resident, 8'000'000);
    }
    _context->makeCurrent();
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
}

} // namespace Atelier::Vel::Testing
