#include "linegeometry.h"

#include <algorithm>
#include <limits>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velmodel/objloader.h>

namespace Atelier::Vel::Viewer::Testing {

namespace {

QVector3D positionOf(const PointList::Point& point) {
    return {point.position[0], point.position[1], point.position[2]};
}

DrawData triangleData(const QByteArray& normals, const QByteArray& face) {
    const QTemporaryDir folder;
    QFile file(folder.filePath("a.obj"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("v 0 0 0\nv 10 0 0\nv 0 10 0\n" + normals + face);
    file.close();
    QString error;
    return readDrawDataFromOBJFile(file.fileName(), error);
}

const ModelBox kBox{{0, 0, 0}, {10, 10, 10}, true};

} // namespace

TEST(LineGeometryTest, GridStepsAreRound) {
    EXPECT_FLOAT_EQ(gridStep(10), 1);
    EXPECT_FLOAT_EQ(gridStep(11), 2);
    EXPECT_FLOAT_EQ(gridStep(45), 5);
    EXPECT_FLOAT_EQ(gridStep(51), 10);
    EXPECT_FLOAT_EQ(gridStep(0.0031F), 0.0005F);
    EXPECT_FLOAT_EQ(gridStep(0), 1);
    EXPECT_FLOAT_EQ(gridStep(std::numeric_limits<float>::infinity()), 1);
}

TEST(LineGeometryTest, TheGridLiesBelowTheBoxAndReachesBeyondIt) {
    for (int axis = 0; axis < 3; ++axis)
        for (const float sign : {1.0F, -1.0F}) {
            QVector3D up;
            up[axis] = sign;
            const ModelBox box{{2, 3, 4}, {12, 13, 14}, true};
            float reach[3] = {0, 0, 0};
            const PointList lines = gridLines(box, up, Qt::black);
            for (const PointList::Point& point : lines.points())
                for (int other = 0; other < 3; ++other)
                    reach[other] = std::max(reach[other], point.position[other]);
            EXPECT_GT(reach[(axis + 1) % 3], box.maximum[(axis + 1) % 3]);
            EXPECT_GT(reach[(axis + 2) % 3], box.maximum[(axis + 2) % 3]);
            EXPECT_EQ(reach[axis], sign > 0 ? box.minimum[axis] : box.maximum[axis]);
        }
}

TEST(LineGeometryTest, AThinBoxHasAGridOfFewLines) {
    const ModelBox thin{{0, 0, 0}, {1e6F, 1, 1e-3F}, true};
    EXPECT_LT(gridLines(thin, {0, 1, 0}, Qt::black).points().size(), 200U);
}

TEST(LineGeometryTest, ABoxHasTwelveEdges) {
    const PointList lines = boxLines(kBox, Qt::black);
    ASSERT_EQ(lines.points().size(), 24U);
    for (std::size_t line = 0; line < 24; line += 2)
        EXPECT_FLOAT_EQ((positionOf(lines.points()[line]) - positionOf(lines.points()[line + 1])).length(),
                        10);
}

TEST(LineGeometryTest, ColoursAreLinearAndPremultiplied) {
    PointList list;
    list.addLine({}, {}, QColor(255, 188, 0, 51));
    const PointList::Point& point = list.points().front();
    EXPECT_NEAR(point.colour[0], 0.2, 1e-5);
    EXPECT_NEAR(point.colour[1], 0.2 * 0.5029, 1e-3);
    EXPECT_NEAR(point.colour[2], 0, 1e-5);
    EXPECT_NEAR(point.colour[3], 0.2, 1e-5);
}

TEST(LineGeometryTest, EveryVertexHasItsNormal) {
    const PointList lines = normalLines(triangleData("vn 0 0 5\n", "f 1//1 2//1 3//1\n"), kBox, Qt::blue);
    ASSERT_EQ(lines.points().size(), 6U);
    for (std::size_t line = 0; line < 6; line += 2) {
        const QVector3D along = positionOf(lines.points()[line + 1]) - positionOf(lines.points()[line]);
        EXPECT_LT((along - QVector3D(0, 0, 0.2F)).length(), 1e-6F);
    }
}

TEST(LineGeometryTest, NormalsWithoutADirectionHaveNoLine) {
    EXPECT_TRUE(
        normalLines(triangleData("vn 0 0 0\nvn nan 0 0\n", "f 1//1 2//1 3//2\n"), kBox, Qt::blue).isEmpty());
    EXPECT_TRUE(normalLines({}, kBox, Qt::blue).isEmpty());
}

} // namespace Atelier::Vel::Viewer::Testing
