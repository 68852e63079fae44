#include "geometry/shapes/facematches.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace Atelier::Vel {

namespace {

using Match = FaceMatches::Match;

class FaceMatchesTest : public testing::Test {
protected:
    FaceMatches::Result add(const std::vector<quint32>& corners, quint32 tag = 0) {
        return _matches.add(corners.data(), static_cast<quint32>(corners.size()), tag);
    }
    Match match(const std::vector<quint32>& corners) { return add(corners).match; }

    FaceMatches _matches;
};

TEST_F(FaceMatchesTest, TriangleMatchesItsRotationsAndItsReverse) {
    EXPECT_EQ(add({5, 7, 9}, 11).match, Match::None);
    EXPECT_EQ(match({5, 7, 9}), Match::Same);
    EXPECT_EQ(match({7, 9, 5}), Match::Same);
    EXPECT_EQ(add({9, 5, 7}).tag, 11U);
    EXPECT_EQ(match({9, 7, 5}), Match::Opposite);
    EXPECT_EQ(match({5, 9, 7}), Match::Opposite);
    EXPECT_EQ(match({5, 7, 8}), Match::None);
}

TEST_F(FaceMatchesTest, QuadrilateralMatchesInItsCyclicOrderOnly) {
    EXPECT_EQ(match({0, 1, 2, 3}), Match::None);
    EXPECT_EQ(match({0, 2, 1, 3}), Match::None);
    EXPECT_EQ(match({2, 3, 0, 1}), Match::Same);
    EXPECT_EQ(match({1, 0, 3, 2}), Match::Opposite);
    EXPECT_EQ(match({0, 1, 2}), Match::None);
}

TEST_F(FaceMatchesTest, PolygonMatchesItsRotationsAndItsReverse) {
    std::vector<quint32> corners(40);
    std::iota(corners.begin(), corners.end(), 100);
    EXPECT_EQ(match(corners), Match::None);
    std::rotate(corners.begin(), corners.begin() + 17, corners.end());
    EXPECT_EQ(match(corners), Match::Same);
    std::reverse(corners.begin(), corners.end());
    EXPECT_EQ(match(corners), Match::Opposite);
    std::swap(corners[3], corners[4]);
    EXPECT_EQ(match(corners), Match::None);
}

TEST_F(FaceMatchesTest, RandomFacesMatchAsInAPlainSearch) {
    std::mt19937 random(2);
    std::vector<std::vector<quint32>> faces;
    const auto normalized = [](std::vector<quint32> face) {
        std::rotate(face.begin(), std::min_element(face.begin(), face.end()), face.end());
        return face;
    };
    int found = 0;
    for (int i = 0; i < 3000; ++i) {
        std::vector<quint32> face;
        while (face.size() < 3 + i % 2U) {
            const auto vertex = static_cast<quint32>(random() % 14);
            if (std::find(face.begin(), face.end(), vertex) == face.end())
                face.push_back(vertex);
        }
        face = normalized(face);
        const std::vector<quint32> reverse = normalized({face.rbegin(), face.rend()});
        const bool isSame = std::find(faces.begin(), faces.end(), face) != faces.end();
        const bool isOpposite = std::find(faces.begin(), faces.end(), reverse) != faces.end();
        const Match expected = isSame ? Match::Same : isOpposite ? Match::Opposite : Match::None;
        EXPECT_EQ(match(face), expected) << i;
        found += expected == Match::None ? 0 : 1;
        if (expected == Match::None)
            faces.push_back(face);
    }
    EXPECT_GT(found, 500);
    EXPECT_EQ(_matches.skipped(), 0U);
}

TEST_F(FaceMatchesTest, FanIsComparedCompletely) {
    for (quint32 i = 1; i < 5000; ++i)
        EXPECT_EQ(match({0, i, i + 1}), Match::None);
    EXPECT_EQ(_matches.skipped(), 0U);
    for (quint32 i = 1; i < 5000; ++i)
        EXPECT_EQ(match({0, i, i + 1}), Match::Same);
}

} // namespace

} // namespace Atelier::Vel
