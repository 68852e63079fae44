#include <algorithm>
#include <random>
#include <vector>

#include <velmodel/triangulation.h>

#include <gmock/gmock.h>

#include "geometry/triangulation/polygontriangulator.h"
#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"
#include "support/messagelog.h"
#include "support/scale.h"
#include "triangulationoutcome.h"

namespace Atelier::Vel {
namespace {

using namespace Testing;

/// A description of the polygon for reproducing a failure.
std::string described(const TestPolygon& polygon) {
    std::string text;
    for (int vertex : polygon.corners)
        for (int axis = 0; axis < 3; ++axis)
            text += QByteArray::number(double(polygon.positions[3 * vertex + axis]), 'g', 9).toStdString() +
                    (axis == 2 ? "\n" : " ");
    return text;
}

/// The number of polygons that were triangulated about their own normal: comparing only failures proves
/// little.
int compareRandomPolygons(int rounds, int least, int most, unsigned int seed) {
    MessageLog log;
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> sizes(least, most);
    int cuts = 0;
    for (int round = 0; round < rounds; ++round) {
        const TestPolygon polygon = randomPolygon(sizes(random), random);
        const TriangulationOutcome expected = literalOutcome(polygon, log);
        const TriangulationOutcome actual = libraryOutcome(polygon, log);
        if (!(expected == actual)) {
            ADD_FAILURE() << "round " << round << " differs:\n" << described(polygon);
            return cuts;
        }
        cuts += expected.own.isEmpty() ? 0 : 1;
    }
    return cuts;
}

TEST(TriangulationComparisonTest, TrianglesAndQuadrilateralsEqualTheLiteralTriangulation) {
    const int rounds = scaled(200'000);
    EXPECT_EQ(compareRandomPolygons(rounds, 3, 4, 1), rounds);
}

TEST(TriangulationComparisonTest, SmallPolygonsEqualTheLiteralTriangulation) {
    const int rounds = scaled(150'000);
    EXPECT_GT(compareRandomPolygons(rounds, 5, 12, 2), rounds / 4);
}

TEST(TriangulationComparisonTest, PolygonsOfUpToSixtyFourCornersEqualTheLiteralTriangulation) {
    const int rounds = scaled(12'000);
    EXPECT_GT(compareRandomPolygons(rounds, 13, 64, 3), rounds / 8);
}

TEST(TriangulationComparisonTest, IndexedPolygonsEqualTheLiteralTriangulation) {
    const int rounds = scaled(1'000);
    EXPECT_GT(compareRandomPolygons(rounds, 65, 200, 4), rounds / 8);
}

TEST(TriangulationComparisonTest, MediumPolygonsOfEachShapeEqualTheLiteralTriangulation) {
    MessageLog log;
    std::mt19937 random(5);
    for (const auto makeShape : {convexShape, combShape, starShape, spiralShape})
        for (int round = 0; round < scaled(6); ++round) {
            const int count = std::uniform_int_distribution<int>(65, 1200)(random);
            const TestPolygon polygon = flatPolygon(makeShape(count));
            QVector<unsigned int> expected;
            QVector<unsigned int> actual;
            Literal::triangulate3D(count, polygon.corners.data(), polygon.positions.data(), expected);
            Triangulate3D(count, polygon.corners.data(), polygon.positions.data(), actual);
            ASSERT_EQ(expected.size(), 3 * (count - 2));
            ASSERT_EQ(actual, expected) << count;
        }
}

TEST(TriangulationComparisonTest, MediumNastyPolygonsEqualTheLiteralTriangulation) {
    EXPECT_GT(compareRandomPolygons(std::max(60, scaled(60)), 300, 1200, 6), 0);
}

/// Many polygons as the faces of one mesh.
class MeshOfPolygons {
public:
    void add(const TestPolygon& polygon) {
        const int firstVertex = static_cast<int>(_positions.size() / 3);
        _starts.push_back(static_cast<unsigned int>(_corners.size()));
        _counts.push_back(static_cast<unsigned int>(polygon.count()));
        _positions.insert(_positions.end(), polygon.positions.begin(), polygon.positions.end());
        for (int vertex : polygon.corners)
            _corners.push_back(firstVertex + vertex);
    }

    void cutOneByOne(const std::vector<unsigned int>& faces, QVector<unsigned int>& triangles) const {
        for (unsigned int face : faces)
            Triangulate3D(static_cast<int>(_counts[face]), _corners.data() + _starts[face], _positions.data(),
                          triangles);
    }

    void cutWithOneTriangulator(const std::vector<unsigned int>& faces,
                                QVector<unsigned int>& triangles) const {
        PolygonTriangulator triangulator;
        triangles.resize(3 * static_cast<int>(_corners.size()));
        unsigned int* out = triangles.data();
        for (unsigned int face : faces)
            out = triangulator.triangulate(static_cast<int>(_counts[face]), _corners.data() + _starts[face],
                                           _positions.data(), out);
        triangles.resize(static_cast<int>(out - triangles.constData()));
    }

private:
    std::vector<unsigned int> _counts;
    std::vector<unsigned int> _starts;
    std::vector<int> _corners;
    std::vector<float> _positions;
};

TEST(TriangulationComparisonTest, OneTriangulatorGivesTheSameAsSingleCalls) {
    MessageLog log;
    std::mt19937 random(7);
    std::discrete_distribution<int> counts({0, 1, 1, 40, 40, 10, 10, 5, 5, 5, 5});
    for (int round = 0; round < scaled(500); ++round) {
        MeshOfPolygons mesh;
        std::vector<unsigned int> faces;
        for (unsigned int face = 0; face < 200; ++face) {
            const int count = counts(random);
            TestPolygon polygon = randomPolygon(std::max(count, 3), random);
            polygon.corners.resize(count);
            mesh.add(polygon);
            faces.push_back(face);
        }
        std::shuffle(faces.begin(), faces.end(), random);
        QVector<unsigned int> expected;
        QVector<unsigned int> actual;
        log.clear();
        mesh.cutOneByOne(faces, expected);
        log.clear();
        mesh.cutWithOneTriangulator(faces, actual);
        ASSERT_EQ(actual, expected);
        ASSERT_THAT(log.messages(), testing::IsEmpty()) << "the caller reports what cannot be triangulated";
    }
}

TEST(TriangulationComparisonTest, DegenerateTrianglesEqualTheLiteralSearch) {
    std::mt19937 random(8);
    std::uniform_real_distribution<float> number(-1, 1);
    std::vector<float> points(60);
    std::vector<unsigned int> indices(30);
    int found = 0;
    for (int round = 0; round < scaled(50'000); ++round) {
        const float height = round % 2 == 0 ? 1 : 3e-3F;
        for (std::size_t k = 0; k < points.size(); k += 2) {
            points[k] = number(random);
            points[k + 1] = height * number(random);
        }
        for (unsigned int& index : indices)
            index = static_cast<unsigned int>(random() % 30);
        const int start = static_cast<int>(random() % 30);
        const int count = start + (30 - start) / 3 * 3; // whole triangles: the literal search reads them all
        const int expected = Literal::findDegenerateTriangle(count, indices.data(), points.data(), start);
        ASSERT_EQ(FindDegenerateTriangle(count, indices.data(), points.data(), start), expected);
        found += expected >= 0 ? 1 : 0;
    }
    EXPECT_GT(found, 1000);
}

struct LargeShape {
    const char* name;
    PlaneShape (*make)(int);
    int count;
};

class LargePolygonTest : public testing::TestWithParam<LargeShape> {};

TEST_P(LargePolygonTest, TrianglesAddUpToThePolygon) {
    const int count = std::min(GetParam().count, scaled(GetParam().count));
    const TestPolygon polygon = flatPolygon(GetParam().make(count));
    const float* positions = polygon.positions.data();
    QVector<unsigned int> triangles;
    Triangulate3D(count, polygon.corners.data(), positions, triangles);
    ASSERT_EQ(triangles.size(), 3 * (count - 2));

    const auto cross = [positions](unsigned int origin, unsigned int p, unsigned int q) {
        const float* o = positions + 3 * std::size_t(origin);
        const float* a = positions + 3 * std::size_t(p);
        const float* b = positions + 3 * std::size_t(q);
        return (double(a[0]) - o[0]) * (double(b[1]) - o[1]) - (double(a[1]) - o[1]) * (double(b[0]) - o[0]);
    };
    double polygonArea = 0;
    for (int k = 1; k + 1 < count; ++k)
        polygonArea += cross(0, static_cast<unsigned int>(k), static_cast<unsigned int>(k + 1));
    double triangleArea = 0;
    std::vector<int> uses(count);
    for (int k = 0; k < triangles.size(); k += 3) {
        const double area = cross(triangles[k], triangles[k + 1], triangles[k + 2]);
        // All triangles are wound like the polygon, except slivers that depend on rounding.
        ASSERT_GT(area / polygonArea, -1e-9);
        triangleArea += area;
        for (int corner = 0; corner < 3; ++corner)
            ++uses[triangles[k + corner]];
    }
    EXPECT_NEAR(triangleArea / polygonArea, 1, 1e-9);
    EXPECT_EQ(std::count(uses.begin(), uses.end(), 0), 0);
}

// Above 131,072 corners, products of corners and leaves in the search index need 64 bits.
INSTANTIATE_TEST_SUITE_P(Shapes, LargePolygonTest,
                         testing::Values(LargeShape{"Convex", convexShape, 100'000},
                                         LargeShape{"Comb", combShape, 200'000},
                                         LargeShape{"Star", starShape, 100'000},
                                         LargeShape{"Spiral", spiralShape, 100'000}),
                         [](const auto& shape) { return shape.param.name; });

} // namespace
} // namespace Atelier::Vel
