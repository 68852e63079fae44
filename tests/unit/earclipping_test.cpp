#include "geometry/triangulation/earclipping.h"

#include <gmock/gmock.h>

#include "planepoints.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::planePoints;

std::vector<int> clipped(const std::vector<PlanePoint>& points, bool clockwise) {
    PolygonScratch scratch;
    for (const PlanePoint& point : points)
        scratch.points.append(point);
    EarClip(static_cast<int>(points.size()), clockwise, scratch);
    return {scratch.triangles.begin(), scratch.triangles.end()};
}

TEST(EarClipTest, FewerThanThreePointsGiveNoTriangles) {
    EXPECT_THAT(clipped(planePoints({0, 0, 1, 0}), false), IsEmpty());
    EXPECT_THAT(clipped({}, true), IsEmpty());
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

} // namespace
} // namespace Atelier::Vel
