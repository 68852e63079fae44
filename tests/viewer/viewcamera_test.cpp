#include "viewcamera.h"

#include <cmath>

#include <gmock/gmock.h>

namespace Atelier::Vel::Viewer::Testing {

namespace {

const QSizeF kWindow(400, 300);
const QPointF kMiddle(200, 150);

ModelBox box(const QVector3D& minimum, const QVector3D& maximum) {
    return {minimum, maximum, true};
}

ViewCamera cameraOf(const ModelBox& model) {
    ViewCamera camera;
    camera.setWindow(kWindow);
    camera.setModel(model);
    return camera;
}

ViewCamera unitCamera() {
    return cameraOf(box({-1, -1, -1}, {1, 1, 1}));
}

double distance(const QPointF& a, const QPointF& b) {
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

// Where the ray through a point of the window meets the plane through the target that faces the camera.
QVector3D onTargetPlane(const ViewCamera& camera, const QPointF& at) {
    const PickRay ray = camera.rayAt(at);
    const PickRay middle = camera.rayAt(kMiddle);
    const QVector3D along = middle.direction.normalized();
    const float length = QVector3D::dotProduct(camera.target() - ray.origin, along) /
                         QVector3D::dotProduct(ray.direction, along);
    return ray.origin + ray.direction * length;
}

// The maximum distance that a corner of the box reaches towards the border of the window: 1 at the border.
double reach(const ViewCamera& camera, const ModelBox& model) {
    double most = 0;
    for (int corner = 0; corner < 8; ++corner) {
        const QPointF at = camera.windowPoint({(corner & 1) != 0 ? model.maximum.x() : model.minimum.x(),
                                               (corner & 2) != 0 ? model.maximum.y() : model.minimum.y(),
                                               (corner & 4) != 0 ? model.maximum.z() : model.minimum.z()});
        most = std::max({most, std::abs(at.x() - kMiddle.x()) / kMiddle.x(),
                         std::abs(at.y() - kMiddle.y()) / kMiddle.y()});
    }
    return most;
}

MATCHER_P(isNear, point, "") {
    return (arg - point).length() < 1e-4F * (1 + point.length());
}

} // namespace

TEST(ViewCameraTest, ShowsAllOfModelsOfAnySizeAndPlace) {
    for (const ModelBox& model : {box({-1, -1, -1}, {1, 1, 1}), box({1e6F, 0, 0}, {1.1e6F, 2e4F, 5}),
                                  box({0, 0, 0}, {1e-5F, 2e-5F, 1e-6F}), box({0, 0, 0}, {1, 0, 0})}) {
        ViewCamera camera = cameraOf(model);
        for (const char* view : {"front", "right", "top", "iso"})
            for (const Projection projection : {Projection::Perspective, Projection::Orthographic}) {
                camera.setProjection(projection);
                camera.show(view);
                EXPECT_LE(reach(camera, model), 1.001);
            }
        camera.reset();
        EXPECT_LE(reach(camera, model), 1.001);
        EXPECT_GT(reach(camera, model), 0.7);
    }
}

TEST(ViewCameraTest, AModelOfOnePointIsInTheMiddle) {
    const ViewCamera camera = cameraOf(box({3, 4, 5}, {3, 4, 5}));
    EXPECT_LT(distance(camera.windowPoint({3, 4, 5}), kMiddle), 0.01);
}

TEST(ViewCameraTest, StandardViewsLookAlongTheAxes) {
    ViewCamera camera = unitCamera();
    const auto direction = [&](const char* view) {
        camera.show(view);
        return camera.rayAt(kMiddle).direction.normalized();
    };
    EXPECT_THAT(direction("front"), isNear(QVector3D(0, 0, -1)));
    EXPECT_THAT(direction("right"), isNear(QVector3D(-1, 0, 0)));
    EXPECT_THAT(direction("top"), isNear(QVector3D(0, -1, 0)));
    EXPECT_THAT(direction("iso"), isNear(QVector3D(-1, -1, -1).normalized()));
}

TEST(ViewCameraTest, AnotherAxisCanPointUp) {
    ViewCamera camera(QStringLiteral("+Z"));
    camera.setWindow(kWindow);
    camera.setModel(box({-1, -1, -1}, {1, 1, 1}));
    camera.show("front");
    EXPECT_THAT(camera.rayAt(kMiddle).direction.normalized(), isNear(QVector3D(0, 1, 0)));
    EXPECT_LT(camera.windowPoint({0, 0, 0.5F}).y(), kMiddle.y());
}

TEST(ViewCameraTest, OrbitTurnsTheModelWithThePointer) {
    ViewCamera camera = unitCamera();
    camera.show("front");
    camera.orbit(kMiddle, kMiddle + QPointF(30, 0));
    EXPECT_NEAR(camera.azimuth(), -18, 1e-9); // a tenth of half a turn
    EXPECT_GT(camera.windowPoint({0, 0, 1}).x(), kMiddle.x());
    camera.orbit(kMiddle, kMiddle + QPointF(0, 30));
    EXPECT_NEAR(camera.elevation(), 18, 1e-9);
    EXPECT_GT(camera.windowPoint({0, 0, 1}).y(), kMiddle.y());
}

TEST(ViewCameraTest, OrbitStopsAboveAndBelow) {
    ViewCamera camera = unitCamera();
    camera.orbit({}, {0, 10'000});
    EXPECT_EQ(camera.elevation(), 90);
    camera.orbit({}, {0, -20'000});
    EXPECT_EQ(camera.elevation(), -90);
}

TEST(ViewCameraTest, PanKeepsThePointUnderThePointer) {
    for (const Projection projection : {Projection::Perspective, Projection::Orthographic}) {
        ViewCamera camera = unitCamera();
        camera.setProjection(projection);
        const QVector3D grabbed = onTargetPlane(camera, {120, 80});
        camera.pan({120, 80}, {220, 140});
        EXPECT_LT(distance(camera.windowPoint(grabbed), {220, 140}), 0.05);
    }
}

TEST(ViewCameraTest, ZoomEnlargesTowardsThePointer) {
    for (const Projection projection : {Projection::Perspective, Projection::Orthographic}) {
        ViewCamera camera = unitCamera();
        camera.setProjection(projection);
        const double before = camera.visibleHeight();
        const QVector3D under = onTargetPlane(camera, {300, 40});
        camera.zoom(2, {300, 40});
        EXPECT_NEAR(camera.visibleHeight(), before / 2, 1e-6 * before);
        EXPECT_LT(distance(camera.windowPoint(under), {300, 40}), 0.05);
    }
}

TEST(ViewCameraTest, ZoomHasLimits) {
    ViewCamera camera = unitCamera();
    camera.zoom(1e30, kMiddle);
    EXPECT_GT(camera.visibleHeight(), 0);
    camera.zoom(1e-30, kMiddle);
    EXPECT_TRUE(std::isfinite(camera.visibleHeight()));
}

TEST(ViewCameraTest, RaysGoThroughThePointsThatAreDrawnThere) {
    for (const Projection projection : {Projection::Perspective, Projection::Orthographic}) {
        ViewCamera camera = cameraOf(box({10, 20, 30}, {14, 22, 31}));
        camera.setProjection(projection);
        const QVector3D point(13, 21, 30.5F);
        const PickRay ray = camera.rayAt(camera.windowPoint(point));
        const QVector3D direction = ray.direction.normalized();
        const QVector3D offset = point - ray.origin;
        EXPECT_LT((offset - direction * QVector3D::dotProduct(offset, direction)).length(), 1e-3F);
        EXPECT_GT(QVector3D::dotProduct(offset, direction), 0) << "the ray starts in front of the point";
    }
}

TEST(ViewCameraTest, CentreOnKeepsDirectionAndSize) {
    ViewCamera camera = unitCamera();
    const double height = camera.visibleHeight();
    camera.centreOn({0.5F, 0.25F, 0.5F});
    EXPECT_LT(distance(camera.windowPoint({0.5F, 0.25F, 0.5F}), kMiddle), 0.01);
    EXPECT_EQ(camera.visibleHeight(), height);
    EXPECT_EQ(camera.azimuth(), unitCamera().azimuth());
}

TEST(ViewCameraTest, ANewVersionOfTheModelDoesNotMoveTheCamera) {
    ViewCamera camera = unitCamera();
    camera.orbit({0, 0}, {50, 20});
    camera.zoom(3, {10, 10});
    const QPointF before = camera.windowPoint({0.3F, 0.2F, 0.1F});
    camera.keepFor(box({-2, -2, -2}, {2, 2, 2}));
    EXPECT_EQ(camera.windowPoint({0.3F, 0.2F, 0.1F}), before);
    camera.reset();
    EXPECT_LE(reach(camera, box({-2, -2, -2}, {2, 2, 2})), 1.001);
}

TEST(ViewCameraTest, APointBehindTheCameraHasNoPlace) {
    ViewCamera camera = unitCamera();
    camera.show("front");
    EXPECT_TRUE(camera.windowPoint({0, 0, 1000}).isNull());
}

} // namespace Atelier::Vel::Viewer::Testing
