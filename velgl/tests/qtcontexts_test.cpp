#include <epoxy/gl.h>

#include <velgl/opengldevicecontext.h>

#include <QtGui/QGuiApplication>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>

#include "glhooks.h"

// Contexts that Qt makes, through GLX or EGL. The tests run in an X server of their own (xvfb-run).
namespace Atelier::Vel::Testing {

namespace {

class QtContextsTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            GTEST_SKIP() << "no X server: xvfb-run is missing";
        QSurfaceFormat format;
        format.setVersion(4, 3);
        format.setProfile(QSurfaceFormat::CoreProfile);
        _surface.setFormat(format);
        _surface.create();
    }
    void TearDown() override { EXPECT_FALSE(QOpenGLContext::currentContext()); }

    std::unique_ptr<QOpenGLContext> makeContext(QOpenGLContext* shared = nullptr) {
        auto context = std::make_unique<QOpenGLContext>();
        context->setFormat(_surface.format());
        context->setShareContext(shared);
        EXPECT_TRUE(context->create());
        EXPECT_TRUE(context->makeCurrent(&_surface));
        return context;
    }

    QOffscreenSurface _surface;
};

constexpr unsigned int kValues[] = {1, 2, 3};

} // namespace

TEST_F(QtContextsTest, ContextMadeByQtIsRecognised) {
    EXPECT_FALSE(OpenGLDeviceContext::current());
    const auto qtContext = makeContext();
    const auto context = OpenGLDeviceContext::current();
    ASSERT_TRUE(context);
    EXPECT_GE(context->version(), 43);
    EXPECT_EQ(OpenGLDeviceContext::current(), context);
    BufferObject buffer;
    EXPECT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    EXPECT_EQ(buffer.readBack().size(), 12);
    qtContext->doneCurrent();
    EXPECT_FALSE(OpenGLDeviceContext::current());
}

TEST_F(QtContextsTest, SharingContextsOfQtSeeTheSameBuffer) {
    const auto first = makeContext();
    BufferObject buffer;
    buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    const auto second = makeContext(first.get());
    EXPECT_EQ(buffer.readBack().size(), 12);
    const auto unrelated = makeContext();
    EXPECT_TRUE(buffer.readBack().isEmpty());
    unrelated->doneCurrent();
}

TEST_F(QtContextsTest, ConsecutiveContextsAreDistinguished) {
    BufferObject survivor;
    for (int round = 0; round < 10; ++round) {
        const auto context = makeContext();
        EXPECT_EQ(survivor.name(), 0U) << "round " << round;
        EXPECT_TRUE(survivor.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
        context->doneCurrent();
    }
}

// Both contexts exist at the same time, so that the second cannot reuse the handle of the first. GLX has no
// query for whether a context still exists; Qt reports when it destroys one.
TEST_F(QtContextsTest, BufferOfAContextDestroyedByQtCanBeFilledInAnother) {
    auto first = makeContext();
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    const auto second = makeContext();
    EXPECT_TRUE(OpenGLDeviceContext::current());
    EXPECT_FALSE(buffer.bind()) << "it belongs to the first context";
    buffer.unbind();
    first.reset();
    ASSERT_TRUE(second->makeCurrent(&_surface));
    EXPECT_TRUE(buffer.uploadGLuintData(kValues, 2, GL_STATIC_DRAW));
    EXPECT_EQ(buffer.readBack().size(), 8);
    second->doneCurrent();
}

TEST_F(QtContextsTest, NothingIsPutIntoAContextOfQt) {
    const auto context = makeContext();
    ASSERT_TRUE(OpenGLDeviceContext::current());
    for (GLuint name = 1; name < 100; ++name)
        EXPECT_FALSE(glIsBuffer(name) || glIsVertexArray(name) || glIsTexture(name)) << name;
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    const Testing::LabelQueries queries;
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(buffer.bind());
        buffer.unbind();
    }
    EXPECT_EQ(queries.count(), 0) << "Qt knows which context is current";
    context->doneCurrent();
}

// The first context is not known to VelGL, and the group lives on in it.
TEST_F(QtContextsTest, GroupOfQtOutlivesTheContextsThatVelGLHasSeen) {
    const auto keeper = makeContext();
    BufferObject buffer;
    {
        const auto context = makeContext(keeper.get());
        ASSERT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
        context->doneCurrent();
    }
    const auto next = makeContext(keeper.get());
    EXPECT_EQ(buffer.readBack().size(), 12);
    next->doneCurrent();
}

TEST_F(QtContextsTest, HeadlessContextSharesWithAContextOfQtIfThatIsOneOfEgl) {
    auto qtContext = makeContext();
    BufferObject buffer;
    ASSERT_TRUE(buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW));
    OpenGLDeviceContext::HeadlessOptions options;
    options.shareWith = OpenGLDeviceContext::current();
    QString error;
    auto headless = OpenGLDeviceContext::createHeadless(options, error);
    qtContext->doneCurrent();
    if (qgetenv("QT_XCB_GL_INTEGRATION") != "xcb_egl") {
        EXPECT_FALSE(headless);
        EXPECT_EQ(error,
                  QStringLiteral("No OpenGL context could be made. Tried: the context to share with was "
                                 "not created by EGL"));
        return;
    }
    ASSERT_TRUE(headless) << error.toStdString();
    qtContext.reset();
    ASSERT_TRUE(headless->makeCurrent());
    EXPECT_EQ(buffer.readBack().size(), 12) << "the group outlives Qt's context";
    headless->doneCurrent();
    headless.reset();
    const auto next = makeContext();
    EXPECT_EQ(buffer.name(), 0U);
    EXPECT_TRUE(buffer.bind()) << "the group has ended";
    buffer.unbind();
    next->doneCurrent();
}

TEST_F(QtContextsTest, HeadlessContextBesideAGlxContextWorksOrReportsBadAccess) {
    const auto qtContext = makeContext();
    const auto native = OpenGLDeviceContext::current();
    QString error;
    const auto headless = OpenGLDeviceContext::createHeadless({}, error);
    EXPECT_TRUE(headless || error.contains(QStringLiteral("EGL_BAD_ACCESS"))) << error.toStdString();
    EXPECT_EQ(OpenGLDeviceContext::current(), native);
    qtContext->doneCurrent();
}

} // namespace Atelier::Vel::Testing

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
