// The commands of each pass of a picture, and the work that they save.

#include "surfacepasses.h"

#include <epoxy/gl.h>

#include <random>

#include <QtCore/QDir>
#include <QtGui/QImageWriter>

#include <gmock/gmock.h>

#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texture.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "modelpoints.h"
#include "quadmodel.h"
#include "rendererfixture.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

using Tool::SurfacePasses;

enum Passes { kNone, kOpaque, kTransparent, kBoth };

Passes passesOf(const SurfacePasses& passes, int command, int drawable = 0) {
    return Passes((passes.opaque.passes(drawable, command) ? kOpaque : kNone) |
                  (passes.transparent.passes(drawable, command) ? kTransparent : kNone));
}

/// Counts the primitives that are drawn in its lifetime.
class PrimitiveCount {
public:
    PrimitiveCount() {
        glGenQueries(1, &_name);
        glBeginQuery(GL_PRIMITIVES_GENERATED, _name);
    }
    ~PrimitiveCount() { glDeleteQueries(1, &_name); }
    PrimitiveCount(const PrimitiveCount&) = delete;
    PrimitiveCount& operator=(const PrimitiveCount&) = delete;

    int end() const {
        glEndQuery(GL_PRIMITIVES_GENERATED);
        GLuint count = 0;
        glGetQueryObjectuiv(_name, GL_QUERY_RESULT, &count);
        return int(count);
    }

private:
    GLuint _name = 0;
};

class SurfacePassesTest : public RendererFixture {
protected:
    /// One square for each material, side by side.
    std::unique_ptr<GPUModel> modelOf(const std::vector<QByteArray>& materials) const {
        QByteArray library;
        QByteArray text = "mtllib m.mtl\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n";
        for (std::size_t i = 0; i < materials.size(); ++i) {
            const QByteArray name = "m" + QByteArray::number(qulonglong(i));
            const QByteArray left = QByteArray::number(qulonglong(2 * i));
            const QByteArray right = QByteArray::number(qulonglong(2 * i + 1));
            library += "newmtl " + name + "\nKd 0.4 0.7 0.9\n" + materials[i];
            text += "v " + left + " 0 0\nv " + right + " 0 0\nv " + right + " 1 0\nv " + left + " 1 0\n" +
                    "usemtl " + name + "\nf -4/1 -3/2 -2/3 -1/4\n";
        }
        _folder.write("m.mtl", library);
        QString error;
        std::unique_ptr<GPUModel> model(loadModelFromOBJFile(_folder.write("m.obj", text), error));
        EXPECT_NE(model, nullptr) << error.toStdString();
        EXPECT_EQ(model->drawableCount(), 1);
        model->setTextureLoader(makeTextureLoader(ModelFiles()));
        return model;
    }
    /// An image of one colour with one texel of another.
    void writeImage(const QString& name, const QColor& texel, QImage::Format format) const {
        QImage image(8, 8, format);
        image.fill(Qt::yellow);
        image.setPixelColor(5, 3, texel);
        EXPECT_TRUE(image.save(_folder.path(name))) << name.toStdString();
    }
    Passes passesOfTexture(const QByteArray& name) const {
        return passesOf(Tool::surfacePasses(*modelOf({"map_Kd " + name + "\n"}), {}), 0);
    }
    static Tool::Scene scene(GPUModel& model) {
        constexpr QSize kSize(120, 60);
        const Tool::CameraOptions options;
        const Tool::Camera camera =
            framingCameras(model.bounds(), Tool::pointsInBounds(model), options, {options.azimuth}, kSize)
                .first();
        return {camera, kSize, QColor(), false};
    }
    /// Draws the model with its passes, and with everything in both.
    /// Returns: the number of primitives that the passes draw.
    int primitivesInPasses(GPUModel& model) {
        Tool::Scene scene = this->scene(model);
        const QImage expected = rendered(model, scene);
        const bool hasDrawn = _renderer->hasDrawn();
        scene.passes = Tool::surfacePasses(model, {});
        const PrimitiveCount count;
        EXPECT_EQ(rendered(model, scene), expected);
        EXPECT_EQ(_renderer->hasDrawn(), hasDrawn);
        constexpr int kOfComposition = 1;
        return count.end() - kOfComposition;
    }

    TemporaryFolder _folder;
};

constexpr int kOfSquare = 2; // triangles

} // namespace

TEST_F(SurfacePassesTest, OpacityOfTheMaterialDecides) {
    const std::pair<QByteArray, Passes> cases[] = {{"", kOpaque},
                                                   {"d 1\n", kOpaque},
                                                   {"d 7\n", kOpaque},
                                                   {"d inf\n", kOpaque},
                                                   {"d 0.998\n", kOpaque},
                                                   {"d 0.996\n", kBoth},
                                                   {"d 0.994\n", kTransparent},
                                                   {"d 0.5\n", kTransparent},
                                                   {"d 0.002\n", kTransparent},
                                                   {"d 0.0009\n", kNone},
                                                   {"d 0\n", kNone},
                                                   {"d -3\n", kNone}};
    std::vector<QByteArray> materials;
    for (const auto& [material, passes] : cases)
        materials.push_back(material);
    const SurfacePasses passes = Tool::surfacePasses(*modelOf(materials), {});
    for (std::size_t i = 0; i < materials.size(); ++i)
        EXPECT_EQ(passesOf(passes, int(i)), cases[i].second) << materials[i].constData();
}

TEST_F(SurfacePassesTest, MaterialWhoseOpacityIsNotKnownIsInBoth) {
    const float opacity[] = {std::nanf(""), 1.0F};
    InstanceData notANumber(QStringLiteral("OBJMaterial"));
    notANumber.set(QStringLiteral("d"), opacity, sizeof opacity[0]);
    InstanceData twoNumbers(QStringLiteral("OBJMaterial"));
    twoNumbers.set(QStringLiteral("d"), opacity, sizeof opacity);
    GPUModel model;
    const auto add = [&](InstanceDataCollection* materials) {
        auto* buffers = new DrawBuffers;
        const QVector<DrawElementsIndirectCommand> commands(3);
        buffers->setDrawElementsIndirectCommands(commands.constData(), commands.size());
        model.add(buffers, 1, materials, nullptr, 0);
    };
    add(new InstanceDataCollection(QStringLiteral("OBJMaterial"), {notANumber, twoNumbers}));
    add(nullptr);
    const SurfacePasses passes = Tool::surfacePasses(model, {});
    for (int drawable = 0; drawable < 2; ++drawable)
        for (int command = 0; command < 3; ++command)
            EXPECT_EQ(passesOf(passes, command, drawable), kBoth) << drawable << ' ' << command;
}

TEST_F(SurfacePassesTest, TextureObjectsAreOpaqueIfTheyAreTheWhiteOne) {
    Fragment plain;
    Fragment white;
    white.hasMap = true;
    Fragment other;
    other.hasMap = true;
    other.map = QColor(1, 2, 3, 100);
    std::vector<Quad> quads;
    for (Fragment look : {plain, white, other}) {
        look.position = {0, 0, -1};
        look.flatNormal = {0, 0, 1};
        quads.push_back({look, 1});
    }
    const std::unique_ptr<GPUModel> model = quadModel(quads, Placement());
    const SurfacePasses passes = Tool::surfacePasses(*model, {});
    EXPECT_EQ(passesOf(passes, 0), kOpaque);
    EXPECT_EQ(passesOf(passes, 1), kOpaque);
    EXPECT_EQ(passesOf(passes, 2), kBoth);
}

TEST_F(SurfacePassesTest, OpaqueTextureFilesAreInTheOpaquePassOnly) {
    writeImage("a.png", Qt::red, QImage::Format_RGB32);
    writeImage("b.jpg", Qt::red, QImage::Format_RGB32);
    writeImage("c.png", Qt::gray, QImage::Format_Grayscale8);
    for (const char* name : {"a.png", "b.jpg", "c.png"})
        EXPECT_EQ(passesOfTexture(name), kOpaque) << name;
    const SurfacePasses glass = Tool::surfacePasses(*modelOf({"d 0.5\nmap_Kd a.png\n"}), {});
    EXPECT_EQ(passesOf(glass, 0), kTransparent);
}

TEST_F(SurfacePassesTest, TextureFilesThatMayHaveTransparentTexelsAreInBoth) {
    writeImage("a.png", QColor(255, 0, 0, 254), QImage::Format_ARGB32);
    EXPECT_EQ(passesOfTexture("a.png"), kBoth);
    EXPECT_EQ(passesOfTexture("missing.png"), kBoth);
    _folder.write("text.png", "no image");
    EXPECT_EQ(passesOfTexture("text.png"), kBoth);
    const SurfacePasses glass = Tool::surfacePasses(*modelOf({"d 0.5\nmap_Kd a.png\n"}), {});
    EXPECT_EQ(passesOf(glass, 0), kTransparent);
    const SurfacePasses invisible = Tool::surfacePasses(*modelOf({"d 0\nmap_Kd a.png\n"}), {});
    EXPECT_EQ(passesOf(invisible, 0), kNone);
}

TEST_F(SurfacePassesTest, PaletteWithATransparentColourIsInBoth) {
    QImage image(8, 8, QImage::Format_Indexed8);
    image.setColorTable({qRgba(255, 0, 0, 255), qRgba(0, 255, 0, 0)});
    image.fill(0);
    image.setPixel(2, 2, 1);
    ASSERT_TRUE(image.save(_folder.path("palette.png")));
    EXPECT_EQ(passesOfTexture("palette.png"), kBoth);
}

// What the header says is compared with the texels.
TEST_F(SurfacePassesTest, NoFormatOfImagesHidesTransparentTexels) {
    int transparent = 0;
    for (const QByteArray& type : QImageWriter::supportedImageFormats()) {
        const QByteArray name = "image." + type;
        QImage image(16, 16, QImage::Format_ARGB32);
        image.fill(Qt::yellow);
        image.setPixelColor(5, 3, Qt::transparent);
        if (!image.save(_folder.path(name)))
            continue;
        const MessageLog log;
        const std::shared_ptr<Texture> texture = makeTextureLoader(ModelFiles())(_folder.path(name));
        const QImage texels = texture ? texture->readBack() : QImage();
        bool isOpaque = !texels.isNull();
        for (int y = 0; y < texels.height(); ++y)
            for (int x = 0; x < texels.width(); ++x)
                isOpaque = isOpaque && qAlpha(texels.pixel(x, y)) == 255;
        transparent += isOpaque ? 0 : 1;
        EXPECT_TRUE(isOpaque || passesOfTexture(name) == kBoth) << name.constData();
    }
    EXPECT_GE(transparent, 1) << "PNG at least";
}

TEST_F(SurfacePassesTest, OnlyAllowedFilesAreRead) {
    ASSERT_TRUE(QDir(_folder.path("")).mkdir("inside"));
    writeImage("a.png", Qt::red, QImage::Format_RGB32);
    const std::unique_ptr<GPUModel> model = modelOf({"map_Kd a.png\n"});
    EXPECT_EQ(passesOf(Tool::surfacePasses(*model, ModelFiles(_folder.path("inside"))), 0), kBoth);
    EXPECT_EQ(passesOf(Tool::surfacePasses(*model, ModelFiles(_folder.path(""))), 0), kOpaque);
}

TEST_F(SurfacePassesTest, BackslashesInPathsAreUnderstood) {
    ASSERT_TRUE(QDir(_folder.path("")).mkdir("maps"));
    writeImage("maps/a.png", Qt::red, QImage::Format_RGB32);
    EXPECT_EQ(passesOfTexture("maps\\a.png"), kOpaque);
}

TEST_F(SurfacePassesTest, OpaqueModelIsDrawnOnce) {
    EXPECT_EQ(primitivesInPasses(*modelOf({"", "", ""})), 3 * kOfSquare);
}

TEST_F(SurfacePassesTest, GlassIsDrawnOnce) {
    EXPECT_EQ(primitivesInPasses(*modelOf({"d 0.5\n", "d 0.7\n", ""})), 3 * kOfSquare);
}

TEST_F(SurfacePassesTest, InvisibleMaterialsAreNotDrawn) {
    EXPECT_EQ(primitivesInPasses(*modelOf({"d 0\n", ""})), kOfSquare);
    EXPECT_EQ(primitivesInPasses(*modelOf({"d 0\n"})), 0);
}

TEST_F(SurfacePassesTest, OnlyTexturesWithTransparentTexelsAreDrawnTwice) {
    writeImage("opaque.png", Qt::red, QImage::Format_RGB32);
    writeImage("holes.png", QColor(0, 0, 255, 100), QImage::Format_ARGB32);
    EXPECT_EQ(primitivesInPasses(*modelOf({"map_Kd opaque.png\n", "map_Kd holes.png\n"})), 3 * kOfSquare);
    EXPECT_EQ(primitivesInPasses(*modelOf({"d 0.9\nmap_Kd holes.png\n"})), kOfSquare);
}

TEST_F(SurfacePassesTest, PictureIsTheSameForAnyMaterials) {
    writeImage("opaque.png", Qt::red, QImage::Format_RGB32);
    writeImage("holes.png", QColor(0, 0, 255, 100), QImage::Format_ARGB32);
    const QByteArray opacities[] = {"",           "d 0.4\n",   "d 0.9955\n", "d 0.996\n",
                                    "d 0.9965\n", "d 0.002\n", "d 0\n"};
    const QByteArray maps[] = {"", "map_Kd opaque.png\n", "map_Kd holes.png\n", "map_Kd none.png\n"};
    std::mt19937 random(20250405);
    const auto below = [&](std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
    };
    const MessageLog log; // of the missing texture
    for (int round = 0; round < 12; ++round) {
        std::vector<QByteArray> materials;
        for (int square = 0; square < 12; ++square)
            materials.push_back(opacities[below(std::size(opacities))] + maps[below(std::size(maps))]);
        EXPECT_LT(primitivesInPasses(*modelOf(materials)), 2 * 12 * kOfSquare);
    }
}

} // namespace Atelier::Vel::Testing
