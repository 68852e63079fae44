#include "foreigncontext.h"
#include "glhooks.h"

#include <velgl/opengldevicecontext.h>

#include <memory>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/gpumodel.h>
#include <velgl/program.h>

#include "onehandle.h"
#include "support/glfixture.h"
#include "support/messagelog.h"
#include "testscene.h"

// Contexts of other libraries that get the handle of an earlier one.
namespace Atelier::Vel::Testing {

namespace {

class ReusedHandleTest : public ::testing::Test {
protected:
    void SetUp() override { registerTestPlans(); }
    void TearDown() override { ForeignContext::doneCurrent(); }
};

} // namespace

TEST_F(ReusedHandleTest, ReusedHandleIsNotTakenForTheContextOfBefore) {
    const OneHandle handle;
    const ForeignContext keeper; // keeps the group, but VelGL does not see it
    std::unique_ptr<ForeignContext> context = makeForeignContext(&keeper);
    GPUModel model;
    addRow(model, {Qt::red});
    EXPECT_EQ(rowColor(model), QColor(Qt::red));

    ForeignContext::doneCurrent();
    context.reset();
    context = makeForeignContext(&keeper);
    // Names in the new context that the model's vertex arrays had in the old one.
    GLuint clients[16] = {};
    glGenVertexArrays(16, clients);
    for (const GLuint array : clients) {
        glBindVertexArray(array);
        glEnableVertexAttribArray(7);
    }
    glBindVertexArray(0);
    const MessageLog log;
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
    for (const GLuint array : clients) {
        glBindVertexArray(array);
        GLint isEnabled = 0;
        glGetVertexAttribiv(7, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &isEnabled);
        GLint isOtherEnabled = 0;
        glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &isOtherEnabled);
        GLint indices = 0;
        glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &indices);
        EXPECT_TRUE(isEnabled == GL_TRUE && isOtherEnabled == GL_FALSE && indices == 0)
            << "vertex array " << array << " of the client was changed";
    }
    EXPECT_THAT(log.texts(QtWarningMsg), testing::IsEmpty());
}

TEST_F(ReusedHandleTest, ReusedHandleOfAnotherGroupLosesTheModel) {
    const OneHandle handle;
    std::unique_ptr<ForeignContext> context = makeForeignContext();
    GPUModel model;
    model.setLabel(QStringLiteral("row"));
    addRow(model, {Qt::red});
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
    ForeignContext::doneCurrent();
    context.reset();
    context = makeForeignContext();
    const MessageLog log;
    EXPECT_FALSE(model.isUsable());
    EXPECT_EQ(rowColor(model), QColor(Qt::black));
    EXPECT_THAT(log.texts(QtWarningMsg), testing::ElementsAre(QStringLiteral(
                                             "Model 'row' lost its context: its buffers have no content "
                                             "in the current one, so it is not drawn")));
}

// The tests below come last, because forget() is a promise that cannot be taken back.

TEST_F(ReusedHandleTest, ForgottenContextIsNotAskedAndNotKnown) {
    constexpr unsigned int kValues[] = {1, 2, 3};
    const OneHandle handle;
    std::unique_ptr<ForeignContext> context = makeForeignContext();
    const ForeignContext sharing(ForeignContext::Api::OpenGL, context.get());
    const auto known = OpenGLDeviceContext::current();
    std::unique_ptr<Program> program = sceneProgram();
    GPUModel model;
    addRow(model, {Qt::red});
    EXPECT_EQ(rowColor(model), QColor(Qt::red));
    auto buffer = std::make_unique<BufferObject>();
    ASSERT_TRUE(buffer->uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    const GLuint name = buffer->name();
    ForeignContext::doneCurrent();
    buffer.reset();
    context->makeCurrent();
    EXPECT_TRUE(glIsBuffer(name));
    OpenGLDeviceContext::forget();
    EXPECT_FALSE(glIsBuffer(name)) << "the last chance to delete it here";
    EXPECT_EQ(known->version(), 0);

    ForeignContext::doneCurrent();
    context.reset();
    context = makeForeignContext(&sharing);
    EXPECT_NE(OpenGLDeviceContext::current(), known);
    EXPECT_EQ(rowColor(model), QColor(Qt::red)) << "the group was found again";
    Framebuffer picture(QSize(8, 8));
    picture.begin();
    const AutoBinder binder(program.get());
    const LabelQueries queries;
    model.draw();
    EXPECT_EQ(queries.count(), 0);
}

TEST_F(ReusedHandleTest, ForgettingNothingChangesNothing) {
    OpenGLDeviceContext::forget();
    QString error;
    const auto headless = OpenGLDeviceContext::createHeadless({}, error);
    ASSERT_TRUE(headless && headless->makeCurrent());
    OpenGLDeviceContext::forget();
    EXPECT_EQ(OpenGLDeviceContext::current(), headless);
    EXPECT_GT(headless->version(), 0);
}

} // namespace Atelier::Vel::Testing
