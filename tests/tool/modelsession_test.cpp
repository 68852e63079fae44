#include "modelsession.h"

#include <unistd.h>

#include <QtCore/QElapsedTimer>

#include <gmock/gmock.h>

#include <velgl/opengldevicecontext.h>

#include "capturedstream.h"
#include "commands.h"
#include "glfaults.h"
#include "program.h"
#include "refusedcontext.h"
#include "support/glfixture.h"
#include "support/messagelog.h"
#include "temporarymodel.h"
#include "watcheddriver.h"

namespace Atelier::Vel::Tool {

namespace {

using Testing::CapturedStream;
using testing::HasSubstr;
using Testing::TemporaryFolder;

TEST(ModelSessionTest, ContextIsCurrentUntilTheSessionEnds) {
    {
        ModelSession session({});
        EXPECT_EQ(OpenGLDeviceContext::current(), nullptr);
        EXPECT_TRUE(session.open());
        EXPECT_NE(OpenGLDeviceContext::current(), nullptr);
    }
    EXPECT_EQ(OpenGLDeviceContext::current(), nullptr);
}

TEST(ModelSessionTest, ContextThatCannotBeUsedIsReported) {
    CapturedStream errors(STDERR_FILENO);
    {
        const Testing::RefusedContext refused(1); // its creation makes it current once
        ModelSession session({});
        EXPECT_FALSE(session.open());
    }
    EXPECT_EQ(errors.text(), "velmodel: No OpenGL: the context cannot be used\n");
}

TEST(ModelSessionTest, LoadReportsWhatItFoundAndItsDuration) {
    const TemporaryFolder folder;
    ModelSession session({});
    ASSERT_TRUE(session.open());
    QElapsedTimer timer;
    timer.start();
    const LoadedModel loaded = session.load(folder.write("m.obj", Testing::triangleText()));
    const double atMost = double(timer.nsecsElapsed()) * 1e-9;
    ASSERT_NE(loaded.model, nullptr);
    EXPECT_EQ(loaded.report.statistics.triangles, 1U);
    EXPECT_EQ(loaded.report.bytesRead, Testing::triangleText().size());
    EXPECT_GT(loaded.seconds, 0);
    EXPECT_LE(loaded.seconds, atMost);
    EXPECT_TRUE(loaded.files.folder().isNull()) << "the model may name files anywhere";
}

TEST(ModelSessionTest, ConfinedModelMayNameFilesOfItsFolderOnly) {
    const TemporaryFolder folder;
    LoadFlags flags;
    flags.options.files = LoadOptions::Files::InOwnFolder;
    ModelSession session(flags);
    ASSERT_TRUE(session.open());
    const LoadedModel loaded = session.load(folder.write("m.obj", Testing::triangleText()));
    EXPECT_EQ(loaded.files.folder(), folder.path(""));
    EXPECT_TRUE(loaded.files.allows(folder.path("a.png")));
    EXPECT_FALSE(loaded.files.allows("/etc/passwd"));
}

TEST(ModelSessionTest, OptimisedLoadReportsTheSameFacts) {
    if (!DrawData::canOptimise())
        GTEST_SKIP() << "this build cannot optimise";
    LoadFlags flags;
    flags.isOptimised = true;
    ModelSession session(flags);
    ASSERT_TRUE(session.open());
    const LoadedModel loaded = session.load(Testing::absoluteSamplePath("vase"));
    ASSERT_NE(loaded.model, nullptr);
    EXPECT_EQ(loaded.model->drawableCount(), 1);
    EXPECT_EQ(loaded.report.statistics.triangles, 704U);
    EXPECT_GT(loaded.seconds, 0);
}

/// `velmodel render` in this process, with a driver that can be made to fail.
class RefusedPictureTest : public Testing::GLFixture {
protected:
    void expectRefused(const QString& cause) {
        CapturedStream errors(STDERR_FILENO);
        const QString picture = _folder.path("m.png");
        EXPECT_EQ(runRender({_model, "-o", picture, "--resolution", "8,6", "--verbose", "error"}),
                  ExitCode::NoOpenGL);
        const QString expected = QStringLiteral("velmodel: %1: OpenGL cannot draw it: %2").arg(_model, cause);
        EXPECT_THAT(errors.text().toStdString(), HasSubstr(expected.toStdString()));
        EXPECT_FALSE(QFile::exists(picture));
    }

    const Testing::MessageLog _log; // restores the message handler
    TemporaryFolder _folder;
    const QString _model = _folder.write("m.obj", Testing::triangleText());
};

TEST_F(RefusedPictureTest, TargetThatIsRefusedIsExitCodeThree) {
    Testing::WatchedDriver driver;
    driver.watch().checksUntilIncomplete = 0;
    expectRefused("it cannot hold a picture of 8 x 6 pixels\n");
}

TEST_F(RefusedPictureTest, ProgramThatIsRefusedIsExitCodeThree) {
    const Testing::FaultyDriver driver(Testing::GLFault::NoPrograms);
    expectRefused("Linking: ");
}

} // namespace

} // namespace Atelier::Vel::Tool
