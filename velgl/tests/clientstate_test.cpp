#include <epoxy/gl.h>

#include "clientstate.h"

#include <functional>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>

#include "featurefixture.h"
#include "testscene.h"

namespace Atelier::Vel::Testing {

namespace {

class ClientStateTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
    }

    // The state after `call` is the state before it, also when the objects that it works on exist already.
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

// A model whose materials have textures by object and by path.
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

TEST_P(ClientStateTest, HelperNoticesAChange) {
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
          GL_PIXEL_UNPACK_BUFFER, GL_ATOMIC_COUNTER_BUFFER, GL_DISPATCH_INDIRECT_BUFFER, GL_TEXTURE_BUFFER}) {
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

TEST_P(ClientStateTest, SurvivesTheMakingOfAnotherContext) {
    expectUntouched([this] {
        OpenGLDeviceContext::HeadlessOptions options;
        options.shareWith = _context;
        EXPECT_TRUE(makeContext(options));
    });
}

} // namespace Atelier::Vel::Testing
