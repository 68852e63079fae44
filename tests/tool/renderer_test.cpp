// One renderer and the state that it leaves: its own, that of the next picture and that of the context.

#include "renderer.h"

#include <gmock/gmock.h>

#include <velgl/framebuffer.h>

#include "clientstate.h"
#include "glfaults.h"
#include "picturecomparison.h"
#include "picturetarget.h"
#include "quadmodel.h"
#include "rendererfixture.h"
#include "support/messagelog.h"
#include "watcheddriver.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::Each;
using testing::ElementsAre;

/// A rectangle of pixels, counted from the lower left of the picture.
struct Area {
    QRect pixels;
    QColor colour;
};

// Surfaces of one colour at right angles to the view: the light is the same everywhere.
Fragment look(const QColor& colour, double distance) {
    Fragment result;
    result.diffuse = {colour.redF(), colour.greenF(), colour.blueF()};
    result.opacity = colour.alphaF();
    result.position = {0, 0, -distance};
    result.flatNormal = {0, 0, 1};
    result.normal = {0, 0, 1};
    return result;
}

QRgb lit(const QColor& colour) {
    const Pixel pixel = composed({look(colour, 1)}, QColor());
    return qRgba(qRound(pixel[0]), qRound(pixel[1]), qRound(pixel[2]), qRound(pixel[3]));
}

// Squares of pixels without perspective.
Placement flatPlacement(QSize size) {
    Placement result;
    result.camera.projection.ortho(0, float(size.width()), 0, float(size.height()), 0, 10);
    return result;
}

Quad quadOver(const QRect& pixels, const QColor& colour, double distance = 1) {
    EXPECT_EQ(pixels.width(), pixels.height());
    Quad quad{look(colour, distance), pixels.width() / 2.0};
    quad.look.position.x = pixels.x() + pixels.width() / 2.0;
    quad.look.position.y = pixels.y() + pixels.height() / 2.0;
    return quad;
}

std::unique_ptr<GPUModel> modelOf(const std::vector<Area>& areas) {
    std::vector<Quad> quads;
    for (const Area& area : areas)
        quads.push_back(quadOver(area.pixels, area.colour));
    return quadModel(quads, Placement());
}

QColor colourOf(int column, int row) {
    return {40 + 53 * column % 200, 40 + 29 * row % 200, 40 + 31 * (column + row) % 200};
}

class RendererTest : public RendererFixture {
protected:
    static Tool::Scene scene(QSize size) { return {flatPlacement(size).camera, size, QColor(), false}; }

    QImage drawn(const std::vector<Area>& areas, QSize size) {
        return rendered(*modelOf(areas), scene(size));
    }

    // Possible borders of tiles, and the first pixel.
    static bool isMarked(int place) { return place % 2048 < 3 || place % 2048 >= 2045; }

    /// A row or a column of pixels; each marked pixel has its own colour.
    void expectMarksInTheirPlaces(QSize size, QPoint step) {
        const int length = std::max(size.width(), size.height());
        std::vector<Area> areas;
        for (int place = 0; place < length; ++place)
            if (isMarked(place))
                areas.push_back({QRect(step * place, QSize(1, 1)), colourOf(place, 1)});
        const QImage picture = drawn(areas, size);
        for (int place = 0; place < length; ++place) {
            const QRgb pixel = picture.pixel(place * step.x(), size.height() - 1 - place * step.y());
            const QRgb expected = isMarked(place) ? lit(colourOf(place, 1)) : 0U;
            ASSERT_LE(largestStep(pixel, expected), 1) << place << " of " << length;
        }
    }

    static void expectOneColour(const QImage& picture, const QRect& area, const QColor& colour) {
        const QRgb first = picture.pixel(area.topLeft());
        EXPECT_LE(largestStep(first, lit(colour)), 1);
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                ASSERT_EQ(picture.pixel(x, y), first) << x << ' ' << y;
    }
};

} // namespace

TEST_F(RendererTest, PictureOfSeveralTilesHasEveryPixelInItsPlace) {
    constexpr int kSide = 2400;
    constexpr int kCell = 100; // no divisor of a tile's side
    std::vector<Area> areas;
    for (int row = 0; row < kSide / kCell; ++row)
        for (int column = 0; column < kSide / kCell; ++column)
            areas.push_back({{column * kCell, row * kCell, kCell, kCell}, colourOf(column, row)});
    const QImage picture = drawn(areas, {kSide, kSide});
    ASSERT_EQ(picture.size(), QSize(kSide, kSide));
    for (int top = 0; top < kSide; top += kCell)
        for (int left = 0; left < kSide; left += kCell)
            expectOneColour(picture, {left, top, kCell, kCell},
                            colourOf(left / kCell, (kSide - 1 - top) / kCell));
}

TEST_F(RendererTest, EdgesOfTilesAreInvisibleInThePicture) {
    for (const int length : {2047, 2048, 2049, 4096, 4097}) {
        expectMarksInTheirPlaces({length, 1}, {1, 0});
        expectMarksInTheirPlaces({1, length}, {0, 1});
    }
}

TEST_F(RendererTest, FramesOfOneSizeShareTheirTarget) {
    WatchedDriver driver;
    for (int frame = 0; frame < 3; ++frame)
        drawn({{{0, 0, 1, 1}, Qt::red}}, {30, 20});
    EXPECT_EQ(driver.watch().framebuffersMade, 3) << "drawn, resolved and composed";
    drawn({{{0, 0, 1, 1}, Qt::red}}, {30, 21});
    EXPECT_EQ(driver.watch().framebuffersMade, 6);
    EXPECT_EQ(driver.watch().maxFramebuffersAlive, 3) << "one target is destroyed before the next is made";
}

TEST_F(RendererTest, TilesOfAWindowShareOneTarget) {
    const QSize size(150, 100);
    const auto model = modelOf({{{10, 20, 70, 70}, Qt::red}, {{100, 50, 40, 40}, Qt::blue}});
    const auto presented = [&](int tileSide) {
        Tool::Scene window = scene(size);
        window.background = Qt::white;
        window.tileSide = tileSide;
        Vel::Framebuffer::Options screenOptions;
        screenOptions.size = size;
        QString error;
        const auto screen = Vel::Framebuffer::create(screenOptions, error);
        screen->clear(Qt::green);
        EXPECT_TRUE(_renderer->present(
            model.get(), window, screen->name(), [](const QMatrix4x4&) {}, error));
        return screen->toImage(error);
    };
    const QImage whole = presented(2048);
    EXPECT_LE(largestStep(whole.pixel(30, 30), lit(Qt::red)), 1);
    EXPECT_EQ(whole.convertToFormat(QImage::Format_RGB32).pixelColor(0, 0), QColor(Qt::white));
    EXPECT_EQ(presented(64), whole);
    WatchedDriver driver;
    EXPECT_EQ(presented(64), whole);
    EXPECT_EQ(driver.watch().framebuffersMade, 1) << "the screen";
}

TEST_F(RendererTest, PicturesDoNotDependOnEarlierOnes) {
    struct Frame {
        std::vector<Area> areas;
        QSize size;
        QColor background;
        bool isWireframe;
    };
    const std::vector<Area> square = {{{5, 5, 20, 20}, Qt::red}};
    const std::vector<Area> glass = {{{0, 0, 20, 20}, QColor(0, 200, 50, 100)},
                                     {{10, 10, 9, 9}, QColor(90, 0, 250)}};
    const Frame frames[] = {{square, {40, 30}, QColor(), false},   {glass, {40, 30}, Qt::blue, false},
                            {square, {2060, 3}, QColor(), false},  {square, {40, 30}, QColor(), true},
                            {glass, {40, 30}, QColor(), false},    {{square}, {17, 50}, Qt::white, false},
                            {glass, {2060, 21}, Qt::green, false}, {square, {40, 30}, QColor(), false}};
    for (const Frame& frame : frames) {
        const std::unique_ptr<GPUModel> model = modelOf(frame.areas);
        const Tool::Scene scene{flatPlacement(frame.size).camera, frame.size, frame.background,
                                frame.isWireframe};
        const QImage used = rendered(*model, scene);
        QString error;
        const std::unique_ptr<Tool::Renderer> fresh = Tool::Renderer::create(error);
        EXPECT_EQ(used, fresh->render(*model, scene, error));
    }
}

TEST_F(RendererTest, EmptyPictureAfterAModelHasDrawnNothing) {
    EXPECT_FALSE(_renderer->hasDrawn()) << "no picture yet";
    drawn({{{0, 0, 1, 1}, Qt::red}}, {8, 8});
    EXPECT_TRUE(_renderer->hasDrawn());
    const QImage empty = drawn({{{20, 20, 5, 5}, Qt::red}}, {8, 8});
    EXPECT_FALSE(_renderer->hasDrawn());
    EXPECT_EQ(empty.pixel(0, 7), 0U);
    drawn({{{0, 0, 1, 1}, Qt::red}}, {8, 8});
    EXPECT_TRUE(_renderer->hasDrawn());
}

TEST_F(RendererTest, ModelInAnyTileIsDrawn) {
    for (const int place : {0, 2048, 4096}) {
        drawn({{{place, 0, 1, 1}, Qt::red}}, {4097, 1});
        EXPECT_TRUE(_renderer->hasDrawn()) << place;
    }
}

TEST_F(RendererTest, ProgressCountsTheTiles) {
    const std::unique_ptr<GPUModel> model = modelOf({{{0, 0, 1, 1}, Qt::red}});
    std::vector<std::pair<int, int>> steps;
    QString error;
    const auto record = [&](int done, int total) { steps.emplace_back(done, total); };
    EXPECT_FALSE(_renderer->render(*model, scene({2049, 2}), error, record).isNull());
    EXPECT_THAT(steps, ElementsAre(std::make_pair(1, 2), std::make_pair(2, 2)));
}

TEST_F(RendererTest, BrightnessIsThatOfTheModelInAllTiles) {
    drawn({{{0, 0, 2, 2}, Qt::white}, {{2049, 0, 1, 1}, Qt::black}}, {2050, 2});
    EXPECT_EQ(_renderer->brightness().shown, 5);
    EXPECT_EQ(_renderer->brightness().dark, 1);
    Tool::Scene onBlack = scene({4, 4});
    onBlack.background = Qt::black;
    const QImage picture = rendered(*modelOf({{{0, 0, 2, 2}, Qt::white}}), onBlack);
    EXPECT_EQ(_renderer->brightness().shown, 4);
    EXPECT_EQ(_renderer->brightness().dark, 0);
    EXPECT_EQ(picture.pixel(3, 0), QColor(Qt::black).rgba());
}

TEST_F(RendererTest, GlassAloneIsDrawn) {
    drawn({{{0, 0, 1, 1}, QColor(255, 0, 0, 30)}}, {2, 2});
    EXPECT_TRUE(_renderer->hasDrawn());
}

TEST_F(RendererTest, LastOfSeveralCoplanarSurfacesIsVisible) {
    const QImage picture = drawn({{{0, 0, 2, 2}, Qt::red}, {{0, 0, 2, 2}, Qt::blue}}, {2, 2});
    EXPECT_EQ(qRed(picture.pixel(0, 0)), 0);
    EXPECT_GT(qBlue(picture.pixel(0, 0)), 100);
}

TEST_F(RendererTest, GlassHidesNothingBehindIt) {
    const QSize size(2, 2);
    const Quad glass = quadOver({0, 0, 2, 2}, QColor(255, 0, 0, 128), 1);
    const Quad wall = quadOver({0, 0, 2, 2}, QColor(0, 0, 255), 5);
    for (const std::vector<Quad>& quads : {std::vector<Quad>{glass, wall}, std::vector<Quad>{wall, glass}}) {
        const QImage picture = rendered(*quadModel(quads, Placement()), scene(size));
        EXPECT_GT(qRed(picture.pixel(0, 0)), 60);
        EXPECT_GT(qBlue(picture.pixel(0, 0)), 60);
    }
}

TEST_F(RendererTest, EdgesOfSurfacesAreSmooth) {
    Quad quad = quadOver({1, 1, 6, 6}, Qt::red);
    quad.look.position.x += 0.5;
    const QImage picture = rendered(*quadModel({quad}, Placement()), scene({9, 8}));
    EXPECT_EQ(qAlpha(picture.pixel(4, 4)), 255);
    EXPECT_NEAR(qAlpha(picture.pixel(1, 4)), 128, 32) << "half a pixel is covered";
    EXPECT_NEAR(qAlpha(picture.pixel(7, 4)), 128, 32);
    EXPECT_LE(largestStep(picture.pixel(1, 4) | 0xFF000000, picture.pixel(4, 4)), 1) << "of the same colour";
}

TEST_F(RendererTest, EarlierStateOfTheContextChangesNoPicture) {
    const std::vector<Area> areas = {{{2, 2, 10, 10}, Qt::red}, {{4, 4, 20, 20}, QColor(0, 255, 0, 90)}};
    const QImage expected = drawn(areas, {33, 31});
    drawn({{{0, 0, 31, 31}, Qt::blue}}, {33, 31}); // nothing of the first picture remains
    glDisable(GL_MULTISAMPLE);
    glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_NEVER);
    glDepthMask(GL_FALSE);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_FRONT_AND_BACK);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ZERO, GL_ZERO);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);
    glPixelStorei(GL_PACK_ROW_LENGTH, 100);
    glViewport(1, 2, 3, 4);
    glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
    EXPECT_EQ(drawn(areas, {33, 31}), expected);
}

TEST_F(RendererTest, ContextIsLeftAsFound) {
    Tool::Scene wires = scene({8, 8});
    wires.wireframe = true;
    const std::unique_ptr<GPUModel> model = modelOf({{{0, 0, 4, 4}, QColor(0, 255, 0, 90)}});
    const BusyClient client;
    const BusyPainter painter;
    const ClientState before = ClientState::captured();
    rendered(*model, wires);
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
}

/// The numbers of objects of each kind in a context: names are small and reused.
std::vector<int> objectCounts() {
    std::vector<int> counts(5);
    for (GLuint name = 1; name < 1000; ++name) {
        counts[0] += glIsTexture(name);
        counts[1] += glIsFramebuffer(name);
        counts[2] += glIsRenderbuffer(name);
        counts[3] += glIsQuery(name);
        counts[4] += glIsVertexArray(name);
    }
    return counts;
}

TEST_F(RendererTest, NothingIsLeftInTheContext) {
    const std::unique_ptr<GPUModel> model = modelOf({{{0, 0, 1, 1}, Qt::red}});
    rendered(*model, scene({4, 4}));
    _renderer.reset();
    const std::vector<int> before = objectCounts();
    QString error;
    _renderer = Tool::Renderer::create(error);
    rendered(*model, scene({4, 4}));
    const std::vector<int> during = objectCounts();
    EXPECT_THAT(during, ElementsAre(before[0] + 4, before[1] + 3, before[2] + 4, before[3], before[4]))
        << "textures of three colours and the picture, three framebuffers, three colours and depths with "
           "samples";
    for (const int side : {3, 5, 9})
        rendered(*model, scene({side, side}));
    EXPECT_EQ(objectCounts(), during);
    _renderer.reset();
    EXPECT_EQ(objectCounts(), before);
}

TEST_F(RendererTest, RefusedProgramIsReportedAsTheCause) {
    glDisable(GL_DEBUG_OUTPUT);
    {
        const FaultyDriver driver(GLFault::NoPrograms);
        QString errors[2];
        EXPECT_EQ(Tool::Renderer::create(errors[0]), nullptr);
        EXPECT_EQ(Tool::PictureTarget::create({4, 4}, errors[1]), nullptr);
        EXPECT_THAT(errors, Each(testing::Property(&QString::toStdString, testing::StartsWith("Linking: "))));
    }
    while (glGetError() != GL_NO_ERROR) {
    }
    glEnable(GL_DEBUG_OUTPUT);
}

TEST_F(RendererTest, TooLargePictureIsReportedAsTheCause) {
    const std::unique_ptr<GPUModel> model = modelOf({{{0, 0, 1, 1}, Qt::red}});
    QString error;
    // Refused before the allocation, which would fail under a sanitizer.
    EXPECT_TRUE(_renderer->render(*model, scene({1 << 30, 1}), error).isNull());
    EXPECT_EQ(error, "there is no memory for the picture");
}

TEST_F(RendererTest, RefusedTargetIsReportedAsTheCauseAndRetried) {
    const std::unique_ptr<GPUModel> model = modelOf({{{0, 0, 1, 1}, Qt::red}});
    WatchedDriver driver;
    for (const int refused : {0, 1, 2}) {
        driver.watch().checksUntilIncomplete = refused;
        QString error;
        EXPECT_TRUE(_renderer->render(*model, scene({31, 17}), error).isNull());
        EXPECT_EQ(error, "it cannot hold a picture of 31 x 17 pixels");
        driver.watch().checksUntilIncomplete = -1;
        EXPECT_FALSE(_renderer->render(*model, scene({31, 17}), error).isNull());
        rendered(*model, scene({2, 2}));
    }
}

struct SampleLimit {
    int supported;
    int used;
};

class SamplesOfPicturesTest : public RendererTest, public testing::WithParamInterface<SampleLimit> {};

TEST_P(SamplesOfPicturesTest, AreTheMaximumOfTheDriverUpToEight) {
    WatchedDriver driver;
    driver.watch().sampleLimit = GetParam().supported;
    QString error;
    EXPECT_NE(Tool::PictureTarget::create({4, 4}, error), nullptr) << error.toStdString();
    const int used = GetParam().used;
    EXPECT_THAT(driver.watch().samples, ElementsAre(used, used, used, used)) << "three colours and depths";
}

INSTANTIATE_TEST_SUITE_P(Limits, SamplesOfPicturesTest,
                         testing::Values(SampleLimit{32, 8}, SampleLimit{8, 8}, SampleLimit{4, 4},
                                         SampleLimit{1, 1}, SampleLimit{-1, 1}));

} // namespace Atelier::Vel::Testing
