#include "geometry/triangulation/polygonring.h"

#include <optional>
#include <random>

#include <gmock/gmock.h>

#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"
#include "planepoints.h"

namespace Atelier::Vel {
namespace {

using Testing::planePoints;
using Testing::TestPolygon;

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
