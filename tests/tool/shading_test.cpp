// The colour of single pixels, compared with the formulas of the shading.

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <gmock/gmock.h>

#include "picturecomparison.h"
#include "quadmodel.h"
#include "rendererfixture.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr int kCells = 14;      // in a row and in a column
constexpr int kCellPixels = 11; // odd, so that a pixel lies in the middle
constexpr int kSide = kCells * kCellPixels;
constexpr double kTangent = 0.6; // of half the field of view
constexpr double kNear = 0.5;
constexpr double kFar = 20;

// Rounding to bytes loses half a step. Layers have half-precision floats.
constexpr double kTolerance = 0.75;

/// The surfaces in the middle of one cell, in the order of drawing.
using Cell = std::vector<Fragment>;

/// A placement without values that could hide an error.
Placement oddPlacement() {
    Placement result;
    result.camera.centre = {3, -5, 7};
    result.camera.scale = 0.25F;
    result.camera.view.rotate(40, 1, 2, -1);
    result.camera.view.translate(0.5F, 1, -2);
    result.camera.projection.frustum(-float(kTangent * kNear), float(kTangent * kNear),
                                     -float(kTangent * kNear), float(kTangent * kNear), float(kNear),
                                     float(kFar));
    result.model.translate(1, 2, 3);
    result.model.rotate(-70, 0, 1, 1);
    result.model.scale(2, 3, 0.5F);
    result.normals.rotate(115, 3, 1, 0);
    result.normals.scale(0.7F, 1.2F, 1.5F);
    return result;
}

double inPicture(int cell) {
    return (2.0 * cell + 1) / kCells - 1;
}

class ShadingTest : public RendererFixture {
protected:
    ShadingTest() : _random(20250117) {}

    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(_random);
    }
    int oneOf(int count) { return std::uniform_int_distribution<int>(0, count - 1)(_random); }
    Triple colour(double low, double high) {
        return {between(low, high), between(low, high), between(low, high)};
    }
    QColor texel() { return {oneOf(256), oneOf(256), oneOf(256)}; }

    // Seen from the front or the back, never from the edge.
    Triple planeFacing(const Triple& position) {
        const double size = std::hypot(position.x, position.y, position.z);
        for (;;) {
            const Triple normal = colour(-1, 1);
            const double length = std::hypot(normal.x, normal.y, normal.z);
            const double along = (normal.x * position.x + normal.y * position.y + normal.z * position.z);
            if (std::abs(along) > 0.6 * length * size)
                return normal;
        }
    }

    /// A surface at `distance` in front of the camera, with an independent plane and normal.
    Fragment surface(int column, int row, double distance) {
        Fragment result;
        result.position = {inPicture(column) * kTangent * distance, inPicture(row) * kTangent * distance,
                           -distance};
        result.flatNormal = planeFacing(result.position);
        result.normal = colour(-2, 2);
        result.depth = windowDepth(_placement.camera.projection, result.position);
        return result;
    }

    /// One cell after the other, row by row from below; `make` gets the column and the row.
    template<typename Make>
    static std::vector<Cell> cells(Make make) {
        std::vector<Cell> result;
        for (int row = 0; row < kCells; ++row)
            for (int column = 0; column < kCells; ++column)
                result.push_back(make(column, row));
        return result;
    }

    std::unique_ptr<GPUModel> modelOf(const std::vector<Cell>& cells) const {
        std::vector<Quad> quads;
        for (const Cell& cell : cells)
            for (const Fragment& fragment : cell)
                quads.push_back(
                    {fragment, _halfSide > 0 ? _halfSide : -fragment.position.z * kTangent * 0.7 / kCells});
        return quadModel(quads, _placement);
    }

    QImage drawn(const std::vector<Cell>& cells, const QColor& background, bool isWireframe = false) {
        const std::unique_ptr<GPUModel> model = modelOf(cells);
        Tool::Scene scene = _look;
        scene.camera = _placement.camera;
        scene.size = {kSide, kSide};
        scene.background = background;
        scene.wireframe = isWireframe;
        return rendered(*model, scene);
    }

    static QRgb middleOf(const QImage& picture, std::size_t cell) {
        const int column = int(cell) % kCells;
        const int row = kCells - 1 - int(cell) / kCells;
        return picture.pixel(column * kCellPixels + kCellPixels / 2, row * kCellPixels + kCellPixels / 2);
    }

    static void expectPixel(QRgb actual, const Pixel& expected) {
        EXPECT_NEAR(qRed(actual), expected[0], kTolerance);
        EXPECT_NEAR(qGreen(actual), expected[1], kTolerance);
        EXPECT_NEAR(qBlue(actual), expected[2], kTolerance);
        EXPECT_NEAR(qAlpha(actual), expected[3], kTolerance);
    }

    /// Draws the cells and compares the pixels in their middles.
    void expectLiteralColours(const std::vector<Cell>& cells, const QColor& background) {
        const QImage picture = drawn(cells, background);
        for (std::size_t cell = 0; cell < cells.size(); ++cell) {
            SCOPED_TRACE("cell " + std::to_string(cell));
            expectPixel(middleOf(picture, cell), composed(cells[cell], background));
        }
    }

    /// One surface in each cell; `change` gives it its material.
    template<typename Change>
    std::vector<Cell> surfaces(Change change) {
        return cells([&](int column, int row) {
            Fragment fragment = surface(column, row, between(1, 10));
            change(fragment);
            return Cell{fragment};
        });
    }

    /// A normal that reflects the light from `direction` to the eye, or nearly so.
    Triple mirroring(const Fragment& fragment, const Triple& direction) {
        const Triple& p = fragment.position;
        const double size = std::hypot(p.x, p.y, p.z);
        const double length = std::hypot(direction.x, direction.y, direction.z);
        return {direction.x / length - p.x / size + between(-0.2, 0.2),
                direction.y / length - p.y / size + between(-0.2, 0.2),
                direction.z / length - p.z / size + between(-0.2, 0.2)};
    }

    Fragment shiny(Fragment fragment) {
        constexpr double kExponents[] = {0.5, 0.99, 1, 1.5, 3, 10, 60, 300};
        fragment.specular = colour(0, 1.2);
        fragment.exponent = kExponents[oneOf(8)];
        const Triple direction = oneOf(2) == 0 ? Triple{-0.45, 0.65, 0.75} : Triple{0.7, -0.1, 0.5};
        fragment.normal = oneOf(3) == 0 ? fragment.normal : mirroring(fragment, direction);
        return fragment;
    }

    /// A wall or a pane, dull or shiny.
    Fragment anything(int column, int row, double distance) {
        Fragment fragment = surface(column, row, distance);
        fragment.diffuse = colour(0, 1);
        if (oneOf(2) == 0)
            fragment = shiny(fragment);
        fragment.opacity = oneOf(4) == 0 ? 1 : between(0.05, 0.9);
        return fragment;
    }

    /// Up to four surfaces in each cell, at distances with different depths and weights.
    std::vector<Cell> layers() {
        return cells([this](int column, int row) {
            constexpr double kDistances[] = {0.55, 0.8, 1.3, 3, 9, 15, 19.9};
            Cell cell;
            for (const double distance : kDistances)
                if (cell.size() < 4 && oneOf(2) == 0)
                    cell.push_back(anything(column, row, distance));
            std::shuffle(cell.begin(), cell.end(), _random);
            return cell;
        });
    }

    Placement _placement = oddPlacement();
    Tool::Scene _look;    // colours and exposure
    double _halfSide = 0; // of the surfaces; 0 for one that fits a cell in perspective

private:
    std::mt19937 _random;
};

} // namespace

TEST_F(ShadingTest, DullSurfacesAreLitBySkyGroundAndTwoLamps) {
    expectLiteralColours(surfaces([this](Fragment& fragment) { fragment.diffuse = colour(0, 1); }),
                         Qt::black);
}

TEST_F(ShadingTest, ColoursOfMaterialsAndTexturesAreDecodedAndMultiplied) {
    expectLiteralColours(surfaces([this](Fragment& fragment) {
                             // Dark texels under bright colours test the start of the curve.
                             const bool isDark = oneOf(2) == 0;
                             fragment.diffuse = colour(-0.1, isDark ? 12 : 1);
                             fragment.hasMap = true;
                             fragment.map = isDark ? QColor(oneOf(14), oneOf(14), oneOf(14)) : texel();
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, TextureReplacesABlackColourOnly) {
    expectLiteralColours(surfaces([this](Fragment& fragment) {
                             fragment.diffuse = oneOf(2) == 0 ? Triple() : Triple{0.0, 0.0, between(0, 1)};
                             fragment.hasMap = oneOf(2) == 0;
                             fragment.map = fragment.hasMap ? texel() : QColor(Qt::white);
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, InvalidNormalsAreReplacedByTriangleNormals) {
    expectLiteralColours(surfaces([this](Fragment& fragment) {
                             const double inf = std::numeric_limits<double>::infinity();
                             const double nan = std::numeric_limits<double>::quiet_NaN();
                             const Triple normals[] = {
                                 {},           {inf, inf, inf}, {nan, nan, nan},    {5e-7, 0, 0},
                                 {0, 0, 2e-6}, {3e30, 0, 0},    {1e15, -1e15, 1e15}};
                             fragment.normal = normals[oneOf(7)];
                             fragment.diffuse = colour(0, 1);
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, NormalsNearTheirPlaneAreBlendedWithItsNormal) {
    expectLiteralColours(surfaces([this](Fragment& fragment) {
                             const Triple& f = fragment.flatNormal;
                             const double size = std::hypot(f.x, f.y, f.z);
                             const QVector3D flat(float(f.x / size), float(f.y / size), float(f.z / size));
                             const QVector3D other(float(between(-1, 1)), float(between(-1, 1)), 2);
                             const QVector3D aside = QVector3D::crossProduct(flat, other).normalized();
                             const QVector3D normal = aside + float(between(-0.2, 0.2)) * flat;
                             fragment.normal = {normal.x(), normal.y(), normal.z()};
                             fragment.diffuse = colour(0, 1);
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, ShinySurfacesHaveHighlights) {
    expectLiteralColours(surfaces([this](Fragment& fragment) {
                             fragment = shiny(fragment);
                             fragment.diffuse = colour(0, 0.3);
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, HighlightsFollowTheirTextures) {
    expectLiteralColours(surfaces([this](Fragment& fragment) {
                             fragment = shiny(fragment);
                             fragment.specularMap = texel();
                             fragment.exponentMap = oneOf(256) / 255.0;
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, NegativeExponentsGiveNoHighlight) {
    expectLiteralColours(surfaces([this](Fragment& fragment) {
                             fragment = shiny(fragment);
                             fragment.exponent = -fragment.exponent;
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, OpacityCombinesMaterialAndTexture) {
    const std::vector<Cell> panes = surfaces([this](Fragment& fragment) {
        fragment.diffuse = colour(0, 1);
        fragment.opacity = between(-0.2, 1.3);
        fragment.hasMap = oneOf(2) == 0;
        if (fragment.hasMap)
            fragment.map = QColor(oneOf(256), oneOf(256), oneOf(256), oneOf(256));
    });
    expectLiteralColours(panes, QColor());
    expectLiteralColours(panes, QColor(250, 120, 10));
}

TEST_F(ShadingTest, OpacityOf996ThousandthsIsOpaqueAndOf2ThousandthsVisible) {
    std::vector<Cell> cells;
    for (const double opacity : {0.9959, 0.996, 0.9961, 0.0019, 0.002, 0.0021}) {
        Fragment fragment = surface(int(cells.size()), 0, 2);
        fragment.diffuse = {1, 1, 1};
        fragment.opacity = opacity;
        const Triple& p = fragment.position;
        fragment.flatNormal = {-p.x, -p.y, -p.z}; // edges of glass hide more
        fragment.normal = fragment.flatNormal;
        cells.push_back({fragment});
    }
    const QImage picture = drawn(cells, QColor());
    EXPECT_EQ(qAlpha(middleOf(picture, 0)), 254) << "glass";
    EXPECT_EQ(qAlpha(middleOf(picture, 1)), 255) << "opaque";
    EXPECT_EQ(qAlpha(middleOf(picture, 2)), 255) << "opaque";
    EXPECT_EQ(middleOf(picture, 3), qRgba(0, 0, 0, 0)) << "not drawn";
    EXPECT_EQ(qAlpha(middleOf(picture, 4)), 1) << "glass";
    EXPECT_EQ(qAlpha(middleOf(picture, 5)), 1) << "glass";
}

TEST_F(ShadingTest, ShinyGlassHidesMoreTheBrighterItIs) {
    const std::vector<Cell> panes = surfaces([this](Fragment& fragment) {
        fragment = shiny(fragment);
        if (oneOf(4) == 0)
            fragment.specular = colour(2, 4);
        fragment.diffuse = colour(0, 1.5);
        fragment.opacity = between(0.1, 0.9);
    });
    expectLiteralColours(panes, QColor());
    expectLiteralColours(panes, QColor(10, 200, 90));
}

TEST_F(ShadingTest, FaintTexturesOnLayersCountLittle) {
    std::vector<Cell> cells = layers();
    for (Cell& cell : cells)
        for (Fragment& fragment : cell) {
            constexpr int kOpacities[] = {0, 2, 5, 10, 20, 40, 150, 255};
            fragment.hasMap = true;
            fragment.map = QColor(oneOf(256), oneOf(256), oneOf(256), kOpacities[oneOf(8)]);
        }
    expectLiteralColours(cells, QColor(20, 60, 220));
}

TEST_F(ShadingTest, LayersOfGlassAreAveragedByTheirDepth) {
    const std::vector<Cell> cells = layers();
    expectLiteralColours(cells, QColor(20, 60, 220));
    expectLiteralColours(cells, QColor());
}

TEST_F(ShadingTest, TwoPanesLookTheSameInBothOrders) {
    std::vector<Cell> cells = this->cells([this](int column, int row) {
        return Cell{anything(column, row, between(0.6, 1)), anything(column, row, between(2, 15))};
    });
    const QImage picture = drawn(cells, QColor(20, 60, 220));
    for (Cell& cell : cells)
        std::swap(cell[0], cell[1]);
    const QImage swapped = drawn(cells, QColor(20, 60, 220));
    int apart = 0;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            apart = std::max(apart, largestStep(picture.pixel(x, y), swapped.pixel(x, y)));
    EXPECT_LE(apart, 1) << "exceeds the error of a sum of two half-precision floats";
}

TEST_F(ShadingTest, LinearColoursAreNotDecoded) {
    _look.colours = Tool::MaterialColours::Linear;
    expectLiteralColours(surfaces([this](Fragment& fragment) {
                             fragment = shiny(fragment);
                             fragment.diffuse = colour(-0.1, 1);
                             fragment.hasMap = oneOf(2) == 0;
                             fragment.map = fragment.hasMap ? texel() : QColor(Qt::white);
                             fragment.isLinear = true;
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, ExposureMultipliesTheLightButNotTheOpacity) {
    for (const double stops : {-2.0, 0.5, 3.0}) {
        _look.exposure = stops;
        std::vector<Cell> cells = layers();
        for (Cell& cell : cells)
            for (Fragment& fragment : cell)
                fragment.exposure = stops;
        expectLiteralColours(cells, QColor(20, 60, 220));
        expectLiteralColours(cells, QColor());
    }
}

TEST_F(ShadingTest, WithoutColoursAllSurfacesAreOfOneGrey) {
    _look.colours = Tool::MaterialColours::None;
    std::vector<Cell> cells = surfaces([this](Fragment& fragment) {
        fragment.diffuse = colour(0, 1);
        fragment.hasMap = oneOf(2) == 0;
        fragment.map = fragment.hasMap ? texel() : QColor(Qt::white);
    });
    const QImage picture = drawn(cells, Qt::black);
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        Fragment& fragment = cells[cell].front();
        fragment.hasMap = false;
        fragment.map = Qt::white;
        fragment.diffuse = {0.6, 0.6, 0.6};
        fragment.isLinear = true;
        expectPixel(middleOf(picture, cell), composed(cells[cell], Qt::black));
    }
}

TEST_F(ShadingTest, EmissionIsAddedToTheLight) {
    const auto glowing = [this](Fragment& fragment) {
        fragment.diffuse = colour(0, 0.5);
        fragment.emission = oneOf(3) == 0 ? Triple() : colour(-0.1, 0.6);
        fragment.hasEmissionMap = oneOf(2) == 0;
        fragment.emissionMap = fragment.hasEmissionMap ? texel() : QColor(Qt::white);
        fragment.opacity = oneOf(2) == 0 ? 1 : between(0.1, 0.9);
    };
    expectLiteralColours(surfaces(glowing), Qt::black);
    _look.colours = Tool::MaterialColours::Linear;
    expectLiteralColours(surfaces([&](Fragment& fragment) {
                             glowing(fragment);
                             fragment.isLinear = true;
                         }),
                         Qt::black);
}

TEST_F(ShadingTest, EyeIsInfinitelyFarWithoutPerspective) {
    _placement.camera.projection.setToIdentity();
    _placement.camera.projection.ortho(-6, 6, -6, 6, float(kNear), float(kFar));
    std::vector<Cell> cells = layers();
    for (std::size_t cell = 0; cell < cells.size(); ++cell)
        for (Fragment& fragment : cells[cell]) {
            Triple& place = fragment.position;
            place.x = 6 * inPicture(int(cell) % kCells);
            place.y = 6 * inPicture(int(cell) / kCells);
            const Triple facing = planeFacing({0, 0, 1});
            fragment.flatNormal = facing;
            fragment.depth = windowDepth(_placement.camera.projection, place);
            fragment.isParallel = true;
        }
    _halfSide = 0.25;
    expectLiteralColours(cells, QColor(20, 60, 220));
    expectLiteralColours(cells, QColor());
}

TEST_F(ShadingTest, WiresHaveHalfTheirColourAndNoHighlight) {
    Fragment fragment = surface(7, 7, 5);
    fragment.diffuse = {0.9, 0.6, 0.2};
    fragment.specular = {1, 1, 1};
    fragment.exponent = 1;
    fragment.normal = mirroring(fragment, {-0.45, 0.65, 0.75});
    const QImage picture = drawn({{fragment}}, QColor(), true);
    fragment.isWireframe = true;
    int covered = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (qAlpha(picture.pixel(x, y)) == 255) {
                ++covered;
                expectPixel(picture.pixel(x, y), composed({fragment}, QColor()));
            }
    EXPECT_GT(covered, 5);
}

TEST_F(ShadingTest, BackgroundIsTheColourToTheBit) {
    const std::unique_ptr<GPUModel> model = modelOf({{surface(0, 0, 2)}});
    for (int level = 0; level < 256; ++level) {
        const QColor background(level, 255 - level, level * 7 % 256);
        const QImage picture = rendered(*model, {_placement.camera, {4, 4}, background, false});
        EXPECT_EQ(picture.pixel(3, 0), background.rgb());
    }
}

} // namespace Atelier::Vel::Testing
