#include <epoxy/gl.h>

#include "clientstate.h"
#include "glhooks.h"

#include <functional>
#include <stdexcept>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/glentrypoints.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>

#include "featurefixture.h"
#include "support/messagelog.h"
#include "testscene.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;

class ClientStateTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
    }

    // Expects that `call` leaves the state unchanged, in its first call and when its objects exist already.
    void expectUntouched(const std::function<void()>& call) {
        const BusyClient client;
        for (const char* round : {"first", "second"}) {
            const ClientState before = ClientState::captured();
            call();
            EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "") << round << " call";
        }
    }
};

constexpr unsigned int kIndices[] = {0, 1, 2};

// A model of two commands, whose materials have one texture each.
void fillModel(GPUModel& model) {
    InstanceData material = coloredMaterial(Qt::red);
    material.setTexture(QStringLiteral("first"), TextureManager::Instance().colorTexture(Qt::blue));
    InstanceData other = coloredMaterial(Qt::red);
    other.setTexture(QStringLiteral("second"), TextureManager::Instance().colorTexture(Qt::green));
    model.add(
        triangleRow(2), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material, other}),
        new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({}), movedInstance({})}),
        0);
}

} // namespace

INSTANTIATE_FOR_DRIVERS(ClientStateTest);

TEST_P(ClientStateTest, HelperDetectsAChange) {
    const BusyClient client;
    const ClientState before = ClientState::captured();
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    EXPECT_NE(ClientState::difference(before, ClientState::captured()), "");
}

TEST_P(ClientStateTest, SurvivesBufferUploads) {
    BufferObject buffer;
    expectUntouched([&] { buffer.uploadGLuintData(kIndices, 3, GL_STATIC_DRAW); });
    expectUntouched([&] { buffer.uploadArbitraryData(kIndices, 12, GL_STATIC_DRAW, 1); });
}

TEST_P(ClientStateTest, SurvivesBufferReadBack) {
    BufferObject buffer;
    buffer.uploadGLuintData(kIndices, 3, GL_STATIC_DRAW);
    expectUntouched([&] { EXPECT_EQ(buffer.readBack().size(), 12); });
    expectUntouched([&] { buffer.setLabel(QStringLiteral("label")); });
}

TEST_P(ClientStateTest, SurvivesBufferBindAndUnbindOnEveryTarget) {
    for (const GLenum target :
         {GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_DRAW_INDIRECT_BUFFER, GL_SHADER_STORAGE_BUFFER,
          GL_UNIFORM_BUFFER, GL_COPY_READ_BUFFER, GL_COPY_WRITE_BUFFER, GL_PIXEL_PACK_BUFFER,
          GL_PIXEL_UNPACK_BUFFER, GL_ATOMIC_COUNTER_BUFFER, GL_DISPATCH_INDIRECT_BUFFER, GL_TEXTURE_BUFFER,
          GL_TRANSFORM_FEEDBACK_BUFFER}) {
        BufferObject buffer;
        buffer.setTarget(target);
        expectUntouched([&] {
            const AutoBinder binder(&buffer);
            EXPECT_TRUE(buffer.uploadGLuintData(kIndices, 3, GL_STATIC_DRAW));
        });
    }
}

TEST_P(ClientStateTest, SurvivesBufferDestruction) {
    expectUntouched([] {
        BufferObject buffer;
        buffer.uploadGLuintData(kIndices, 3, GL_STATIC_DRAW);
    });
}

TEST_P(ClientStateTest, SurvivesVertexArrayBindAndUnbind) {
    auto vao = QSharedPointer<VertexArrayObject>::create();
    vao->setIndexBuffer(bufferOf(QVector<unsigned int>{0, 1, 2}));
    vao->registerBO(QStringLiteral("va_Vertex"), bufferOf(QVector<float>(9)), 3, GL_FLOAT);
    expectUntouched([&] { const AutoBinder binder(vao.data()); });
}

TEST_P(ClientStateTest, SurvivesTextureWork) {
    expectUntouched([] {
        const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
        const AutoBinder binder(texture.get());
        EXPECT_EQ(texture->readBack().pixelColor(0, 0), QColor(Qt::red));
        texture->setLabel(QStringLiteral("label"));
    });
}

TEST_P(ClientStateTest, SurvivesTextureBindAndUnbindOnEveryTarget) {
    for (const GLenum target :
         {GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_1D_ARRAY, GL_TEXTURE_2D_ARRAY,
          GL_TEXTURE_RECTANGLE, GL_TEXTURE_CUBE_MAP, GL_TEXTURE_CUBE_MAP_ARRAY}) {
        Texture outer(target, GL_RGBA8, 1, 1, 1, nullptr);
        Texture inner(target, GL_RGBA8, 1, 1, 1, nullptr);
        expectUntouched([&] {
            const AutoBinder outerBinder(&outer);
            const ClientState before = ClientState::captured();
            {
                const AutoBinder innerBinder(&inner);
                EXPECT_NE(ClientState::difference(before, ClientState::captured()), "") << target;
            }
            EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "") << target;
        });
    }
}

TEST_P(ClientStateTest, SurvivesTextureQueries) {
    const std::unique_ptr<Texture> texture = Texture::ofColor(Qt::red);
    { const AutoBinder binder(texture.get()); }
    expectUntouched([&] {
        EXPECT_TRUE(texture->hasContent());
        EXPECT_EQ(texture->readBack().size(), QSize(1, 1));
        EXPECT_TRUE(texture->readBack(1).isNull());
    });
}

// The loader fills its textures as a client does, in the middle of the first draw.
TEST_P(ClientStateTest, SurvivesTheFirstUseOfAPathTexture) {
    const unsigned char green[] = {0, 255, 0, 255};
    std::vector<std::unique_ptr<Texture>> loaded;
    TextureManager::Instance().setLoader([&](const QString& path) -> Texture* {
        if (path != QLatin1String("/green.png"))
            return nullptr;
        if (loaded.empty()) {
            loaded.push_back(std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr));
            const AutoBinder binder(loaded[0].get());
            glEntryPoints().texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
            glEntryPoints().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, green);
            glEntryPoints().generateMipmap(GL_TEXTURE_2D);
        }
        return loaded[0].get();
    });
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), QStringLiteral("/green.png"));
    material.setTexture(QStringLiteral("second"), QStringLiteral("/none.png"));
    GPUModel model;
    model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    const std::unique_ptr<Program> program = sceneProgram();
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const MessageLog log;
    expectUntouched([&] {
        const AutoBinder binder(program.get());
        model.draw();
    });
    TextureManager::Instance().setLoader({});
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre("Texture '/none.png' cannot be loaded"));
    EXPECT_EQ(picture.pixels().pixelColor(0, 1), QColor(Qt::green));
}

TEST_P(ClientStateTest, SurvivesProgramWork) {
    expectUntouched([] {
        const std::unique_ptr<Program> program = sceneProgram();
        const AutoBinder binder(program.get());
        EXPECT_GE(program->uniformLocation("velgl_textures"), 0);
    });
}

TEST_P(ClientStateTest, SurvivesStorageReadBack) {
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::red)});
    expectUntouched([&] { EXPECT_EQ(collection.readBack().size(), 32); });
}

TEST_P(ClientStateTest, StorageBindingChangesItsOwnPointOnly) {
    const BusyClient client;
    InstanceDataCollection collection(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::red)});
    const ClientState before = ClientState::captured();
    ASSERT_TRUE(collection.bindStorage(3));
    GLint bound = 0;
    glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, 3, &bound);
    EXPECT_NE(bound, 0);
    glGetIntegerv(GL_SHADER_STORAGE_BUFFER_BINDING, &bound);
    const GLint general = bound;
    glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 3, 0);
    glBindBuffer(GL_SHADER_STORAGE_BUFFER, GLuint(general));
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
}

TEST_P(ClientStateTest, SurvivesModelDraw) {
    GPUModel model;
    fillModel(model);
    const std::unique_ptr<Program> program = sceneProgram();
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    expectUntouched([&] {
        const AutoBinder binder(program.get());
        model.draw();
    });
    expectUntouched([&] { model.draw(); });
}

// Primitive restart is turned off for some modes and kept for others.
TEST_P(ClientStateTest, SurvivesDrawsInEachMode) {
    GPUModel model;
    fillModel(model);
    const std::unique_ptr<Program> program = sceneProgram();
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    for (const GLenum mode : {GL_POINTS, GL_LINES, GL_TRIANGLES, GL_TRIANGLE_STRIP, GL_LINE_LOOP}) {
        model.drawable(0)->setPrimitiveType(mode);
        for (const GLenum disabled : {GL_NONE, GL_PRIMITIVE_RESTART, GL_PRIMITIVE_RESTART_FIXED_INDEX})
            expectUntouched([&] {
                const AutoBinder binder(program.get());
                if (disabled == GL_NONE) {
                    model.draw();
                    return;
                }
                glDisable(disabled);
                const ClientState before = ClientState::captured();
                model.draw();
                EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "") << mode;
                glEnable(disabled);
            });
    }
}

TEST_P(ClientStateTest, SurvivesADrawThatThrows) {
    GPUModel model;
    fillModel(model);
    const std::unique_ptr<Program> program = sceneProgram();
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const DrawHook hook([] { throw std::runtime_error("planted"); });
    expectUntouched([&] {
        const AutoBinder binder(program.get());
        EXPECT_THROW(model.draw(), std::runtime_error);
    });
}

TEST_P(ClientStateTest, SurvivesModelQueries) {
    GPUModel model;
    fillModel(model);
    expectUntouched([&] { EXPECT_TRUE(model.bounds().isValid); });
    expectUntouched([&] { EXPECT_EQ(model.drawable(0)->readBackCommands().size(), 2); });
}

TEST_P(ClientStateTest, SurvivesModelBuildingAndDestruction) {
    expectUntouched([] {
        GPUModel model;
        fillModel(model);
    });
}

TEST_P(ClientStateTest, SurvivesChangesOfItemsAndVisibilityAndTheirDraws) {
    GPUModel model;
    fillModel(model);
    const std::unique_ptr<Program> program = sceneProgram();
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    DrawOptions sorted;
    sorted.order = DrawOrder::ByTextures;
    sorted.program = program.get();
    model.draw(sorted);
    int frame = 0;
    const auto change = [&] {
        ++frame;
        InstanceData material = coloredMaterial(QColor(frame, 2, 3));
        material.setTexture(frame % 2 == 0 ? QStringLiteral("first") : QStringLiteral("second"),
                            TextureManager::Instance().colorTexture(Qt::blue));
        EXPECT_TRUE(model.materials(0)->set(0, material));
        EXPECT_TRUE(model.instances(0)->set(1, movedInstance({float(frame), 0, 0})));
        model.drawable(0)->setVisibility(0, frame % 2 == 0 ? DrawBuffers::Visibility::Hidden
                                                           : DrawBuffers::Visibility::Shown);
    };
    expectUntouched(change);
    expectUntouched([&] {
        change();
        model.draw(sorted);
        change();
        EXPECT_EQ(model.drawable(0)->readBackCommands().size(), 2);
        EXPECT_EQ(model.materials(0)->readBack().size(), 64);
    });
}

TEST_P(ClientStateTest, SurvivesRemovalAndClearing) {
    GPUModel model;
    fillModel(model);
    const std::unique_ptr<Program> program = sceneProgram();
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    expectUntouched([&] {
        const AutoBinder binder(program.get());
        fillModel(model);
        model.draw();
        EXPECT_TRUE(model.remove(model.drawableCount() - 1));
        model.draw();
    });
    expectUntouched([&] {
        const AutoBinder binder(program.get());
        fillModel(model);
        model.draw();
        model.clear();
        model.draw();
    });
}

TEST_P(ClientStateTest, SurvivesBoxesAndFilters) {
    GPUModel model;
    fillModel(model);
    expectUntouched([&] {
        model.setCommandBounds(0, {{{0, 0, 0}, {1, 1, 1}, true}});
        EXPECT_FALSE(model.commandBounds(0, 1).isValid);
        EXPECT_TRUE(model.placedBounds().isValid);
        EXPECT_TRUE(DrawFilter::ofKey(model, 0).passes(0, 0));
        EXPECT_TRUE(DrawFilter::ofOpacity(model, DrawFilter::Opacity::Opaque).passes(0, 0));
    });
}

TEST_P(ClientStateTest, SurvivesADrawWhoseModelIsCleared) {
    GPUModel model;
    fillModel(model);
    const std::unique_ptr<Program> program = sceneProgram();
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const DrawHook hook([&] { model.clear(); });
    expectUntouched([&] {
        const AutoBinder binder(program.get());
        model.draw();
        EXPECT_EQ(model.drawableCount(), 0);
        fillModel(model);
    });
}

// The tests below delete an object whose binding is saved. Nothing is bound in its place, and OpenGL reports
// no error.

TEST_P(ClientStateTest, TextureDeletedWhileItIsSavedLeavesNothingBound) {
    for (const GLenum target : {GL_TEXTURE_2D, GL_TEXTURE_CUBE_MAP}) {
        Texture texture(target, GL_RGBA8, 1, 1, 0, nullptr);
        const ClientState unbound = ClientState::captured();
        GLuint clients = 0;
        glGenTextures(1, &clients);
        glBindTexture(target, clients);
        ASSERT_TRUE(texture.bind());
        glDeleteTextures(1, &clients);
        texture.unbind();
        EXPECT_EQ(ClientState::difference(unbound, ClientState::captured()), "") << target;
    }
}

TEST_P(ClientStateTest, VertexArrayDeletedWhileItIsSavedLeavesNothingBound) {
    VertexArrayObject vao;
    const ClientState unbound = ClientState::captured();
    GLuint clients = 0;
    glGenVertexArrays(1, &clients);
    glBindVertexArray(clients);
    ASSERT_TRUE(vao.bind());
    glDeleteVertexArrays(1, &clients);
    vao.unbind();
    EXPECT_EQ(ClientState::difference(unbound, ClientState::captured()), "");
}

TEST_P(ClientStateTest, BufferDeletedWhileItIsSavedLeavesNothingBound) {
    for (const GLenum target : {GL_ARRAY_BUFFER, GL_SHADER_STORAGE_BUFFER, GL_PIXEL_PACK_BUFFER}) {
        BufferObject buffer;
        buffer.setTarget(target);
        const ClientState unbound = ClientState::captured();
        GLuint clients = 0;
        glGenBuffers(1, &clients);
        glBindBuffer(target, clients);
        ASSERT_TRUE(buffer.bind());
        glDeleteBuffers(1, &clients);
        buffer.unbind();
        EXPECT_EQ(ClientState::difference(unbound, ClientState::captured()), "") << target;
    }
}

TEST_P(ClientStateTest, VertexArrayDeletedWhileItsIndexBufferIsSavedIsSkipped) {
    BufferObject indices;
    indices.setTarget(GL_ELEMENT_ARRAY_BUFFER);
    GLuint arrays[2] = {};
    glGenVertexArrays(2, arrays);
    glBindVertexArray(arrays[0]);
    ASSERT_TRUE(indices.bind());
    glBindVertexArray(arrays[1]);
    const ClientState other = ClientState::captured();
    glDeleteVertexArrays(1, &arrays[0]);
    indices.unbind();
    EXPECT_EQ(ClientState::difference(other, ClientState::captured()), "");
    glDeleteVertexArrays(1, &arrays[1]);
}

TEST_P(ClientStateTest, ProgramDeletedWhileItIsSavedLeavesNoneInUse) {
    const std::unique_ptr<Program> program = sceneProgram();
    auto clients = sceneProgram();
    const ClientState unbound = ClientState::captured();
    ASSERT_TRUE(clients->bind());
    ASSERT_TRUE(program->bind());
    clients.reset();
    program->unbind();
    EXPECT_EQ(ClientState::difference(unbound, ClientState::captured()), "");
}

// A loader is code of the client. It may delete objects whose bindings a draw has saved.
TEST_P(ClientStateTest, ObjectsDeletedByALoaderLeaveNothingBound) {
    glViewport(0, 0, 4, 4); // that of the picture below
    const ClientState unbound = ClientState::captured();
    GLuint sampler = 0;
    GLuint texture = 0;
    GLuint buffers[3] = {};
    glGenSamplers(1, &sampler);
    glGenTextures(1, &texture);
    glGenBuffers(3, buffers);
    glBindSampler(1, sampler);
    glBindTexture(GL_TEXTURE_2D, texture);
    glBindBuffer(GL_DRAW_INDIRECT_BUFFER, buffers[2]);
    for (const GLuint point : {0U, 1U}) {
        glBindBuffer(GL_SHADER_STORAGE_BUFFER, buffers[point]);
        glBufferData(GL_SHADER_STORAGE_BUFFER, 4096, nullptr, GL_STATIC_DRAW);
        glBindBufferRange(GL_SHADER_STORAGE_BUFFER, point, buffers[point], 0, 512);
    }
    TextureManager::Instance().setLoader([&](const QString&) -> Texture* {
        glDeleteSamplers(1, &sampler);
        glDeleteTextures(1, &texture);
        glDeleteBuffers(3, buffers);
        return nullptr;
    });
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("second"), QStringLiteral("/deleted.png"));
    GPUModel model;
    model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    const std::unique_ptr<Program> program = sceneProgram();
    const MessageLog log;
    {
        Framebuffer picture(QSize(4, 4));
        picture.begin();
        const AutoBinder binder(program.get());
        model.draw();
    }
    TextureManager::Instance().setLoader({});
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre("Texture '/deleted.png' cannot be loaded"));
    EXPECT_EQ(ClientState::difference(unbound, ClientState::captured()), "");
}

TEST_P(ClientStateTest, SurvivesCreationOfAnotherContext) {
    expectUntouched([this] {
        OpenGLDeviceContext::HeadlessOptions options;
        options.shareWith = _context;
        EXPECT_TRUE(makeContext(options));
    });
}

} // namespace Atelier::Vel::Testing
