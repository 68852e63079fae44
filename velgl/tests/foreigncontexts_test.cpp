#include <epoxy/gl.h>

#include "foreigncontext.h"
#include "glhooks.h"

#include <memory>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/program.h>

#include "support/glfixture.h"
#include "support/messagelog.h"
#include "testscene.h"

// Contexts that neither VelGL nor Qt made: what is known of them, and of those that they share with.
namespace Atelier::Vel::Testing {

namespace {

constexpr unsigned int kValues[] = {1, 2, 3};

class ForeignContextsTest : public ::testing::Test {
protected:
    void SetUp() override { registerTestPlans(); }
    void TearDown() override { ForeignContext::doneCurrent(); }
};

} // namespace

TEST_F(ForeignContextsTest, GroupIsFoundAgainWhenAContextOfItComesBack) {
    std::unique_ptr<ForeignContext> first = makeForeignContext();
    const std::unique_ptr<ForeignContext> second =
        std::make_unique<ForeignContext>(ForeignContext::Api::OpenGL, first.get());
    GPUModel model;
    addRow(model, {Qt::red});
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
    ForeignContext::doneCurrent();
    first.reset();
    // VelGL sees another group meanwhile, and looks which contexts still exist.
    const std::unique_ptr<ForeignContext> unrelated = makeForeignContext();
    EXPECT_TRUE(OpenGLDeviceContext::current());
    EXPECT_FALSE(model.isUsable());
    ASSERT_TRUE(second->makeCurrent());
    const MessageLog log;
    EXPECT_TRUE(model.isUsable());
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
    EXPECT_THAT(log.texts(QtWarningMsg), testing::IsEmpty());
}

TEST_F(ForeignContextsTest, NamesAreDeletedWhenAContextOfTheGroupComesBack) {
    std::unique_ptr<ForeignContext> first = makeForeignContext();
    const std::unique_ptr<ForeignContext> second =
        std::make_unique<ForeignContext>(ForeignContext::Api::OpenGL, first.get());
    auto buffer = std::make_unique<BufferObject>();
    ASSERT_TRUE(buffer->uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    const GLuint name = buffer->name();
    ForeignContext::doneCurrent();
    first.reset();
    buffer.reset();
    const std::unique_ptr<ForeignContext> unrelated = makeForeignContext();
    EXPECT_TRUE(OpenGLDeviceContext::current()) << "VelGL looks which contexts still exist";
    ASSERT_TRUE(second->makeCurrent());
    EXPECT_TRUE(glIsBuffer(name));
    EXPECT_TRUE(OpenGLDeviceContext::current());
    BufferObject other;
    other.bind();
    other.unbind();
    EXPECT_FALSE(glIsBuffer(name)) << "deleted with the first use of VelGL";
}

TEST_F(ForeignContextsTest, DrawAsksOnceWhoTheContextIs) {
    const std::unique_ptr<ForeignContext> context = makeForeignContext();
    const std::unique_ptr<Program> program = sceneProgram();
    GPUModel model;
    addRow(model, {Qt::red, Qt::green});
    addRow(model, {Qt::blue});
    Framebuffer picture(QSize(8, 8));
    picture.begin();
    const AutoBinder binder(program.get());
    model.draw();
    const LabelQueries queries;
    model.draw();
    EXPECT_EQ(queries.count(), 1) << "and one whether there is such an object";
}

TEST_F(ForeignContextsTest, ContextHasOneBufferAndOneVertexArrayOfVelGL) {
    const std::unique_ptr<ForeignContext> context = makeForeignContext();
    EXPECT_TRUE(OpenGLDeviceContext::current());
    int buffers = 0;
    int arrays = 0;
    for (GLuint name = 1; name < 100; ++name) {
        buffers += glIsBuffer(name);
        arrays += glIsVertexArray(name);
    }
    EXPECT_EQ(buffers, 1);
    EXPECT_EQ(arrays, 1);
    GLint boundBuffer = 1;
    GLint boundArray = 1;
    glGetIntegerv(GL_COPY_WRITE_BUFFER_BINDING, &boundBuffer);
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &boundArray);
    EXPECT_EQ(boundBuffer, 0);
    EXPECT_EQ(boundArray, 0);
}

} // namespace Atelier::Vel::Testing
