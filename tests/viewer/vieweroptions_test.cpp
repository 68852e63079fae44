#include "vieweroptions.h"

#include <unistd.h>

#include <gmock/gmock.h>

#include "console.h"
#include "tool/capturedstream.h"

namespace Atelier::Vel::Viewer::Testing {

namespace {

ViewerOptions read(const QStringList& arguments) {
    ExitCode exitCode = ExitCode::Done;
    const auto options = readViewerOptions(arguments, exitCode);
    EXPECT_TRUE(options.has_value());
    return options.value_or(ViewerOptions());
}

// What is printed on a stream.
QByteArray printed(int stream, const QStringList& arguments, ExitCode expected) {
    Atelier::Vel::Testing::CapturedStream output(stream);
    ExitCode exitCode = ExitCode::NoOpenGL;
    EXPECT_FALSE(readViewerOptions(arguments, exitCode).has_value());
    EXPECT_EQ(exitCode, expected);
    return output.text();
}

} // namespace

TEST(ViewerOptionsTest, WithoutOptionsModelsAreLoadedForgivinglyByParts) {
    const ViewerOptions options = read({"a.obj", "b.obj"});
    EXPECT_THAT(options.files, ::testing::ElementsAre(QString("a.obj"), QString("b.obj")));
    EXPECT_TRUE(options.load.options.repairs.defineMaterials);
    EXPECT_TRUE(options.load.options.splitObjects);
    EXPECT_EQ(options.load.options.files, LoadOptions::Files::Anywhere);
    EXPECT_FALSE(options.isWatching);
    EXPECT_EQ(options.up, "+Y");
}

TEST(ViewerOptionsTest, OptionsAreRead) {
    EXPECT_FALSE(read({"--exact"}).load.options.splitObjects);
    EXPECT_FALSE(read({"--exact"}).load.options.repairs.defineMaterials);
    EXPECT_EQ(read({"--confined"}).load.options.files, LoadOptions::Files::InOwnFolder);
    EXPECT_TRUE(read({"--watch"}).isWatching);
    EXPECT_EQ(read({"--up", "-Z"}).up, "-Z");
    EXPECT_EQ(read({"--verbose", "info"}).verbosity, "info");
}

TEST(ViewerOptionsTest, AnswersGoToStandardOutput) {
    const QByteArray help = printed(STDOUT_FILENO, {"--help"}, ExitCode::Done);
    EXPECT_THAT(help.toStdString(), ::testing::StartsWith("Usage: velview [options] [file ...]\n"));
    for (const char* option : {"--watch", "--exact", "--confined", "--up"})
        EXPECT_THAT(help.toStdString(), ::testing::HasSubstr(option));
    EXPECT_EQ(printed(STDOUT_FILENO, {"--version"}, ExitCode::Done), "velview " VELMODEL_VERSION "\n");
}

TEST(ViewerOptionsTest, MistakesAreReported) {
    Tool::setConsoleName("velview");
    EXPECT_EQ(printed(STDERR_FILENO, {"--wach"}, ExitCode::WrongUsage),
              "velview: Unknown option 'wach'. Try 'velview --help'.\n");
    EXPECT_EQ(printed(STDERR_FILENO, {"--up", "Y"}, ExitCode::WrongUsage),
              "velview: --up takes +X, -X, +Y, -Y, +Z, -Z, not 'Y'. Try 'velview --help'.\n");
    EXPECT_EQ(printed(STDERR_FILENO, {"--verbose", "loud"}, ExitCode::WrongUsage),
              "velview: --verbose takes debug, info, warning, error, not 'loud'. Try 'velview --help'.\n");
    Tool::setConsoleName("velmodel");
}

} // namespace Atelier::Vel::Viewer::Testing
