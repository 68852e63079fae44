#include "geometry/shapes/edgecrossing.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace Atelier::Vel {

namespace {

struct Polygon {
    std::vector<float> positions;
    double normal[3] = {0, 0, 1};

    void add(float x, float y, float z = 0) { positions.insert(positions.end(), {x, y, z}); }
    int count() const { return static_cast<int>(positions.size() / 3); }
};

Polygon flat(std::initializer_list<std::pair<float, float>> points) {
    Polygon polygon;
    for (const auto& [x, y] : points)
        polygon.add(x, y);
    return polygon;
}

EdgeCrossing crossingOf(const Polygon& polygon, qint64& comparisons) {
    std::vector<quint32> corners(static_cast<std::size_t>(polygon.count()));
    std::iota(corners.begin(), corners.end(), 0);
    return findEdgeCrossing(polygon.positions.data(), corners.data(), polygon.count(), polygon.normal,
                            comparisons);
}

EdgeCrossing crossingOf(const Polygon& polygon) {
    qint64 comparisons = 1'000'000'000;
    return crossingOf(polygon, comparisons);
}

TEST(EdgeCrossingTest, BowTieCrosses) {
    const EdgeCrossing crossing = crossingOf(flat({{0, 0}, {1, 0}, {0, 1}, {1, 1}}));
    EXPECT_EQ(crossing.first, 1);
    EXPECT_EQ(crossing.second, 3);
    EXPECT_FALSE(crossing.isUndecided);
}

TEST(EdgeCrossingTest, ConvexAndConcavePolygonsDoNotCross) {
    EXPECT_EQ(crossingOf(flat({{0, 0}, {1, 0}, {1, 1}, {0, 1}})).first, -1);
    EXPECT_EQ(crossingOf(flat({{0, 0}, {4, 0}, {4, 4}, {2, 1}, {0, 4}})).first, -1);
}

TEST(EdgeCrossingTest, PentagramCrosses) {
    Polygon star;
    for (int i = 0; i < 5; ++i)
        star.add(static_cast<float>(std::cos(i * 2.513274)), static_cast<float>(std::sin(i * 2.513274)));
    EXPECT_GE(crossingOf(star).first, 0);
}

TEST(EdgeCrossingTest, EdgesThatTouchDoNotCross) {
    // A corner on another edge, a corner on a corner, and a bridge that is used in both directions.
    EXPECT_EQ(crossingOf(flat({{0, 0}, {4, 0}, {4, 4}, {2, 0}, {0, 4}})).first, -1);
    EXPECT_EQ(crossingOf(flat({{0, 0}, {2, 2}, {4, 0}, {4, 4}, {2, 2}, {0, 4}})).first, -1);
    EXPECT_EQ(
        crossingOf(flat({{0, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}, {3, 3}, {3, 6}, {6, 6}, {6, 3}, {3, 3}}))
            .first,
        -1);
}

TEST(EdgeCrossingTest, CrossingWithinRoundingDoesNotCount) {
    const auto isFound = [](float depth) {
        return crossingOf(flat({{0, 0}, {1, 0}, {1, 1}, {0.5F, -depth}, {0, 1}})).first >= 0;
    };
    EXPECT_FALSE(isFound(5e-7F));
    EXPECT_TRUE(isFound(5e-6F));
}

TEST(EdgeCrossingTest, IsSeenAlongTheNormal) {
    // A bow tie in the plane of y and z, and in that of x and z.
    Polygon polygon;
    for (const auto& [a, b] : {std::pair(0.0F, 0.0F), {1.0F, 0.0F}, {0.0F, 1.0F}, {1.0F, 1.0F}})
        polygon.add(7, a, b);
    polygon.normal[2] = 0.1;
    polygon.normal[0] = -0.9;
    EXPECT_EQ(crossingOf(polygon).first, 1);
    Polygon other;
    for (const auto& [a, b] : {std::pair(0.0F, 0.0F), {1.0F, 0.0F}, {0.0F, 1.0F}, {1.0F, 1.0F}})
        other.add(a, 7, b);
    other.normal[2] = 0.1;
    other.normal[1] = -0.9;
    EXPECT_EQ(crossingOf(other).first, 1);
}

TEST(EdgeCrossingTest, ComparisonsAreLimited) {
    Polygon comb; // every edge has the same range of x
    for (int i = 0; i < 100; ++i)
        comb.add(i % 2 == 0 ? 0.0F : 1.0F, static_cast<float>(i));
    qint64 comparisons = 1000;
    const EdgeCrossing crossing = crossingOf(comb, comparisons);
    EXPECT_TRUE(crossing.isUndecided);
    EXPECT_EQ(crossing.first, -1);
    EXPECT_LT(comparisons, 0);
    comparisons = 1'000'000;
    EXPECT_FALSE(crossingOf(comb, comparisons).isUndecided);
    EXPECT_EQ(comparisons, 1'000'000 - 100 * 99 / 2);
}

double side(const float* a, const float* b, const float* c) {
    return (double(b[0]) - double(a[0])) * (double(c[1]) - double(a[1])) -
           (double(b[1]) - double(a[1])) * (double(c[0]) - double(a[0]));
}

// On a grid, so that a crossing is either deep or none at all.
bool crossesLiterally(const Polygon& polygon) {
    const int count = polygon.count();
    const auto point = [&](int corner) { return polygon.positions.data() + 3 * (corner % count); };
    for (int i = 0; i < count; ++i)
        for (int k = 0; k < i; ++k)
            if (side(point(i), point(i + 1), point(k)) * side(point(i), point(i + 1), point(k + 1)) < 0 &&
                side(point(k), point(k + 1), point(i)) * side(point(k), point(k + 1), point(i + 1)) < 0)
                return true;
    return false;
}

TEST(EdgeCrossingTest, AgreesWithTheComparisonOfAllPairs) {
    std::mt19937 random(1);
    int crossing = 0;
    for (int i = 0; i < 2000; ++i) {
        Polygon polygon;
        const auto count = 3 + random() % 6;
        for (unsigned int corner = 0; corner < count; ++corner)
            polygon.add(static_cast<float>(random() % 12), static_cast<float>(random() % 12));
        const bool isCrossing = crossesLiterally(polygon);
        crossing += isCrossing ? 1 : 0;
        EXPECT_EQ(crossingOf(polygon).first >= 0, isCrossing) << i;
    }
    EXPECT_GT(crossing, 200);
    EXPECT_LT(crossing, 1800);
}

} // namespace

} // namespace Atelier::Vel
