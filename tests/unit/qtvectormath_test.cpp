#include "geometry/qtvectormath.h"

#include <cstring>
#include <limits>
#include <random>

#include <QtGui/QVector2D>
#include <QtGui/QVector3D>

#include <gmock/gmock.h>

#include "support/scale.h"

namespace Atelier::Vel {
namespace {

constexpr int kRounds = 2'000'000;

/// The same bits, or both not a number.
bool same(float a, float b) {
    return (a == b && std::signbit(a) == std::signbit(b)) || (std::isnan(a) && std::isnan(b));
}

bool same(const PlanePoint& p, const QVector2D& q) {
    return same(p.x, q.x()) && same(p.y, q.y());
}

bool same(const SpacePoint& p, const QVector3D& q) {
    return same(p.x, q.x()) && same(p.y, q.y()) && same(p.z, q.z());
}

/// Numbers of every size: ordinary ones, those whose vectors have about the length 1 or 1e-6, and any bits at
/// all.
class Numbers {
public:
    float next() {
        switch (_random() % 4) {
        case 0:
            return uniform(-1, 1);
        case 1:
            return uniform(-1.5e-6F, 1.5e-6F);
        case 2:
            return (_random() % 2 == 0 ? 0.6F : 0.8F) + uniform(-1e-6F, 1e-6F);
        default:
            return bits();
        }
    }

private:
    float uniform(float low, float high) { return std::uniform_real_distribution<float>(low, high)(_random); }
    float bits() {
        const auto pattern = static_cast<std::uint32_t>(_random());
        float value = 0;
        std::memcpy(&value, &pattern, sizeof value);
        return value;
    }

    std::mt19937 _random{17};
};

TEST(TriangulationMathTest, PlaneVectorsComputeLikeQt) {
    Numbers numbers;
    for (int round = 0; round < Testing::scaled(kRounds); ++round) {
        const PlanePoint p = {numbers.next(), numbers.next()};
        const PlanePoint q = {numbers.next(), numbers.next()};
        const QVector2D qtP(p.x, p.y);
        const QVector2D qtQ(q.x, q.y);
        ASSERT_TRUE(same(normalized(p), qtP.normalized())) << p.x << " " << p.y;
        ASSERT_TRUE(same(dotProduct(p, q), QVector2D::dotProduct(qtP, qtQ)));
        ASSERT_TRUE(same(p - q, qtP - qtQ));
        ASSERT_EQ(p == q, qtP == qtQ);
    }
}

TEST(TriangulationMathTest, SpaceVectorsComputeLikeQt) {
    Numbers numbers;
    for (int round = 0; round < Testing::scaled(kRounds); ++round) {
        const SpacePoint p = {numbers.next(), numbers.next(), numbers.next()};
        const SpacePoint q = {numbers.next(), numbers.next(), numbers.next()};
        const QVector3D qtP(p.x, p.y, p.z);
        const QVector3D qtQ(q.x, q.y, q.z);
        SpacePoint inPlace = p;
        normalize(inPlace);
        QVector3D qtInPlace = qtP;
        qtInPlace.normalize();
        ASSERT_TRUE(same(inPlace, qtInPlace)) << p.x << " " << p.y << " " << p.z;
        ASSERT_TRUE(same(normalized(p), qtP.normalized())) << p.x << " " << p.y << " " << p.z;
        ASSERT_TRUE(same(dotProduct(p, q), QVector3D::dotProduct(qtP, qtQ)));
        ASSERT_TRUE(same(crossProduct(p, q), QVector3D::crossProduct(qtP, qtQ)));
        ASSERT_TRUE(same(p - q, qtP - qtQ));
        ASSERT_TRUE(same(p + q, qtP + qtQ));
    }
}

TEST(TriangulationMathTest, NullVectorsBecomeZeroOrStay) {
    const SpacePoint tiny = {1e-7F, 0, 0};
    SpacePoint kept = tiny;
    normalize(kept);
    EXPECT_TRUE(same(kept, QVector3D(1e-7F, 0, 0)));
    EXPECT_TRUE(same(normalized(tiny), QVector3D()));
    EXPECT_TRUE(same(normalized(PlanePoint{0, 1e-6F}), QVector2D(0, 1e-6F).normalized()));
}

TEST(TriangulationMathTest, ReverseOfADirectionIsItsNegative) {
    Numbers numbers;
    for (int round = 0; round < Testing::scaled(kRounds / 4); ++round) {
        const PlanePoint p = {numbers.next(), numbers.next()};
        const PlanePoint q = {numbers.next(), numbers.next()};
        const PlanePoint there = normalized(q - p);
        const PlanePoint back = -normalized(p - q);
        const auto alike = [](float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); };
        ASSERT_TRUE(alike(there.x, back.x) && alike(there.y, back.y));
    }
}

} // namespace
} // namespace Atelier::Vel
