#include <velmodel/picking.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include <QtCore/QDirIterator>

#include <gmock/gmock.h>

#include <velmodel/modelbuilder.h>
#include <velmodel/objloader.h>

#include "drawdata/drawdatacontent.h"
#include "drawdata/pickingtree.h"
#include "geometry/picking/pickingray.h"
#include "pickingmeshes.h"
#include "support/messagelog.h"
#include "support/scale.h"

namespace Atelier::Vel {
namespace {

using Testing::MessageLog;
using Testing::scaled;

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kUnsignedByte = 0x1401;
constexpr quint64 kMask = 0xF0;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// Squares across the z axis. Each is a group with a draw key of its own, or with that of others.
class Squares {
public:
    /// Two triangles from -1 to 1.
    void add(float z, quint64 flags) {
        const auto first = static_cast<unsigned int>(_positions.size() / 3);
        _positions.insert(_positions.end(), {-1, -1, z, 1, -1, z, 1, 1, z, -1, 1, z});
        for (const unsigned int corner : {0U, 1U, 2U, 0U, 2U, 3U})
            _corners.push_back(first + corner);
        _flags.push_back(flags);
    }

    DrawData data(int components = 3, unsigned int type = kFloat) const {
        const MessageLog log;
        ModelBuilder builder({}, kMask);
        const QString position = QStringLiteral("position");
        builder.createVertexAttribute(position, components, type, 0, 0);
        builder.addValuesToVertexAttribute(position, unsigned(_positions.size()), _positions.data(), type);
        builder.addIndicesToVertexAttribute(position, unsigned(_corners.size()), _corners.data());
        const std::vector<unsigned int> counts(_corners.size() / 3, 3);
        builder.addVertexCountsToFaces(unsigned(counts.size()), counts.data());
        for (unsigned int i = 0; i < _flags.size(); ++i) {
            const QString name = QStringLiteral("square %1").arg(i);
            const unsigned int faces[] = {2 * i, 2 * i + 1};
            builder.createMaterialGroup(name, InstanceData(QStringLiteral("material")), int(i), _flags[i]);
            builder.addFacesToMaterialGroup(name, 2, faces, QString());
        }
        return builder.prepare(position);
    }

private:
    std::vector<float> _positions;
    std::vector<unsigned int> _corners;
    std::vector<quint64> _flags;
};

/// Squares at the heights 3, 2 and 1. The second one has a lower draw key, so it is the first drawable.
DrawData threeSquares() {
    Squares squares;
    squares.add(3, 0x20);
    squares.add(2, 0x10);
    squares.add(1, 0x20);
    return squares.data();
}

const PickRay kDown = {{0.25F, 0.5F, 10}, {0, 0, -2}};

struct Place {
    int drawable;
    int command;
    friend bool operator==(const Place& a, const Place& b) {
        return a.drawable == b.drawable && a.command == b.command;
    }
};

Place placeOf(const std::optional<PickHit>& hit) {
    return hit ? Place{hit->drawable, hit->command} : Place{-1, -1};
}

QMatrix4x4 moved(float x, float y, float z) {
    QMatrix4x4 matrix;
    matrix.translate(x, y, z);
    return matrix;
}

/// The nearest hit of a model, by testing all triangles of each command.
TriangleHit nearestOfAll(const DrawData& data, const PickRay& ray) {
    const DrawDataContent& content = DrawDataAccess::content(data);
    const auto& positions = content.attributes[std::size_t(content.position)];
    PickingMesh mesh = {
        {positions.data, positions.bytes, positions.stride()}, data.indices().data, data.indices().count, {}};
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int i = 0; i < data.commandCount(drawable); ++i)
            mesh.ranges.push_back(
                {data.command(drawable, i).firstIndex, data.command(drawable, i).count / 3});
    const SpaceVector direction = {double(ray.direction.x()), double(ray.direction.y()),
                                   double(ray.direction.z())};
    const auto prepared = PickingRay::make(
        {double(ray.origin.x()), double(ray.origin.y()), double(ray.origin.z())}, direction,
        std::sqrt(direction[0] * direction[0] + direction[1] * direction[1] + direction[2] * direction[2]));
    return prepared ? Testing::nearestOfAll(mesh, *prepared) : TriangleHit();
}

QVector3D randomPoint(std::mt19937& random) {
    std::uniform_real_distribution<float> number(-1, 1);
    const float x = number(random);
    const float y = number(random);
    return {x, y, number(random)};
}

DrawData::Box boxOf(const DrawData& data) {
    DrawData::Box all;
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int i = 0; i < data.commandCount(drawable); ++i) {
            const DrawData::Box box = data.commandBox(drawable, i);
            if (box.isValid && !all.isValid)
                all = box;
            for (int axis = 0; box.isValid && axis < 3; ++axis) {
                all.minimum[axis] = std::min(all.minimum[axis], box.minimum[axis]);
                all.maximum[axis] = std::max(all.maximum[axis], box.maximum[axis]);
            }
        }
    return all;
}

QVector3D vertexAt(const DrawData& data, quint64 index) {
    const DrawDataContent& content = DrawDataAccess::content(data);
    const auto* const positions =
        static_cast<const float*>(content.attributes[std::size_t(content.position)].data);
    const float* const vertex = positions + quint64{3} * data.indices().data[index];
    return {vertex[0], vertex[1], vertex[2]};
}

/// A ray to a vertex, to the middle of a triangle or to any point of the box.
PickRay rayThrough(const DrawData& data, const DrawData::Box& box, std::mt19937& random) {
    const QVector3D centre = (box.minimum + box.maximum) / 2;
    const QVector3D size = box.maximum - box.minimum;
    const QVector3D half = size + QVector3D(1, 1, 1) * size.length() / 10; // flat models have no depth
    const QVector3D from = centre + half * randomPoint(random);
    const quint64 first = random() % (data.indices().count / 3) * 3;
    const QVector3D targets[] = {
        vertexAt(data, first),
        (vertexAt(data, first) + vertexAt(data, first + 1) + vertexAt(data, first + 2)) / 3,
        centre + half * randomPoint(random)};
    return {from, targets[random() % 3] - from};
}

} // namespace

TEST(PickingTest, NearestCommandIsHitWithItsTriangle) {
    const auto hit = ModelPicker(threeSquares()).pick(kDown);
    ASSERT_TRUE(hit);
    EXPECT_EQ(placeOf(hit), (Place{1, 0}));
    EXPECT_EQ(hit->triangle, 1U);
    EXPECT_EQ(hit->distance, 7);
    EXPECT_EQ(hit->point, QVector3D(0.25F, 0.5F, 3));
}

TEST(PickingTest, WeightsInterpolateTheVerticesOfTheTriangle) {
    const DrawData data = threeSquares();
    const PickHit hit = ModelPicker(data).pick(kDown).value();
    const auto* const positions = static_cast<const float*>(data.attributes()[0].data);
    const DrawElementsIndirectCommand& command = data.command(hit.drawable, hit.command);
    QVector3D point;
    for (int i = 0; i < 3; ++i) {
        const float* const vertex =
            positions + 3 * data.indices().data[command.firstIndex + 3 * hit.triangle + quint32(i)];
        point += hit.weights[i] * QVector3D(vertex[0], vertex[1], vertex[2]);
    }
    EXPECT_EQ(point, hit.point);
    EXPECT_EQ(hit.weights.x() + hit.weights.y() + hit.weights.z(), 1);
}

TEST(PickingTest, FilteredCommandsAreNotHit) {
    const ModelPicker picker(threeSquares());
    const auto without = [&](std::vector<Place> hidden) {
        return placeOf(picker.pick(kDown, [&](int drawable, int command) {
            return std::find(hidden.begin(), hidden.end(), Place{drawable, command}) == hidden.end();
        }));
    };
    EXPECT_EQ(without({{1, 0}}), (Place{0, 0}));
    EXPECT_EQ(without({{1, 0}, {0, 0}}), (Place{1, 1}));
    EXPECT_EQ(without({{1, 0}, {0, 0}, {1, 1}}), (Place{-1, -1}));
}

TEST(PickingTest, LowestCommandOfThoseAtOneDistanceIsHit) {
    Squares squares;
    squares.add(0, 0x20);
    squares.add(0, 0x10);
    squares.add(0, 0x10);
    EXPECT_EQ(placeOf(pick(squares.data(), kDown)), (Place{0, 0}));
    const auto notFirst = [](int drawable, int command) { return drawable + command > 0; };
    EXPECT_EQ(placeOf(ModelPicker(squares.data()).pick(kDown, notFirst)), (Place{0, 1}));
}

TEST(PickingTest, ExceptionOfTheFilterPassesThrough) {
    const auto stop = [](int /*drawable*/, int /*command*/) -> bool { throw std::runtime_error("stop"); };
    EXPECT_THROW(ModelPicker(threeSquares()).pick(kDown, stop), std::runtime_error);
}

TEST(PickingTest, NothingIsHitWithoutTrianglesOrWithoutARay) {
    EXPECT_FALSE(pick(DrawData(), kDown));
    EXPECT_FALSE(ModelPicker().pick(kDown));
    EXPECT_FALSE(ModelPicker().placed([](int, int) { return QMatrix4x4(); }).pick(kDown));
    EXPECT_EQ(ModelPicker().byteCount(), 0U);
    EXPECT_FALSE(pick(Squares().data(), kDown));
    const DrawData data = threeSquares();
    EXPECT_FALSE(pick(data, {}));
    EXPECT_FALSE(pick(data, {{0, 0, kNaN}, {0, 0, -1}}));
    EXPECT_FALSE(pick(data, {{0, 0, 1}, {0, kInfinity, -1}}));
}

TEST(PickingTest, OnlyFloatPositionsOfThreeComponentsAreHit) {
    Squares squares;
    squares.add(1, 0x10);
    EXPECT_TRUE(pick(squares.data(), kDown));
    EXPECT_FALSE(pick(squares.data(2), kDown));
    EXPECT_FALSE(pick(squares.data(3, kUnsignedByte), kDown));
}

TEST(PickingTest, PlacedCommandsAreHitWhereTheyArePlaced) {
    const ModelPicker picker(threeSquares());
    const ModelPicker placed =
        picker.placed([](int drawable, int) { return drawable == 0 ? moved(0, 0, 4) : QMatrix4x4(); });
    const auto hit = placed.pick(kDown);
    ASSERT_EQ(placeOf(hit), (Place{0, 0}));
    EXPECT_EQ(hit->point, QVector3D(0.25F, 0.5F, 6));
    EXPECT_EQ(hit->distance, 4);
    EXPECT_EQ(placeOf(picker.pick(kDown)), (Place{1, 0})) << "the first picker is unchanged";
    const ModelPicker back = placed.placed([](int, int) { return QMatrix4x4(); });
    EXPECT_EQ(placeOf(back.pick(kDown)), (Place{1, 0})) << "the matrices replace the earlier ones";
}

TEST(PickingTest, CommandsThatArePlacedAsideAreMissed) {
    const ModelPicker placed = ModelPicker(threeSquares()).placed([](int drawable, int command) {
        return moved(drawable == 1 && command == 0 ? 50 : 0, 0, 0);
    });
    EXPECT_EQ(placeOf(placed.pick(kDown)), (Place{0, 0}));
    EXPECT_EQ(placeOf(placed.pick({{50, 0, 9}, {0, 0, -1}})), (Place{1, 0}));
    const auto notTheFirst = [](int drawable, int) { return drawable == 1; };
    EXPECT_EQ(placeOf(placed.pick(kDown, notTheFirst)), (Place{1, 1}));
}

TEST(PickingTest, DistanceOfAPlacedCommandIsThatOfTheRaysCoordinates) {
    QMatrix4x4 matrix;
    matrix.translate(1, 2, 3);
    matrix.rotate(90, 1, 0, 0);
    matrix.scale(2, 4, 8);
    const ModelPicker placed = ModelPicker(threeSquares()).placed([&](int, int) { return matrix; });
    // The squares are at y = 2 - 8 z, since the rotation takes z to -y.
    const auto hit = placed.pick({{1, -100, 3}, {0, 5, 0}});
    ASSERT_TRUE(hit);
    EXPECT_EQ(placeOf(hit), (Place{1, 0}));
    EXPECT_NEAR(hit->point.y(), 2 - 8 * 3, 1e-4);
    EXPECT_NEAR(hit->distance, 100 - 22, 1e-4);
}

TEST(PickingTest, IdentitiesChangeNothing) {
    std::mt19937 random(1);
    const ModelPicker picker(threeSquares());
    const ModelPicker placed = picker.placed([](int, int) { return QMatrix4x4(); });
    for (int i = 0; i < 200; ++i) {
        const PickRay ray = {3 * randomPoint(random), randomPoint(random)};
        const auto hit = picker.pick(ray);
        const auto same = placed.pick(ray);
        ASSERT_EQ(placeOf(hit), placeOf(same));
        if (hit) {
            EXPECT_EQ(hit->distance, same->distance);
            EXPECT_EQ(hit->point, same->point);
            EXPECT_EQ(hit->triangle, same->triangle);
        }
    }
}

TEST(PickingTest, CommandsWithoutAnInverseMatrixAreNotHit) {
    QMatrix4x4 flat;
    flat.scale(1, 1, 0);
    QMatrix4x4 wrong;
    wrong(0, 1) = kNaN;
    for (const QMatrix4x4& matrix : {flat, wrong}) {
        const ModelPicker placed = ModelPicker(threeSquares()).placed([&](int drawable, int) {
            return drawable == 1 ? matrix : QMatrix4x4();
        });
        EXPECT_EQ(placeOf(placed.pick(kDown)), (Place{0, 0}));
        EXPECT_EQ(placeOf(placed.pick(kDown, [](int drawable, int) { return drawable == 1; })),
                  (Place{-1, -1}));
    }
}

TEST(PickingTest, LastRowOfAMatrixIsNotUsed) {
    QMatrix4x4 matrix;
    matrix.setRow(3, {1, 2, 3, 4});
    const ModelPicker placed = ModelPicker(threeSquares()).placed([&](int, int) { return matrix; });
    EXPECT_EQ(placed.pick(kDown).value().distance, 7);
}

TEST(PickingTest, CopiesAndPickersShareOneTree) {
    const DrawData data = threeSquares();
    const auto treeOf = [](const DrawData& of) {
        const DrawDataContent& content = DrawDataAccess::content(of);
        return &content.picking.treeOf(content);
    };
    const DrawData copy = data; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(treeOf(data), treeOf(copy));
    EXPECT_EQ(ModelPicker(copy).byteCount(), treeOf(data)->byteCount());
    EXPECT_GT(ModelPicker(copy).byteCount(), 6 * sizeof(TriangleHierarchy::Triangle));
}

TEST(PickingTest, PickerKeepsTheDataThatItNeeds) {
    ModelPicker picker;
    {
        DrawData data = threeSquares();
        picker = ModelPicker(data);
        data = DrawData();
    }
    const ModelPicker copy = picker;
    EXPECT_EQ(placeOf(copy.pick(kDown)), (Place{1, 0}));
}

TEST(PickingTest, OptimisedDataHasATreeOfItsOwn) {
    if (!DrawData::canOptimise())
        GTEST_SKIP() << "built without meshoptimizer";
    const DrawData data = threeSquares();
    EXPECT_TRUE(pick(data, kDown));
    const DrawData optimised = data.optimised();
    const PickHit hit = pick(optimised, kDown).value();
    EXPECT_EQ(hit.point, QVector3D(0.25F, 0.5F, 3));
    EXPECT_EQ(hit.distance, nearestOfAll(optimised, kDown).distance);
}

TEST(PickingTest, ThreadsPickAtTheSameTime) {
    constexpr int kThreads = 4;
    for (int round = 0; round < 20; ++round) {
        const DrawData data = threeSquares();
        std::vector<std::future<Place>> results;
        for (int i = 0; i < kThreads; ++i)
            results.push_back(std::async(std::launch::async, [&] { return placeOf(pick(data, kDown)); }));
        for (auto& result : results)
            EXPECT_EQ(result.get(), (Place{1, 0}));
    }
}

TEST(PickingTest, RayOfAPixelGoesThroughItsCentre) {
    QMatrix4x4 view;
    view.perspective(60, 2, 0.5F, 100);
    view.lookAt({0, 0, 5}, {0, 0, 0}, {0, 1, 0});
    const PickRay middle = PickRay::through({100, 50}, {200, 100}, view);
    EXPECT_NEAR(middle.origin.z(), 4.5, 1e-5);
    EXPECT_NEAR((middle.direction - QVector3D(0, 0, -1)).length(), 0, 1e-6);
    // The upper left corner: 30 degrees up, and twice that slope to the left.
    const PickRay corner = PickRay::through({0, 0}, {200, 100}, view);
    const float up = std::tan(0.5235988F);
    EXPECT_NEAR((corner.direction - QVector3D(-2 * up, up, -1).normalized()).length(), 0, 1e-6);
}

TEST(PickingTest, RayOfAPixelIsMappedBackToIt) {
    std::mt19937 random(2);
    for (int round = 0; round < 200; ++round) {
        QMatrix4x4 view;
        view.perspective(40, 1.5F, 0.01F, 1000);
        view.lookAt(100 * randomPoint(random), randomPoint(random), {0, 1, 0});
        const QPointF pixel(1200 * (0.5 + 0.5 * double(randomPoint(random).x())), 300);
        const PickRay ray = PickRay::through(pixel, {1200, 800}, view);
        const QVector3D seen = view.map(ray.origin + 50 * ray.direction);
        EXPECT_NEAR((double(seen.x()) + 1) * 600, pixel.x(), 0.05);
        EXPECT_NEAR((1 - double(seen.y())) * 400, pixel.y(), 0.05);
    }
}

TEST(PickingTest, OrthographicRaysAreParallel) {
    QMatrix4x4 view;
    view.ortho(-2, 2, -1, 1, 1, 9);
    const PickRay ray = PickRay::through({0, 0}, {4, 2}, view);
    EXPECT_EQ(ray.origin, QVector3D(-2, 1, -1));
    EXPECT_EQ(ray.direction, QVector3D(0, 0, -1));
}

TEST(PickingTest, ViewWithoutAFarPlaneHasRays) {
    // The limit of perspective(90, 1, 1, far) for a far plane at infinity.
    const QMatrix4x4 view(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, -2, 0, 0, -1, 0);
    const PickRay ray = PickRay::through({1, 1}, {2, 2}, view);
    EXPECT_EQ(ray.origin, QVector3D(0, 0, -1));
    EXPECT_EQ(ray.direction, QVector3D(0, 0, -1));
}

TEST(PickingTest, NoPixelsAndNoInverseMakeNoDirection) {
    QMatrix4x4 flat;
    flat.fill(1);
    EXPECT_TRUE(PickRay::through({0, 0}, {2, 2}, flat).direction.isNull());
    EXPECT_TRUE(PickRay::through({0, 0}, {0, 2}, QMatrix4x4()).direction.isNull());
}

TEST(PickingTest, HitsOfRealModelsAreThoseOfAllTriangles) {
    const QByteArray named = qgetenv("VELMODEL_SHARED_MODELS");
    std::mt19937 random(3);
    int models = 0;
    int allHits = 0;
    for (const QString& folder : {QStringLiteral(VELMODEL_SOURCE_DIR "/samples"),
                                  named.isEmpty() ? QStringLiteral(VELMODEL_SOURCE_DIR "/../shared/models")
                                                  : QFile::decodeName(named)})
        for (QDirIterator file(folder, {QStringLiteral("*.obj")}, QDir::Files, QDirIterator::Subdirectories);
             file.hasNext();) {
            const MessageLog log;
            QString error;
            const DrawData data =
                readDrawDataFromOBJFile(file.next(), error, {}, nullptr, LoadOptions::forgiving());
            const DrawData::Box box = data.isNull() ? DrawData::Box() : boxOf(data);
            constexpr quint64 kSmallModel = 300'000; // indices; the search through all takes long
            if (!box.isValid || data.indices().count > kSmallModel)
                continue;
            ++models;
            const ModelPicker picker(data);
            int hits = 0;
            for (int i = 0; i < scaled(40); ++i) {
                const PickRay ray = rayThrough(data, box, random);
                const TriangleHit expected = nearestOfAll(data, ray);
                const auto hit = picker.pick(ray);
                ASSERT_EQ(hit.has_value(), expected.isHit()) << file.filePath().toStdString();
                hits += hit ? 1 : 0;
                if (!hit)
                    continue;
                EXPECT_EQ(hit->distance, expected.distance);
                quint32 number = hit->triangle;
                for (int d = 0; d <= hit->drawable; ++d)
                    for (int c = 0; c < (d < hit->drawable ? data.commandCount(d) : hit->command); ++c)
                        number += data.command(d, c).count / 3;
                EXPECT_EQ(number, expected.number) << file.filePath().toStdString();
            }
            allHits += hits;
        }
    EXPECT_GT(models, 3);
    EXPECT_GT(allHits, scaled(10) * models);
}

} // namespace Atelier::Vel
