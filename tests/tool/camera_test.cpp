#include "camera.h"

#include <cmath>

#include <gmock/gmock.h>

#include "modelpoints.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

using testing::FloatNear;

constexpr float kTolerance = 1e-5F;

GPUModel::Bounds box(const QVector3D& minimum, const QVector3D& maximum) {
    return {minimum, maximum, true};
}

CameraOptions looking(const QString& up, double azimuth, double elevation) {
    CameraOptions options;
    options.up = up;
    options.azimuth = azimuth;
    options.elevation = elevation;
    return options;
}

void expectVector(const QVector3D& actual, const QVector3D& expected) {
    EXPECT_NEAR(actual.x(), expected.x(), kTolerance);
    EXPECT_NEAR(actual.y(), expected.y(), kTolerance);
    EXPECT_NEAR(actual.z(), expected.z(), kTolerance);
}

QVector<Camera> framed(const GPUModel::Bounds& bounds, const CameraOptions& options,
                       const QVector<double>& azimuths = {30}, QSize size = {400, 300}) {
    return framingCameras(bounds, cornersOf(bounds), options, azimuths, size);
}

// The corners of the box in the picture, from -1 to 1 when they are inside.
QVector<QVector3D> cornersInPicture(const GPUModel::Bounds& bounds, const Camera& camera) {
    QVector<QVector3D> corners;
    for (const QVector3D& corner : cornersOf(bounds))
        corners.append((camera.projection * camera.view).map((corner - camera.centre) * camera.scale));
    return corners;
}

float largestOffset(const QVector<QVector3D>& corners) {
    float largest = 0;
    for (const QVector3D& corner : corners)
        largest = std::max({largest, std::abs(corner.x()), std::abs(corner.y())});
    return largest;
}

TEST(CameraTest, FrontOfAYUpModelIsPositiveZ) {
    const Orientation front = orientation(looking("+Y", 0, 0));
    expectVector(front.back, {0, 0, 1});
    expectVector(front.up, {0, 1, 0});
    expectVector(front.right, {1, 0, 0});
}

TEST(CameraTest, FrontOfAZUpModelIsNegativeY) {
    const Orientation front = orientation(looking("+Z", 0, 0));
    expectVector(front.back, {0, -1, 0});
    expectVector(front.up, {0, 0, 1});
    expectVector(front.right, {1, 0, 0});
}

TEST(CameraTest, AzimuthMovesTheCameraToTheRight) {
    expectVector(orientation(looking("+Y", 90, 0)).back, {1, 0, 0});
}

TEST(CameraTest, ElevationMovesTheCameraUp) {
    expectVector(orientation(looking("+Y", 0, 90)).back, {0, 1, 0});
    expectVector(orientation(looking("+Y", 0, 90)).up, {0, 0, -1});
}

TEST(CameraTest, EveryUpDirectionPointsUpInThePicture) {
    const QVector3D axes[] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    for (int n = 0; n < 6; ++n) {
        const Orientation level = orientation(looking(upDirections()[n], 37, 0));
        expectVector(level.up, axes[n]);
        expectVector(QVector3D::crossProduct(level.right, level.up), level.back);
        EXPECT_NEAR(level.back.length(), 1, kTolerance);
    }
}

struct Framing {
    GPUModel::Bounds bounds;
    QSize size;
};

class FramingTest : public testing::TestWithParam<Framing> {};

TEST_P(FramingTest, HasTheWholeModelInThePictureAndFillsIt) {
    const Framing& framing = GetParam();
    for (const QString& up : upDirections())
        for (const double elevation : {-90.0, -20.0, 0.0, 20.0, 90.0}) {
            const CameraOptions options = looking(up, 30, elevation);
            const Camera camera = framed(framing.bounds, options, {30}, framing.size).first();
            const QVector<QVector3D> corners = cornersInPicture(framing.bounds, camera);
            EXPECT_LE(largestOffset(corners), 1.0F);
            EXPECT_GE(largestOffset(corners), 0.95F);
            for (const QVector3D& corner : corners)
                EXPECT_LT(std::abs(corner.z()), 1.0F);
        }
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, FramingTest,
    testing::Values(Framing{box({-1, -1, -1}, {1, 1, 1}), {1280, 720}},
                    Framing{box({-1, -1, -1}, {1, 1, 1}), {100, 900}},
                    Framing{box({8000, 8000, 8000}, {8010, 8005, 8002}), {640, 480}},
                    Framing{box({-50, 0, -1}, {50, 0.5, 1}), {640, 480}},
                    Framing{box({1e-20F, 1e-20F, 1e-20F}, {3e-20F, 3e-20F, 3e-20F}), {64, 64}},
                    Framing{box({-1e37F, -1e37F, -1e37F}, {1e37F, 1e37F, 1e37F}), {64, 64}}));

TEST(CameraTest, FlatModelSeenFromItsEdgeIsFramed) {
    const GPUModel::Bounds flat = box({-1, 0, -1}, {1, 0, 1});
    const Camera camera = framed(flat, looking("+Y", 0, 0), {0}).first();
    EXPECT_LE(largestOffset(cornersInPicture(flat, camera)), 1.0F);
}

TEST(CameraTest, ModelOfOnePointIsInTheMiddle) {
    const GPUModel::Bounds point = box({3, 4, 5}, {3, 4, 5});
    const Camera camera = framed(point, {}).first();
    EXPECT_THAT(largestOffset(cornersInPicture(point, camera)), FloatNear(0, kTolerance));
}

TEST(CameraTest, LargestFloatsGiveFiniteNumbers) {
    const float most = std::numeric_limits<float>::max();
    const Camera camera = framed(box({-most, -1, -1}, {most, 1, 1}), {}).first();
    EXPECT_TRUE(std::isfinite(camera.centre.x()));
    EXPECT_TRUE(std::isfinite(camera.scale));
    EXPECT_GT(camera.scale, 0);
}

TEST(CameraTest, ZoomOfTwoShowsTheModelTwiceAsLarge) {
    const GPUModel::Bounds cube = box({-1, -1, -1}, {1, 1, 1});
    CameraOptions options;
    const Camera plain = framed(cube, options).first();
    options.zoom = 2;
    const Camera zoomed = framed(cube, options).first();
    EXPECT_NEAR(largestOffset(cornersInPicture(cube, zoomed)),
                2 * largestOffset(cornersInPicture(cube, plain)), 1e-4);
}

TEST(CameraTest, PointsThatDoNotReachTheCornersFillThePictureToo) {
    const GPUModel::Bounds cube = box({-1, -1, -1}, {1, 1, 1});
    const QVector<QVector3D> octahedron = {{1, 0, 0},  {-1, 0, 0}, {0, 1, 0},
                                           {0, -1, 0}, {0, 0, 1},  {0, 0, -1}};
    const Camera camera = framingCameras(cube, octahedron, {}, {30}, {400, 400}).first();
    float largest = 0;
    for (const QVector3D& point : octahedron) {
        const QVector3D place = (camera.projection * camera.view).map((point - camera.centre) * camera.scale);
        largest = std::max({largest, std::abs(place.x()), std::abs(place.y())});
    }
    EXPECT_LE(largest, 1);
    EXPECT_GE(largest, 0.95);
}

TEST(CameraTest, TurntableKeepsItsSizeAndPlace) {
    const GPUModel::Bounds plank = box({-5, -1, -1}, {5, 1, 1});
    const QVector<Camera> cameras = framed(plank, {}, {0, 60, 120, 180, 240, 300});
    ASSERT_EQ(cameras.size(), 6);
    for (const Camera& camera : cameras) {
        EXPECT_EQ(camera.projection, cameras.first().projection);
        EXPECT_LE(largestOffset(cornersInPicture(plank, camera)), 1.0F);
    }
}

TEST(CameraTest, TilesShowTheirPartOfThePicture) {
    const QMatrix4x4 unit;
    const QMatrix4x4 upperRight = tileProjection(unit, {300, 200}, {200, 150, 100, 50});
    expectVector(upperRight.map(QVector3D(1.0F / 3, 0.5F, 0)), {-1, -1, 0});
    expectVector(upperRight.map(QVector3D(1, 1, 0)), {1, 1, 0});
    expectVector(tileProjection(unit, {300, 200}, {0, 0, 300, 200}).map(QVector3D(0.3F, -0.7F, 0.1F)),
                 {0.3F, -0.7F, 0.1F});
}

} // namespace

} // namespace Atelier::Vel::Tool
