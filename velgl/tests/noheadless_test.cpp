#include <velgl/opengldevicecontext.h>

#include <gtest/gtest.h>

// This program compiles src/context/noheadless.cpp, whose function replaces that of the library.
namespace Atelier::Vel::Testing {

TEST(NoHeadlessTest, CreationFailsWithTheReason) {
    OpenGLDeviceContext::HeadlessOptions options;
    for (const char* device : {"", "software"}) {
        options.device = QString::fromLatin1(device);
        QString error = QStringLiteral("earlier");
        EXPECT_FALSE(OpenGLDeviceContext::createHeadless(options, error));
        EXPECT_EQ(error, QStringLiteral("VelGL was built without headless contexts"));
    }
}

} // namespace Atelier::Vel::Testing
