#include "camera.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QtCore/QtMath>

#include <gmock/gmock.h>

#include "modelpoints.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

using testing::FloatNear;
using testing::Pointwise;

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

// The corners of the box in the picture; coordinates from -1 to 1 are inside.
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

// The middle of the area that the points cover in the picture.
std::vector<float> middleOf(const QVector<QVector3D>& points) {
    std::vector<float> middle;
    for (int axis = 0; axis < 2; ++axis) {
        const auto order = [axis](const QVector3D& a, const QVector3D& b) { return a[axis] < b[axis]; };
        const auto [low, high] = std::minmax_element(points.begin(), points.end(), order);
        middle.push_back(((*low)[axis] + (*high)[axis]) / 2);
    }
    return middle;
}

struct UpAxis {
    const char* name;
    QVector3D up;
    QVector3D front; ///< towards the camera at azimuth 0
    QVector3D right; ///< towards the camera at azimuth 90
};

class UpAxisTest : public testing::TestWithParam<UpAxis> {};

TEST_P(UpAxisTest, PointsUpInThePictureAndTheFrontToTheCamera) {
    const UpAxis& axis = GetParam();
    const Orientation front = orientation(looking(axis.name, 0, 0));
    expectVector(front.up, axis.up);
    expectVector(front.back, axis.front);
    expectVector(front.right, axis.right);
}

TEST_P(UpAxisTest, AzimuthMovesTheCameraToTheRight) {
    const UpAxis& axis = GetParam();
    const Orientation side = orientation(looking(axis.name, 90, 0));
    expectVector(side.up, axis.up);
    expectVector(side.back, axis.right);
    expectVector(side.right, -axis.front);
    expectVector(orientation(looking(axis.name, 180, 0)).back, -axis.front);
}

TEST_P(UpAxisTest, ElevationMovesTheCameraUp) {
    const UpAxis& axis = GetParam();
    const Orientation above = orientation(looking(axis.name, 0, 90));
    expectVector(above.back, axis.up);
    expectVector(above.up, -axis.front);
    expectVector(above.right, axis.right);
    expectVector(orientation(looking(axis.name, 0, -90)).back, -axis.up);
}

TEST_P(UpAxisTest, AnglesAreCombined) {
    const UpAxis& axis = GetParam();
    const Orientation camera = orientation(looking(axis.name, 30, 60));
    const auto half = 0.5F;
    const auto most = float(std::sqrt(0.75));
    expectVector(camera.back, axis.front * most * half + axis.right * half * half + axis.up * most);
    expectVector(camera.right, axis.right * most - axis.front * half);
    expectVector(camera.up, QVector3D::crossProduct(camera.back, camera.right));
}

INSTANTIATE_TEST_SUITE_P(Axes, UpAxisTest,
                         testing::Values(UpAxis{"+X", {1, 0, 0}, {0, 0, 1}, {0, -1, 0}},
                                         UpAxis{"-X", {-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
                                         UpAxis{"+Y", {0, 1, 0}, {0, 0, 1}, {1, 0, 0}},
                                         UpAxis{"-Y", {0, -1, 0}, {0, 0, 1}, {-1, 0, 0}},
                                         UpAxis{"+Z", {0, 0, 1}, {0, -1, 0}, {1, 0, 0}},
                                         UpAxis{"-Z", {0, 0, -1}, {0, -1, 0}, {-1, 0, 0}}));

TEST(CameraTest, AxesAreListedInTheirOrder) {
    EXPECT_EQ(upDirections(), QStringList({"+X", "-X", "+Y", "-Y", "+Z", "-Z"}));
}

TEST(CameraTest, UnknownAxisGivesTheDefault) {
    expectVector(orientation(looking("W", 0, 0)).up, {0, 1, 0});
}

struct Framing {
    GPUModel::Bounds bounds;
    QSize size;
};

class FramingTest : public testing::TestWithParam<Framing> {};

TEST_P(FramingTest, ShowsTheWholeModelAndFillsThePicture) {
    const Framing& framing = GetParam();
    for (const QString& up : upDirections())
        for (const double elevation : {-90.0, -20.0, 0.0, 20.0, 90.0}) {
            const CameraOptions options = looking(up, 30, elevation);
            const Camera camera = framed(framing.bounds, options, {30}, framing.size).first();
            const QVector<QVector3D> corners = cornersInPicture(framing.bounds, camera);
            EXPECT_NEAR(largestOffset(corners), 1 / 1.04, 1e-4) << "a margin of 4 percent";
            EXPECT_THAT(middleOf(corners), Pointwise(FloatNear(1e-4F), {0.0F, 0.0F}));
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

TEST(CameraTest, ModelIsMovedAndScaledIntoACubeFromMinusOneToOne) {
    const Camera wide = framed(box({10, 20, 30}, {18, 22, 34}), {}).first();
    expectVector(wide.centre, {14, 21, 32});
    EXPECT_FLOAT_EQ(wide.scale, 1.0F / 4);
    EXPECT_FLOAT_EQ(framed(box({0, 0, 0}, {1, 6, 2}), {}).first().scale, 1.0F / 3);
    EXPECT_FLOAT_EQ(framed(box({0, 0, 0}, {1, 2, 10}), {}).first().scale, 1.0F / 5);
    EXPECT_FLOAT_EQ(framed(box({1, 1, 1}, {1, 1, 1}), {}).first().scale, 1);
}

// The unit cube is seen from here.
const double kDistance = std::sqrt(3.0) / std::sin(qDegreesToRadians(15.0));

TEST(CameraTest, FieldOfViewIs30Degrees) {
    const GPUModel::Bounds cube = box({-1, -1, -1}, {1, 1, 1});
    const QVector<QVector3D> corners = cornersInPicture(cube, framed(cube, looking("+Y", 0, 0), {0}).first());
    const double far = double(corners[1].x()) - double(corners[0].x());
    const double near = double(corners[5].x()) - double(corners[4].x());
    EXPECT_NEAR(near / far, (kDistance + 1) / (kDistance - 1), 1e-4);
}

TEST(CameraTest, DepthReachesFromTheNearestCornerToTheFarthest) {
    const GPUModel::Bounds cube = box({-1, -1, -1}, {1, 1, 1});
    const double diagonal = qRadiansToDegrees(std::atan(std::sqrt(0.5)));
    const Camera camera = framed(cube, looking("+Y", 0, diagonal), {45}).first();
    const QVector<QVector3D> corners = cornersInPicture(cube, camera);
    EXPECT_NEAR(corners[7].z(), -1, 1e-4);
    EXPECT_NEAR(corners[0].z(), 1, 1e-4);
}

TEST(CameraTest, PixelsAreSquare) {
    const GPUModel::Bounds square = box({-1, -1, 0}, {1, 1, 0});
    for (const QSize size : {QSize(400, 100), QSize(100, 400)}) {
        const Camera camera = framed(square, looking("+Y", 0, 0), {0}, size).first();
        const QVector<QVector3D> corners = cornersInPicture(square, camera);
        EXPECT_NEAR((corners[3].x() - corners[0].x()) * float(size.width()),
                    (corners[3].y() - corners[0].y()) * float(size.height()), 1e-3);
    }
}

TEST(CameraTest, FlatModelSeenFromItsEdgeIsFramed) {
    const GPUModel::Bounds flat = box({-1, 0, -1}, {1, 0, 1});
    const Camera camera = framed(flat, looking("+Y", 0, 0), {0}).first();
    EXPECT_NEAR(largestOffset(cornersInPicture(flat, camera)), 1 / 1.04, 1e-4);
}

TEST(CameraTest, ModelOfOnePointIsInTheMiddle) {
    const GPUModel::Bounds point = box({3, 4, 5}, {3, 4, 5});
    const Camera camera = framed(point, {}).first();
    EXPECT_THAT(largestOffset(cornersInPicture(point, camera)), FloatNear(0, kTolerance));
}

TEST(CameraTest, ZoomAloneFramesAModelOfOnePoint) {
    const GPUModel::Bounds point = box({3, 4, 5}, {3, 4, 5});
    CameraOptions options;
    options.zoom = 3;
    const QMatrix4x4 projection = framed(point, options).first().projection;
    const double tangent = std::tan(qDegreesToRadians(15.0));
    EXPECT_NEAR(projection(0, 0), 3 / (tangent * 400 / 300), 1e-4);
    EXPECT_NEAR(projection(1, 1), 3 / tangent, 1e-4);
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
    EXPECT_NEAR(largest, 1 / 1.04, 1e-4);
}

TEST(CameraTest, TurntableKeepsItsSizeAndPlace) {
    const GPUModel::Bounds plank = box({-5, -1, -1}, {5, 1, 1});
    const QVector<Camera> cameras = framed(plank, {}, {0, 60, 120, 180, 240, 300});
    ASSERT_EQ(cameras.size(), 6);
    float largest = 0;
    for (const Camera& camera : cameras) {
        EXPECT_EQ(camera.projection, cameras.first().projection);
        largest = std::max(largest, largestOffset(cornersInPicture(plank, camera)));
    }
    EXPECT_NEAR(largest, 1 / 1.04, 1e-4) << "all frames together fill the picture";
}

TEST(CameraTest, EachFrameOfATurntableHasItsOwnAzimuth) {
    const GPUModel::Bounds plank = box({-5, -1, -1}, {5, 1, 1});
    const QVector<Camera> cameras = framed(plank, looking("+Z", 77, 10), {15, 100});
    ASSERT_EQ(cameras.size(), 2);
    for (int frame = 0; frame < 2; ++frame) {
        const Orientation seen = orientation(looking("+Z", frame == 0 ? 15 : 100, 10));
        const QMatrix4x4& view = cameras[frame].view;
        expectVector(view.row(0).toVector3D(), seen.right);
        expectVector(view.row(1).toVector3D(), seen.up);
        expectVector(view.row(2).toVector3D(), seen.back);
        expectVector(view.column(3).toVector3D(), {0, 0, -float(kDistance)});
    }
}

TEST(CameraTest, WithoutPerspectiveDistanceChangesNoSize) {
    const GPUModel::Bounds plank = box({-1, -2, -10}, {1, 2, 10});
    CameraOptions options;
    options.projection = Projection::Orthographic;
    turnTo("front", options);
    const Camera camera = framed(plank, options, {options.azimuth}, {300, 400}).first();
    const QVector<QVector3D> corners = cornersInPicture(plank, camera);
    for (int corner = 0; corner < 4; ++corner) {
        EXPECT_NEAR(corners[corner].x(), corners[corner + 4].x(), kTolerance);
        EXPECT_NEAR(corners[corner].y(), corners[corner + 4].y(), kTolerance);
        EXPECT_GT(corners[corner].z(), corners[corner + 4].z()) << "the front is nearer";
    }
    EXPECT_NEAR(largestOffset(corners), 1 / 1.04, 1e-4);
    EXPECT_NEAR(corners[3].x() / corners[3].y(), 0.5 * 4 / 3, 1e-4) << "pixels are square";
}

TEST(CameraTest, WithoutPerspectiveTheWholeDepthIsInView) {
    const GPUModel::Bounds cube = box({-1, -1, -1}, {1, 1, 1});
    CameraOptions options;
    options.projection = Projection::Orthographic;
    for (const QString& view : viewNames()) {
        turnTo(view, options);
        for (const QVector3D& corner :
             cornersInPicture(cube, framed(cube, options, {options.azimuth}).first()))
            EXPECT_LE(std::abs(corner.z()), 1 + kTolerance) << view.toStdString();
    }
}

TEST(CameraTest, ViewsLookFromTheirSide) {
    struct View {
        const char* name;
        QVector3D back;
    };
    const float third = std::sqrt(1.0F / 3);
    const View views[] = {{"front", {0, 0, 1}},          {"back", {0, 0, -1}}, {"left", {-1, 0, 0}},
                          {"right", {1, 0, 0}},          {"top", {0, 1, 0}},   {"bottom", {0, -1, 0}},
                          {"iso", {third, third, third}}};
    QStringList names;
    for (const View& view : views) {
        CameraOptions options;
        turnTo(view.name, options);
        expectVector(orientation(options).back, view.back);
        names.append(view.name);
    }
    EXPECT_EQ(viewNames(), names);
}

TEST(CameraTest, TilesShowTheirPartOfThePicture) {
    const QMatrix4x4 unit;
    const QMatrix4x4 upperRight = tileProjection(unit, {300, 200}, {200, 150, 100, 50});
    expectVector(upperRight.map(QVector3D(1.0F / 3, 0.5F, 0)), {-1, -1, 0});
    expectVector(upperRight.map(QVector3D(1, 1, 0)), {1, 1, 0});
    expectVector(tileProjection(unit, {300, 200}, {0, 0, 300, 200}).map(QVector3D(0.3F, -0.7F, 0.1F)),
                 {0.3F, -0.7F, 0.1F});
    const QMatrix4x4 middle = tileProjection(unit, {300, 200}, {30, 50, 60, 40});
    expectVector(middle.map(QVector3D(-0.8F, -0.5F, 0.5F)), {-1, -1, 0.5F});
    expectVector(middle.map(QVector3D(-0.4F, -0.1F, 0.5F)), {1, 1, 0.5F});
}

TEST(CameraTest, TilesOfAPerspectivePictureShowTheirPart) {
    QMatrix4x4 perspective;
    perspective.perspective(40, 1.5F, 1, 10);
    const QVector3D point(0.3F, -0.4F, -5);
    const QVector3D whole = perspective.map(point);
    const QVector3D part = tileProjection(perspective, {300, 200}, {150, 0, 150, 100}).map(point);
    expectVector(part, {2 * whole.x() - 1, 2 * whole.y() + 1, whole.z()});
}

} // namespace

} // namespace Atelier::Vel::Tool
