#include <epoxy/gl.h>

#include "clientstate.h"
#include "glhooks.h"

#include <velgl/drawoptions.h>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/shaderinterface.h>
#include <velgl/texture.h>

#include "support/messagelog.h"
#include "texturedfixture.h"

// The order of draws, the texture units that they use, and who restores the state.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;

class DrawOptionsTest : public TexturedFixture {};

DrawOptions byTextures() {
    DrawOptions options;
    options.order = DrawOrder::ByTextures;
    return options;
}

} // namespace

INSTANTIATE_FOR_DRIVERS(DrawOptionsTest);

TEST_P(DrawOptionsTest, OrderOfTexturesDrawsEachSetAtOnceAndTheSamePicture) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::blue, Qt::green, Qt::red, Qt::black});
    const QList<QColor> expected =
        opaque({Qt::red, Qt::green, Qt::red, Qt::blue, Qt::green, Qt::red, Qt::white});
    EXPECT_EQ(drawnWith(model, 7, {}), expected);
    for (int frame = 0; frame < 2; ++frame) {
        const DrawHook hook;
        EXPECT_EQ(drawnWith(model, 7, byTextures()), expected);
        std::vector<int> counts;
        for (const DrawCall& call : hook.calls())
            counts.push_back(call.count);
        if (hasDrawParameters())
            EXPECT_THAT(counts, ElementsAre(3, 2, 1, 1)) << "in the order of the sets' first commands";
        else
            EXPECT_THAT(counts, testing::AllOf(testing::SizeIs(7), testing::Each(1)));
    }
}

TEST_P(DrawOptionsTest, NumbersOfCommandsStayInTheOrderOfTextures) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red, Qt::green});
    const std::unique_ptr<Program> numbers = commandProgram();
    DrawOptions options = byTextures();
    options.program = numbers.get();
    const QList<QColor> colors = drawnWith(model, 4, options);
    for (int command = 0; command < 4; ++command)
        EXPECT_EQ(colors[command].red(), 10 * (command + 1)) << command;
    options.order = DrawOrder::AsGiven;
    EXPECT_EQ(drawnWith(model, 4, options), colors) << "the uniform is set again";
}

TEST_P(DrawOptionsTest, DefinedBufferOfCommandsStaysAsItIs) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    const QVector<DrawElementsIndirectCommand> before = model.drawable(0)->readBackCommands();
    drawnWith(model, 3, byTextures());
    const QVector<DrawElementsIndirectCommand> after = model.drawable(0)->readBackCommands();
    ASSERT_EQ(after.size(), before.size());
    for (int i = 0; i < after.size(); ++i) {
        EXPECT_EQ(after[i].firstIndex, before[i].firstIndex);
        EXPECT_EQ(after[i].baseInstance, 0U);
    }
}

TEST_P(DrawOptionsTest, CommandsWithBaseInstancesAreDrawnAsGiven) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    QVector<DrawElementsIndirectCommand> commands = model.drawable(0)->drawElementsIndirectCommands();
    commands[1].baseInstance = 7;
    model.drawable(0)->setDrawElementsIndirectCommands(commands.constData(), commands.size());
    const DrawHook hook;
    EXPECT_EQ(drawnWith(model, 3, byTextures()), opaque({Qt::red, Qt::green, Qt::red}));
    EXPECT_EQ(hook.calls().size(), 3U);
}

TEST_P(DrawOptionsTest, OrderFollowsChangedCommands) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    drawnWith(model, 3, byTextures());
    const DrawElementsIndirectCommand swapped[] = {cellCommand(1), cellCommand(0), cellCommand(2)};
    model.drawable(0)->setDrawElementsIndirectCommands(swapped, 3);
    EXPECT_EQ(drawnWith(model, 3, byTextures()), opaque({Qt::green, Qt::red, Qt::red}));
    model.drawable(0)->setDrawElementsIndirectCommands(swapped, 2);
    EXPECT_EQ(drawnWith(model, 3, byTextures()), opaque({Qt::green, Qt::red, Qt::black}));
    DrawElementsIndirectCommand beyond = cellCommand(0);
    beyond.count = 1000;
    const DrawElementsIndirectCommand refused[] = {beyond, cellCommand(1), cellCommand(2)};
    model.drawable(0)->setDrawElementsIndirectCommands(refused, 3);
    const MessageLog log;
    EXPECT_EQ(drawnWith(model, 3, byTextures()), opaque({Qt::black, Qt::green, Qt::red}));
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 1U) << "about the commands beyond the indices";
}

TEST_P(DrawOptionsTest, TexturesBeginAtTheUnitOfTheClient) {
    constexpr unsigned int kFirst = 3;
    const ShaderPlans plans{QStringLiteral("TestMaterial"), QStringLiteral("TestInstance"), kFirst};
    const QByteArray version = "#version 430 core\n";
    QString error;
    const auto program = Program::fromSource(
        version + shaderInterface(ShaderStage::Vertex, plans) + kSceneVertexShader,
        version + shaderInterface(ShaderStage::Fragment, plans) + kSceneFragmentShader, error);
    ASSERT_TRUE(program) << error.toStdString();
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green});
    DrawOptions options;
    options.firstTextureUnit = kFirst;
    options.program = program.get();
    glActiveTexture(GL_TEXTURE0);
    ASSERT_TRUE(textureOf(Qt::yellow)->bind());
    for (const StatePolicy state : {StatePolicy::Restored, StatePolicy::ClientRestores}) {
        options.state = state;
        EXPECT_EQ(drawnWith(model, 2, options), opaque({Qt::red, Qt::green}));
        glActiveTexture(GL_TEXTURE0);
        GLint bound = 0;
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        EXPECT_EQ(GLuint(bound), textureOf(Qt::yellow)->name()) << "a unit below the first";
    }
    textureOf(Qt::yellow)->unbind();
}

TEST_P(DrawOptionsTest, StateOfTheClientIsRestoredInEachOrder) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green, Qt::red});
    GPUModel other;
    addRow(other, {Qt::red});
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const BusyClient client;
    for (const DrawOrder order : {DrawOrder::AsGiven, DrawOrder::ByTextures})
        for (const unsigned int unit : {0U, 2U}) {
            DrawOptions options;
            options.order = order;
            options.firstTextureUnit = unit;
            options.program = _program.get();
            const ClientState before = ClientState::captured();
            model.draw(options);
            other.draw(options);
            EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
        }
}

TEST_P(DrawOptionsTest, ClientThatRestoresTheStateFindsNoVertexArray) {
    GPUModel model;
    addTextured(model, {Qt::red, Qt::green});
    DrawOptions options;
    options.state = StatePolicy::ClientRestores;
    options.program = _program.get();
    glEnable(GL_PRIMITIVE_RESTART);
    glPrimitiveRestartIndex(0);
    EXPECT_EQ(drawnWith(model, 2, options), opaque({Qt::red, Qt::green}));
    GLint array = 1;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &array);
    EXPECT_EQ(array, 0);
    EXPECT_FALSE(glIsEnabled(GL_PRIMITIVE_RESTART)) << "as documented";
    EXPECT_EQ(drawnWith(model, 2, options), opaque({Qt::red, Qt::green})) << "from what it left";
    glUseProgram(0);
    for (const GLuint point : {0U, 1U})
        glBindBufferBase(GL_SHADER_STORAGE_BUFFER, point, 0);
}

TEST_P(DrawOptionsTest, DrawableWithoutMaterialsAfterOneWithThemSeesTheClientsBindings) {
    GPUModel model;
    addTextured(model, {Qt::red});
    model.add(triangleRow(1), 1, nullptr,
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    GLuint storage = 0;
    glGenBuffers(1, &storage);
    glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 0, storage);
    glBufferData(GL_SHADER_STORAGE_BUFFER, 256, nullptr, GL_STATIC_DRAW);
    ASSERT_TRUE(textureOf(Qt::yellow)->bind());
    std::vector<GLint> storages;
    std::vector<GLint> textures;
    const DrawHook hook([&] {
        GLint bound = 0;
        glGetIntegeri_v(GL_SHADER_STORAGE_BUFFER_BINDING, 0, &bound);
        storages.push_back(bound);
        glActiveTexture(GL_TEXTURE0);
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        textures.push_back(bound);
    });
    drawnColors(model, 1);
    ASSERT_EQ(storages.size(), 2U);
    EXPECT_NE(GLuint(storages[0]), storage);
    EXPECT_EQ(GLuint(storages[1]), storage);
    EXPECT_EQ(GLuint(textures[0]), textureOf(Qt::red)->name());
    EXPECT_EQ(GLuint(textures[1]), textureOf(Qt::yellow)->name());
    textureOf(Qt::yellow)->unbind();
    glDeleteBuffers(1, &storage);
}

TEST_P(DrawOptionsTest, ProgramOfAnotherGroupDrawsNothing) {
    GPUModel model;
    addTextured(model, {Qt::red});
    const auto other = makeContext(options());
    other->makeCurrent();
    const std::unique_ptr<Program> foreign = sceneProgram();
    _context->makeCurrent();
    DrawOptions how;
    how.program = foreign.get();
    EXPECT_EQ(drawnWith(model, 1, how), opaque({Qt::black}));
}

} // namespace Atelier::Vel::Testing
