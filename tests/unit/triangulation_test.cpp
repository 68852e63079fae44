#include <velmodel/triangulation.h>

#include <vector>

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;

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
        QVector<unsigned int> triangles;
        Triangulate3D(count(), corners.data(), positions.data(), triangles);
        return triangles;
    }
    QVector<unsigned int> triangulated(const QVector3D& normal) const {
        QVector<unsigned int> triangles;
        Triangulate3D(normal, count(), corners.data(), positions.data(), triangles);
        return triangles;
    }
};

TEST(TriangulationTest, CounterClockwiseTriangleKeepsItsOrder) {
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 0, 1}).triangulated(), ElementsAre(0, 1, 2));
    EXPECT_THAT((FlatPolygon{0, 0, 1, 0, 0, 1}).triangulated({0, 0, 1}), ElementsAre(0, 1, 2));
}

TEST(TriangulationTest, TriangleClockwiseAboutTheNormalIsTurnedRound) {
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

} // namespace
} // namespace Atelier::Vel
