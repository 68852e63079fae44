// The command line itself. These tests need no OpenGL.

#include <gmock/gmock.h>

#include "program.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr int kWrongUsage = 2;

void expectWrongUsage(const QStringList& arguments, const QString& message) {
    const ProgramResult result = runProgram(arguments);
    EXPECT_EQ(result.exitCode, kWrongUsage) << arguments.join(' ').toStdString();
    EXPECT_EQ(result.errors, message + QLatin1Char('\n'));
    EXPECT_TRUE(result.output.isEmpty());
}

struct WrongUsage {
    const char* arguments; ///< separated by blanks
    const char* message;
};

class WrongUsageTest : public testing::TestWithParam<WrongUsage> {};

TEST_P(WrongUsageTest, IsOneLineAndExitCodeTwo) {
    expectWrongUsage(QString::fromLatin1(GetParam().arguments).split(' ', Qt::SkipEmptyParts),
                     QString::fromLatin1(GetParam().message));
}

constexpr WrongUsage kProgram[] = {
    {"", "velmodel: A command is missing. Try 'velmodel --help'."},
    {"paint", "velmodel: There is no command 'paint'. Try 'velmodel --help'."},
    {"--frobnicate", "velmodel: Unknown option 'frobnicate'. Try 'velmodel --help'."},
    {"--verbose loud info a.obj", "velmodel: --verbose takes debug, info, warning, error, not 'loud'. "
                                  "Try 'velmodel --help'."},
    {"--verbose", "velmodel: Missing value after '--verbose'. Try 'velmodel --help'."},
};
INSTANTIATE_TEST_SUITE_P(Program, WrongUsageTest, testing::ValuesIn(kProgram));

constexpr WrongUsage kInfoAndDump[] = {
    {"info", "velmodel: A file is missing. Try 'velmodel info --help'."},
    {"info --json", "velmodel: A file is missing. Try 'velmodel info --help'."},
    {"info --jason a.obj", "velmodel: Unknown option 'jason'. Try 'velmodel info --help'."},
    {"info --verbose 3 a.obj", "velmodel: --verbose takes debug, info, warning, error, not '3'. "
                               "Try 'velmodel info --help'."},
    {"dump", "velmodel: Exactly one file is required; 0 are given. Try 'velmodel dump --help'."},
    {"dump a.obj b.obj", "velmodel: Exactly one file is required; 2 are given. Try 'velmodel dump --help'."},
    {"dump --data a.obj", "velmodel: Unknown option 'data'. Try 'velmodel dump --help'."},
};
INSTANTIATE_TEST_SUITE_P(InfoAndDump, WrongUsageTest, testing::ValuesIn(kInfoAndDump));

constexpr WrongUsage kRender[] = {
    {"render -o a.png", "velmodel: Exactly one file is required; 0 are given. Try 'velmodel render --help'."},
    {"render a.obj b.obj -o a.png",
     "velmodel: Exactly one file is required; 2 are given. Try 'velmodel render --help'."},
    {"render a.obj", "velmodel: --output is missing. Try 'velmodel render --help'."},
    {"render a.obj -o", "velmodel: Missing value after '-o'. Try 'velmodel render --help'."},
    {"render a.obj -o a.docx",
     "velmodel: --output: 'a.docx' does not end in an image format that can be written. "
     "Try 'velmodel render --help'."},
    {"render a.obj -o picture",
     "velmodel: --output: 'picture' does not end in an image format that can be written. "
     "Try 'velmodel render --help'."},
    {"render a.obj -o - --turntable 3",
     "velmodel: --turntable makes several pictures, which cannot all go to "
     "standard output. Try 'velmodel render --help'."},
    {"render a.obj -o a.png --turntable 0", "velmodel: --turntable takes a whole number from 1 to 100000, "
                                            "not '0'. Try 'velmodel render --help'."},
    {"render a.obj -o a.png --turntable many", "velmodel: --turntable takes a whole number from 1 to 100000, "
                                               "not 'many'. Try 'velmodel render --help'."},
    {"render a.obj -o a.png --up W",
     "velmodel: --up takes +X, -X, +Y, -Y, +Z, -Z, not 'W'. Try 'velmodel render --help'."},
    {"render a.obj -o a.png --camera-azimuth east",
     "velmodel: --camera-azimuth takes a number from -36000 to 36000, not 'east'. "
     "Try 'velmodel render --help'."},
    {"render a.obj -o a.png --camera-azimuth 1,5",
     "velmodel: --camera-azimuth takes a number from -36000 to 36000, not '1,5'. "
     "Try 'velmodel render --help'."},
    {"render a.obj -o a.png --camera-elevation 91", "velmodel: --camera-elevation takes a number from -90 to "
                                                    "90, not '91'. Try 'velmodel render --help'."},
    {"render a.obj -o a.png --camera-zoom 0", "velmodel: --camera-zoom takes a number from 0.001 to 1000, "
                                              "not '0'. Try 'velmodel render --help'."},
    {"render a.obj -o a.png --camera-zoom nan", "velmodel: --camera-zoom takes a number from 0.001 to 1000, "
                                                "not 'nan'. Try 'velmodel render --help'."},
    {"render a.obj -o a.png --background greenish",
     "velmodel: --background takes a colour such as white, #20242a or 0.1,0.2,0.3, not 'greenish'. "
     "Try 'velmodel render --help'."},
    {"render a.obj -o a.png --background 1,2,3",
     "velmodel: --background takes a colour such as white, #20242a or 0.1,0.2,0.3, not '1,2,3'. "
     "Try 'velmodel render --help'."},
    {"render a.obj -o a.png --background 1,1",
     "velmodel: --background takes a colour such as white, #20242a or 0.1,0.2,0.3, not '1,1'. "
     "Try 'velmodel render --help'."},
};
INSTANTIATE_TEST_SUITE_P(Render, WrongUsageTest, testing::ValuesIn(kRender));

class WrongResolutionTest : public testing::TestWithParam<const char*> {};

TEST_P(WrongResolutionTest, IsNamedInTheError) {
    const QString value = QString::fromLatin1(GetParam());
    expectWrongUsage(
        {"render", "a.obj", "-o", "a.png", "--resolution", value},
        QStringLiteral("velmodel: --resolution takes two whole numbers from 1 to 16384, as in 1280x720, "
                       "not '%1'. Try 'velmodel render --help'.")
            .arg(value));
}

INSTANTIATE_TEST_SUITE_P(Values, WrongResolutionTest,
                         testing::Values("", "640", "640:480", "640x", "640,480,1", "0,480", "640,-1",
                                         "16385,1", "1.5,2", "99999999999,1"));

TEST(UsageTest, HelpNeedsNoFileAndNoOpenGL) {
    ProgramSurroundings surroundings;
    surroundings.environment.insert("__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent");
    for (const QStringList& arguments : {QStringList{"--help"}, QStringList{"info", "--help"},
                                         QStringList{"dump", "--help"}, QStringList{"render", "--help"}}) {
        const ProgramResult result = runProgram(arguments, surroundings);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_TRUE(result.output.startsWith("Usage: velmodel")) << result.output.toStdString();
        EXPECT_EQ(result.errors, QString());
    }
}

TEST(UsageTest, VersionIsPrintedByEveryCommand) {
    const QByteArray expected = runProgram({"--version"}).output;
    EXPECT_THAT(expected.toStdString(), testing::MatchesRegex("velmodel [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    for (const char* command : {"info", "dump", "render"}) {
        const ProgramResult result = runProgram({command, "--version"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.output, expected);
        EXPECT_EQ(result.errors, QString());
    }
}

TEST(UsageTest, HelpComesBeforeTheVersionAndBothBeforeMistakes) {
    const QByteArray help = runProgram({"info", "--help"}).output;
    const QByteArray version = runProgram({"--version"}).output;
    const ProgramResult both = runProgram({"info", "--version", "--help", "--verbose", "loud"});
    EXPECT_EQ(both.exitCode, 0);
    EXPECT_EQ(both.output, help);
    const ProgramResult mistaken = runProgram({"info", "--version", "--verbose", "loud"});
    EXPECT_EQ(mistaken.exitCode, 0);
    EXPECT_EQ(mistaken.output, version);
}

TEST(UsageTest, HelpThatCannotBeWrittenIsExitCodeFour) {
    ProgramSurroundings surroundings;
    surroundings.outputFile = "/dev/full";
    const ProgramResult result = runProgram({"--help"}, surroundings);
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errors, "velmodel: standard output: cannot be written: No space left on device\n");
}

TEST(UsageTest, WithoutOpenGLTheExitCodeIsThree) {
    ProgramSurroundings surroundings;
    surroundings.environment.insert("__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent");
    for (const QStringList& arguments :
         {QStringList{"dump", samplePath("gear")},
          QStringList{"render", samplePath("gear"), "-o", "/nonexistent/never.png"}}) {
        const ProgramResult result = runProgram(arguments, surroundings);
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_TRUE(result.errors.startsWith("velmodel: No OpenGL: ")) << result.errors.toStdString();
        EXPECT_EQ(result.errors.count(QLatin1Char('\n')), 1);
        EXPECT_TRUE(result.output.isEmpty());
    }
}

} // namespace

} // namespace Atelier::Vel::Testing
