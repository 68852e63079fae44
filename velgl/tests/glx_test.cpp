#include <epoxy/gl.h>

#include <velgl/opengldevicecontext.h>

#include <QtGui/QGuiApplication>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>

// Contexts that Qt makes through GLX. The test runs in an X server of its own (xvfb-run).
namespace Atelier::Vel::Testing {

namespace {

class GlxTest : public ::testing::Test {
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

TEST_F(GlxTest, ContextMadeByQtIsRecognised) {
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

TEST_F(GlxTest, SharingContextsOfQtSeeTheSameBuffer) {
    const auto first = makeContext();
    BufferObject buffer;
    buffer.uploadGLuintData(kValues, 3, GL_STATIC_DRAW);
    const auto second = makeContext(first.get());
    EXPECT_EQ(buffer.readBack().size(), 12);
    const auto unrelated = makeContext();
    EXPECT_TRUE(buffer.readBack().isEmpty());
    unrelated->doneCurrent();
}

TEST_F(GlxTest, ConsecutiveContextsAreDistinguished) {
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
TEST_F(GlxTest, BufferOfAContextDestroyedByQtCanBeFilledInAnother) {
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

TEST_F(GlxTest, SharingAGlxContextWithEglFails) {
    const auto qtContext = makeContext();
    OpenGLDeviceContext::HeadlessOptions options;
    options.shareWith = OpenGLDeviceContext::current();
    QString error;
    EXPECT_FALSE(OpenGLDeviceContext::createHeadless(options, error));
    EXPECT_EQ(error, QStringLiteral("No OpenGL context could be made. Tried: the context to share with was "
                                    "not created by EGL"));
    qtContext->doneCurrent();
}

TEST_F(GlxTest, HeadlessContextBesideAGlxContextWorksOrReportsBadAccess) {
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
