#include <algorithm>
#include <cstdlib>
#include <random>

#include <velmodel/triangulation.h>

#include <gmock/gmock.h>

#include "geometry/polygontriangulator.h"
#include "literal/literaltriangulation.h"
#include "literal/testpolygons.h"
#include "support/messagelog.h"

namespace Atelier::Vel {
namespace {

using namespace Testing;

int scaled(int rounds) {
    return rounds * std::max(1, qEnvironmentVariableIntValue("VELMODEL_TEST_SCALE"));
}

struct Outcome {
    QVector<unsigned int> own;
    QVector<unsigned int> given;
    QVector<unsigned short> shortOwn;
    QVector<unsigned short> shortGiven;
    std::vector<LoggedMessage> messages;

    friend bool operator==(const Outcome& a, const Outcome& b) {
        return a.own == b.own && a.given == b.given && a.shortOwn == b.shortOwn &&
               a.shortGiven == b.shortGiven && a.messages == b.messages;
    }
};

/// Runs all four overloads; `cut` is either the library's or the literal one.
template<typename Cut>
Outcome outcomeOf(const TestPolygon& polygon, MessageLog& log, const Cut& cut) {
    Outcome outcome;
    log.clear();
    cut(polygon, outcome);
    outcome.messages = log.messages();
    return outcome;
}

const auto kLibrary = [](const TestPolygon& p, Outcome& outcome) {
    Triangulate3D(p.count(), p.corners.data(), p.positions.data(), outcome.own);
    Triangulate3D(p.normal, p.count(), p.corners.data(), p.positions.data(), outcome.given);
    Triangulate3D(p.count(), p.corners.data(), p.positions.data(), outcome.shortOwn);
    Triangulate3D(p.normal, p.count(), p.corners.data(), p.positions.data(), outcome.shortGiven);
};

const auto kLiteral = [](const TestPolygon& p, Outcome& outcome) {
    Literal::triangulate3D(p.count(), p.corners.data(), p.positions.data(), outcome.own);
    Literal::triangulate3D(p.normal, p.count(), p.corners.data(), p.positions.data(), outcome.given);
    Literal::triangulate3D(p.count(), p.corners.data(), p.positions.data(), outcome.shortOwn);
    Literal::triangulate3D(p.normal, p.count(), p.corners.data(), p.positions.data(), outcome.shortGiven);
};

/// What the polygon is, so that a failure can be run again.
std::string described(const TestPolygon& polygon) {
    std::string text;
    for (int vertex : polygon.corners)
        for (int axis = 0; axis < 3; ++axis)
            text += QByteArray::number(double(polygon.positions[3 * vertex + axis]), 'g', 9).toStdString() +
                    (axis == 2 ? "\n" : " ");
    return text;
}

/// How many of the polygons could be cut about their own normal: a comparison of failures proves little.
int compareRandomPolygons(int rounds, int least, int most, unsigned int seed) {
    MessageLog log;
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> sizes(least, most);
    int cuts = 0;
    for (int round = 0; round < rounds; ++round) {
        const TestPolygon polygon = randomPolygon(sizes(random), random);
        const Outcome expected = outcomeOf(polygon, log, kLiteral);
        const Outcome actual = outcomeOf(polygon, log, kLibrary);
        if (!(expected == actual)) {
            ADD_FAILURE() << "round " << round << " differs:\n" << described(polygon);
            return cuts;
        }
        cuts += expected.own.isEmpty() ? 0 : 1;
    }
    return cuts;
}

TEST(TriangulationComparisonTest, TrianglesAndQuadrilateralsEqualTheLiteralCut) {
    const int rounds = scaled(200'000);
    EXPECT_EQ(compareRandomPolygons(rounds, 3, 4, 1), rounds);
}

TEST(TriangulationComparisonTest, SmallPolygonsEqualTheLiteralCut) {
    const int rounds = scaled(150'000);
    EXPECT_GT(compareRandomPolygons(rounds, 5, 12, 2), rounds / 4);
}

TEST(TriangulationComparisonTest, PolygonsOfUpToSixtyFourCornersEqualTheLiteralCut) {
    const int rounds = scaled(12'000);
    EXPECT_GT(compareRandomPolygons(rounds, 13, 64, 3), rounds / 6);
}

TEST(TriangulationComparisonTest, IndexedPolygonsEqualTheLiteralCut) {
    const int rounds = scaled(1'000);
    EXPECT_GT(compareRandomPolygons(rounds, 65, 200, 4), rounds / 8);
}

} // namespace
} // namespace Atelier::Vel
