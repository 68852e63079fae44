#include "renderoptions.h"

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

struct Reading {
    std::optional<RenderOptions> options;
    QString error;
};

// As `velmodel render` reads them, without the file and the picture.
Reading readExactly(const QStringList& arguments) {
    QCommandLineParser parser;
    addRenderOptions(parser);
    EXPECT_TRUE(parser.parse(QStringList("velmodel render") + arguments)) << parser.errorText().toStdString();
    Reading reading;
    reading.error = "left over";
    reading.options = readRenderOptions(parser, reading.error);
    return reading;
}

Reading read(const QStringList& arguments) {
    return readExactly(QStringList{"m.obj", "-o", "m.png"} + arguments);
}

RenderOptions options(const QStringList& arguments) {
    const Reading reading = read(arguments);
    EXPECT_EQ(reading.error, QString());
    EXPECT_TRUE(reading.options.has_value());
    return reading.options.value_or(RenderOptions());
}

void expectMistake(const QStringList& arguments, const QString& message) {
    const Reading reading = read(arguments);
    EXPECT_EQ(reading.error, message);
    EXPECT_FALSE(reading.options.has_value());
}

TEST(RenderOptionsTest, DefaultsAreAsDocumented) {
    const RenderOptions defaults = options({});
    EXPECT_EQ(defaults.file, "m.obj");
    EXPECT_EQ(defaults.output, "m.png");
    EXPECT_EQ(defaults.resolution, QSize(1280, 720));
    EXPECT_EQ(defaults.background, QColor("#d9dde2"));
    EXPECT_EQ(defaults.camera.up, "+Y");
    EXPECT_EQ(defaults.camera.azimuth, 30);
    EXPECT_EQ(defaults.camera.elevation, 20);
    EXPECT_EQ(defaults.camera.zoom, 1);
    EXPECT_EQ(defaults.camera.projection, Projection::Perspective);
    EXPECT_EQ(defaults.parts, QStringList());
    EXPECT_FALSE(defaults.wireframe);
    EXPECT_EQ(defaults.colours, MaterialColours::SRgb);
    EXPECT_EQ(defaults.exposure, 0);
    EXPECT_FALSE(defaults.ambientOcclusion);
    EXPECT_EQ(defaults.turntable, 0);
}

TEST(RenderOptionsTest, EveryOptionIsRead) {
    const RenderOptions read = options({"--resolution", "640,480", "--background", "#102030", "--up", "-Z",
                                        "--camera-azimuth", "-45.5", "--camera-elevation", "12.25",
                                        "--camera-zoom", "2.5", "--wireframe", "--turntable", "12"});
    EXPECT_EQ(read.resolution, QSize(640, 480));
    EXPECT_EQ(read.background, QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(read.camera.up, "-Z");
    EXPECT_EQ(read.camera.azimuth, -45.5);
    EXPECT_EQ(read.camera.elevation, 12.25);
    EXPECT_EQ(read.camera.zoom, 2.5);
    EXPECT_TRUE(read.wireframe);
    EXPECT_EQ(read.turntable, 12);
    EXPECT_EQ(readExactly({"m.obj", "--output", "long.png"}).options->output, "long.png");
}

TEST(RenderOptionsTest, NoBackgroundIsAnInvalidColourAndIgnoresTheBackground) {
    EXPECT_FALSE(options({"--no-background"}).background.isValid());
    EXPECT_FALSE(options({"--no-background", "--background", "greenish"}).background.isValid());
}

TEST(RenderOptionsTest, LimitsThemselvesAreAllowed) {
    EXPECT_EQ(options({"--resolution", "1,1"}).resolution, QSize(1, 1));
    EXPECT_EQ(options({"--resolution", "16384,16384"}).resolution, QSize(16384, 16384));
    EXPECT_EQ(options({"--camera-azimuth", "-36000"}).camera.azimuth, -36000);
    EXPECT_EQ(options({"--camera-azimuth", "36000"}).camera.azimuth, 36000);
    EXPECT_EQ(options({"--camera-elevation", "-90"}).camera.elevation, -90);
    EXPECT_EQ(options({"--camera-elevation", "90"}).camera.elevation, 90);
    EXPECT_EQ(options({"--camera-zoom", "0.001"}).camera.zoom, 0.001);
    EXPECT_EQ(options({"--camera-zoom", "1000"}).camera.zoom, 1000);
    EXPECT_EQ(options({"--turntable", "1"}).turntable, 1);
    EXPECT_EQ(options({"--turntable", "100000"}).turntable, 100000);
}

struct OutOfRange {
    const char* option;
    const char* value;
    const char* expected;
};

class OutOfRangeTest : public testing::TestWithParam<OutOfRange> {};

TEST_P(OutOfRangeTest, IsRejectedWithAMessage) {
    const OutOfRange& mistake = GetParam();
    expectMistake({mistake.option, mistake.value},
                  QStringLiteral("%1 takes %2, not '%3'.")
                      .arg(QLatin1String(mistake.option), QLatin1String(mistake.expected),
                           QLatin1String(mistake.value)));
}

constexpr const char* kAzimuths = "a number from -36000 to 36000";
constexpr const char* kElevations = "a number from -90 to 90";
constexpr const char* kZooms = "a number from 0.001 to 1000";
constexpr OutOfRange kNumbers[] = {
    {"--camera-azimuth", "-36000.001", kAzimuths},
    {"--camera-azimuth", "36000.001", kAzimuths},
    {"--camera-azimuth", "", kAzimuths},
    {"--camera-azimuth", "inf", kAzimuths},
    {"--camera-elevation", "-90.001", kElevations},
    {"--camera-elevation", "90.001", kElevations},
    {"--camera-elevation", "up", kElevations},
    {"--camera-elevation", "nan", kElevations},
    {"--camera-zoom", "0.0009", kZooms},
    {"--camera-zoom", "1000.1", kZooms},
    {"--camera-zoom", "-1", kZooms},
    {"--camera-zoom", "2x", kZooms},
};
INSTANTIATE_TEST_SUITE_P(Numbers, OutOfRangeTest, testing::ValuesIn(kNumbers));

constexpr const char* kStops = "a number from -10 to 10";
constexpr const char* kEncodings = "srgb, linear, none";
constexpr OutOfRange kLooks[] = {
    {"--exposure", "-10.01", kStops},  {"--exposure", "10.01", kStops},      {"--exposure", "bright", kStops},
    {"--mtl-colours", "", kEncodings}, {"--mtl-colours", "rgb", kEncodings},
};
INSTANTIATE_TEST_SUITE_P(Looks, OutOfRangeTest, testing::ValuesIn(kLooks));

constexpr const char* kFrames = "a whole number from 1 to 100000";
constexpr OutOfRange kCounts[] = {
    {"--turntable", "0", kFrames},  {"--turntable", "100001", kFrames},
    {"--turntable", "-4", kFrames}, {"--turntable", "4.0", kFrames},
    {"--turntable", "", kFrames},   {"--turntable", "99999999999", kFrames},
};
INSTANTIATE_TEST_SUITE_P(Counts, OutOfRangeTest, testing::ValuesIn(kCounts));

constexpr const char* kSizes = "two whole numbers from 1 to 16384, as in 1280x720";
constexpr OutOfRange kResolutions[] = {
    {"--resolution", "0,1", kSizes},     {"--resolution", "1,0", kSizes},
    {"--resolution", "16385,1", kSizes}, {"--resolution", "1,16385", kSizes},
    {"--resolution", "-5,5", kSizes},    {"--resolution", "5,x", kSizes},
    {"--resolution", "x,5", kSizes},     {"--resolution", "5", kSizes},
    {"--resolution", "5,5,5", kSizes},   {"--resolution", ",", kSizes},
};
INSTANTIATE_TEST_SUITE_P(Resolutions, OutOfRangeTest, testing::ValuesIn(kResolutions));

constexpr const char* kColours = "a colour such as white, #20242a or 0.1,0.2,0.3";
constexpr OutOfRange kBackgrounds[] = {
    {"--background", "", kColours},           {"--background", "#12", kColours},
    {"--background", "0.1,0.2", kColours},    {"--background", "0.1,0.2,0.3,0.4", kColours},
    {"--background", "1.001,0,0", kColours},  {"--background", "0,1.001,0", kColours},
    {"--background", "0,0,1.001", kColours},  {"--background", "-0.001,0,0", kColours},
    {"--background", "0,-0.001,0", kColours}, {"--background", "0,0,-0.001", kColours},
    {"--background", "red,0,0", kColours},    {"--background", "0,0,", kColours},
    {"--background", "nan,0,0", kColours},
};
INSTANTIATE_TEST_SUITE_P(Backgrounds, OutOfRangeTest, testing::ValuesIn(kBackgrounds));

constexpr const char* kAxes = "+X, -X, +Y, -Y, +Z, -Z";
constexpr OutOfRange kDirections[] = {
    {"--up", "", kAxes},   {"--up", "+", kAxes},   {"--up", "W", kAxes},
    {"--up", "YY", kAxes}, {"--up", "+Y+", kAxes},
};
INSTANTIATE_TEST_SUITE_P(Directions, OutOfRangeTest, testing::ValuesIn(kDirections));

TEST(RenderOptionsTest, BackgroundsAreNamesOrNumbers) {
    EXPECT_EQ(options({"--background", "tomato"}).background, QColor("tomato"));
    EXPECT_EQ(options({"--background", "#abc"}).background, QColor(0xAA, 0xBB, 0xCC));
    EXPECT_EQ(options({"--background", "0,0,0"}).background.rgb(), QColor(Qt::black).rgb());
    EXPECT_EQ(options({"--background", "1,1,1"}).background.rgb(), QColor(Qt::white).rgb());
    EXPECT_EQ(options({"--background", "0.2,0.4,0.6"}).background.rgb(), QColor(51, 102, 153).rgb());
}

TEST(RenderOptionsTest, UpDirectionsMayLackTheirSignAndBeSmall) {
    for (const char* axis : {"X", "Y", "Z"}) {
        const QString name = QLatin1String(axis);
        for (const QString& spelling : {name, name.toLower(), '+' + name, '+' + name.toLower()})
            EXPECT_EQ(options({"--up", spelling}).camera.up, '+' + name);
        for (const QString& spelling : {'-' + name, '-' + name.toLower()})
            EXPECT_EQ(options({"--up", spelling}).camera.up, '-' + name);
    }
}

TEST(RenderOptionsTest, ViewsSetTheAnglesThatAreNotGiven) {
    const auto angles = [](const QStringList& arguments) {
        const CameraOptions camera = options(arguments).camera;
        return std::make_pair(camera.azimuth, camera.elevation);
    };
    EXPECT_EQ(angles({"--view", "front"}), std::make_pair(0.0, 0.0));
    EXPECT_EQ(angles({"--view", "back"}), std::make_pair(180.0, 0.0));
    EXPECT_EQ(angles({"--view", "left"}), std::make_pair(-90.0, 0.0));
    EXPECT_EQ(angles({"--view", "Right"}), std::make_pair(90.0, 0.0));
    EXPECT_EQ(angles({"--view", "top"}), std::make_pair(0.0, 90.0));
    EXPECT_EQ(angles({"--view", "bottom"}), std::make_pair(0.0, -90.0));
    EXPECT_EQ(angles({"--view", "iso"}), std::make_pair(45.0, 35.264389682754654));
    EXPECT_EQ(angles({"--view", "top", "--camera-azimuth", "45"}), std::make_pair(45.0, 90.0));
    EXPECT_EQ(angles({"--camera-elevation", "5", "--view", "left"}), std::make_pair(-90.0, 5.0));
    expectMistake({"--view", "side"}, "--view takes front, back, left, right, top, bottom, iso, not 'side'.");
    expectMistake({"--view", "top", "--camera-azimuth", "x"},
                  "--camera-azimuth takes a number from -36000 to 36000, not 'x'.");
}

TEST(RenderOptionsTest, PartsAndProjectionAreRead) {
    EXPECT_EQ(options({"--part", "a b", "--part", "c"}).parts, QStringList({"a b", "c"}));
    EXPECT_EQ(options({"--orthographic"}).camera.projection, Projection::Orthographic);
}

TEST(RenderOptionsTest, LookOfMaterialsIsRead) {
    EXPECT_EQ(options({"--mtl-colours", "srgb"}).colours, MaterialColours::SRgb);
    EXPECT_EQ(options({"--mtl-colours", "Linear"}).colours, MaterialColours::Linear);
    EXPECT_EQ(options({"--mtl-colours", "none"}).colours, MaterialColours::None);
    EXPECT_TRUE(options({"--ambient-occlusion"}).ambientOcclusion);
    EXPECT_EQ(options({"--exposure", "-10"}).exposure, -10);
    EXPECT_EQ(options({"--exposure", "1.5"}).exposure, 1.5);
}

TEST(RenderOptionsTest, OneFileIsNeeded) {
    EXPECT_EQ(readExactly({"-o", "m.png"}).error, "Exactly one file is required; 0 are given.");
    EXPECT_EQ(readExactly({"a.obj", "b.obj", "-o", "m.png"}).error,
              "Exactly one file is required; 2 are given.");
}

TEST(RenderOptionsTest, OutputIsNeededAndNamesAFormat) {
    EXPECT_EQ(readExactly({"a.obj"}).error, "--output is missing.");
    EXPECT_EQ(readExactly({"a.obj", "-o", ""}).error, "--output is missing.");
    EXPECT_EQ(readExactly({"a.obj", "-o", "a.obj"}).error,
              "--output: 'a.obj' does not end in an image format that can be written.");
}

TEST(RenderOptionsTest, StandardOutputTakesOnePictureOnly) {
    EXPECT_EQ(readExactly({"a.obj", "-o", "-"}).options->output, "-");
    for (const char* count : {"1", "2"})
        EXPECT_EQ(readExactly({"a.obj", "-o", "-", "--turntable", count}).error,
                  "--turntable makes several pictures, which cannot all go to standard output.");
}

TEST(RenderOptionsTest, FirstOfSeveralMistakesIsReported) {
    const char* const mistakes[][2] = {
        {"--resolution", "1"},     {"--background", "greenish"}, {"--up", "W"},
        {"--camera-azimuth", "x"}, {"--camera-elevation", "x"},  {"--camera-zoom", "x"},
        {"--turntable", "x"}};
    QStringList arguments;
    for (auto mistake = std::rbegin(mistakes); mistake != std::rend(mistakes); ++mistake) {
        arguments << (*mistake)[0] << (*mistake)[1];
        EXPECT_TRUE(readExactly(arguments).error.startsWith((*mistake)[0] + QStringLiteral(" takes ")));
    }
}

} // namespace

} // namespace Atelier::Vel::Tool
