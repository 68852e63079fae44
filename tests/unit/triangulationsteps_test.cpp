#include "geometry/triangulation/earclipping.h"
#include "geometry/triangulation/polygonring.h"
#include "geometry/triangulation/projection.h"

#include <optional>
#include <random>

#include <gmock/gmock.h>

#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"
#include "support/messagelog.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::TestPolygon;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

bool same(float a, float b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

std::vector<PlanePoint> planePoints(std::initializer_list<float> xy) {
    std::vector<PlanePoint> points;
    for (const float* p = xy.begin(); p != xy.end(); p += 2)
        points.push_back({p[0], p[1]});
    return points;
}

std::vector<int> clipped(const std::vector<PlanePoint>& points, bool clockwise) {
    PolygonScratch scratch;
    for (const PlanePoint& point : points)
        scratch.points.append(point);
    EarClip(static_cast<int>(points.size()), clockwise, scratch);
    return {scratch.triangles.begin(), scratch.triangles.end()};
}

bool isCounterClockwise(const std::vector<PlanePoint>& points) {
    return IsCounterClockwise(static_cast<int>(points.size()), points.data());
}

TEST(PolygonNormalTest, PointsToWhereThePolygonIsCounterClockwise) {
    const float positions[] = {0, 0, 5, 2, 0, 5, 0, 3, 5};
    const int corners[] = {0, 1, 2};
    const SpacePoint normal = PolygonNormal(3, corners, positions);
    EXPECT_EQ(normal.x, 0);
    EXPECT_EQ(normal.y, 0);
    EXPECT_EQ(normal.z, 1);
}

TEST(PolygonNormalTest, ZeroSumStaysZero) {
    const float positions[] = {1, 1, 1, 2, 2, 2, 3, 3, 3};
    const int corners[] = {0, 1, 2};
    const SpacePoint normal = PolygonNormal(3, corners, positions);
    EXPECT_EQ(squaredLength(normal), 0);
}

TEST(PolygonNormalTest, TinySumStaysAsItIs) {
    const float positions[] = {0, 0, 0, 1e-4F, 0, 0, 0, 1e-4F, 0};
    const int corners[] = {0, 1, 2};
    EXPECT_EQ(PolygonNormal(3, corners, positions).z, 1e-4F * 1e-4F);
}

TEST(PolygonNormalTest, EqualsTheLiteralStep) {
    std::mt19937 random(21);
    for (int round = 0; round < 50'000; ++round) {
        const TestPolygon p = Testing::randomPolygon(3 + round % 20, random);
        const SpacePoint actual = PolygonNormal(p.count(), p.corners.data(), p.positions.data());
        const QVector3D expected = Literal::polygonNormal(p.count(), p.corners.data(), p.positions.data());
        ASSERT_TRUE(same(actual.x, expected.x()) && same(actual.y, expected.y()) &&
                    same(actual.z, expected.z()));
    }
}

TEST(ProjectPolygonTest, FirstPointIsTheOrigin) {
    const float positions[] = {kNan, 1, 2, 3, 4, 5};
    const int corners[] = {0, 1};
    PlanePoint points[2];
    ProjectPolygon({0, 0, 1}, 2, corners, positions, points);
    EXPECT_EQ(points[0], (PlanePoint{0, 0}));
    EXPECT_TRUE(std::isnan(points[1].x));
}

TEST(ProjectPolygonTest, UpIsTheYAxisUnlessTheNormalIsCloseToIt) {
    const float positions[] = {0, 0, 0, 1, 2, 3};
    const int corners[] = {0, 1};
    PlanePoint points[2];
    ProjectPolygon({0, 0, 1}, 2, corners, positions, points);
    EXPECT_EQ(points[1], (PlanePoint{1, 2}));
    ProjectPolygon({0, 1, 0}, 2, corners, positions, points);
    EXPECT_EQ(points[1], (PlanePoint{-1, 3}));
    ProjectPolygon({0, -1, 0}, 2, corners, positions, points);
    EXPECT_EQ(points[1], (PlanePoint{1, 3}));
}

TEST(ProjectPolygonTest, LimitOfTheUpVectorIsTheFloatNineTenths) {
    // Below the limit the second axis has a part along y, above it the first one lies in the plane of x and
    // y.
    const float positions[] = {0, 0, 0, 0, 0, 1};
    const int corners[] = {0, 1};
    PlanePoint points[2];
    ProjectPolygon({0.43588989F, 0.9F, 0}, 2, corners, positions, points);
    EXPECT_EQ(points[1], (PlanePoint{-1, 0}));
    ProjectPolygon({0.43588989F, std::nextafter(0.9F, 1.0F), 0}, 2, corners, positions, points);
    EXPECT_EQ(points[1].x, 0);
    EXPECT_GT(points[1].y, 0.9F);
}

TEST(ProjectPolygonTest, EqualsTheLiteralStep) {
    std::mt19937 random(22);
    std::vector<PlanePoint> points(64);
    for (int round = 0; round < 30'000; ++round) {
        const TestPolygon p = Testing::randomPolygon(3 + round % 20, random);
        ProjectPolygon({p.normal.x(), p.normal.y(), p.normal.z()}, p.count(), p.corners.data(),
                       p.positions.data(), points.data());
        const QVector<QVector2D> expected =
            Literal::projectPolygon(p.normal, p.count(), p.corners.data(), p.positions.data());
        for (int k = 0; k < p.count(); ++k)
            ASSERT_TRUE(same(points[k].x, expected[k].x()) && same(points[k].y, expected[k].y()));
    }
}

TEST(IsCounterClockwiseTest, TellsTheWinding) {
    EXPECT_TRUE(isCounterClockwise(planePoints({0, 0, 1, 0, 0, 1})));
    EXPECT_FALSE(isCounterClockwise(planePoints({0, 0, 0, 1, 1, 0})));
}

TEST(IsCounterClockwiseTest, ZeroAreaIsCounterClockwise) {
    EXPECT_TRUE(isCounterClockwise(planePoints({0, 0, 1, 1, 2, 2})));
    EXPECT_TRUE(isCounterClockwise(planePoints({3, 3, 3, 3, 3, 3})));
}

TEST(IsCounterClockwiseTest, SumThatIsNotANumberIsClockwise) {
    EXPECT_FALSE(isCounterClockwise(planePoints({0, 0, 1, 0, kNan, 1})));
}

TEST(EarClipTest, FewerThanThreePointsWarn) {
    Testing::MessageLog log;
    EXPECT_THAT(clipped(planePoints({0, 0, 1, 0}), false), IsEmpty());
    EXPECT_THAT(clipped({}, true), IsEmpty());
    const QString expected = QStringLiteral("Cannot triangulate a polygon with fewer than 3 vertices");
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(expected, expected));
}

TEST(EarClipTest, TrianglesAndQuadrilateralsAreFixedPatterns) {
    const std::vector<PlanePoint> nowhere(4, {0, 0});
    EXPECT_THAT(clipped({3, {0, 0}}, false), ElementsAre(0, 1, 2));
    EXPECT_THAT(clipped({3, {0, 0}}, true), ElementsAre(0, 2, 1));
    EXPECT_THAT(clipped(nowhere, false), ElementsAre(0, 1, 3, 1, 2, 3));
    EXPECT_THAT(clipped(nowhere, true), ElementsAre(0, 3, 1, 1, 3, 2));
}

TEST(EarClipTest, LastTriangleBeginsBeforeTheLowestCornerLeft) {
    // Corners 0 and 1 are the sharpest and go first; of 2, 3 and 4 the lowest is 2.
    const std::vector<int> triangles = clipped(planePoints({0, 0, 6, 0, 5, 2, 3, 3, 1, 2}), false);
    ASSERT_EQ(triangles.size(), 9U);
    EXPECT_THAT(std::vector<int>(triangles.end() - 3, triangles.end()), ElementsAre(4, 2, 3));
}

class UpdateEarTest : public testing::Test {
protected:
    void make(const std::vector<PlanePoint>& points) {
        _scratch.points.clear();
        _scratch.points.append(points.data(), static_cast<int>(points.size()));
        _ring.emplace(static_cast<int>(points.size()), _scratch);
        prepareSearch(static_cast<int>(points.size()), false, _scratch);
        makeCorners(false, *_ring);
    }
    void update(int corner) { UpdateEar(*_ring, corner); }
    /// The key of a corner that is an ear; zero for any other.
    EarKey keyOf(int corner) const {
        const bool isTested = _scratch.corners[corner].isTested;
        return _ring->keys[corner] != 0 && (isTested || !isBlocked(*_ring, corner)) ? _ring->keys[corner] : 0;
    }
    bool isEar(int corner) const { return keyOf(corner) != 0; }
    PolygonScratch _scratch;
    std::optional<PolygonRing> _ring;
};

TEST_F(UpdateEarTest, ConvexCornerIsAsSharpAsItsCosine) {
    make(planePoints({0, 0, 3, 0, 4, 2, 2, 4, 0, 2}));
    EXPECT_EQ(keyOf(0), earKey(0, 0));
    EXPECT_EQ(keyOf(1), earKey(dotProduct(normalized(PlanePoint{1, 2}), {-1, 0}), 1));
}

TEST_F(UpdateEarTest, ReflexCornerIsNoEar) {
    make(planePoints({0, 0, 2, 0, 2, 1, 1, 1, 1, 2, 0, 2}));
    EXPECT_FALSE(isEar(3));
}

TEST_F(UpdateEarTest, StraightCornerIsNoEar) {
    make(planePoints({0, 0, 1, 0, 2, 0, 2, 2, 0, 2}));
    EXPECT_FALSE(isEar(1));
}

TEST_F(UpdateEarTest, CornerInsideOrOnTheBorderBlocks) {
    make(planePoints({0, 0, 4, 0, 1, 1, 0, 4, -1, 2}));
    EXPECT_FALSE(isEar(0)) << "corner 2 lies inside";
    make(planePoints({0, 0, 4, 0, 2, 2, 0, 4, -1, 1, -1, 0}));
    EXPECT_TRUE(isEar(1));
    make(planePoints({0, 0, 4, 0, 4, 4, 2, 0, 0, 4}));
    EXPECT_FALSE(isEar(1)) << "corner 3 lies on the side";
}

TEST_F(UpdateEarTest, CornerClippedBeforeTheUpdateBlocksNothing) {
    make(planePoints({0, 0, 4, 0, 1, 1, 0, 4, -1, 3}));
    ASSERT_FALSE(isEar(0));
    _scratch.corners[2].clippedAt = ++_ring->clipped;
    link(*_ring, 1, 3);
    EXPECT_FALSE(isEar(0)) << "its neighbours are the same";
    update(0);
    EXPECT_TRUE(isEar(0));
}

TEST_F(UpdateEarTest, EqualsTheLiteralStep) {
    std::mt19937 random(23);
    for (int round = 0; round < 20'000; ++round) {
        const TestPolygon p = Testing::randomPolygon(5 + round % 12, random);
        const QVector<QVector2D> points =
            Literal::projectPolygon(p.normal, p.count(), p.corners.data(), p.positions.data());
        std::vector<PlanePoint> own;
        std::vector<Literal::Corner> corners;
        for (int k = 0; k < p.count(); ++k) {
            own.push_back({points[k].x(), points[k].y()});
            corners.push_back({(k + 1) % p.count(), (k + p.count() - 1) % p.count(), 0, 0, true, false});
        }
        make(own);
        for (int k = 0; k < p.count(); ++k) {
            Literal::updateEar(corners, points, k);
            ASSERT_EQ(keyOf(k), corners[k].ear ? earKey(corners[k].cosine, k) : 0);
        }
    }
}

} // namespace
} // namespace Atelier::Vel
