// Loads and textures with a driver that fails, and contexts that are destroyed between a load and a draw.

#include "glfaults.h"

#include <memory>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/texture.h>
#include <velgl/texturemanager.h>
#include <velmodel/decodedtextures.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "support/glfixture.h"
#include "support/messagelog.h"
#include "support/modelprogram.h"

namespace Atelier::Vel {

namespace {

using testing::ElementsAre;
using Testing::FaultyDriver;
using Testing::Framebuffer;
using Testing::GLFault;
using testing::IsEmpty;
using Testing::MessageLog;

constexpr char kVertexShader[] = R"(
in vec3 va_Vertex;
in vec3 va_Normal;
flat out int command;
void main() {
    command = velglCommand();
    gl_Position = vec4(va_Vertex + 0.0 * va_Normal, 1.0);
})";

constexpr char kFragmentShader[] = R"(
flat in int command;
out vec4 colour;
void main() {
    colour = vec4(velglMaterial(command).Kd, 1.0);
    if (velglHas_map_Kd())
        colour *= texture(velgl_map_Kd, vec2(0.5));
})";

std::unique_ptr<Program> makeProgram() {
    return Testing::makeModelProgram(kVertexShader, kFragmentShader);
}

/// Loads a green triangle that fills the picture; a texture makes it black.
class LoadWithGLFaultsTest : public Testing::GLFixture {
protected:
    void SetUp() override {
        GLFixture::SetUp();
        write("m.mtl", "newmtl m\nKd 0 1 0\nmap_Kd black.png\n");
        write("m.obj", "mtllib m.mtl\nusemtl m\nv -1 -1 0\nv 3 -1 0\nv -1 3 0\nf 1 2 3\n");
        QImage black(2, 2, QImage::Format_RGB32);
        black.fill(Qt::black);
        EXPECT_TRUE(black.save(path("black.png")));
        TextureManager::Instance().setLoader(LoadTexture);
    }
    void TearDown() override {
        TextureManager::Instance().setLoader({});
        GLFixture::TearDown();
    }

    QString path(const QString& name) const { return _folder.filePath(name); }
    std::unique_ptr<GPUModel> load() const {
        QString error;
        std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path("m.obj"), error));
        EXPECT_NE(model, nullptr) << error.toStdString();
        return model;
    }
    static QColor drawn(GPUModel& model) {
        const std::unique_ptr<Program> program = makeProgram();
        Framebuffer picture(QSize(4, 4));
        picture.begin(Qt::blue);
        const AutoBinder binder(program.get());
        model.draw();
        return picture.pixels().pixelColor(1, 1);
    }

private:
    void write(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    QTemporaryDir _folder;
};

} // namespace

TEST_F(LoadWithGLFaultsTest, WorkingDriverDraws) {
    const MessageLog log;
    EXPECT_EQ(drawn(*load()), QColor(Qt::black));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(LoadWithGLFaultsTest, ModelWithoutBuffersDrawsNothingAndReportsEachBufferOnce) {
    for (const GLFault fault : {GLFault::NoBufferNames, GLFault::NoBufferMemory}) {
        const MessageLog log;
        {
            const FaultyDriver driver(fault);
            const std::unique_ptr<GPUModel> model = load();
            ASSERT_EQ(model->drawableCount(), 1);
            EXPECT_FALSE(model->bounds().isValid);
            EXPECT_EQ(drawn(*model), QColor(Qt::blue));
            EXPECT_EQ(drawn(*model), QColor(Qt::blue));
        }
        std::vector<QString> expected;
        for (const char* label : {"indices", "va_Normal", "va_Vertex"})
            expected.push_back(QStringLiteral("Buffer '%1' could not be %2 (GL_OUT_OF_MEMORY)")
                                   .arg(label, fault == GLFault::NoBufferNames ? "made" : "filled"));
        expected.push_back(QStringLiteral("Storage 'OBJMaterial' could not be filled (GL_OUT_OF_MEMORY)"));
        EXPECT_THAT(log.texts(QtWarningMsg), testing::UnorderedElementsAreArray(expected));
        EXPECT_EQ(drawn(*load()), QColor(Qt::black)) << "memory is available again";
    }
}

TEST_F(LoadWithGLFaultsTest, TextureWithoutANameIsNullAndChangesNoOther) {
    Texture clients(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    ASSERT_TRUE(clients.bind());
    const MessageLog log;
    {
        const FaultyDriver driver(GLFault::NoTextureNames);
        EXPECT_EQ(LoadTexture(path("black.png")), nullptr);
    }
    EXPECT_FALSE(clients.hasContent());
    clients.unbind();
    EXPECT_NE(LoadTexture(path("black.png")), nullptr) << "the second load reads the file again";
}

TEST_F(LoadWithGLFaultsTest, TextureWithoutMemoryIsReportedOnceAndDrawnWhite) {
    const std::unique_ptr<GPUModel> model = load();
    TextureManager::Instance().colorTexture(Qt::white)->bind();
    TextureManager::Instance().colorTexture(Qt::white)->unbind();
    const MessageLog log;
    const FaultyDriver driver(GLFault::NoTextureMemory);
    EXPECT_EQ(drawn(*model), QColor(Qt::green));
    EXPECT_EQ(drawn(*model), QColor(Qt::green));
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(
            QStringLiteral("Texture '%1' could not be filled (GL_OUT_OF_MEMORY)").arg(path("black.png"))));
}

TEST_F(LoadWithGLFaultsTest, DecodedTextureWithoutMemoryIsReportedOnceAndDrawnWhite) {
    for (const GLFault fault : {GLFault::NoTextureNames, GLFault::NoMemoryForLargeTextures}) {
        const std::unique_ptr<GPUModel> model = load();
        DecodedTextures textures;
        ASSERT_TRUE(textures.decode({path("black.png")}));
        model->setTextureLoader(textures.loader());
        EXPECT_EQ(drawn(*model), QColor(Qt::green)) << "not handed over yet";
        const MessageLog log;
        const FaultyDriver driver(fault);
        EXPECT_EQ(textures.handOver(), 0);
        EXPECT_EQ(drawn(*model), QColor(Qt::green));
        EXPECT_EQ(drawn(*model), QColor(Qt::green));
        EXPECT_THAT(log.texts(QtWarningMsg),
                    ElementsAre(QStringLiteral("Texture '%1' could not be %2 (GL_OUT_OF_MEMORY)")
                                    .arg(path("black.png"), fault == GLFault::NoTextureNames
                                                                ? QStringLiteral("made")
                                                                : QStringLiteral("filled"))));
    }
}

TEST_F(LoadWithGLFaultsTest, ModelOfADestroyedContextDrawsNothing) {
    const std::unique_ptr<GPUModel> model = load();
    EXPECT_EQ(drawn(*model), QColor(Qt::black));
    _context.reset();
    model->draw();
    EXPECT_TRUE(model->drawable(0)->readBackCommands().isEmpty());
    _context = makeContext(options());
    ASSERT_TRUE(_context && _context->makeCurrent());
    watchMessages();
    const MessageLog log;
    EXPECT_EQ(drawn(*model), QColor(Qt::blue));
    EXPECT_EQ(drawn(*model), QColor(Qt::blue));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Model '%1' lost its context: its buffers have no content in the "
                                           "current one, so it is not drawn")
                                .arg(path("m.obj"))));
}

TEST_F(LoadWithGLFaultsTest, ContextMayBeDestroyedBetweenTheLoadAndTheFirstDraw) {
    const std::unique_ptr<GPUModel> model = load();
    _context.reset();
    model->draw();
    EXPECT_FALSE(model->bounds().isValid);
    _context = makeContext(options());
    ASSERT_TRUE(_context && _context->makeCurrent());
    watchMessages();
    EXPECT_EQ(drawn(*model), QColor(Qt::blue));
    EXPECT_EQ(drawn(*load()), QColor(Qt::black)) << "a new load works in the new context";
}

} // namespace Atelier::Vel
