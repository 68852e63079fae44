// DrawData::optimised and its figures.

#include "drawdata/optimise.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <future>
#include <numeric>
#include <random>
#include <set>
#include <vector>

#include <gmock/gmock.h>

#include <meshoptimizer.h>

#include <velgl/gpumodel.h>

#include "drawdata/drawdatacontent.h"
#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAreArray;
using Testing::Lie;
using Testing::MessageLog;
using Testing::PlainAllocator;
using Testing::PlainStream;

constexpr unsigned int kUnsignedByte = 0x1401;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kInt = 0x1404;
constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kDouble = 0x140A;

using Commands = QVector<DrawElementsIndirectCommand>;
using Points = std::vector<float>;

/// The contents of draw data. The weight of a vertex is its number, so that all vertices have different
/// bytes.
struct Mesh {
    std::vector<quint32> indices;
    Points points; ///< `components` for each vertex
    int components = 3;
    std::vector<Commands> drawables;

    quint64 vertexCount() const { return points.size() / static_cast<quint64>(components); }
};

DrawElementsIndirectCommand command(quint32 first, quint32 count) {
    return {count, 1, first, 0, 0};
}

template<typename T>
QSharedPointer<ModelDataStream> streamOf(unsigned int type, const std::vector<T>& values) {
    QSharedPointer<ModelDataStream> stream(new PlainStream(type, values.size()));
    stream->setData(0, values.size(), values.data());
    return stream;
}

DrawDataContent::Drawable drawableOf(quint64 key, const Commands& commands) {
    DrawDataContent::Drawable drawable;
    drawable.key = key;
    drawable.commands = commands;
    for (int i = 0; i < commands.size(); ++i) {
        drawable.names.append(QStringLiteral("group %1.%2").arg(key).arg(i));
        drawable.materials.append(InstanceData(QStringLiteral("material %1.%2").arg(key).arg(i)));
        drawable.ids.append(i + 7);
    }
    return drawable;
}

std::shared_ptr<DrawDataContent> contentOf(
    const Mesh& mesh,
    const QSharedPointer<ModelDataStreamAllocator>& allocator = QSharedPointer<PlainAllocator>::create()) {
    auto content = std::make_shared<DrawDataContent>();
    std::vector<double> weights(mesh.vertexCount());
    std::iota(weights.begin(), weights.end(), 0.0);
    std::vector<quint8> colours(mesh.vertexCount() * 3);
    std::iota(colours.begin(), colours.end(), quint8{0});
    content->allocator = allocator;
    content->indices = streamOf(kUnsignedInt, mesh.indices);
    content->indexWords = WordView::of(content->indices.data());
    content->attributes.emplace_back(QStringLiteral("colour"), 3, streamOf(kUnsignedByte, colours));
    content->attributes.emplace_back(QStringLiteral("position"), mesh.components,
                                     streamOf(kFloat, mesh.points));
    content->attributes.emplace_back(QStringLiteral("weight"), 1, streamOf(kDouble, weights));
    content->position = 1;
    content->vertexCount = mesh.vertexCount();
    for (const Commands& commands : mesh.drawables)
        content->drawables.push_back(drawableOf(content->drawables.size() + 3, commands));
    return content;
}

DrawData dataOf(const Mesh& mesh) {
    return DrawDataAccess::make(contentOf(mesh));
}

std::vector<quint32> indicesOf(const DrawData& data) {
    return std::vector<quint32>(data.indices().data, data.indices().data + data.indices().count);
}

std::vector<double> weightsOf(const DrawData& data) {
    const DrawData::Attribute weights = data.attributes()[2];
    const auto* const begin = static_cast<const double*>(weights.data);
    return std::vector<double>(begin, begin + weights.vertexCount);
}

/// The values of a vertex in all attributes.
QByteArray vertexBytes(const DrawData& data, quint32 vertex) {
    QByteArray bytes;
    for (const DrawData::Attribute& attribute : data.attributes()) {
        const quint64 stride = attribute.bytes / attribute.vertexCount;
        bytes +=
            QByteArray(static_cast<const char*>(attribute.data) + vertex * stride, static_cast<int>(stride));
    }
    return bytes;
}

/// The vertices that a command draws, in its order.
std::vector<QByteArray> corners(const DrawData& data, const DrawElementsIndirectCommand& drawn) {
    std::vector<QByteArray> result;
    for (quint32 i = 0; i < drawn.count; ++i)
        result.push_back(vertexBytes(data, data.indices().data[drawn.firstIndex + i]));
    return result;
}

/// The triangles of a command, independent of their order. Each begins with its smallest vertex and keeps its
/// winding.
std::multiset<std::vector<QByteArray>> triangles(const DrawData& data,
                                                 const DrawElementsIndirectCommand& drawn) {
    std::multiset<std::vector<QByteArray>> result;
    const std::vector<QByteArray> all = corners(data, drawn);
    for (std::size_t i = 0; i + 3 <= all.size(); i += 3) {
        std::vector<QByteArray> triangle(all.begin() + i, all.begin() + i + 3);
        std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()), triangle.end());
        result.insert(triangle);
    }
    return result;
}

/// All bytes, and the commands.
QByteArray everything(const DrawData& data) {
    QByteArray bytes(reinterpret_cast<const char*>(data.indices().data),
                     static_cast<int>(data.indices().count * sizeof(quint32)));
    for (const DrawData::Attribute& attribute : data.attributes())
        bytes += attribute.name.toUtf8() +
                 QByteArray(static_cast<const char*>(attribute.data), static_cast<int>(attribute.bytes));
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int i = 0; i < data.commandCount(drawable); ++i)
            bytes += QByteArray(reinterpret_cast<const char*>(&data.command(drawable, i)),
                                sizeof(DrawElementsIndirectCommand));
    return bytes;
}

/// Random triangles in seven commands of two drawables, one of them empty, with vertices and indices that
/// none of them uses.
Mesh randomMesh(unsigned int seed) {
    std::mt19937 engine(seed);
    const auto random = [&engine] { return static_cast<quint32>(engine()); };
    Mesh mesh;
    mesh.components = 3 + static_cast<int>(seed % 2);
    const quint32 vertexCount = 20 + random() % 200;
    for (quint32 i = 0; i < vertexCount * static_cast<quint32>(mesh.components); ++i)
        mesh.points.push_back(static_cast<float>(random() % 1000) / 100);
    quint32 next = random() % 5;
    for (int drawable = 0; drawable < 2; ++drawable) {
        Commands commands;
        for (int i = 0; i < 3 + drawable; ++i) {
            const quint32 count = i == 1 && drawable == 0 ? 0 : 3 * (1 + random() % 60);
            commands.append(command(next, count));
            next += count + random() % 4;
        }
        mesh.drawables.push_back(commands);
    }
    for (quint32 i = 0; i < next; ++i)
        mesh.indices.push_back(random() % (vertexCount - 5) + 2);
    return mesh;
}

/// A grid of `side` times `side` squares, flat in the unit square, its triangles in any order, as one
/// command.
Mesh shuffledGrid(quint32 side) {
    std::mt19937 random(side);
    Mesh mesh;
    for (quint32 i = 0; i < (side + 1) * (side + 1); ++i) {
        const quint32 column = i % (side + 1);
        const quint32 row = i / (side + 1);
        mesh.points.insert(mesh.points.end(), {float(column) / float(side), float(row) / float(side), 0.0F});
    }
    std::vector<std::array<quint32, 3>> all;
    for (quint32 i = 0; i < side * side; ++i) {
        const quint32 corner = i / side * (side + 1) + i % side;
        all.push_back({corner, corner + 1, corner + side + 2});
        all.push_back({corner, corner + side + 2, corner + side + 1});
    }
    std::shuffle(all.begin(), all.end(), random);
    for (const auto& triangle : all)
        mesh.indices.insert(mesh.indices.end(), triangle.begin(), triangle.end());
    mesh.drawables = {{command(0, static_cast<quint32>(mesh.indices.size()))}};
    return mesh;
}

/// The grid bent to two spheres, one inside the other, that reach from 0 to 1 in each axis.
Mesh shuffledSpheres(quint32 side, int components) {
    Mesh mesh = shuffledGrid(side);
    Points points;
    for (std::size_t i = 0; i < mesh.points.size(); i += 3) {
        const bool isInner = mesh.points[i + 1] > 0.5F;
        const float turn = mesh.points[i] * 2 * float(M_PI);
        const float tilt = std::fmod(mesh.points[i + 1] * 2, 1.0F) * float(M_PI);
        const float radius = isInner ? 0.25F : 0.5F;
        for (const float axis :
             {std::sin(tilt) * std::cos(turn), std::sin(tilt) * std::sin(turn), std::cos(tilt)})
            points.push_back(std::clamp(0.5F + radius * axis, 0.0F, 1.0F));
        points.resize(points.size() + static_cast<std::size_t>(components - 3), -7);
    }
    const std::size_t end = points.size() - static_cast<std::size_t>(components);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        points[axis] = 0;
        points[end + axis] = 1;
    }
    mesh.points = points;
    mesh.components = components;
    return mesh;
}

/// A first-in, first-out vertex cache.
quint64 literalTransforms(const std::vector<quint32>& indices, std::size_t size) {
    std::deque<quint32> cache;
    quint64 transforms = 0;
    for (const quint32 index : indices)
        if (std::find(cache.begin(), cache.end(), index) == cache.end()) {
            ++transforms;
            cache.push_back(index);
            if (cache.size() > size)
                cache.pop_front();
        }
    return transforms;
}

/// Whether a stream of `type` with this lie cannot be used. Others can be resized, or are never appended to.
bool isHarmful(Lie lie, unsigned int type) {
    const std::set<Lie> harmless = {Lie::Short, Lie::Long, Lie::NoAppend, Lie::NoResize};
    return harmless.count(lie) == 0 && (lie != Lie::WideType || type != kDouble); // doubles are the widest
}

bool isShared(const DrawData& a, const DrawData& b) {
    return a.indices().data == b.indices().data && a.attributes()[1].data == b.attributes()[1].data;
}

} // namespace

TEST(OptimiseTest, EveryCommandKeepsItsTrianglesAndTheirWinding) {
    for (unsigned int seed = 0; seed < 40; ++seed) {
        const Mesh mesh = randomMesh(seed);
        const DrawData before = dataOf(mesh);
        const DrawData after = before.optimised();
        ASSERT_FALSE(isShared(before, after));
        for (const Commands& commands : mesh.drawables)
            for (const DrawElementsIndirectCommand& drawn : commands)
                EXPECT_EQ(triangles(after, drawn), triangles(before, drawn)) << "seed " << seed;
    }
}

TEST(OptimiseTest, IndicesOutsideOfAllCommandsNameTheSameVertices) {
    const Mesh mesh = randomMesh(4);
    const DrawData before = dataOf(mesh);
    const DrawData after = before.optimised();
    ASSERT_NE(indicesOf(after), indicesOf(before));
    std::vector<bool> isDrawn(mesh.indices.size(), false);
    for (const Commands& commands : mesh.drawables)
        for (const DrawElementsIndirectCommand& drawn : commands)
            std::fill_n(isDrawn.begin() + drawn.firstIndex, drawn.count, true);
    ASSERT_GT(std::count(isDrawn.begin(), isDrawn.end(), false), 0);
    for (std::size_t i = 0; i < isDrawn.size(); ++i)
        if (!isDrawn[i]) {
            EXPECT_EQ(vertexBytes(after, indicesOf(after)[i]), vertexBytes(before, indicesOf(before)[i]));
        }
}

TEST(OptimiseTest, CommandsKeepTheirOrderTheirRangesAndTheirGroups) {
    const DrawData before = dataOf(randomMesh(1));
    const DrawData after = before.optimised();
    ASSERT_EQ(after.drawableCount(), 2);
    for (int drawable = 0; drawable < 2; ++drawable) {
        EXPECT_EQ(after.drawKey(drawable), before.drawKey(drawable));
        ASSERT_EQ(after.commandCount(drawable), before.commandCount(drawable));
        for (int i = 0; i < before.commandCount(drawable); ++i) {
            EXPECT_EQ(after.command(drawable, i).firstIndex, before.command(drawable, i).firstIndex);
            EXPECT_EQ(after.command(drawable, i).count, before.command(drawable, i).count);
            EXPECT_EQ(after.group(drawable, i).name, before.group(drawable, i).name);
            EXPECT_EQ(after.group(drawable, i).id, before.group(drawable, i).id);
            EXPECT_EQ(after.group(drawable, i).material.name(), before.group(drawable, i).material.name());
        }
    }
}

TEST(OptimiseTest, AttributesKeepTheirNamesTypesAndSizes) {
    const DrawData before = dataOf(randomMesh(3));
    const DrawData after = before.optimised();
    EXPECT_EQ(after.vertexCount(), before.vertexCount());
    ASSERT_EQ(after.attributes().size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(after.attributes()[i].name, before.attributes()[i].name);
        EXPECT_EQ(after.attributes()[i].type, before.attributes()[i].type);
        EXPECT_EQ(after.attributes()[i].components, before.attributes()[i].components);
        EXPECT_EQ(after.attributes()[i].bytes, before.attributes()[i].bytes);
        EXPECT_NE(after.attributes()[i].data, before.attributes()[i].data);
    }
}

TEST(OptimiseTest, ShuffledGridFillsTheVertexCacheWell) {
    const DrawData before = dataOf(shuffledGrid(60));
    const DrawData after = before.optimised();
    EXPECT_GT(before.vertexCacheStatistics().acmr, 2);
    EXPECT_LT(after.vertexCacheStatistics().acmr, 0.8);
    EXPECT_LT(after.vertexCacheStatistics().atvr, 1.6);
}

TEST(OptimiseTest, SecondTimeKeepsTheImprovement) {
    const DrawData once = dataOf(shuffledGrid(40)).optimised();
    EXPECT_LE(once.optimised().vertexCacheStatistics().acmr, once.vertexCacheStatistics().acmr * 1.05F);
}

TEST(OptimiseTest, VerticesAreNumberedByFirstUseAndUnusedOnesFollowInTheirOldOrder) {
    for (unsigned int seed = 0; seed < 10; ++seed) {
        const DrawData before = dataOf(randomMesh(seed));
        const DrawData after = before.optimised();
        quint32 used = 0;
        for (const quint32 index : indicesOf(after)) {
            EXPECT_LE(index, used);
            used = std::max(used, index + 1);
        }
        std::vector<double> weights = weightsOf(after);
        EXPECT_LE(used, weights.size() - 5);
        EXPECT_TRUE(std::is_sorted(weights.begin() + used, weights.end()));
        std::sort(weights.begin(), weights.end());
        EXPECT_EQ(weights, weightsOf(before)) << "all are kept";
    }
}

// The plain version: what the library gives for a whole command, with the numbers of all vertices.
TEST(OptimiseTest, OrderServesTheVertexCacheAndThenOverdraw) {
    for (const int components : {3, 4}) {
        const Mesh mesh = shuffledSpheres(32, components);
        const std::size_t count = mesh.indices.size();
        std::vector<quint32> cached(count);
        std::vector<quint32> expected(count);
        meshopt_optimizeVertexCache(cached.data(), mesh.indices.data(), count, mesh.vertexCount());
        meshopt_optimizeOverdraw(expected.data(), cached.data(), count, mesh.points.data(),
                                 mesh.vertexCount(), static_cast<std::size_t>(components) * sizeof(float),
                                 1.05F);
        ASSERT_NE(expected, cached);
        const DrawData after = dataOf(mesh).optimised();
        const std::vector<double> weights = weightsOf(after);
        std::vector<quint32> oldNumbers;
        for (const quint32 index : indicesOf(after))
            oldNumbers.push_back(static_cast<quint32>(weights[index]));
        EXPECT_EQ(oldNumbers, expected) << components << " components";
    }
}

TEST(OptimiseTest, OrderDoesNotDependOnTheSizeOfTheMesh) {
    const Mesh mesh = shuffledSpheres(16, 3);
    const std::vector<quint32> expected = indicesOf(dataOf(mesh).optimised());
    for (const int exponent : {127, 60, -60, -100}) {
        Mesh scaled = mesh;
        for (float& coordinate : scaled.points)
            coordinate = std::ldexp(coordinate - 0.5F, exponent);
        EXPECT_EQ(indicesOf(dataOf(scaled).optimised()), expected) << "2^" << exponent;
    }
}

TEST(OptimiseTest, OrderDoesNotDependOnThePositionOfTheMesh) {
    Mesh mesh = shuffledSpheres(32, 3);
    for (float& coordinate : mesh.points) // few bits, so that a shift rounds nothing
        coordinate = std::round(coordinate * 1024) / 1024;
    const std::vector<quint32> expected = indicesOf(dataOf(mesh).optimised());
    for (float& coordinate : mesh.points)
        coordinate += 8192;
    EXPECT_EQ(indicesOf(dataOf(mesh).optimised()), expected);
}

TEST(OptimiseTest, EqualPointsAreAccepted) {
    Mesh mesh = shuffledGrid(8);
    std::fill(mesh.points.begin(), mesh.points.end(), 5.0F);
    const DrawData before = dataOf(mesh);
    EXPECT_EQ(triangles(before.optimised(), mesh.drawables[0][0]), triangles(before, mesh.drawables[0][0]));
}

TEST(OptimiseTest, OriginalIsUnchanged) {
    const DrawData data = dataOf(randomMesh(2));
    const DrawData copy(data);
    const QByteArray before = everything(data);
    const DrawData after = data.optimised();
    EXPECT_NE(everything(after), before);
    EXPECT_EQ(everything(data), before);
    EXPECT_TRUE(isShared(data, copy));
}

TEST(OptimiseTest, NullDrawDataStaysNull) {
    EXPECT_TRUE(DrawData().optimised().isNull());
    EXPECT_EQ(DrawData().vertexCacheStatistics().acmr, 0);
    EXPECT_EQ(DrawData().vertexCacheStatistics().atvr, 0);
}

TEST(OptimiseTest, WithoutTrianglesTheVerticesStay) {
    Mesh mesh;
    mesh.points = {0, 1, 2, 3, 4, 5};
    mesh.drawables = {{command(0, 0)}, {}};
    const DrawData before = dataOf(mesh);
    EXPECT_EQ(everything(before.optimised()), everything(before));
    EXPECT_EQ(before.vertexCacheStatistics().acmr, 0);
    EXPECT_EQ(before.vertexCacheStatistics().atvr, 0);
    const DrawData empty = dataOf(Mesh());
    EXPECT_EQ(everything(empty.optimised()), everything(empty));
}

TEST(OptimiseTest, OtherPositionsThanThreeFloatsLeaveTheDataUnchanged) {
    const Mesh mesh = randomMesh(0);
    const auto integers = contentOf(mesh);
    integers->attributes[1].values->setType(kInt);
    const auto plane = contentOf(mesh);
    plane->attributes[1].components = 2;
    const auto nowhere = contentOf(mesh);
    nowhere->position = -1;
    for (const auto& content : {integers, plane, nowhere}) {
        const DrawData data = DrawDataAccess::make(content);
        EXPECT_TRUE(isShared(data.optimised(), data));
    }
}

TEST(OptimiseTest, IndexOutOfRangeLeavesTheDataUnchanged) {
    for (const quint32 beyond : {0U, 1U, 0x7FFFFFFFU}) {
        Mesh mesh = randomMesh(0);
        mesh.indices.back() = static_cast<quint32>(mesh.vertexCount()) + beyond;
        const DrawData data = dataOf(mesh);
        EXPECT_TRUE(isShared(data.optimised(), data));
        EXPECT_EQ(data.vertexCacheStatistics().acmr, 0);
    }
}

TEST(OptimiseTest, CommandWithABaseVertexLeavesTheDataUnchanged) {
    Mesh mesh = randomMesh(0);
    mesh.drawables[1][0].baseVertex = 1;
    const DrawData data = dataOf(mesh);
    EXPECT_TRUE(isShared(data.optimised(), data));
}

TEST(OptimiseTest, StreamShorterThanTheVerticesLeavesTheDataUnchanged) {
    const auto content = contentOf(randomMesh(0));
    DrawDataContent::Stream& weights = content->attributes[2];
    weights.values->resize(weights.values->size() - 1);
    weights = DrawDataContent::Stream(weights.name, 1, weights.values);
    const DrawData data = DrawDataAccess::make(content);
    EXPECT_TRUE(isShared(data.optimised(), data));
    const auto shortIndices = contentOf(randomMesh(0));
    --shortIndices->indexWords.count;
    const DrawData fewer = DrawDataAccess::make(shortIndices);
    EXPECT_TRUE(isShared(fewer.optimised(), fewer));
}

TEST(OptimiseTest, ValuesAfterTheLastVertexStay) {
    const auto content = contentOf(randomMesh(0));
    DrawDataContent::Stream& weights = content->attributes[2];
    const double extra[] = {-1, -2};
    weights.values->append(2, extra);
    weights = DrawDataContent::Stream(weights.name, 1, weights.values);
    const std::vector<double> after = weightsOf(DrawDataAccess::make(content).optimised());
    EXPECT_EQ(std::vector<double>(after.end() - 2, after.end()), (std::vector<double>{-1, -2}));
}

TEST(OptimiseTest, AttributeWithoutComponentsIsKept) {
    const auto content = contentOf(randomMesh(0));
    content->attributes[0].components = 0;
    const DrawData before = DrawDataAccess::make(content);
    const DrawData after = before.optimised();
    EXPECT_FALSE(isShared(after, before));
    EXPECT_EQ(after.attributes()[0].data, before.attributes()[0].data);
}

/// Commands whose order is not to be changed, beside one whose order is.
class OddCommandTest : public testing::Test {
protected:
    static Mesh mesh() {
        Mesh mesh = shuffledGrid(20);
        mesh.drawables.clear();
        return mesh;
    }
    static void expectKept(const Mesh& mesh, const Commands& kept) {
        const DrawData before = dataOf(mesh);
        const DrawData after = before.optimised();
        EXPECT_FALSE(isShared(before, after));
        for (const DrawElementsIndirectCommand& drawn : kept)
            EXPECT_EQ(corners(after, drawn), corners(before, drawn)) << drawn.firstIndex;
        EXPECT_NE(corners(after, kReordered), corners(before, kReordered));
        EXPECT_EQ(triangles(after, kReordered), triangles(before, kReordered));
    }

    static constexpr DrawElementsIndirectCommand kReordered{300, 1, 600, 0, 0};
};

constexpr DrawElementsIndirectCommand OddCommandTest::kReordered;

TEST_F(OddCommandTest, OverlappingCommandsKeepTheirOrder) {
    const Commands overlaps[] = {
        {command(0, 90), command(87, 90)},                   // in their order
        {command(87, 90), command(0, 90)},                   // the other way round
        {command(0, 300), command(30, 30), command(90, 30)}, // inside of another one
        {command(0, 90), command(0, 90)},                    // twice the same
        {command(0, 90), command(60, 90), command(120, 90)}, // a chain
        {command(0, 300), command(30, 30), command(90, 30), command(297, 90)},
    };
    for (const Commands& commands : overlaps) {
        Mesh odd = mesh();
        odd.drawables = {commands, {kReordered}};
        expectKept(odd, commands);
        odd.drawables = {{kReordered}, commands};
        expectKept(odd, commands);
    }
}

TEST_F(OddCommandTest, CommandsSideBySideDoNotOverlap) {
    Mesh sides = mesh();
    const Commands commands = {command(0, 300), command(300, 0), command(300, 300), kReordered,
                               command(700, 0)};
    sides.drawables = {commands};
    const DrawData before = dataOf(sides);
    const DrawData after = before.optimised();
    for (const int number : {0, 2, 3})
        EXPECT_NE(corners(after, commands[number]), corners(before, commands[number])) << number;
}

TEST_F(OddCommandTest, CommandThatExceedsTheIndicesKeepsItsOrder) {
    Mesh odd = mesh();
    const auto count = static_cast<quint32>(odd.indices.size());
    for (const auto& beyond : {command(count - 300, 303), command(count - 300, 0xFFFFFFFF), command(count, 3),
                               command(0xFFFFFFFF, 3), command(0xFFFFFFFF, 0xFFFFFFFF)}) {
        odd.drawables = {{kReordered, beyond}};
        expectKept(odd, beyond.firstIndex < count ? Commands{command(count - 300, 300)} : Commands());
    }
    odd.drawables = {{kReordered, command(count - 300, 300)}};
    const DrawData data = dataOf(odd);
    EXPECT_NE(corners(data.optimised(), odd.drawables[0][1]), corners(data, odd.drawables[0][1]))
        << "the command fits";
}

TEST_F(OddCommandTest, CommandWithAPartOfATriangleKeepsItsOrder) {
    for (const quint32 count : {1U, 2U, 91U, 92U}) {
        Mesh odd = mesh();
        odd.drawables = {{command(0, count), kReordered}};
        expectKept(odd, odd.drawables[0].mid(0, 1));
    }
}

TEST_F(OddCommandTest, CommandWithAPositionThatIsNotFiniteKeepsItsOrder) {
    for (const float odd : {NAN, INFINITY, -INFINITY})
        for (const int axis : {0, 1, 2}) {
            Mesh strange = mesh();
            strange.drawables = {{command(0, 90), kReordered}};
            // A vertex of its own, which the other command does not use.
            strange.indices[50] = static_cast<quint32>(strange.vertexCount());
            strange.points.insert(strange.points.end(), {0, 0, 0});
            strange.points[strange.points.size() - 3 + static_cast<std::size_t>(axis)] = odd;
            expectKept(strange, strange.drawables[0].mid(0, 1));
        }
}

TEST(OptimiseTest, MissingStreamLeavesTheDataUnchanged) {
    const char* const purposes[] = {"triangle indices", "vertex attribute 'colour'",
                                    "vertex attribute 'position'", "vertex attribute 'weight'"};
    for (std::size_t request = 0; request < std::size(purposes); ++request)
        for (const Lie lie : Testing::kLies) {
            const MessageLog log;
            const auto allocator = QSharedPointer<Testing::LyingAllocator<PlainStream>>::create();
            const DrawData before = DrawDataAccess::make(contentOf(randomMesh(0), allocator));
            allocator->lie(request, lie);
            const DrawData after = before.optimised();
            std::vector<QString> warnings;
            if (isHarmful(lie, allocator->requests()[request].type))
                warnings = {QStringLiteral("Unable to upload: no stream could be made for the optimised ") +
                            QLatin1String(purposes[request])};
            EXPECT_EQ(isShared(after, before), !warnings.empty()) << request << ' ' << int(lie);
            EXPECT_THAT(log.texts(QtWarningMsg), ElementsAreArray(warnings));
        }
}

TEST(OptimiseTest, NewStreamsComeFromTheAllocatorOfTheOldOnes) {
    const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
    const DrawData before = DrawDataAccess::make(contentOf(randomMesh(0), allocator));
    before.optimised();
    EXPECT_EQ(allocator->count(), 4);
}

TEST(OptimiseTest, MeterIsCalledAfterEachCommandWithItsIndexCount) {
    Mesh mesh = randomMesh(6);
    mesh.drawables[1].append(command(0, 0xFFFFFFFF));
    std::vector<int> expected;
    for (const Commands& commands : mesh.drawables)
        for (const DrawElementsIndirectCommand& drawn : commands)
            expected.push_back(static_cast<int>(std::min(drawn.count, 0x7FFFFFFFU)));
    std::vector<int> counts;
    EXPECT_NE(optimisedContent(*contentOf(mesh), [&](int count) { counts.push_back(count); }), nullptr);
    EXPECT_EQ(counts, expected);
}

TEST(OptimiseTest, ExceptionOfTheMeterCancels) {
    struct Cancelled {};
    const DrawData data = dataOf(randomMesh(5));
    const QByteArray before = everything(data);
    const auto content = contentOf(randomMesh(5));
    int calls = 0;
    const WorkMeter meter = [&](int) {
        if (++calls == 3)
            throw Cancelled();
    };
    EXPECT_THROW(optimisedContent(*content, meter), Cancelled);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(everything(DrawDataAccess::make(content)), before);
}

TEST(OptimiseTest, ProgressIsReportedAfterEachCommandAndCancels) {
    const DrawData data = dataOf(randomMesh(5));
    std::vector<qint64> done;
    ASSERT_FALSE(data.optimised([&done, &data](const LoadStep& step) {
                         EXPECT_EQ(step.phase, LoadPhase::Optimising);
                         EXPECT_EQ(step.total, static_cast<qint64>(data.indices().count));
                         done.push_back(step.done);
                         return true;
                     })
                     .isNull());
    ASSERT_GT(done.size(), 2U);
    EXPECT_EQ(done.front(), 0);
    EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
    for (const qint64 last : done)
        EXPECT_TRUE(data.optimised([last](const LoadStep& step) { return step.done < last; }).isNull());
}

TEST(OptimiseTest, SeveralThreadsGetTheSame) {
    const DrawData data = dataOf(shuffledSpheres(48, 3));
    const QByteArray expected = everything(data.optimised());
    std::vector<std::future<QByteArray>> results;
    for (int thread = 0; thread < 4; ++thread)
        results.push_back(std::async(std::launch::async, [data] { return everything(data.optimised()); }));
    for (auto& result : results)
        EXPECT_EQ(result.get(), expected);
}

TEST(OptimiseTest, OptimisedDataIsUploadedLikeAnyOther) {
    const DrawData data = dataOf(randomMesh(1)).optimised();
    const Testing::RecordingContext context;
    GPUModel model;
    ASSERT_TRUE(upload(data, model, {}));
    const auto& uploads = context.recording().uploads;
    ASSERT_EQ(uploads.size(), 4U);
    for (int i = 0; i < 3; ++i) {
        const DrawData::Attribute attribute = data.attributes()[i];
        EXPECT_EQ(uploads[static_cast<std::size_t>(i) + 1].bytes,
                  QByteArray(static_cast<const char*>(attribute.data), static_cast<int>(attribute.bytes)));
    }
}

TEST(VertexCacheStatisticsTest, SimulateACacheOfSixteenVertices) {
    for (unsigned int seed = 0; seed < 10; ++seed) {
        Mesh mesh = randomMesh(seed);
        mesh.indices.resize(mesh.indices.size() / 3 * 3);
        const auto transforms = static_cast<float>(literalTransforms(mesh.indices, 16));
        const DrawData::VertexCacheStatistics statistics = dataOf(mesh).vertexCacheStatistics();
        EXPECT_FLOAT_EQ(statistics.acmr, transforms / static_cast<float>(mesh.indices.size() / 3));
        const std::set<quint32> inUse(mesh.indices.begin(), mesh.indices.end());
        EXPECT_FLOAT_EQ(statistics.atvr, transforms / static_cast<float>(inUse.size()));
    }
}

TEST(VertexCacheStatisticsTest, PartOfATriangleAtTheEndDoesNotCount) {
    Mesh mesh;
    mesh.points.resize(15);
    mesh.indices = {0, 1, 2, 0, 2, 3, 4, 4};
    EXPECT_FLOAT_EQ(dataOf(mesh).vertexCacheStatistics().acmr, 2);
    EXPECT_FLOAT_EQ(dataOf(mesh).vertexCacheStatistics().atvr, 1);
}

} // namespace Atelier::Vel
