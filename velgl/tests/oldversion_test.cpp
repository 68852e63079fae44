#include <velgl/opengldevicecontext.h>

#include <QtCore/QtGlobal>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>

#include "foreigncontext.h"
#include "support/glfixture.h"
#include "support/messagelog.h"

// A program of its own, because Mesa reads the version override only once.
namespace Atelier::Vel::Testing {

namespace {

class OldVersionTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { qputenv("MESA_GL_VERSION_OVERRIDE", "3.3"); }
};

} // namespace

TEST_F(OldVersionTest, HeadlessErrorNamesTheVersionFoundAndTheOneNeeded) {
    QString error;
    EXPECT_FALSE(OpenGLDeviceContext::createHeadless({}, error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("No OpenGL context could be made. Tried: EGL device 0")))
        << error.toStdString();
    EXPECT_TRUE(
        error.contains(QStringLiteral("OpenGL 3.3 found, 4.3 or later needed; surfaceless platform: ")))
        << error.toStdString();
}

TEST_F(OldVersionTest, ForeignContextIsRefusedWithOneWarning) {
    ForeignContext context;
    ASSERT_TRUE(context.makeCurrent());
    const MessageLog log;
    EXPECT_FALSE(OpenGLDeviceContext::current());
    EXPECT_FALSE(OpenGLDeviceContext::current());
    BufferObject buffer;
    EXPECT_FALSE(buffer.bind());
    buffer.unbind();
    EXPECT_THAT(log.texts(QtWarningMsg), testing::ElementsAre(QStringLiteral(
                                             "OpenGL 3.3 is current, but OpenGL 4.3 or later is needed")));
}

} // namespace Atelier::Vel::Testing
