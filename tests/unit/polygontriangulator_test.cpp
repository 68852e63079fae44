#include "geometry/triangulation/polygontriangulator.h"

#include <algorithm>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>

#include <velmodel/triangulation.h>

#include "geometry/triangulation/fourwindings.h"
#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"
#include "support/guardedarray.h"
#include "support/messagelog.h"
#include "support/sparsearray.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAreArray;
using Testing::flatPolygon;
using Testing::GuardedArray;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::SparseArray;
using Testing::TestPolygon;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// One triangulator for all polygons of a test, over arrays of exactly their size.
class PolygonTriangulatorTest : public testing::Test {
protected:
    /// As vertex numbers.
    std::vector<unsigned int> triangulate(const TestPolygon& polygon) {
        const GuardedArray<int> corners(polygon.corners);
        const GuardedArray<float> positions(polygon.positions);
        const GuardedArray<unsigned int> out(3 * std::max<std::size_t>(corners.size(), 2) - 6);
        unsigned int* const end =
            _triangulator.triangulate(polygon.count(), corners.data(), positions.data(), out.data());
        return {out.data(), end};
    }
    std::vector<unsigned int> cutAboutItsNormal(const TestPolygon& polygon) {
        const GuardedArray<int> corners(polygon.corners);
        const GuardedArray<float> positions(polygon.positions);
        std::vector<unsigned int> vertices;
        for (const int corner :
             _triangulator.cornerTriangles(polygon.normal, polygon.count(), corners.data(), positions.data()))
            vertices.push_back(static_cast<unsigned int>(corners[static_cast<std::size_t>(corner)]));
        return vertices;
    }
    /// Compares both triangulations with the literal steps. Returns: whether there are triangles.
    bool isCutAsLiterally(const TestPolygon& polygon) {
        const MessageLog log; // of the literal steps
        QVector<unsigned int> own;
        QVector<unsigned int> given;
        Literal::triangulate3D(polygon.count(), polygon.corners.data(), polygon.positions.data(), own);
        Literal::triangulate3D(polygon.normal, polygon.count(), polygon.corners.data(),
                               polygon.positions.data(), given);
        EXPECT_THAT(triangulate(polygon), ElementsAreArray(own.begin(), own.end()));
        EXPECT_THAT(cutAboutItsNormal(polygon), ElementsAreArray(given.begin(), given.end()));
        return !own.isEmpty();
    }

    PolygonTriangulator _triangulator;
};

// Polygons share working memory: data left by a larger one must not change the next result.
TEST_F(PolygonTriangulatorTest, PolygonsOfFallingSizeAreTriangulatedIndependently) {
    std::mt19937 random(1);
    int cuts = 0;
    for (int round = 0; round < 12; ++round)
        for (int count = 300; count > 4; count -= count > 64 ? 13 : 7) {
            cuts += isCutAsLiterally(Testing::randomPolygon(count, random)) ? 1 : 0;
            ASSERT_FALSE(HasFailure()) << "round " << round << ", " << count << " corners";
        }
    EXPECT_GT(cuts, 50);
}

TEST_F(PolygonTriangulatorTest, PolygonsOfAnySizeAreTriangulatedIndependently) {
    std::mt19937 random(2);
    int cuts = 0;
    for (int round = 0; round < 600; ++round) {
        const int count =
            round % 3 == 0 ? 65 + static_cast<int>(random() % 100) : 3 + static_cast<int>(random() % 30);
        cuts += isCutAsLiterally(Testing::randomPolygon(count, random)) ? 1 : 0;
        ASSERT_FALSE(HasFailure()) << "round " << round << ", " << count << " corners";
    }
    EXPECT_GT(cuts, 100);
}

TEST_F(PolygonTriangulatorTest, ShapesOfFallingSizeAreTriangulatedIndependently) {
    using Testing::combShape;
    using Testing::convexShape;
    using Testing::spiralShape;
    using Testing::starShape;
    for (int count = 400; count > 9; count = count * 2 / 3)
        for (const auto makeShape : {starShape, convexShape, spiralShape, combShape}) {
            EXPECT_TRUE(isCutAsLiterally(flatPolygon(makeShape(count)))) << count;
            ASSERT_FALSE(HasFailure()) << count << " corners";
        }
}

/// Corners on a line, of which none is an ear.
TestPolygon line(int count) {
    Testing::PlaneShape shape;
    for (int k = 0; k < count; ++k)
        shape.add(k, 0);
    return flatPolygon(shape);
}

/// Crosses itself after some ears.
TestPolygon crossed(int count) {
    Testing::PlaneShape shape = Testing::starShape(count);
    std::swap(shape.x[2], shape.x[static_cast<std::size_t>(count) / 2]);
    std::swap(shape.y[2], shape.y[static_cast<std::size_t>(count) / 2]);
    return flatPolygon(shape);
}

TEST_F(PolygonTriangulatorTest, PolygonThatCannotBeTriangulatedDoesNotChangeTheNextResult) {
    for (const int uncut : {2, 5, 64, 65, 200})
        for (const int next : {3, 4, 5, 64, 65, 150})
            for (const auto makeBad : {line, crossed}) {
                const TestPolygon bad = uncut < 8 ? line(uncut) : makeBad(uncut);
                EXPECT_TRUE(makeBad == crossed || !isCutAsLiterally(bad)) << uncut;
                isCutAsLiterally(bad);
                EXPECT_TRUE(isCutAsLiterally(next < 8 ? line(std::min(next, 4))
                                                      : flatPolygon(Testing::combShape(next))));
                ASSERT_FALSE(HasFailure()) << uncut << " corners and then " << next;
            }
}

TEST_F(PolygonTriangulatorTest, CornersThatAreNotNumbersDoNotChangeTheNextResult) {
    for (const int count : {64, 65, 120}) {
        TestPolygon polygon = flatPolygon(Testing::combShape(count));
        for (const std::size_t spoilt : {3U, 10U, 11U, 62U}) {
            TestPolygon bad = polygon;
            bad.positions[3 * spoilt] = kNan;
            isCutAsLiterally(bad);
            EXPECT_TRUE(isCutAsLiterally(polygon));
            ASSERT_FALSE(HasFailure()) << count << " corners, " << spoilt << " spoilt";
        }
    }
}

/// The calls of a meter during the triangulation of one polygon.
std::vector<int> meterCalls(PolygonTriangulator& triangulator, int count) {
    std::vector<int> steps;
    triangulator.setMeter([&steps](int corners) { steps.push_back(corners); });
    const TestPolygon polygon = flatPolygon(Testing::combShape(count));
    EXPECT_FALSE(
        triangulator.cornerTriangles(count, polygon.corners.data(), polygon.positions.data()).isEmpty());
    triangulator.setMeter({});
    return steps;
}

// Every 1024 prepared corners, and every 1024 clipped ones, count as 512.
TEST_F(PolygonTriangulatorTest, MeterIsCalledForEachThousandCornersTwice) {
    const std::vector<std::pair<int, std::size_t>> rows = {
        {64, 0}, {1023, 0}, {1024, 1}, {1026, 1}, {1027, 2}, {2047, 2}, {2048, 3}, {2051, 4}, {5000, 8}};
    for (const auto& [count, times] : rows)
        EXPECT_THAT(meterCalls(_triangulator, count),
                    testing::AllOf(testing::SizeIs(times), testing::Each(512)))
            << count;
}

TEST_F(PolygonTriangulatorTest, CancellationByTheMeterDoesNotChangeTheNextResult) {
    const TestPolygon large = flatPolygon(Testing::combShape(3000));
    for (const int calls : {0, 1, 2, 3}) {
        int left = calls;
        _triangulator.setMeter([&left](int) {
            if (left-- == 0)
                throw std::runtime_error("enough");
        });
        EXPECT_THROW(triangulate(large), std::runtime_error);
        _triangulator.setMeter({});
        for (const int next : {200, 40, 66})
            EXPECT_TRUE(isCutAsLiterally(flatPolygon(Testing::starShape(next))));
        ASSERT_FALSE(HasFailure()) << calls << " calls";
    }
}

TEST_F(PolygonTriangulatorTest, PolygonOfTooFewCornersGivesNothing) {
    EXPECT_FALSE(isCutAsLiterally(flatPolygon(Testing::PlaneShape())));
    for (const int count : {1, 2})
        EXPECT_FALSE(isCutAsLiterally(line(count)));
    EXPECT_TRUE(isCutAsLiterally(line(3)));
}

/// Vertex numbers whose triple needs more than 32 bits.
class FarVerticesTest : public PolygonTriangulatorTest {
protected:
    static constexpr unsigned int kFirst = 1'500'000'000;

    void SetUp() override {
        if (!_positions.isThere())
            GTEST_SKIP() << "there are no such addresses";
    }
    /// Copies the positions to far vertices. Returns: the corners of the polygon there.
    std::vector<int> place(const TestPolygon& polygon) {
        std::copy(polygon.positions.begin(), polygon.positions.end(),
                  _positions.data() + 3 * std::size_t{kFirst});
        std::vector<int> corners = polygon.corners;
        for (int& corner : corners)
            corner += static_cast<int>(kFirst);
        return corners;
    }
    const float* positions() const { return _positions.data(); }

private:
    SparseArray<float> _positions{3 * (std::size_t{kFirst} + 1000)};
};

TEST_F(FarVerticesTest, PolygonsAreTriangulatedLikeNearOnes) {
    std::mt19937 random(3);
    for (int count = 3; count < 100; count += count < 8 ? 1 : 31)
        for (int round = 0; round < 20; ++round) {
            const TestPolygon polygon = Testing::randomPolygon(count, random);
            MessageLog log;
            const std::vector<unsigned int> near = triangulate(polygon);
            const std::vector<int> corners = place(polygon);
            std::vector<unsigned int> far(3 * corners.size());
            far.erase(
                far.begin() +
                    (_triangulator.triangulate(count, corners.data(), positions(), far.data()) - far.data()),
                far.end());
            for (unsigned int& vertex : far)
                vertex -= kFirst;
            ASSERT_EQ(far, near) << count << " corners";
            QVector<unsigned int> single;
            Triangulate3D(polygon.normal, count, corners.data(), positions(), single);
            std::vector<unsigned int> given = cutAboutItsNormal(polygon);
            for (unsigned int& vertex : given)
                vertex += kFirst;
            ASSERT_THAT(single, ElementsAreArray(given));
        }
}

TEST_F(FarVerticesTest, WindingsOfFourFacesMatchThoseOfNearOnes) {
    std::mt19937 random(4);
    for (const int count : {3, 4})
        for (unsigned int unsureFace = 0; unsureFace < 4; ++unsureFace) {
            TestPolygon four;
            for (int i = 0; i < 12 * count + 3; ++i)
                four.positions.push_back(static_cast<float>(random() % 100));
            for (int i = 0; i < 4 * count; ++i)
                four.corners.push_back(i);
            four.positions[3 * static_cast<std::size_t>(count) * unsureFace] = kNan;
            const std::vector<int> corners = place(four);
            const std::vector<quint32> far(corners.begin(), corners.end());
            const std::vector<quint32> near(four.corners.begin(), four.corners.end());
            const auto windings = count == 3 ? quickTriangleWindings : quickQuadrilateralWindings;
            const FourWindings farOnes = windings(far.data(), positions());
            const FourWindings nearOnes = windings(near.data(), four.positions.data());
            ASSERT_EQ(farOnes.clockwise, nearOnes.clockwise);
            ASSERT_EQ(farOnes.undecided, nearOnes.undecided);
            ASSERT_NE(farOnes.undecided >> unsureFace & 1, 0U);
        }
}

TEST(FarPointsTest, DegenerateTrianglesAreFoundAmongFarPoints) {
    constexpr unsigned int kFirst = 2'200'000'000;
    const SparseArray<float> points(2 * (std::size_t{kFirst} + 4));
    if (!points.isThere())
        GTEST_SKIP() << "there are no such addresses";
    const float values[] = {0, 0, 1, 0, 0, 1, 2, 0};
    std::copy(std::begin(values), std::end(values), points.data() + 2 * std::size_t{kFirst});
    const unsigned int triangles[] = {kFirst, kFirst + 1, kFirst + 2, kFirst, kFirst + 1, kFirst + 3};
    EXPECT_EQ(FindDegenerateTriangle(6, triangles, points.data(), 0), 3);
    EXPECT_EQ(FindDegenerateTriangle(3, triangles, points.data(), 0), -1);
}

} // namespace
} // namespace Atelier::Vel
