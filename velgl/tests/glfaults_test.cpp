// Work that OpenGL refuses, or has no memory for, is skipped and reported once with the label of the object.

#include "glfaults.h"

#include <array>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/glentrypoints.h>
#include <velgl/gpumodel.h>
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
using testing::IsEmpty;

constexpr int kCellSize = 8;
constexpr unsigned int kValues[] = {1, 2, 3};

class GLFaultsTest : public FeatureFixture {
protected:
    void SetUp() override {
        FeatureFixture::SetUp();
        registerTestPlans();
        _program = sceneProgram();
        ASSERT_TRUE(_program);
        useLoader();
        TextureManager::Instance().colorTexture(Qt::white)->bind();
        TextureManager::Instance().colorTexture(Qt::white)->unbind();
    }
    void TearDown() override {
        TextureManager::Instance().setLoader({});
        _textures.clear();
        _program.reset();
        FeatureFixture::TearDown();
    }

    /// Installs the loader again, so that textures that failed before are tried again.
    void useLoader() {
        TextureManager::Instance().setLoader([this](const QString&) { return loaded(); });
    }

    /// Adds a row of one red triangle, which its texture makes black.
    static void fill(GPUModel& model) {
        InstanceData material = coloredMaterial(Qt::red);
        material.setTexture(QStringLiteral("first"), QStringLiteral("/black.png"));
        model.add(triangleRow(1), 1, new InstanceDataCollection(QStringLiteral("TestMaterial"), {material}),
                  new InstanceDataCollection(QStringLiteral("TestInstance"), {movedInstance({})}), 0);
    }
    QColor drawn(GPUModel& model) {
        Framebuffer picture(QSize(kCellSize, kCellSize));
        picture.begin(Qt::blue);
        {
            const AutoBinder binder(_program.get());
            model.draw();
        }
        return picture.pixels().pixelColor(2, kCellSize / 2);
    }

    std::unique_ptr<Program> _program;

private:
    /// Returns: a black texture, made in the way of a loader.
    Texture* loaded() {
        const GLEntryPoints& gl = glEntryPoints();
        const std::array<unsigned char, 4> black{0, 0, 0, 255};
        auto texture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGBA, 1, 1, 0, nullptr);
        if (!texture->bind())
            return nullptr;
        gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl.texImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, black.data());
        texture->unbind();
        _textures.push_back(std::move(texture));
        return _textures.back().get();
    }

    std::vector<std::unique_ptr<Texture>> _textures;
};

INSTANTIATE_FOR_DRIVERS(GLFaultsTest);

} // namespace

TEST_P(GLFaultsTest, WorkingDriverDrawsAndNothingIsLogged) {
    GPUModel model;
    fill(model);
    const MessageLog log;
    EXPECT_EQ(drawn(model), QColor(Qt::black));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_P(GLFaultsTest, BufferWithoutMemoryIsEmptyAndReportedOnce) {
    BufferObject buffer;
    buffer.setLabel(QStringLiteral("mine"));
    ASSERT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    const MessageLog log;
    {
        const FaultyDriver driver(GLFault::NoBufferMemory);
        // The size must differ from that of the content: VelGL detects a failure by the size.
        for (int round = 0; round < 3; ++round)
            EXPECT_FALSE(buffer.uploadArbitraryData(kValues, 11, GL_STATIC_DRAW, 1));
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << "the errors were taken";
    }
    EXPECT_EQ(buffer.byteCount(), 0U);
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Buffer 'mine' could not be filled (GL_OUT_OF_MEMORY)")));
    EXPECT_TRUE(buffer.uploadGLuintData(kValues, 2, GL_STATIC_DRAW)) << "memory is back";
    EXPECT_EQ(buffer.byteCount(), 8U);
}

TEST_P(GLFaultsTest, FailureAfterASuccessIsReportedAgain) {
    BufferObject buffer;
    buffer.setLabel(QStringLiteral("mine"));
    const MessageLog log;
    for (int round = 0; round < 2; ++round) {
        {
            const FaultyDriver driver(GLFault::NoBufferMemory);
            EXPECT_FALSE(buffer.uploadArbitraryData(kValues, 11, GL_STATIC_DRAW, 1));
        }
        EXPECT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    }
    const QString warning = QStringLiteral("Buffer 'mine' could not be filled (GL_OUT_OF_MEMORY)");
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(warning, warning));
}

TEST_P(GLFaultsTest, ReportSaysThatOpenGLReportedNoError) {
    BufferObject buffer;
    buffer.setLabel(QStringLiteral("mine"));
    const MessageLog log;
    const FaultyDriver driver(GLFault::NoBufferNamesAndNoError);
    EXPECT_FALSE(buffer.bind());
    buffer.unbind();
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre("Buffer 'mine' could not be made (OpenGL reported no error)"));
}

TEST_P(GLFaultsTest, BufferWithoutANameIsNotBound) {
    BufferObject buffer;
    buffer.setLabel(QStringLiteral("mine"));
    const MessageLog log;
    {
        const FaultyDriver driver(GLFault::NoBufferNames);
        EXPECT_FALSE(buffer.bind());
        buffer.unbind();
        EXPECT_FALSE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
        EXPECT_TRUE(buffer.readBack().isEmpty());
    }
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Buffer 'mine' could not be made (GL_OUT_OF_MEMORY)")));
    EXPECT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
}

TEST_P(GLFaultsTest, BufferIsReportedWhenItHasALabel) {
    BufferObject buffer;
    const MessageLog log;
    const FaultyDriver driver(GLFault::NoBufferMemory);
    EXPECT_FALSE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
    buffer.setLabel(QStringLiteral("late"));
    buffer.setLabel(QStringLiteral("later"));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Buffer 'late' could not be filled (GL_OUT_OF_MEMORY)")));
}

TEST_P(GLFaultsTest, BufferThatWorksBeforeItHasALabelIsNotReported) {
    BufferObject buffer;
    const MessageLog log;
    {
        const FaultyDriver driver(GLFault::NoBufferMemory);
        EXPECT_FALSE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    }
    EXPECT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    buffer.setLabel(QStringLiteral("late"));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_P(GLFaultsTest, EmptyLabelCountsAsNone) {
    BufferObject buffer;
    const MessageLog log;
    const FaultyDriver driver(GLFault::NoBufferMemory);
    EXPECT_FALSE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    buffer.setLabel(QStringLiteral(""));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_P(GLFaultsTest, VertexArrayAndTextureAreReportedWhenTheyHaveALabel) {
    const MessageLog log;
    {
        VertexArrayObject vao;
        Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
        {
            const FaultyDriver driver(GLFault::NoVertexArrays);
            EXPECT_FALSE(vao.bind());
            vao.unbind();
        }
        {
            const FaultyDriver driver(GLFault::NoTextureNames);
            EXPECT_FALSE(texture.bind());
            texture.unbind();
        }
        EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
        vao.setLabel(QStringLiteral("array"));
        texture.setLabel(QStringLiteral("wood"));
    }
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre("Vertex array 'array' could not be made (GL_OUT_OF_MEMORY)",
                            "Texture 'wood' could not be made (GL_OUT_OF_MEMORY)"));
}

TEST_P(GLFaultsTest, VertexArrayWithoutANameIsNotBound) {
    GPUModel model;
    fill(model);
    const MessageLog log;
    {
        const FaultyDriver driver(GLFault::NoVertexArrays);
        EXPECT_EQ(drawn(model), QColor(Qt::blue));
        EXPECT_EQ(drawn(model), QColor(Qt::blue));
    }
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("Vertex array 'drawable 0' could not be made (GL_OUT_OF_MEMORY)")));
    EXPECT_EQ(drawn(model), QColor(Qt::black));
}

TEST_P(GLFaultsTest, TextureWithoutMemoryForItsRefillIsWhiteAfterOneWarning) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 2, 2, 0, nullptr);
    int calls = 0;
    texture.setRefill([&](Texture&) {
        ++calls;
        const std::array<unsigned char, 16> black = {};
        glEntryPoints().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                                   black.data());
        return true;
    });
    texture.setLabel(QStringLiteral("wood"));
    const MessageLog log;
    const FaultyDriver driver(GLFault::NoMemoryForLargeTextures);
    for (int frame = 0; frame < 2; ++frame) {
        EXPECT_TRUE(texture.bind());
        texture.unbind();
    }
    EXPECT_EQ(texture.readBack().pixelColor(0, 0), QColor(Qt::white));
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Texture 'wood' could not be filled (GL_OUT_OF_MEMORY)")));
}

TEST_P(GLFaultsTest, TextureWithoutANameOrMemoryIsDrawnWhite) {
    for (const GLFault fault : {GLFault::NoTextureNames, GLFault::NoTextureMemory}) {
        GPUModel model;
        fill(model);
        const MessageLog log;
        {
            const FaultyDriver driver(fault);
            EXPECT_EQ(drawn(model), QColor(Qt::red));
            EXPECT_EQ(drawn(model), QColor(Qt::red));
        }
        EXPECT_THAT(log.texts(QtWarningMsg),
                    ElementsAre(fault == GLFault::NoTextureNames
                                    ? QStringLiteral("Texture '/black.png' cannot be loaded")
                                    : QStringLiteral("Texture '/black.png' could not be filled "
                                                     "(GL_OUT_OF_MEMORY)")));
        useLoader();
        EXPECT_EQ(drawn(model), QColor(Qt::black)) << "the next attempt finds memory";
    }
}

TEST_P(GLFaultsTest, ColourWithoutMemoryIsReportedOnce) {
    const std::unique_ptr<Texture> color = Texture::ofColor(QColor(1, 2, 3));
    const MessageLog log;
    const FaultyDriver driver(GLFault::NoTextureNames);
    for (int round = 0; round < 3; ++round) {
        EXPECT_FALSE(color->bind());
        color->unbind();
    }
    EXPECT_FALSE(color->hasContent());
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Texture '#ff010203' could not be made (GL_OUT_OF_MEMORY)")));
}

// Commands, materials and instances reach the GPU with the first draw.
TEST_P(GLFaultsTest, ModelWithoutMemoryForStorageIsNotDrawnAndReportedOnce) {
    for (const GLFault fault : {GLFault::NoBufferNames, GLFault::NoBufferMemory}) {
        GPUModel model;
        fill(model);
        const MessageLog log;
        {
            const FaultyDriver driver(fault);
            EXPECT_EQ(drawn(model), QColor(Qt::blue));
            EXPECT_EQ(drawn(model), QColor(Qt::blue));
        }
        EXPECT_THAT(
            log.texts(QtWarningMsg),
            ElementsAre(QStringLiteral("Storage 'TestMaterial' could not be filled (GL_OUT_OF_MEMORY)")));
        EXPECT_EQ(drawn(model), QColor(Qt::black)) << "memory is back";
    }
}

TEST_P(GLFaultsTest, CommandsWithoutMemoryAreNotDrawnAndReportedOnce) {
    GPUModel model;
    model.add(triangleRow(1), 1, nullptr, nullptr, 0);
    const MessageLog log;
    {
        const FaultyDriver driver(GLFault::NoBufferMemory);
        drawn(model);
        drawn(model);
        EXPECT_TRUE(model.drawable(0)->readBackCommands().isEmpty());
    }
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral(
                    "Draw commands of 'drawable 0' could not be uploaded (GL_OUT_OF_MEMORY)")));
    EXPECT_EQ(model.drawable(0)->readBackCommands().size(), 1);
}

// A draw would read outside of the empty buffer.
TEST_P(GLFaultsTest, AttributeWithoutContentIsLeftOut) {
    const auto empty = QSharedPointer<BufferObject>::create();
    GPUModel model;
    fill(model);
    model.drawable(0)->VAO()->registerBO(QStringLiteral("va_Vertex"), empty, 3, GL_FLOAT);
    const MessageLog log;
    {
        const FaultyDriver driver(GLFault::NoBufferMemory);
        const float positions[9] = {};
        EXPECT_FALSE(empty->uploadArbitraryData(positions, 9, GL_STATIC_DRAW, 4));
        EXPECT_NE(empty->name(), 0U);
    }
    EXPECT_EQ(drawn(model), QColor(Qt::blue));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Buffer 'va_Vertex' could not be filled (GL_OUT_OF_MEMORY)")));
    const AutoBinder program(_program.get());
    const AutoBinder vao(model.drawable(0)->VAO().data());
    GLint isEnabled = GL_TRUE;
    GLint name = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &name);
    const GLint location = glGetAttribLocation(GLuint(name), "va_Vertex");
    glGetVertexAttribiv(GLuint(location), GL_VERTEX_ATTRIB_ARRAY_ENABLED, &isEnabled);
    EXPECT_EQ(isEnabled, GL_FALSE);
}

TEST_P(GLFaultsTest, FailedDrawIsReportedOnceWithTheLabelOfTheDrawable) {
    GPUModel model;
    fill(model);
    const MessageLog log;
    const FaultyDriver driver(GLFault::NoMemoryForDrawing);
    EXPECT_EQ(drawn(model), QColor(Qt::blue));
    EXPECT_EQ(drawn(model), QColor(Qt::blue));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("'drawable 0' could not be drawn (GL_OUT_OF_MEMORY)")));
}

TEST_P(GLFaultsTest, ErrorOfTheClientIsNotAttributedToTheDraw) {
    GPUModel model;
    fill(model);
    const MessageLog log;
    glDisable(GL_DEBUG_OUTPUT);
    glEnable(GLenum(0xFFFF));
    glEnable(GL_DEBUG_OUTPUT);
    EXPECT_EQ(drawn(model), QColor(Qt::black));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("OpenGL had noted GL_INVALID_ENUM before 'drawable 0' was drawn "
                                           "first")));
}

TEST_P(GLFaultsTest, EachErrorIsNamedOnceInOrder) {
    GPUModel model;
    fill(model);
    const MessageLog log;
    const FaultyDriver driver({GL_INVALID_VALUE, GL_INVALID_ENUM, GL_INVALID_VALUE, GL_OUT_OF_MEMORY,
                               GL_INVALID_OPERATION, GL_INVALID_FRAMEBUFFER_OPERATION, GL_CONTEXT_LOST});
    EXPECT_EQ(drawn(model), QColor(Qt::black));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre("OpenGL had noted GL_INVALID_VALUE, GL_INVALID_ENUM, GL_OUT_OF_MEMORY, "
                            "GL_INVALID_OPERATION, GL_INVALID_FRAMEBUFFER_OPERATION, GL_CONTEXT_LOST before "
                            "'drawable 0' was drawn first"));
}

TEST_P(GLFaultsTest, AtMostEightErrorsAreTakenAtATime) {
    GPUModel model;
    fill(model);
    const MessageLog log;
    const FaultyDriver driver({0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19});
    EXPECT_EQ(drawn(model), QColor(Qt::black));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre("OpenGL had noted 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18 before "
                            "'drawable 0' was drawn first",
                            "'drawable 0' could not be drawn (0x19)"));
}

TEST_P(GLFaultsTest, EndlessErrorsDoNotHang) {
    GPUModel model;
    fill(model);
    const MessageLog log;
    const FaultyDriver driver(GLFault::EndlessErrors);
    drawn(model);
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("OpenGL had noted GL_CONTEXT_LOST before 'drawable 0' was drawn first"),
                    QStringLiteral("'drawable 0' could not be drawn (GL_CONTEXT_LOST)")));
}

TEST_P(GLFaultsTest, FailedProgramIsNullWithAnError) {
    glDisable(GL_DEBUG_OUTPUT);
    const QByteArray source = "#version 430 core\nvoid main() {}\n";
    for (const GLFault fault : {GLFault::NoShaders, GLFault::NoPrograms}) {
        const FaultyDriver driver(fault);
        QString error;
        EXPECT_EQ(Program::fromSource(source, source, error), nullptr);
        EXPECT_FALSE(error.isEmpty());
    }
    while (glGetError() != GL_NO_ERROR) {
    }
    glEnable(GL_DEBUG_OUTPUT);
}

TEST_P(GLFaultsTest, ContextWorksWithoutTheBufferOfItsGroup) {
    const FaultyDriver driver(GLFault::NoBufferNames);
    QString error;
    const auto context = OpenGLDeviceContext::createHeadless({}, error);
    EXPECT_TRUE(context) << error.toStdString();
}

} // namespace Atelier::Vel::Testing
