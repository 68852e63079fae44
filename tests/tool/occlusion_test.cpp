// Ambient occlusion: where it darkens, and that tiles do not show in it.

#include <random>

#include <gmock/gmock.h>

#include "picturecomparison.h"
#include "quadmodel.h"
#include "rendererfixture.h"
#include "support/messagelog.h"
#include "watcheddriver.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr double kGround = 9;

class OcclusionTest : public RendererFixture {
protected:
    // A square at right angles to the view, in whole pixels from the lower left.
    static Quad square(int left, int bottom, int side, double distance, const Triple& colour) {
        Quad quad;
        quad.halfSide = side / 2.0;
        quad.look.diffuse = colour;
        quad.look.position = {left + side / 2.0, bottom + side / 2.0, -distance};
        quad.look.normal = {0, 0, 1};
        quad.look.flatNormal = {0, 0, 1};
        return quad;
    }
    static Tool::Scene scene(QSize size) {
        Tool::Scene scene;
        // Depths as large as pixels, and no perspective: the radius is the same everywhere.
        scene.camera.projection.ortho(0, float(size.width()), 0, float(size.height()), 0, 10);
        scene.size = size;
        scene.ambientOcclusion = true;
        return scene;
    }
    // Towers of whole pixels over a ground.
    static std::unique_ptr<GPUModel> towers(QSize size, int count) {
        std::mt19937 random(11);
        const auto number = [&](int low, int high) {
            return std::uniform_int_distribution<int>(low, high)(random);
        };
        const int longer = std::max(size.width(), size.height());
        std::vector<Quad> quads = {square(0, 0, longer, kGround, {0.8, 0.8, 0.8})};
        for (int tower = 0; tower < count; ++tower)
            quads.push_back(square(number(-10, size.width()), number(-10, size.height()), number(3, 40),
                                   number(1, 32) / 4.0, {number(2, 9) / 10.0, number(2, 9) / 10.0, 0.5}));
        return quadModel(quads, Placement());
    }
    QImage inTiles(GPUModel& model, Tool::Scene scene, int side) {
        scene.tileSide = side;
        return rendered(model, scene);
    }
    static int changedPixels(const QImage& a, const QImage& b) {
        int changed = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x)
                changed += a.pixel(x, y) != b.pixel(x, y) ? 1 : 0;
        return changed;
    }
};

} // namespace

TEST_F(OcclusionTest, PictureEqualsItsTilesByteForByte) {
    const QSize size(300, 211);
    const std::unique_ptr<GPUModel> model = towers(size, 150);
    const QImage whole = inTiles(*model, scene(size), 2048);
    for (const int side : {200, 64, 37})
        EXPECT_EQ(inTiles(*model, scene(size), side), whole) << side;
    Tool::Scene plain = scene(size);
    plain.ambientOcclusion = false;
    EXPECT_GT(changedPixels(whole, rendered(*model, plain)), size.width() * size.height() / 4);
}

TEST_F(OcclusionTest, LargePictureEqualsItsTilesByteForByte) {
    const QSize size(4096, 96);
    const std::unique_ptr<GPUModel> model = towers(size, 400);
    EXPECT_EQ(Tool::Scene().tileSide, 2048);
    const QImage picture = rendered(*model, scene(size));
    EXPECT_EQ(inTiles(*model, scene(size), 4096), picture);
    EXPECT_EQ(inTiles(*model, scene(size), 500), picture);
}

TEST_F(OcclusionTest, GroundDarkensTowardsAWall) {
    const QSize size(240, 120); // a radius of ten pixels
    const Triple grey = {0.7, 0.7, 0.7};
    const std::unique_ptr<GPUModel> model =
        quadModel({square(0, 0, 240, kGround, grey), square(0, 0, 120, kGround - 3, grey)}, Placement());
    const QImage picture = rendered(*model, scene(size));
    Tool::Scene plain = scene(size);
    plain.ambientOcclusion = false;
    const QRgb unoccluded = rendered(*model, plain).pixel(200, 60);
    EXPECT_EQ(picture.pixel(200, 60), unoccluded) << "nothing is near";
    EXPECT_EQ(picture.pixel(133, 60), unoccluded) << "the wall is out of reach";
    EXPECT_EQ(picture.pixel(60, 60), unoccluded) << "the ground is below";
    EXPECT_EQ(picture.pixel(119, 60), unoccluded) << "the edge of the wall";
    EXPECT_LT(qRed(picture.pixel(120, 60)), qRed(unoccluded) - 20) << "the foot of the wall";
    for (int x = 122; x < 133; ++x)
        EXPECT_LE(qRed(picture.pixel(x, 60)), qRed(picture.pixel(x + 1, 60))) << x;
}

TEST_F(OcclusionTest, RadiusGrowsWithThePicture) {
    for (const int scale : {1, 4}) {
        const QSize size(240 * scale, 120 * scale);
        const Triple grey = {0.7, 0.7, 0.7};
        const Quad wall = square(0, 0, 120 * scale, 7 * scale, grey);
        const std::unique_ptr<GPUModel> model =
            quadModel({square(0, 0, 240 * scale, 10 * scale, grey), wall}, Placement());
        Tool::Scene look = scene(size);
        look.camera.projection.setToIdentity();
        look.camera.projection.ortho(0, float(size.width()), 0, float(size.height()), 0, float(11 * scale));
        const QImage picture = rendered(*model, look);
        EXPECT_LT(qRed(picture.pixel(124 * scale, 60 * scale)),
                  qRed(picture.pixel(200 * scale, 60 * scale)) - 1)
            << scale;
        EXPECT_EQ(picture.pixel(133 * scale, 60 * scale), picture.pixel(200 * scale, 60 * scale)) << scale;
    }
}

TEST_F(OcclusionTest, EmissionAndHighlightsAreNotDarkened) {
    const QSize size(240, 120);
    Quad ground = square(0, 0, 240, kGround, {});
    ground.look.emission = {0.5, 0.5, 0.5};
    ground.look.specular = {0.5, 0.5, 0.5};
    ground.look.exponent = 10;
    const std::unique_ptr<GPUModel> model = quadModel({ground, square(0, 0, 120, 1, {1, 1, 1})}, Placement());
    const QImage picture = rendered(*model, scene(size));
    EXPECT_EQ(picture.pixel(120, 60), picture.pixel(200, 60));
}

TEST_F(OcclusionTest, GlassAndHolesDarkenNothing) {
    const QSize size(240, 120);
    const Triple grey = {0.7, 0.7, 0.7};
    Quad pane = square(0, 0, 120, 1, grey);
    pane.look.opacity = 0.5;
    const std::unique_ptr<GPUModel> model = quadModel({square(0, 0, 240, kGround, grey), pane}, Placement());
    const QImage picture = rendered(*model, scene(size));
    EXPECT_EQ(picture.pixel(121, 60), picture.pixel(200, 60));
}

TEST_F(OcclusionTest, GlassInFrontOfACornerIsNotDarkened) {
    const QSize size(240, 120);
    Quad pane = square(0, 0, 240, 1, {0.9, 0.9, 0.9});
    pane.look.opacity = 0.6;
    const std::unique_ptr<GPUModel> model =
        quadModel({square(0, 0, 240, kGround, {}), square(0, 0, 120, kGround - 3, {}), pane}, Placement());
    Tool::Scene plain = scene(size);
    plain.ambientOcclusion = false;
    EXPECT_EQ(rendered(*model, scene(size)), rendered(*model, plain)) << "black is as dark as it was";
}

TEST_F(OcclusionTest, WiresAreNotDarkened) {
    const QSize size(64, 64);
    const std::unique_ptr<GPUModel> model = towers(size, 20);
    Tool::Scene wires = scene(size);
    wires.wireframe = true;
    Tool::Scene plain = wires;
    plain.ambientOcclusion = false;
    EXPECT_EQ(rendered(*model, wires), rendered(*model, plain));
}

TEST_F(OcclusionTest, PicturesDoNotDependOnEarlierOnes) {
    const std::unique_ptr<GPUModel> model = towers({64, 64}, 20);
    for (const QSize size : {QSize(64, 64), QSize(40, 64), QSize(64, 64)}) {
        Tool::Scene plain = scene(size);
        plain.ambientOcclusion = false;
        QString error;
        const std::unique_ptr<Tool::Renderer> fresh = Tool::Renderer::create(error);
        EXPECT_EQ(rendered(*model, scene(size)), fresh->render(*model, scene(size), error));
        EXPECT_EQ(rendered(*model, plain), fresh->render(*model, plain, error));
    }
}

TEST_F(OcclusionTest, RoundSurfacesHaveNoShadesOnThemselves) {
    // A bent strip of facets that bulges towards the camera.
    std::vector<Quad> quads;
    constexpr int kFacets = 16;
    for (int facet = 0; facet < kFacets; ++facet) {
        const double angle = (facet + 0.5) / kFacets * 3.14159265 - 3.14159265 / 2;
        Quad quad;
        quad.halfSide = 10;
        quad.look.diffuse = {0.7, 0.7, 0.7};
        quad.look.position = {120 + 100 * std::sin(angle), 60, -110 + 100 * std::cos(angle)};
        quad.look.flatNormal = {std::sin(angle), 0, std::cos(angle)};
        quad.look.normal = quad.look.flatNormal;
        quads.push_back(quad);
    }
    const std::unique_ptr<GPUModel> model = quadModel(quads, Placement());
    Tool::Scene look = scene({240, 120});
    look.camera.projection.setToIdentity();
    look.camera.projection.ortho(0, 240, 0, 120, 0, 200);
    Tool::Scene plain = look;
    plain.ambientOcclusion = false;
    EXPECT_EQ(rendered(*model, look), rendered(*model, plain));
}

} // namespace Atelier::Vel::Testing
