#include <velmodel/triangulation.h>

#include <algorithm>
#include <limits>
#include <vector>

#include <gmock/gmock.h>

#include "support/guardedarray.h"
#include "support/messagelog.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;
using testing::IsEmpty;
using Testing::MessageLog;

const QVector3D kUp(0, 0, 1);
const QString kNoEarLeft = QStringLiteral("Unable to triangulate polygon.");
const QString kTooFewCorners = QStringLiteral("Cannot triangulate a polygon with fewer than 3 vertices");

/// A polygon in the plane z = 0, from pairs of coordinates.
struct FlatPolygon {
    std::vector<float> positions;
    std::vector<int> corners;

    FlatPolygon(std::initializer_list<float> xy) {
        for (const float* p = xy.begin(); p != xy.end(); p += 2) {
            corners.push_back(static_cast<int>(corners.size()));
            positions.insert(positions.end(), {p[0], p[1], 0.0F});
        }
    }
    int count() const { return static_cast<int>(corners.size()); }

    QVector<unsigned int> triangulated() const {
        const GuardedArray<int> guardedCorners(corners);
        const GuardedArray<float> guardedPositions(positions);
        QVector<unsigned int> triangles;
        Triangulate3D(count(), guardedCorners.data(), guardedPositions.data(), triangles);
        return triangles;
    }
    QVector<unsigned int> triangulated(const QVector3D& normal) const {
        const GuardedArray<int> guardedCorners(corners);
        const GuardedArray<float> guardedPositions(positions);
        QVector<unsigned int> triangles;
        Triangulate3D(normal, count(), guardedCorners.data(), guardedPositions.data(), triangles);
        return triangles;
    }
};

const FlatPolygon kPentagon{0, 0, 4, 0, 5, 3, 2, 5, -2, 4};
const FlatPolygon kRegularPentagon{1, 0, 0.309F, 0.951F, -0.809F, 0.588F, -0.809F, -0.588F, 0.309F, -0.951F};
// Its notch is the square right above the reflex corner 3.
const FlatPolygon kLShape{0, 0, 2, 0, 2, 1, 1, 1, 1, 2, 0, 2};

struct Triangle {
    float x[3];
    float y[3];

    float doubledArea() const { return (x[1] - x[0]) * (y[2] - y[0]) - (y[1] - y[0]) * (x[2] - x[0]); }
    bool covers(float px, float py) const {
        bool inside = true;
        for (int k = 0; k < 3; ++k) {
            const int next = (k + 1) % 3;
            inside = inside && (x[next] - x[k]) * (py - y[k]) - (y[next] - y[k]) * (px - x[k]) >= 0;
        }
        return inside;
    }
};

std::vector<Triangle> trianglesOf(const FlatPolygon& polygon, const QVector<unsigned int>& vertices) {
    std::vector<Triangle> triangles(vertices.size() / 3);
    for (int k = 0; k < vertices.size(); ++k) {
        const float* position = polygon.positions.data() + 3 * std::size_t(vertices[k]);
        triangles[k / 3].x[k % 3] = position[0];
        triangles[k / 3].y[k % 3] = position[1];
    }
    return triangles;
}

QVector<unsigned int> turnedRound(QVector<unsigned int> triangles) {
    for (int k = 0; k + 2 < triangles.size(); k += 3)
        std::swap(triangles[k], triangles[k + 2]);
    return triangles;
}

TEST(TriangulationTest, CounterClockwiseTriangleKeepsItsOrder) {
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 0, 1}).triangulated(), ElementsAre(0, 1, 2));
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 0, 1}).triangulated({0, 0, 1}), ElementsAre(0, 1, 2));
}

TEST(TriangulationTest, TriangleClockwiseAboutTheNormalIsReversed) {
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 0, 1}).triangulated({0, 0, -1}), ElementsAre(0, 2, 1));
}

TEST(TriangulationTest, QuadrilateralIsSplitFromCornerOneToThree) {
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 1, 1, 0, 1}).triangulated(), ElementsAre(0, 1, 3, 1, 2, 3));
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 1, 1, 0, 1}).triangulated({0, 0, -1}),
                ElementsAre(0, 3, 1, 1, 3, 2));
}

TEST(TriangulationTest, ConcaveQuadrilateralIsSplitTheSameWay) {
    const FlatPolygon reflexZero{1, 1, 0, 3, 0, 0, 3, 0};
    const FlatPolygon reflexTwo{0, 0, 3, 0, 1, 1, 0, 3};
    EXPECT_THAT(reflexZero.triangulated(), ElementsAre(0, 1, 3, 1, 2, 3));
    EXPECT_THAT(reflexTwo.triangulated(), ElementsAre(0, 1, 3, 1, 2, 3));
}

TEST(TriangulationTest, FewerThanThreeCornersWarnAndAppendNothing) {
    const FlatPolygon polygon{0, 0, 1, 0};
    for (int count : {2, 1, 0, -1}) {
        MessageLog log;
        QVector<unsigned int> triangles{7};
        Triangulate3D(count, polygon.corners.data(), polygon.positions.data(), triangles);
        EXPECT_THAT(triangles, ElementsAre(7));
        EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kTooFewCorners));
    }
}

TEST(TriangulationTest, CountZeroReadsNothing) {
    MessageLog log;
    QVector<unsigned int> triangles;
    Triangulate3D(0, nullptr, nullptr, triangles);
    Triangulate3D({0, 0, 1}, 0, nullptr, nullptr, triangles);
    EXPECT_THAT(triangles, IsEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kTooFewCorners, kTooFewCorners));
}

TEST(TriangulationTest, FewerThanThreeCornersWarnAboutAGivenNormalToo) {
    const FlatPolygon polygon{0, 0, 1, 0};
    MessageLog log;
    QVector<unsigned short> triangles{7};
    Triangulate3D(kUp, 2, polygon.corners.data(), polygon.positions.data(), triangles);
    Triangulate3D(1, polygon.corners.data(), polygon.positions.data(), triangles);
    EXPECT_THAT(triangles, ElementsAre(7));
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kTooFewCorners, kTooFewCorners));
}

TEST(TriangulationTest, ConvexPentagonGivesThreeTriangles) {
    const QVector<unsigned int> vertices = kPentagon.triangulated();
    EXPECT_EQ(vertices.size(), 9);
    for (const Triangle& triangle : trianglesOf(kPentagon, vertices))
        EXPECT_GT(triangle.doubledArea(), 0);
}

TEST(TriangulationTest, SharpestEarIsClippedFirst) {
    // The angle at corner 4 is the smallest of the five.
    EXPECT_THAT(kPentagon.triangulated().mid(0, 3), ElementsAre(3, 4, 0));
}

TEST(TriangulationTest, LowestNumberedOfEquallySharpEarsIsClippedFirst) {
    // A square with the middle of one side as a corner: four right angles.
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 2, 0, 2, 2, 0, 2}).triangulated().mid(0, 3), ElementsAre(4, 0, 1));
    EXPECT_THAT((FlatPolygon{1, 0, 2, 0, 2, 2, 0, 2, 0, 0}).triangulated().mid(0, 3), ElementsAre(0, 1, 2));
}

TEST(TriangulationTest, OppositeNormalReversesEveryTriangle) {
    for (const FlatPolygon* polygon : {&kPentagon, &kRegularPentagon, &kLShape}) {
        const QVector<unsigned int> upright = polygon->triangulated(kUp);
        EXPECT_FALSE(upright.isEmpty());
        EXPECT_EQ(polygon->triangulated(-kUp), turnedRound(upright));
    }
}

TEST(TriangulationTest, ClockwisePolygonIsCounterClockwiseAboutItsOwnNormal) {
    FlatPolygon reversed = kLShape;
    std::reverse(reversed.corners.begin(), reversed.corners.end());
    for (const Triangle& triangle : trianglesOf(reversed, reversed.triangulated()))
        EXPECT_LT(triangle.doubledArea(), 0) << "seen from above, which is the back";
    for (const Triangle& triangle : trianglesOf(reversed, reversed.triangulated(kUp)))
        EXPECT_GT(triangle.doubledArea(), 0);
}

TEST(TriangulationTest, LShapeLeavesItsNotchFree) {
    const QVector<unsigned int> vertices = kLShape.triangulated();
    EXPECT_EQ(vertices.size(), 12);
    float area = 0;
    for (const Triangle& triangle : trianglesOf(kLShape, vertices)) {
        EXPECT_FALSE(triangle.covers(1.25F, 1.25F));
        area += triangle.doubledArea() / 2;
    }
    EXPECT_EQ(area, 3);
}

TEST(TriangulationTest, DuplicatedCornersDoNotBlock) {
    // A square with a hole, joined by a bridge that is walked twice.
    const FlatPolygon bridged{0, 0, 6, 0, 6, 6, 0, 6, 0, 0, 2, 2, 2, 4, 4, 4, 4, 2, 2, 2};
    const QVector<unsigned int> vertices = bridged.triangulated();
    float area = 0;
    for (const Triangle& triangle : trianglesOf(bridged, vertices))
        area += triangle.doubledArea() / 2;
    EXPECT_EQ(vertices.size(), 24);
    EXPECT_EQ(area, 32);
}

TEST(TriangulationTest, NormalAlongTheYAxisIsProjectedWithTheOtherUp) {
    // With the usual up vector the axes of this plane would be null, and so all points.
    FlatPolygon polygon = kLShape;
    for (int k = 0; k < polygon.count(); ++k) {
        polygon.positions[3 * k + 2] = -polygon.positions[3 * k + 1];
        polygon.positions[3 * k + 1] = 5;
    }
    EXPECT_EQ(polygon.triangulated().size(), 12);
    EXPECT_EQ(polygon.triangulated({0, 1, 0}).size(), 12);
    EXPECT_EQ(polygon.triangulated({0, -1, 0}), turnedRound(polygon.triangulated({0, 1, 0})));
}

TEST(TriangulationTest, ShortOverloadsKeepTheLowSixteenBits) {
    constexpr std::size_t kVertex = 70'000;
    FlatPolygon polygon{0, 0, 1, 0, 0, 1};
    polygon.positions.resize(3 * (kVertex + 1));
    polygon.positions[3 * kVertex] = 1;
    polygon.corners[1] = static_cast<int>(kVertex);
    QVector<unsigned short> triangles;
    Triangulate3D(3, polygon.corners.data(), polygon.positions.data(), triangles);
    Triangulate3D(kUp, 3, polygon.corners.data(), polygon.positions.data(), triangles);
    EXPECT_THAT(triangles, ElementsAre(0, 4464, 2, 0, 4464, 2));
    EXPECT_THAT(polygon.triangulated(), ElementsAre(0U, kVertex, 2U));
}

TEST(TriangulationTest, VertexNumbersAreTakenFromTheCorners) {
    const FlatPolygon source{9, 9, 0, 1, 9, 9, 1, 0, 0, 0};
    const std::vector<int> corners = {4, 3, 1};
    QVector<unsigned int> triangles;
    Triangulate3D(3, corners.data(), source.positions.data(), triangles);
    EXPECT_THAT(triangles, ElementsAre(4, 3, 1));
}

TEST(TriangulationTest, OutputKeepsItsContents) {
    QVector<unsigned int> triangles{9, 8};
    Triangulate3D(5, kPentagon.corners.data(), kPentagon.positions.data(), triangles);
    Triangulate3D(kUp, 5, kPentagon.corners.data(), kPentagon.positions.data(), triangles);
    ASSERT_EQ(triangles.size(), 20);
    EXPECT_THAT(triangles.mid(0, 2), ElementsAre(9, 8));
    EXPECT_EQ(triangles.mid(2, 9), kPentagon.triangulated());
}

TEST(TriangulationTest, CollinearPentagonCannotBeTriangulated) {
    const FlatPolygon line{0, 0, 1, 0, 2, 0, 3, 0, 4, 0};
    MessageLog log;
    QVector<unsigned int> triangles{1};
    Triangulate3D(5, line.corners.data(), line.positions.data(), triangles);
    Triangulate3D(kUp, 5, line.corners.data(), line.positions.data(), triangles);
    EXPECT_THAT(triangles, ElementsAre(1));
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kNoEarLeft, kNoEarLeft));
}

TEST(TriangulationTest, CollinearTriangleAndQuadrilateralAreTriangulated) {
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 2, 0}).triangulated(), ElementsAre(0, 1, 2));
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 2, 0, 3, 0}).triangulated(), ElementsAre(0, 1, 3, 1, 2, 3));
}

TEST(TriangulationTest, SelfCrossingPolygonDropsTheEarsClippedBeforeItFailed) {
    MessageLog log;
    EXPECT_THAT((FlatPolygon{0, 0, 2, 2, 2, 0, 0, 2, 1, 1, 1, 1, 1, 1}).triangulated(), IsEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kNoEarLeft));
}

TEST(TriangulationTest, ZeroNormalLeavesNoEar) {
    MessageLog log;
    EXPECT_THAT(kPentagon.triangulated(QVector3D()), IsEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kNoEarLeft));
    EXPECT_THAT((FlatPolygon{0, 0, 0, 1, 1, 0}).triangulated(QVector3D()), ElementsAre(0, 1, 2));
}

TEST(TriangulationTest, WarningsCarryNoContext) {
    MessageLog log;
    FlatPolygon({0, 0, 1, 0}).triangulated();
    FlatPolygon({0, 0, 1, 0, 2, 0, 3, 0, 4, 0}).triangulated();
    ASSERT_EQ(log.messages().size(), 2U);
    for (const Testing::LoggedMessage& message : log.messages()) {
        EXPECT_EQ(message.level, QtWarningMsg);
        EXPECT_FALSE(message.hasContext);
    }
}

TEST(TriangulationTest, PointsThatAreNotNumbersMakeATriangleClockwise) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT((FlatPolygon{0, 0, kNan, 0, 0, 1}).triangulated(), ElementsAre(0, 2, 1));
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, kNan, 1, 0, 1}).triangulated(), ElementsAre(0, 3, 1, 1, 3, 2));
}

TEST(TriangulationTest, TinyPolygonCannotBeTriangulatedButTinyQuadrilateralCan) {
    FlatPolygon pentagon = kPentagon;
    for (float& value : pentagon.positions)
        value *= 1e-5F;
    MessageLog log;
    EXPECT_THAT(pentagon.triangulated(), IsEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kNoEarLeft));
    EXPECT_THAT((FlatPolygon{0, 0, 1e-6F, 0, 0, 1e-6F}).triangulated(), ElementsAre(0, 1, 2));
    EXPECT_THAT((FlatPolygon{0, 0, 1e-6F, 0, 1e-6F, 1e-6F, 0, 1e-6F}).triangulated(),
                ElementsAre(0, 1, 3, 1, 2, 3));
}

TEST(TriangulationTest, ManyCallsOnOneVectorGrowItByDoubling) {
    QVector<unsigned int> triangles;
    int growths = 0;
    for (int k = 0; k < 30'000; ++k) {
        const int capacity = triangles.capacity();
        Triangulate3D(3, kPentagon.corners.data(), kPentagon.positions.data(), triangles);
        growths += triangles.capacity() != capacity ? 1 : 0;
    }
    EXPECT_LT(growths, 40);
}

} // namespace
} // namespace Atelier::Vel
