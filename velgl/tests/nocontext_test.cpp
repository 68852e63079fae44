#include <QtCore/QObject>

#include <gtest/gtest.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/glentrypoints.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/program.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velgl/vertexarrayobject.h>

// Objects can be constructed, queried and destroyed without OpenGL.
namespace Atelier::Vel::Testing {

namespace {

constexpr unsigned int kTexture2D = 0x0DE1;
constexpr int kRgba = 0x1908;
constexpr unsigned int kStaticDraw = 0x88E4;

} // namespace

TEST(NoContextTest, CurrentIsNull) {
    EXPECT_FALSE(OpenGLDeviceContext::current());
}

TEST(NoContextTest, BufferUploadFailsAndStoresNothing) {
    const unsigned int values[] = {1, 2};
    BufferObject buffer;
    buffer.setTarget(0x8893);
    buffer.setLabel(QStringLiteral("label"));
    EXPECT_EQ(buffer.target(), 0x8893U);
    EXPECT_FALSE(buffer.bind());
    buffer.unbind();
    EXPECT_FALSE(buffer.uploadGLuintData(values, 2, kStaticDraw));
    EXPECT_EQ(buffer.byteCount(), 0U);
    EXPECT_TRUE(buffer.readBack().isEmpty());
    EXPECT_EQ(buffer.name(), 0U);
}

TEST(NoContextTest, VertexArrayKeepsItsStreams) {
    VertexArrayObject vao;
    const auto buffer = QSharedPointer<BufferObject>::create();
    vao.registerBO(QStringLiteral("va_Vertex"), buffer, 3, 0x1406);
    vao.setIndexBuffer(buffer);
    vao.setLabel(QStringLiteral("label"));
    ASSERT_EQ(vao.streams().size(), 1);
    EXPECT_EQ(vao.streams()[0].name, QStringLiteral("va_Vertex"));
    EXPECT_EQ(vao.streams()[0].buffer, buffer);
    EXPECT_EQ(vao.streams()[0].components, 3);
    EXPECT_EQ(vao.streams()[0].type, 0x1406U);
    EXPECT_FALSE(vao.bind());
    vao.unbind();
}

TEST(NoContextTest, TextureCallsDoNothing) {
    Texture texture(kTexture2D, kRgba, 1, 1, 0, nullptr);
    const AutoBinder binder(&texture);
    glEntryPoints().pixelStorei(0x0CF5, 1);
    glEntryPoints().texParameteri(kTexture2D, 0x2801, 0x2601);
    glEntryPoints().texImage2D(kTexture2D, 0, kRgba, 1, 1, 0, 0x1908, 0x1401, nullptr);
    glEntryPoints().generateMipmap(kTexture2D);
    int value = 12345;
    glEntryPoints().getIntegerv(0x0D33, &value);
    EXPECT_EQ(value, 12345);
    EXPECT_EQ(glEntryPoints().getStringi(0x1F03, 0), nullptr);
    EXPECT_EQ(texture.name(), 0U);
    EXPECT_TRUE(texture.readBack().isNull());
    EXPECT_FALSE(texture.hasContent());
    EXPECT_FALSE(TextureManager::Instance().colorTexture(Qt::red)->bind());
}

TEST(NoContextTest, ProgramReportsTheMissingContext) {
    QString error;
    EXPECT_FALSE(Program::fromSource("", "", error));
    EXPECT_EQ(error, QStringLiteral("No OpenGL context is current"));
}

TEST(NoContextTest, ModelCanBeBuiltDrawnAndDestroyed) {
    GPUModel model;
    auto* buffers = new DrawBuffers;
    buffers->setVAO(QSharedPointer<VertexArrayObject>::create());
    buffers->setIndexedDraw(QSharedPointer<BufferObject>::create(), 3, 0x1405);
    const DrawElementsIndirectCommand command{3, 1, 0, 0, 0};
    buffers->setDrawElementsIndirectCommands(&command, 1);
    auto* materials = new InstanceDataCollection(QStringLiteral("m"), {InstanceData()});
    model.add(buffers, 1, materials, nullptr, 0);
    model.draw();
    buffers->draw(0, 1);
    EXPECT_FALSE(model.bounds().isValid);
    EXPECT_TRUE(buffers->readBackCommands().isEmpty());
    EXPECT_FALSE(materials->bindStorage(0));
    EXPECT_TRUE(materials->readBack().isEmpty());
}

} // namespace Atelier::Vel::Testing
