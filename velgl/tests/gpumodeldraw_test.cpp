#include <epoxy/gl.h>

#include <velgl/gpumodel.h>

#include <limits>
#include <random>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>

#include "scenefixture.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

class GPUModelDrawTest : public SceneFixture {};

} // namespace

INSTANTIATE_FOR_DRIVERS(GPUModelDrawTest);

TEST_P(GPUModelDrawTest, EachCommandDrawsItsOwnTriangleWithItsOwnMaterial) {
    GPUModel model;
    const QList<QColor> colors = opaque({Qt::red, Qt::green, Qt::blue, Qt::yellow});
    addRow(model, colors);
    EXPECT_EQ(drawnColors(model, 4), colors);
}

TEST_P(GPUModelDrawTest, DrawingTwiceDrawsTheSame) {
    GPUModel model;
    const QList<QColor> colors = opaque({Qt::red, Qt::green});
    addRow(model, colors);
    EXPECT_EQ(drawnColors(model, 2), colors);
    EXPECT_EQ(drawnColors(model, 2), colors);
}

TEST_P(GPUModelDrawTest, CommandsDrawOnlyTheirOwnTriangles) {
    GPUModel model;
    DrawBuffers* row = triangleRow(4);
    const DrawElementsIndirectCommand commands[] = {cellCommand(3), cellCommand(1)};
    row->setDrawElementsIndirectCommands(commands, 2);
    model.add(
        row, 1,
        new InstanceDataCollection(QStringLiteral("TestMaterial"),
                                   {coloredMaterial(Qt::red), coloredMaterial(Qt::green)}),
        new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({}), movedInstance({})}),
        0);
    EXPECT_EQ(drawnColors(model, 4), opaque({Qt::black, Qt::green, Qt::black, Qt::red}));
}

TEST_P(GPUModelDrawTest, InstancesPlaceEachCommand) {
    GPUModel model;
    DrawBuffers* row = triangleRow(4);
    const DrawElementsIndirectCommand commands[] = {cellCommand(0), cellCommand(0)};
    row->setDrawElementsIndirectCommands(commands, 2);
    model.add(row, 1,
              new InstanceDataCollection(QStringLiteral("TestMaterial"),
                                         {coloredMaterial(Qt::red), coloredMaterial(Qt::green)}),
              new InstanceDataCollection(QStringLiteral("TestInstance"),
                                         {movedInstance({0.5F, 0, 0}), movedInstance({1.5F, 0, 0})}),
              0);
    EXPECT_EQ(drawnColors(model, 4), opaque({Qt::black, Qt::red, Qt::black, Qt::green}));
}

TEST_P(GPUModelDrawTest, BaseVertexIsAddedToEveryIndex) {
    GPUModel model;
    DrawBuffers* row = triangleRow(3);
    DrawElementsIndirectCommand command = cellCommand(0);
    command.baseVertex = 6;
    row->setDrawElementsIndirectCommands(&command, 1);
    model.add(row, 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::red)}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::black, Qt::black, Qt::red}));
}

TEST_P(GPUModelDrawTest, TwoDrawablesKeepTheirMaterialsApart) {
    GPUModel model;
    addRow(model, opaque({Qt::red, Qt::green, Qt::blue, Qt::white}));
    DrawBuffers* second = triangleRow(4);
    const DrawElementsIndirectCommand commands[] = {cellCommand(2), cellCommand(0)};
    second->setDrawElementsIndirectCommands(commands, 2);
    model.add(
        second, 1,
        new InstanceDataCollection(QStringLiteral("TestMaterial"),
                                   {coloredMaterial(Qt::cyan), coloredMaterial(Qt::magenta)}),
        new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({}), movedInstance({})}),
        1);
    EXPECT_EQ(drawnColors(model, 4), opaque({Qt::magenta, Qt::green, Qt::cyan, Qt::white}));
}

TEST_P(GPUModelDrawTest, HundredsOfCommandsFindTheirMaterialsAndTextures) {
    constexpr int kCommandCount = 200;
    std::mt19937 random(7);
    std::uniform_int_distribution<int> anyChannel(0, 1);
    std::uniform_int_distribution<int> anyTexture(0, 2);
    const std::unique_ptr<Texture> textures[] = {Texture::ofColor(QColor(255, 0, 255)),
                                                 Texture::ofColor(QColor(0, 255, 255))};
    const QColor filters[] = {Qt::magenta, Qt::cyan, Qt::white};
    QList<InstanceData> materials;
    QList<InstanceData> instances;
    QList<QColor> expected;
    for (int i = 0; i < kCommandCount; ++i) {
        const QColor color(anyChannel(random) * 255, anyChannel(random) * 255, anyChannel(random) * 255);
        const int texture = anyTexture(random);
        materials << coloredMaterial(color);
        instances << movedInstance({});
        if (texture < 2)
            materials.last().setTexture(QStringLiteral("second"), textures[texture].get());
        expected << QColor(color.red() & filters[texture].red(), color.green() & filters[texture].green(),
                           color.blue() & filters[texture].blue());
    }
    GPUModel model;
    model.add(triangleRow(kCommandCount), 1,
              new InstanceDataCollection(QStringLiteral("TestMaterial"), materials),
              new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
    EXPECT_EQ(drawnColors(model, kCommandCount), expected);
}

TEST_P(GPUModelDrawTest, TexturesByPathComeThroughTheLoader) {
    const std::unique_ptr<Texture> magenta = Texture::ofColor(Qt::magenta);
    TextureManager::Instance().setLoader(
        [&](const QString& path) { return path == QLatin1String("/magenta.png") ? magenta.get() : nullptr; });
    InstanceData found = coloredMaterial(Qt::red);
    found.setTexture(QStringLiteral("first"), QStringLiteral("/magenta.png"));
    InstanceData missing = coloredMaterial(Qt::yellow);
    missing.setTexture(QStringLiteral("first"), QStringLiteral("/missing.png"));
    GPUModel model;
    model.add(triangleRow(3), 1,
              new InstanceDataCollection(QStringLiteral("TestMaterial"),
                                         {found, missing, coloredMaterial(Qt::green)}),
              new InstanceDataCollection(QStringLiteral("TestInstance"),
                                         {movedInstance({}), movedInstance({}), movedInstance({})}),
              0);
    const MessageLog log;
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::red, Qt::yellow, Qt::green}));
    EXPECT_EQ(drawnColors(model, 3), opaque({Qt::red, Qt::yellow, Qt::green}));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(QStringLiteral("Texture '/missing.png' cannot be loaded")));
}

TEST_P(GPUModelDrawTest, TextureThatIsNotTwoDimensionalIsDrawnWhite) {
    Texture cube(GL_TEXTURE_CUBE_MAP, GL_RGBA8, 1, 1, 0, nullptr);
    InstanceData material = coloredMaterial(Qt::red);
    material.setTexture(QStringLiteral("first"), &cube);
    GPUModel model;
    model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::red}));
}

TEST_P(GPUModelDrawTest, ClientsSamplersDoNotReachTheTextures) {
    GLuint sampler = 0;
    glGenSamplers(1, &sampler);
    glSamplerParameteri(sampler, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glSamplerParameteri(sampler, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
    for (GLuint unit = 0; unit < 2; ++unit)
        glBindSampler(unit, sampler);
    const std::unique_ptr<Texture> cyan = Texture::ofColor(Qt::cyan);
    InstanceData material = coloredMaterial(Qt::white);
    material.setTexture(QStringLiteral("first"), cyan.get());
    GPUModel model;
    model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::cyan}));
    glDeleteSamplers(1, &sampler);
}

TEST_P(GPUModelDrawTest, CommandsWithoutItemsReadZeros) {
    GPUModel model;
    model.add(triangleRow(3), 1,
              new InstanceDataCollection(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::red)}),
              new InstanceDataCollection(QStringLiteral("TestInstance"),
                                         {movedInstance({}), movedInstance({}), movedInstance({})}),
              0);
    const QColor nothing(0, 0, 0, 0);
    EXPECT_EQ(drawnColors(model, 3), (QList<QColor>{Qt::red, nothing, nothing}));
}

TEST_P(GPUModelDrawTest, DrawableWithoutCollectionsDraws) {
    GPUModel model;
    model.add(triangleRow(2), 1, nullptr, nullptr, 0);
    QString error;
    _program = Program::fromSource("#version 430 core\nin vec3 va_Vertex;\n"
                                   "void main() { gl_Position = vec4(va_Vertex, 1.0); }\n",
                                   "#version 430 core\nout vec4 pixel;\n"
                                   "void main() { pixel = vec4(1.0); }\n",
                                   error);
    ASSERT_TRUE(_program) << error.toStdString();
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::white, Qt::white}));
}

TEST_P(GPUModelDrawTest, DrawableWithoutMaterialsReadsTheStorageBufferOfTheClient) {
    GPUModel model;
    model.add(triangleRow(1), 1, nullptr,
              new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    InstanceDataCollection own(QStringLiteral("TestMaterial"), {coloredMaterial(Qt::green)});
    ASSERT_TRUE(own.bindStorage(0));
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::green}));
}

TEST_P(GPUModelDrawTest, CollectionsWithoutAPlanOrItemsAreIgnored) {
    GPUModel model;
    model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("no such plan"), {InstanceData()}),
              new InstanceDataCollection(QStringLiteral("TestInstance"), {}), 0);
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::black}));
}

TEST_P(GPUModelDrawTest, InstanceCountMultipliesTheCommands) {
    GPUModel model;
    model.add(triangleRow(1), 3, nullptr, nullptr, 0);
    EXPECT_EQ(model.drawable(0)->readBackCommands().first().instanceCount, 3U);
    model.add(triangleRow(1), 0, nullptr, nullptr, 0);
    EXPECT_EQ(model.drawable(1)->readBackCommands().first().instanceCount, 0U);
}

TEST_P(GPUModelDrawTest, CommandBeyondTheIndicesDrawsNothing) {
    GPUModel model;
    DrawBuffers* row = triangleRow(2);
    DrawElementsIndirectCommand commands[] = {cellCommand(0), cellCommand(1), cellCommand(0)};
    commands[0].count = 7;
    commands[2].firstIndex = 0xFFFFFFFF;
    row->setDrawElementsIndirectCommands(commands, 3);
    const QList<InstanceData> materials = {coloredMaterial(Qt::red), coloredMaterial(Qt::green),
                                           coloredMaterial(Qt::blue)};
    model.add(row, 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), materials),
              new InstanceDataCollection(QStringLiteral("TestInstance"),
                                         {movedInstance({}), movedInstance({}), movedInstance({})}),
              0);
    const MessageLog log;
    EXPECT_EQ(drawnColors(model, 2), opaque({Qt::black, Qt::green}));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(
                    QStringLiteral("2 of 3 draw commands reach beyond the 6 indices; they draw nothing")));
}

TEST_P(GPUModelDrawTest, CommandsReachTheGpuByteForByte) {
    const std::unique_ptr<DrawBuffers> row(triangleRow(5));
    const QVector<DrawElementsIndirectCommand> commands = row->readBackCommands();
    ASSERT_EQ(commands.size(), 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(commands[i].count, 3U);
        EXPECT_EQ(commands[i].instanceCount, 1U);
        EXPECT_EQ(commands[i].firstIndex, 3U * unsigned(i));
        EXPECT_EQ(commands[i].baseVertex, 0U);
        EXPECT_EQ(commands[i].baseInstance, 0U);
    }
}

TEST_P(GPUModelDrawTest, StorageHoldsThePackedItems) {
    InstanceDataCollection materials(QStringLiteral("TestMaterial"),
                                     {coloredMaterial(Qt::red), coloredMaterial(Qt::green)});
    EXPECT_EQ(materials.packed().size(), 64);
    EXPECT_EQ(materials.readBack(), materials.packed());
}

TEST_P(GPUModelDrawTest, NothingIsDrawnWithoutAProgram) {
    GPUModel model;
    addRow(model, opaque({Qt::red}));
    Framebuffer picture(QSize(8, 8));
    picture.begin();
    model.draw();
    EXPECT_EQ(picture.pixels().pixelColor(2, 4), QColor(Qt::black));
}

TEST_P(GPUModelDrawTest, ProgramPipelineDrawsLikeAProgram) {
    const char* stages[] = {
        "#version 430 core\n"
        "in vec3 va_Vertex; out gl_PerVertex { vec4 gl_Position; };\n"
        "void main() { gl_Position = vec4(va_Vertex, 1.0); }\n",
        "#version 430 core\nout vec4 pixel; void main() { pixel = vec4(0.0, 1.0, 0.0, 1.0); }\n"};
    const GLuint vertex = glCreateShaderProgramv(GL_VERTEX_SHADER, 1, &stages[0]);
    const GLuint fragment = glCreateShaderProgramv(GL_FRAGMENT_SHADER, 1, &stages[1]);
    GLuint pipeline = 0;
    glGenProgramPipelines(1, &pipeline);
    glUseProgramStages(pipeline, GL_VERTEX_SHADER_BIT, vertex);
    glUseProgramStages(pipeline, GL_FRAGMENT_SHADER_BIT, fragment);
    glBindProgramPipeline(pipeline);
    GPUModel model;
    model.add(triangleRow(1), 1, nullptr, nullptr, 0);
    Framebuffer picture(QSize(8, 8));
    picture.begin();
    model.draw();
    EXPECT_EQ(picture.pixels().pixelColor(2, 4), QColor(Qt::green));
    glDeleteProgramPipelines(1, &pipeline);
    glDeleteProgram(vertex);
    glDeleteProgram(fragment);
}

TEST_P(GPUModelDrawTest, DrawableThatLacksPartsDrawsNothing) {
    GPUModel model;
    model.add(new DrawBuffers(nullptr), 1, nullptr, nullptr, 0);
    DrawBuffers* withoutIndices = triangleRow(1);
    withoutIndices->setIndexedDraw({}, 3, GL_UNSIGNED_SHORT);
    model.add(withoutIndices, 1, nullptr, nullptr, 0);
    DrawBuffers* withoutArray = triangleRow(1);
    withoutArray->setVAO({});
    model.add(withoutArray, 1, nullptr, nullptr, 0);
    DrawBuffers* withOddType = triangleRow(1);
    withOddType->setIndexedDraw(withOddType->indexBuffer(), 3, GL_FLOAT);
    model.add(withOddType, 1, nullptr, nullptr, 0);
    DrawBuffers* withEmptyIndices = triangleRow(1);
    withEmptyIndices->setIndexedDraw(QSharedPointer<BufferObject>::create(), 3, GL_UNSIGNED_SHORT);
    model.add(withEmptyIndices, 1, nullptr, nullptr, 0);
    EXPECT_EQ(drawnColors(model, 1), opaque({Qt::black}));
}

TEST_P(GPUModelDrawTest, BoundsEncloseWhatTheCommandsDraw) {
    GPUModel model;
    DrawBuffers* row = triangleRow(4);
    const DrawElementsIndirectCommand commands[] = {cellCommand(1), cellCommand(2)};
    row->setDrawElementsIndirectCommands(commands, 2);
    model.add(row, 1, nullptr, nullptr, 0);
    const GPUModel::Bounds bounds = model.bounds();
    ASSERT_TRUE(bounds.isValid);
    EXPECT_EQ(bounds.minimum, QVector3D(-0.5F, -1, 0));
    EXPECT_EQ(bounds.maximum, QVector3D(0.5F, 3, 0));
    EXPECT_FALSE(model.bounds(QStringLiteral("va_Missing")).isValid);
    addRow(model, opaque({Qt::red}));
    EXPECT_EQ(model.bounds().minimum, QVector3D(-1, -1, 0));
}

TEST_P(GPUModelDrawTest, BoundsExcludePositionsThatAreNotFiniteOrMissing) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    const QVector<float> positions = {1, 2, 3, infinity, 0, 0, 0, notANumber, 0, -1, 5, 4};
    const QVector<unsigned int> indices = {0, 1, 2, 3, 99, 0xFFFFFFFF};
    auto vao = QSharedPointer<VertexArrayObject>::create();
    vao->registerBO(QStringLiteral("va_Vertex"), bufferOf(positions), 3, GL_FLOAT);
    auto* buffers = new DrawBuffers(nullptr);
    buffers->setVAO(vao);
    buffers->setIndexedDraw(bufferOf(indices), 6, GL_UNSIGNED_INT);
    DrawElementsIndirectCommand command;
    command.count = 6;
    command.instanceCount = 1;
    buffers->setDrawElementsIndirectCommands(&command, 1);
    GPUModel model;
    model.add(buffers, 1, nullptr, nullptr, 0);
    const GPUModel::Bounds bounds = model.bounds();
    ASSERT_TRUE(bounds.isValid);
    EXPECT_EQ(bounds.minimum, QVector3D(-1, 2, 3));
    EXPECT_EQ(bounds.maximum, QVector3D(1, 5, 4));
}

} // namespace Atelier::Vel::Testing
