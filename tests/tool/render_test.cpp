// The pictures of `velmodel render`.

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gmock/gmock.h>

#include <velmodel/drawdata.h>

#include "picturecomparison.h"
#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr const char* kFrontView[] = {"--camera-azimuth", "0", "--camera-elevation", "0"};

QStringList frontView() {
    return {kFrontView[0], kFrontView[1], kFrontView[2], kFrontView[3]};
}

QImage rendered(const QString& path, const QStringList& options = {"--resolution", "160,120"}) {
    const ProgramResult result = runProgram(QStringList{"render", path, "-o", "-"} + options);
    EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
    return QImage::fromData(result.output, "PNG");
}

QImage stored(const QString& name) {
    return QImage(QStringLiteral(VELMODEL_SOURCE_DIR "/tests/golden/%1.png").arg(name));
}

void expectTheSame(const QImage& actual, const QImage& expected) {
    const PictureDifference apart = difference(actual, expected);
    EXPECT_TRUE(lookTheSame(apart)) << "mean " << apart.mean << ", changed " << apart.changedShare;
}

// A square from -1 to 1 that faces the front, with a material.
QString writeSquare(const TemporaryFolder& folder, const QByteArray& material, const QByteArray& face,
                    const QByteArray& more = {}) {
    folder.write("m.mtl", "newmtl m\n" + material);
    return folder.write("m.obj", "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n"
                                 "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nusemtl m\n" +
                                     more + face);
}

QColor middle(const QImage& picture) {
    return picture.pixelColor(picture.width() / 2, picture.height() / 2);
}

double coverage(const QImage& picture) {
    double sum = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            sum += picture.pixelColor(x, y).alphaF();
    return sum / (picture.width() * picture.height());
}

struct StoredPicture {
    QString name;
    QStringList arguments;

    friend void PrintTo(const StoredPicture& picture, std::ostream* out) {
        *out << picture.name.toStdString();
    }
};

std::vector<StoredPicture> storedPictures() {
    QFile file(VELMODEL_SOURCE_DIR "/tests/golden/pictures.json");
    std::vector<StoredPicture> pictures;
    if (file.open(QIODevice::ReadOnly))
        for (const QJsonValue entry : QJsonDocument::fromJson(file.readAll()).array())
            pictures.push_back({entry["name"].toString(), entry["arguments"].toVariant().toStringList()});
    return pictures;
}

class StoredPictureTest : public testing::TestWithParam<StoredPicture> {};

TEST_P(StoredPictureTest, LooksUnchanged) {
    const StoredPicture& picture = GetParam();
    expectTheSame(rendered(picture.arguments.first(), picture.arguments.mid(1)), stored(picture.name));
}

INSTANTIATE_TEST_SUITE_P(Samples, StoredPictureTest, testing::ValuesIn(storedPictures()));

TEST(RenderTest, ComparisonDistinguishesModels) {
    EXPECT_FALSE(lookTheSame(difference(rendered(samplePath("gear")), stored("mosaic"))));
    EXPECT_FALSE(lookTheSame(difference(rendered(samplePath("gear")), stored("gear-wireframe"))));
    EXPECT_FALSE(lookTheSame(
        difference(rendered(samplePath("gear"), {"--resolution", "160,120", "--camera-azimuth", "33"}),
                   stored("gear"))));
}

TEST(RenderTest, OptimisedModelLooksTheSame) {
    if (!DrawData::canOptimise())
        GTEST_SKIP() << "this build cannot optimise";
    for (const char* sample : {"gear", "vase"})
        expectTheSame(rendered(samplePath(sample), {"--resolution", "160,120", "--optimise"}),
                      rendered(samplePath(sample)));
}

TEST(RenderTest, FileAndStandardOutputAreTheSamePicture) {
    const TemporaryFolder folder;
    const QString file = folder.path("gear.png");
    const ProgramResult result =
        runProgram({"render", samplePath("gear"), "--output", file, "--resolution", "160,120"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.output.isEmpty());
    EXPECT_EQ(result.errors, QString());
    EXPECT_EQ(QImage(file), rendered(samplePath("gear")));
}

TEST(RenderTest, EndingChoosesTheFormat) {
    const TemporaryFolder folder;
    const QString file = folder.path("gear.bmp");
    EXPECT_EQ(runProgram({"render", samplePath("gear"), "-o", file, "--resolution", "40,30"}).exitCode, 0);
    EXPECT_FALSE(QImage(file, "BMP").isNull());
}

TEST(RenderTest, PictureHasTheRequestedResolution) {
    EXPECT_EQ(rendered(samplePath("gear"), {}).size(), QSize(1280, 720));
    EXPECT_EQ(rendered(samplePath("gear"), {"--resolution", "31,17"}).size(), QSize(31, 17));
    EXPECT_EQ(rendered(samplePath("gear"), {"--resolution", "1,1"}).size(), QSize(1, 1));
}

TEST(RenderTest, BackgroundHasTheRequestedColour) {
    const QStringList small = {"--resolution", "40,30", "--background"};
    EXPECT_EQ(rendered(samplePath("gear"), small + QStringList("#20242a")).pixelColor(0, 0),
              QColor("#20242a"));
    EXPECT_EQ(rendered(samplePath("gear"), small + QStringList("tomato")).pixelColor(0, 0), QColor("tomato"));
    EXPECT_EQ(rendered(samplePath("gear"), small + QStringList("0.2,0.4,1")).pixelColor(0, 0),
              QColor(51, 102, 255));
}

TEST(RenderTest, NoBackgroundIsTransparentAroundTheModelOnly) {
    const QImage picture = rendered(samplePath("gear"), {"--resolution", "160,120", "--no-background"});
    EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(middle(picture).alpha(), 255);
}

TEST(RenderTest, EdgesWithoutABackgroundKeepTheirColour) {
    const TemporaryFolder folder;
    const QString path = writeSquare(folder, "Kd 1 0 0\n", "f 1 2 3\n");
    const QImage picture =
        rendered(path, frontView() + QStringList{"--resolution", "64,64", "--no-background"});
    int edges = 0;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const QColor colour = picture.pixelColor(x, y);
            if (colour.alpha() > 32 && colour.alpha() < 224) {
                ++edges;
                EXPECT_NEAR(colour.red(), middle(picture).red(), 4);
            }
        }
    EXPECT_GT(edges, 20);
}

TEST(RenderTest, LightingDoesNotDependOnTheSignOfTheNormals) {
    const TemporaryFolder folder;
    const QStringList options = frontView() + QStringList{"--resolution", "32,32"};
    const QByteArray outward = "vn 0 0 1\n";
    const QByteArray inward = "vn 0 0 -1\n";
    const QColor generated =
        middle(rendered(writeSquare(folder, "Kd 0.5 0.5 0.5\n", "f 1 2 3 4\n"), options));
    const QColor clockwise =
        middle(rendered(writeSquare(folder, "Kd 0.5 0.5 0.5\n", "f 4 3 2 1\n"), options));
    const QByteArray face = "f 1//1 2//1 3//1 4//1\n";
    EXPECT_EQ(middle(rendered(writeSquare(folder, "Kd 0.5 0.5 0.5\n", face, outward), options)), generated);
    EXPECT_EQ(middle(rendered(writeSquare(folder, "Kd 0.5 0.5 0.5\n", face, inward), options)), generated);
    EXPECT_EQ(clockwise, generated);
    EXPECT_GT(generated.lightness(), 60);
}

TEST(RenderTest, NormalsOfZeroLengthAreReplacedByTriangleNormals) {
    const TemporaryFolder folder;
    const QStringList options = frontView() + QStringList{"--resolution", "32,32"};
    const QByteArray face = "f 1//1 2//1 3//1 4//1\n";
    EXPECT_EQ(middle(rendered(writeSquare(folder, "Kd 0.5 0.5 0.5\n", face, "vn 0 0 0\n"), options)),
              middle(rendered(writeSquare(folder, "Kd 0.5 0.5 0.5\n", face, "vn 0 0 1\n"), options)));
}

TEST(RenderTest, TextureStandsUprightOnTheSurface) {
    const TemporaryFolder folder;
    QImage texture(2, 2, QImage::Format_RGB32);
    texture.setPixelColor(0, 0, Qt::red);
    texture.setPixelColor(1, 0, Qt::green);
    texture.setPixelColor(0, 1, Qt::blue);
    texture.setPixelColor(1, 1, Qt::white);
    ASSERT_TRUE(texture.save(folder.path("t.png")));
    const QString path = writeSquare(folder, "Kd 1 1 1\nmap_Kd t.png\n", "f 1/1 2/2 3/3 4/4\n");
    const QImage picture = rendered(path, frontView() + QStringList{"--resolution", "64,64"});
    const QColor upperLeft = picture.pixelColor(18, 18);
    const QColor upperRight = picture.pixelColor(46, 18);
    const QColor lowerLeft = picture.pixelColor(18, 46);
    EXPECT_GT(upperLeft.red(), 2 * upperLeft.green());
    EXPECT_GT(upperRight.green(), 2 * upperRight.red());
    EXPECT_GT(lowerLeft.blue(), 2 * lowerLeft.red());
}

TEST(RenderTest, TextureOnAMaterialWithoutColourIsShown) {
    const TemporaryFolder folder;
    const QString texture = "map_Kd " VELMODEL_SOURCE_DIR "/samples/vase/glaze.png\n";
    const QByteArray face = "f 1/1 2/2 3/3 4/4\n";
    const QStringList options = frontView() + QStringList{"--resolution", "64,64"};
    const QImage without = rendered(writeSquare(folder, texture.toUtf8(), face), options);
    EXPECT_EQ(without, rendered(writeSquare(folder, "Kd 1 1 1\n" + texture.toUtf8(), face), options));
}

TEST(RenderTest, MissingTextureIsOneWarningAndThePlainColour) {
    const TemporaryFolder folder;
    const QByteArray face = "f 1/1 2/2 3/3 4/4\n";
    const QStringList options = frontView() + QStringList{"--resolution", "32,32"};
    const QImage plain = rendered(writeSquare(folder, "Kd 0.2 0.5 0.8\n", face), options);
    const QString path = writeSquare(folder, "Kd 0.2 0.5 0.8\nmap_Kd none.png\nmap_Ks none.png\n", face);
    EXPECT_EQ(rendered(path, options), plain);
    const ProgramResult result = runProgram(QStringList{"render", path, "-o", "-"} + options);
    EXPECT_EQ(
        result.errors,
        QStringLiteral("velmodel: warning: Texture '%1' cannot be loaded\n").arg(folder.path("none.png")));
}

TEST(RenderTest, HolesOfATextureShowTheSurfaceBehind) {
    const TemporaryFolder folder;
    QImage texture(1, 1, QImage::Format_ARGB32);
    texture.fill(Qt::transparent);
    ASSERT_TRUE(texture.save(folder.path("hole.png")));
    folder.write("m.mtl", "newmtl m\nKd 0 1 0\nmap_Kd hole.png\nnewmtl back\nKd 1 0 0\n");
    const QString path =
        folder.write("m.obj", "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nv -1 -1 -1\n"
                              "v 1 -1 -1\nv 1 1 -1\nv -1 1 -1\nvt 0 0\nusemtl m\n"
                              "f 1/1 2/1 3/1 4/1\nusemtl back\nf 5/1 6/1 7/1 8/1\n");
    const QColor colour = middle(rendered(path, frontView() + QStringList{"--resolution", "32,32"}));
    EXPECT_GT(colour.red(), 100);
    EXPECT_LT(colour.green(), 20);
}

// A half transparent red square in front of a green one.
QColor throughGlass(const TemporaryFolder& folder, const QByteArray& faces) {
    folder.write("m.mtl", "newmtl glass\nKd 1 0 0\nd 0.5\nnewmtl wall\nKd 0 1 0\n");
    const QString path =
        folder.write("m.obj", "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nv -1 -1 -1\n"
                              "v 1 -1 -1\nv 1 1 -1\nv -1 1 -1\n" +
                                  faces);
    return middle(rendered(path, frontView() + QStringList{"--resolution", "32,32"}));
}

TEST(RenderTest, GlassBlendsInAnyDrawOrder) {
    const TemporaryFolder folder;
    const QByteArray glass = "usemtl glass\nf 1 2 3 4\n";
    const QByteArray wall = "usemtl wall\nf 5 6 7 8\n";
    const QColor colour = throughGlass(folder, glass + wall);
    EXPECT_EQ(throughGlass(folder, wall + glass), colour);
    EXPECT_GT(colour.red(), 100);
    EXPECT_GT(colour.green(), 100);
}

TEST(RenderTest, WallInFrontHidesGlass) {
    const TemporaryFolder folder;
    const QColor colour = throughGlass(folder, "usemtl glass\nf 5 6 7 8\nusemtl wall\nf 1 2 3 4\n");
    EXPECT_LT(colour.red(), 20);
    EXPECT_GT(colour.green(), 100);
}

TEST(RenderTest, GlassWithoutBackgroundIsHalfTransparent) {
    const TemporaryFolder folder;
    const QString path = writeSquare(folder, "Kd 1 0 0\nd 0.5\n", "f 1 2 3 4\n");
    const QImage picture =
        rendered(path, frontView() + QStringList{"--resolution", "32,32", "--no-background"});
    EXPECT_NEAR(middle(picture).alpha(), 128, 3);
    EXPECT_GT(middle(picture).red(), 150);
}

TEST(RenderTest, ShinyMaterialHasAHighlight) {
    const TemporaryFolder folder;
    const QByteArray face = "f 1//1 2//1 3//1 4//1\n";
    // The normal halves the angle between the light and the eye.
    const QByteArray normal = "vn -0.23 0.34 0.91\n";
    const QStringList options = frontView() + QStringList{"--resolution", "32,32"};
    const QColor dull = middle(rendered(writeSquare(folder, "Kd 0.3 0 0\n", face, normal), options));
    const QColor shiny =
        middle(rendered(writeSquare(folder, "Kd 0.3 0 0\nKs 1 1 1\nNs 50\n", face, normal), options));
    EXPECT_GT(shiny.blue(), dull.blue() + 50);
}

TEST(RenderTest, WireframeDrawsEdgesOnly) {
    const QStringList small = {"--resolution", "160,120", "--no-background"};
    const double solid = coverage(rendered(samplePath("gear"), small));
    const double wire = coverage(rendered(samplePath("gear"), small + QStringList("--wireframe")));
    EXPECT_GT(wire, 0.01);
    EXPECT_LT(wire, 0.8 * solid);
}

TEST(RenderTest, UpDirectionTurnsTheModel) {
    const TemporaryFolder folder;
    const QString standing = folder.write("y.obj", "v 0 0 0\nv 1 0 0\nv 0 2 0\nv 0 0 3\nf 1 2 3\nf 1 3 4\n");
    const QString lying = folder.write("z.obj", "v 0 0 0\nv 1 0 0\nv 0 0 2\nv 0 -3 0\nf 1 2 3\nf 1 3 4\n");
    const QStringList small = {"--resolution", "160,120", "--up"};
    expectTheSame(rendered(lying, small + QStringList("+Z")), rendered(standing, small + QStringList("+Y")));
    EXPECT_EQ(rendered(lying, small + QStringList("z")), rendered(lying, small + QStringList("+Z")));
}

TEST(RenderTest, CameraGoesAllTheWayRound) {
    const QStringList small = {"--resolution", "160,120", "--camera-azimuth"};
    expectTheSame(rendered(samplePath("stairs"), small + QStringList("-330")),
                  rendered(samplePath("stairs")));
}

TEST(RenderTest, ZoomShowsTheModelLarger) {
    const QStringList small = {"--resolution", "160,120", "--no-background", "--camera-zoom"};
    const double whole = coverage(rendered(samplePath("gear"), small + QStringList("1")));
    const double half = coverage(rendered(samplePath("gear"), small + QStringList("0.5")));
    EXPECT_NEAR(half, whole / 4, 0.01);
}

TEST(RenderTest, ModelFarFromTheOriginIsDrawnSteadily) {
    const TemporaryFolder folder;
    const QString near = folder.write("n.obj", "v 0 0 0\nv 8 0 0\nv 0 8 0\nv 0 0 8\nf 1 2 3\nf 1 3 4\n");
    const QString far =
        folder.write("f.obj", "v 80000 80000 80000\nv 80008 80000 80000\nv 80000 80008 80000\n"
                              "v 80000 80000 80008\nf 1 2 3\nf 1 3 4\n");
    expectTheSame(rendered(far), rendered(near));
}

struct Failure {
    const char* output;
    const char* cause;
};

class UnwritableTest : public testing::TestWithParam<Failure> {};

TEST_P(UnwritableTest, IsExitCodeFourAndNamesTheFile) {
    const QString output = QString::fromLatin1(GetParam().output);
    const ProgramResult result =
        runProgram({"render", samplePath("gear"), "-o", output, "--resolution", "8,8"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errors, QStringLiteral("velmodel: %1: The picture cannot be written: %2\n")
                                 .arg(output, QString::fromLatin1(GetParam().cause)));
}

INSTANTIATE_TEST_SUITE_P(Places, UnwritableTest,
                         testing::Values(Failure{"/nonexistent/a.png", "No such file or directory"},
                                         Failure{"/dev/null/a.png", "Not a directory"}));

TEST(RenderTest, FullStandardOutputIsExitCodeFour) {
    ProgramSurroundings surroundings;
    surroundings.outputFile = "/dev/full";
    const ProgramResult result =
        runProgram({"render", samplePath("gear"), "-o", "-", "--resolution", "8,8"}, surroundings);
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errors, "velmodel: -: The picture cannot be written: No space left on device\n");
}

struct Empty {
    const char* model;
    const char* materials;
    const char* cause;
};

class EmptyPictureTest : public testing::TestWithParam<Empty> {};

TEST_P(EmptyPictureTest, IsExitCodeOneAndNoFile) {
    const TemporaryFolder folder;
    folder.write("m.mtl", GetParam().materials);
    const QString path = folder.write("m.obj", GetParam().model);
    const ProgramResult result =
        runProgram({"render", path, "-o", folder.path("m.png"), "--resolution", "32,32"});
    EXPECT_EQ(result.exitCode, 1);
    const QString expected =
        QStringLiteral("velmodel: %1: %2\n").arg(path, QString::fromLatin1(GetParam().cause));
    EXPECT_TRUE(result.errors.endsWith(expected)) << result.errors.toStdString();
    EXPECT_FALSE(QFile::exists(folder.path("m.png")));
}

constexpr const char* kNoTriangles = "There is nothing to draw: the model has no triangles";
constexpr const char* kNothingInView = "The picture would be empty: nothing of the model is in view";
INSTANTIATE_TEST_SUITE_P(Models, EmptyPictureTest,
                         testing::Values(Empty{"", "", kNoTriangles}, Empty{"v 1 2 3\n", "", kNoTriangles},
                                         Empty{"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\n", "", kNoTriangles},
                                         Empty{"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2\n", "", kNoTriangles},
                                         Empty{"v nan 0 0\nv nan 1 0\nv nan 0 1\nf 1 2 3\n", "",
                                               "There is nothing to draw: no position is finite"},
                                         Empty{"v 1 1 1\nf 1 1 1\n", "", kNothingInView},
                                         Empty{"mtllib m.mtl\nusemtl m\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n",
                                               "newmtl m\nd 0\n", kNothingInView}));

} // namespace

} // namespace Atelier::Vel::Testing
