// Pictures of loaded files, drawn in this process: the direction of the view and the effects of materials.

#include <QtCore/QDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "modelpoints.h"
#include "picturecomparison.h"
#include "rendererfixture.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr QSize kSize(33, 33);

class ModelPicturesTest : public RendererFixture {
protected:
    QImage picture(const QString& path, const Tool::CameraOptions& options) {
        QString error;
        const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path, error));
        EXPECT_NE(model, nullptr) << error.toStdString();
        model->setTextureLoader(makeTextureLoader(_textureFiles));
        const Tool::Camera camera =
            framingCameras(model->bounds(), Tool::pointsInBounds(*model), options, {options.azimuth}, kSize)
                .first();
        return rendered(*model, {camera, kSize, QColor(), false});
    }
    static QRgb middle(const QImage& picture) { return picture.pixel(kSize.width() / 2, kSize.height() / 2); }

    /// A cube whose sides to -X, +X, -Y, +Y, -Z and +Z are red, green, blue, yellow, magenta and cyan.
    QString cube() const {
        _folder.write("cube.mtl", "newmtl r\nKd 1 0 0\nnewmtl g\nKd 0 1 0\nnewmtl b\nKd 0 0 1\n"
                                  "newmtl y\nKd 1 1 0\nnewmtl m\nKd 1 0 1\nnewmtl c\nKd 0 1 1\n");
        return _folder.write("cube.obj", "mtllib cube.mtl\n"
                                         "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\n"
                                         "v -1 -1 1\nv 1 -1 1\nv -1 1 1\nv 1 1 1\n"
                                         "usemtl r\nf 1 3 7 5\nusemtl g\nf 2 4 8 6\n"
                                         "usemtl b\nf 1 2 6 5\nusemtl y\nf 3 4 8 7\n"
                                         "usemtl m\nf 1 2 4 3\nusemtl c\nf 5 6 8 7\n");
    }
    // "1 1 0" for a pixel with red and green.
    static std::string channels(QRgb pixel) {
        const auto digit = [](int level) { return level > 60 ? "1" : "0"; };
        return std::string(digit(qRed(pixel))) + ' ' + digit(qGreen(pixel)) + ' ' + digit(qBlue(pixel));
    }
    std::string sideSeen(const QString& up, double azimuth, double elevation) {
        Tool::CameraOptions options;
        options.up = up;
        options.azimuth = azimuth;
        options.elevation = elevation;
        return channels(middle(picture(cube(), options)));
    }

    /// The cube of one colour, with a normal for each side. `turn` exchanges the axes of the normals.
    QString cubeWithNormals(const QString& name, int turn) const {
        QByteArray text = "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\n"
                          "v -1 -1 1\nv 1 -1 1\nv -1 1 1\nv 1 1 1\n";
        for (int side = 0; side < 6; ++side) {
            const int axis = (side / 2 + turn) % 3;
            const QByteArray value = side % 2 == 0 ? "-1 " : "1 ";
            text += QByteArray("vn ") + (axis == 0 ? value : "0 ") + (axis == 1 ? value : "0 ") +
                    (axis == 2 ? value : "0 ") + '\n';
        }
        return _folder.write(name, text + "f 1//1 3//1 7//1 5//1\nf 2//2 4//2 8//2 6//2\n"
                                          "f 1//3 2//3 6//3 5//3\nf 3//4 4//4 8//4 7//4\n"
                                          "f 1//5 2//5 4//5 3//5\nf 5//6 6//6 8//6 7//6\n");
    }

    /// A square with a material that mirrors the key light into the camera.
    QRgb shining(const QByteArray& material) {
        _folder.write("m.mtl", "newmtl m\nKd 0.1 0.1 0.1\n" + material);
        const QString path = _folder.write(
            "m.obj", "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                     "vn -0.23 0.34 0.91\nusemtl m\nf 1/1/1 2/2/1 3/3/1 4/4/1\n");
        Tool::CameraOptions front;
        front.azimuth = 0;
        front.elevation = 0;
        return middle(picture(path, front));
    }
    void writeTexture(const QString& name, const QColor& colour) const {
        QImage texture(4, 4, QImage::Format_RGB32);
        texture.fill(colour);
        EXPECT_TRUE(texture.save(_folder.path(name)));
    }

    TemporaryFolder _folder;
    ModelFiles _textureFiles;
};

} // namespace

TEST_F(ModelPicturesTest, EveryUpAxisShowsItsOwnSides) {
    struct View {
        const char* up;
        std::vector<std::string> sides; ///< in front, to the right, behind, above and below
    };
    const std::string left = "1 0 0";
    const std::string right = "0 1 0";
    const std::string bottom = "0 0 1";
    const std::string top = "1 1 0";
    const std::string back = "1 0 1";
    const std::string front = "0 1 1";
    const View views[] = {
        {"+X", {front, bottom, back, right, left}}, {"-X", {front, top, back, left, right}},
        {"+Y", {front, right, back, top, bottom}},  {"-Y", {front, left, back, bottom, top}},
        {"+Z", {bottom, right, top, front, back}},  {"-Z", {bottom, left, top, back, front}}};
    for (const View& view : views) {
        const std::vector<std::string> seen = {sideSeen(view.up, 0, 0), sideSeen(view.up, 90, 0),
                                               sideSeen(view.up, 180, 0), sideSeen(view.up, 0, 90),
                                               sideSeen(view.up, 0, -90)};
        EXPECT_EQ(seen, view.sides) << view.up;
    }
}

TEST_F(ModelPicturesTest, FacesDecideWhereNormalsLieInTheirPlane) {
    const QString sound = cubeWithNormals("sound.obj", 0);
    for (const int turn : {1, 2}) {
        const QString turned = cubeWithNormals("turned.obj", turn);
        for (const double azimuth : {0.0, 17.0, 30.0, 123.4}) {
            Tool::CameraOptions view;
            view.azimuth = azimuth;
            const QImage expected = picture(sound, view);
            const QImage actual = picture(turned, view);
            for (int y = 0; y < kSize.height(); ++y)
                for (int x = 0; x < kSize.width(); ++x)
                    ASSERT_LE(largestStep(actual.pixel(x, y), expected.pixel(x, y)), 1)
                        << azimuth << ": " << x << ' ' << y;
        }
    }
}

TEST_F(ModelPicturesTest, PlaneIsOfOneColourWhereverItsNormalLies) {
    for (const char* normal : {"1 0 0", "0 -1 0", "0.6 0.8 0.0001", "0.6 0.8 -0.0001"}) {
        const QString path =
            _folder.write("plane.obj", QByteArray("v -9 -9 0\nv 9 -9 0\nv 9 9 0\nv -9 9 0\nvn ") + normal +
                                           "\nf 1//1 2//1 3//1 4//1\n");
        Tool::CameraOptions view;
        view.azimuth = 20;
        const QImage plane = picture(path, view);
        for (int y = 10; y < 23; ++y)
            for (int x = 10; x < 23; ++x)
                ASSERT_LE(largestStep(plane.pixel(x, y), middle(plane)), 1)
                    << normal << ": " << x << ' ' << y;
        EXPECT_GT(qRed(middle(plane)), 100);
    }
}

TEST_F(ModelPicturesTest, BlackOfTransparentTexelsDarkensNoEdge) {
    QImage texture(2, 1, QImage::Format_ARGB32);
    texture.setPixelColor(0, 0, QColor(240, 200, 40));
    texture.setPixelColor(1, 0, QColor(0, 0, 0, 0));
    ASSERT_TRUE(texture.save(_folder.path("edge.png")));
    _folder.write("m.mtl", "newmtl m\nKd 1 1 1\nmap_Kd edge.png\n");
    const QString path = _folder.write(
        "m.obj", "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                 "vn 0 0 1\nusemtl m\nf 1/1/1 2/2/1 3/3/1 4/4/1\n");
    Tool::CameraOptions front;
    front.azimuth = 0;
    front.elevation = 0;
    const QImage seen = picture(path, front);
    const QRgb whole = seen.pixel(8, 16);
    EXPECT_GT(qAlpha(whole), 250);
    int edges = 0;
    for (int x = 1; x < kSize.width() - 1; ++x)
        if (const int alpha = qAlpha(seen.pixel(x, 16)); alpha > 8 && alpha < 255) {
            ++edges;
            EXPECT_LE(largestStep(seen.pixel(x, 16) | 0xFF000000, whole | 0xFF000000), 4) << x;
        }
    EXPECT_GT(edges, 10);
}

TEST_F(ModelPicturesTest, SpecularTextureColoursTheHighlight) {
    writeTexture("ks.png", QColor(255, 102, 0));
    const QRgb textured = shining("Ks 1 1 1\nNs 20\nmap_Ks ks.png\n");
    EXPECT_LE(largestStep(textured, shining("Ks 1 0.4 0\nNs 20\n")), 1);
    EXPECT_GT(qRed(textured), qBlue(textured) + 50);
    EXPECT_GT(largestStep(textured, shining("Ks 1 1 1\nNs 20\n")), 50);
}

TEST_F(ModelPicturesTest, ExponentTextureWidensTheHighlight) {
    writeTexture("ns.png", QColor(51, 255, 255));
    const QRgb textured = shining("Ks 1 1 1\nNs 100\nmap_Ns ns.png\n");
    EXPECT_LE(largestStep(textured, shining("Ks 1 1 1\nNs 20\n")), 1);
    EXPECT_GT(largestStep(textured, shining("Ks 1 1 1\nNs 100\n")), 10);
}

TEST_F(ModelPicturesTest, TexturesAreFoundByPathsWithBackslashes) {
    ASSERT_TRUE(QDir(_folder.path("")).mkdir("maps"));
    writeTexture("maps/kd.png", QColor(250, 80, 10));
    const MessageLog log;
    const QRgb textured = shining("map_Kd maps\\kd.png\n");
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
    EXPECT_EQ(textured, shining("map_Kd maps/kd.png\n"));
    EXPECT_GT(qRed(textured), 2 * qBlue(textured));
}

TEST_F(ModelPicturesTest, TexturesOutsideOfTheAllowedFolderAreNotLoaded) {
    ASSERT_TRUE(QDir(_folder.path("")).mkdir("inside"));
    writeTexture("kd.png", QColor(250, 80, 10));
    _textureFiles = ModelFiles(_folder.path("inside"));
    const MessageLog log;
    const QRgb refused = shining("map_Kd kd.png\n");
    EXPECT_EQ(refused, shining(""));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Texture '%1' cannot be loaded").arg(_folder.path("kd.png"))));
}

} // namespace Atelier::Vel::Testing
