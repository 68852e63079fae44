#include "drawdata/trianglewriter.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>

#include <velmodel/modeldataarray.h>

#include "literal/literaltriangulation.h"
#include "support/clientstreams.h"
#include "support/guardedarray.h"
#include "support/messagelog.h"
#include "support/sparsearray.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::GuardedArray;
using testing::IsEmpty;
using Testing::MessageLog;

constexpr unsigned int kUnsignedInt = 0x1405;

/// Records the size of each append.
class RecordingStream : public Testing::PlainStream {
public:
    RecordingStream() : PlainStream(kUnsignedInt, 0) {}
    void append(quint64 count, const void* src) override {
        appended.push_back(count);
        if (!isFull)
            PlainStream::append(count, src);
    }
    std::vector<quint32> indices() {
        const auto* const first = static_cast<const quint32*>(data(0));
        return {first, first + size()};
    }

    std::vector<quint64> appended;
    bool isFull = false;
};

/// A mesh whose arrays have exactly their size.
class Mesh {
public:
    std::vector<quint32> counts;
    std::vector<quint32> corners;
    std::vector<float> positions;

    void addFace(const std::vector<quint32>& face) {
        starts.append(static_cast<unsigned int>(corners.size()));
        counts.push_back(static_cast<quint32>(face.size()));
        corners.insert(corners.end(), face.begin(), face.end());
    }
    /// Call it after the last change.
    FaceTable table() {
        _counts = GuardedArray<quint32>(counts);
        _corners = GuardedArray<quint32>(corners);
        _positions = GuardedArray<float>(positions);
        return {{_counts.data(), _counts.size()},
                starts.constData(),
                static_cast<quint64>(starts.size()),
                {},
                {_corners.data(), _corners.size()},
                {reinterpret_cast<unsigned char*>(_positions.data()), _positions.size() * sizeof(float)}};
    }
    /// The same, with faces of equal numbers of corners.
    FaceTable uniformTable(quint32 count) {
        FaceTable uniform = table();
        uniform.uniform = {count, corners.size() / count};
        uniform.counts = {};
        return uniform;
    }

    QVector<unsigned int> starts;

private:
    GuardedArray<quint32> _counts{};
    GuardedArray<quint32> _corners{};
    GuardedArray<float> _positions{};
};

/// The defined result of triangulating faces.
struct Expected {
    std::vector<quint32> indices;
    quint64 untriangulatedFaces = 0;

    void add(const FaceTable& table, quint32 face) {
        const std::size_t before = indices.size();
        if (face < table.faceCount() &&
            quint64{table.startOf(face)} + table.countOf(face) <= table.corners.count)
            triangulate(table, table.corners.words + table.startOf(face), table.countOf(face));
        untriangulatedFaces += indices.size() == before ? 1 : 0;
    }

private:
    void triangulate(const FaceTable& table, const quint32* face, quint32 count) {
        std::vector<int> numbers(count);
        std::iota(numbers.begin(), numbers.end(), 0);
        std::vector<float> positions(std::size_t{count} * 3);
        for (std::size_t i = 0; i < positions.size(); ++i) {
            const quint64 first = (quint64{face[i / 3]} * 3 + i % 3) * sizeof(float);
            if (first < table.positions.count)
                std::copy_n(table.positions.bytes + first,
                            std::min<quint64>(sizeof(float), table.positions.count - first),
                            reinterpret_cast<unsigned char*>(&positions[i]));
        }
        QVector<unsigned int> triangles;
        Literal::triangulate3D(static_cast<int>(count), numbers.data(), positions.data(), triangles);
        std::transform(triangles.begin(), triangles.end(), std::back_inserter(indices),
                       [face](unsigned int corner) { return face[corner]; });
    }
};

class TriangleWriterTest : public testing::Test {
protected:
    bool triangulate(const FaceTable& table, const std::vector<quint32>& faces) {
        const GuardedArray<quint32> list(faces);
        return _writer.append(table, {list.data(), list.size()}, _stream);
    }
    /// Triangulates the faces and compares with the definition, including messages.
    void expectCut(const FaceTable& table, const std::vector<quint32>& faces) {
        MessageLog log;
        Expected expected;
        for (const quint32 face : faces)
            expected.add(table, face);
        const std::vector<Testing::LoggedMessage> messages = log.messages();
        log.clear();
        const quint64 untriangulatedBefore = _writer.untriangulatedFaces();
        const quint64 sizeBefore = _stream.size();
        ASSERT_TRUE(triangulate(table, faces));
        const std::vector<quint32> all = _stream.indices();
        ASSERT_EQ(std::vector<quint32>(all.begin() + static_cast<std::ptrdiff_t>(sizeBefore), all.end()),
                  expected.indices);
        ASSERT_EQ(_writer.untriangulatedFaces() - untriangulatedBefore, expected.untriangulatedFaces);
        // Faces outside the table are skipped without a warning.
        ASSERT_EQ(log.messages(), messages);
    }

    TriangleWriter _writer;
    RecordingStream _stream;
};

constexpr quint32 kNone = 0xFFFFFFFF;

/// Runs of faces of one size over few positions; some corners use positions that do not exist.
Mesh randomMesh(std::mt19937& random, quint32 faceCount, quint32 positionCount, int missingOneIn) {
    const auto below = [&random](quint32 limit) { return static_cast<quint32>(random() % limit); };
    std::uniform_real_distribution<float> number(-1, 1);
    Mesh mesh;
    for (quint32 i = 0; i < positionCount * 3; ++i)
        mesh.positions.push_back(below(4) == 0 ? static_cast<float>(below(2)) : number(random));
    quint32 count = 3;
    for (quint32 face = 0; face < faceCount; ++face) {
        if (below(6) == 0)
            count = below(7);
        std::vector<quint32> corners(count);
        for (quint32& corner : corners)
            corner = missingOneIn != 0 && below(static_cast<quint32>(missingOneIn)) == 0
                         ? (below(2) == 0 ? positionCount + below(3) : kNone - below(1000))
                         : below(positionCount);
        mesh.addFace(corners);
    }
    return mesh;
}

/// Single numbers and runs, of existing faces and some others.
std::vector<quint32> randomFaces(std::mt19937& random, quint32 faceCount, quint32 count) {
    std::vector<quint32> faces;
    while (faces.size() < count) {
        quint32 face = static_cast<quint32>(random() % (faceCount + 3));
        if (random() % 40 == 0)
            face = kNone - static_cast<quint32>(random() % 6);
        for (quint32 left = random() % 2 == 0 ? 1 : 1 + static_cast<quint32>(random() % 30); left > 0; --left)
            faces.push_back(face++);
    }
    faces.resize(count);
    return faces;
}

TEST_F(TriangleWriterTest, FacesEqualTheLiteralTriangulation) {
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        const quint32 faceCount = 1 + static_cast<quint32>(random() % 60);
        Mesh mesh =
            randomMesh(random, faceCount, 3 + static_cast<quint32>(random() % 30), round % 3 == 0 ? 0 : 40);
        if (round % 4 == 1) { // faces that reach beyond the corners, or begin there
            mesh.corners.resize(mesh.corners.size() -
                                std::min<std::size_t>(mesh.corners.size(), random() % 9));
            mesh.starts[static_cast<int>(random() % faceCount)] = static_cast<unsigned int>(random());
        }
        ASSERT_NO_FATAL_FAILURE(
            expectCut(mesh.table(), randomFaces(random, faceCount, static_cast<quint32>(random() % 200))))
            << round;
    }
}

TEST_F(TriangleWriterTest, UniformFacesEqualTheLiteralTriangulation) {
    std::mt19937 random(2);
    for (int round = 0; round < 200; ++round) {
        const quint32 count = 1 + static_cast<quint32>(round % 6);
        Mesh mesh;
        for (int i = 0; i < 60; ++i)
            mesh.positions.push_back(static_cast<float>(random() % 1000) / 100);
        for (quint32 i = 0; i < count * 40; ++i)
            mesh.corners.push_back(static_cast<quint32>(random() % 20));
        ASSERT_NO_FATAL_FAILURE(expectCut(mesh.uniformTable(count), randomFaces(random, 40, 100))) << round;
    }
}

// Far from the origin, the normal of a small face is a rounding error, and some are clockwise about it.
TEST_F(TriangleWriterTest, RunsWithClockwiseFacesEqualTheLiteralTriangulation) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> number(-1, 1);
    int clockwise = 0;
    for (int round = 0; round < 600; ++round) {
        const quint32 count = 3 + static_cast<quint32>(round % 2);
        const float offset = std::pow(10.0F, 4 + 2 * number(random));
        Mesh mesh;
        for (quint32 face = 0; face < 4; ++face) {
            std::vector<quint32> corners(count);
            std::iota(corners.begin(), corners.end(), face * count);
            mesh.addFace(corners);
        }
        for (quint32 i = 0; i < 3 * (4 * count + 1); ++i)
            mesh.positions.push_back(offset + number(random));
        for (quint32 face = 0; face < 4; ++face) {
            const int* const corners = reinterpret_cast<const int*>(&mesh.corners[face * count]);
            const Winding winding = quickWinding(static_cast<int>(count), corners, mesh.positions.data());
            clockwise += winding == Winding::kClockwise ? 1 : 0;
        }
        ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3})) << round;
    }
    EXPECT_GT(clockwise, 20);
}

TEST_F(TriangleWriterTest, RunsOfAnyLengthAreTriangulated) {
    std::mt19937 random(3);
    for (const quint32 count : {3U, 4U})
        for (quint32 faceCount = 1; faceCount <= 13; ++faceCount)
            for (quint32 first = 0; first < faceCount; ++first) {
                Mesh mesh;
                for (int i = 0; i < 30; ++i)
                    mesh.positions.push_back(static_cast<float>(random() % 100));
                for (quint32 face = 0; face < faceCount; ++face) {
                    std::vector<quint32> corners(count);
                    for (quint32& corner : corners)
                        corner = static_cast<quint32>(random() % 9); // not the last position
                    mesh.addFace(corners);
                }
                std::vector<quint32> faces(faceCount - first + 1); // the last one does not exist
                std::iota(faces.begin(), faces.end(), first);
                ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), faces));
                ASSERT_NO_FATAL_FAILURE(expectCut(mesh.uniformTable(count), faces));
            }
}

// Triangulating four faces at a time reads one float after each position.
TEST_F(TriangleWriterTest, NothingAfterTheLastPositionIsRead) {
    for (const quint32 count : {3U, 4U})
        for (const std::size_t missingFloats : {0U, 1U, 2U, 3U}) {
            Mesh mesh;
            mesh.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 2, 1};
            mesh.positions.resize(mesh.positions.size() - missingFloats);
            for (quint32 face = 0; face < 8; ++face) {
                std::vector<quint32> corners = {0, 1, 2, 3};
                corners.resize(count);
                corners[face % count] = face < 4 ? 4 : face % 4;
                mesh.addFace(corners);
            }
            ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3, 4, 5, 6, 7})) << missingFloats;
        }
}

TEST_F(TriangleWriterTest, MissingPositionsAreZero) {
    Mesh mesh;
    for (quint32 face = 0; face < 4; ++face)
        mesh.addFace({0, 1, 2});
    ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3}));
    mesh.positions = {1, 2};
    ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3}));
}

TEST_F(TriangleWriterTest, BytesOfAnIncompletePositionAreUsed) {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 0.25F, 0.75F, 3};
    mesh.addFace({0, 1, 2});
    mesh.addFace({2, 1, 0, 2, 1});
    FaceTable table = mesh.table();
    for (quint64 bytes = 24; bytes <= 36; ++bytes) {
        table.positions.count = bytes;
        ASSERT_NO_FATAL_FAILURE(expectCut(table, {0, 1})) << bytes;
    }
}

TEST_F(TriangleWriterTest, FacesWithFewerStartsThanCountsEndWithTheStarts) {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 1};
    for (quint32 face = 0; face < 9; ++face)
        mesh.addFace({0, 1, 2});
    mesh.starts.resize(6); // the memory after them still holds the others
    ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3, 4, 5, 6, 7, 8}));
    ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {3, 4, 5, 6, 8}));
    mesh.starts.resize(9);
    mesh.counts.resize(6);
    ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(TriangleWriterTest, FacesThatReachBeyondTheCornersAreNotTriangulated) {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 1};
    for (quint32 face = 0; face < 8; ++face)
        mesh.addFace({0, 1, 2});
    for (std::size_t missing = 1; missing < 12; ++missing) {
        mesh.corners.pop_back();
        ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3, 4, 5, 6, 7})) << missing;
        ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {7, 5, 6, 4})) << missing;
    }
}

// 32-bit sums would wrap to the first face or corner.
TEST_F(TriangleWriterTest, NumbersAtTheEndOfTheirTypeDoNotWrap) {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 1};
    for (quint32 face = 0; face < 8; ++face)
        mesh.addFace({0, 1, 2});
    ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {kNone - 1, kNone, 0, 1, 2, 3, 4}));
    ASSERT_NO_FATAL_FAILURE(expectCut(mesh.uniformTable(3), {kNone - 2, kNone - 1, kNone, 0, 1}));
    for (const quint32 start : {kNone, kNone - 2, kNone - 11}) {
        for (quint32 face = 0; face < 4; ++face)
            mesh.starts[static_cast<int>(face)] = start + 3 * face;
        ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3}));
        ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {3, 2, 1, 0}));
    }
}

TEST_F(TriangleWriterTest, FacesOfDifferentSizesOrWithGapsAreTriangulatedOneByOne) {
    for (quint32 other = 0; other < 4; ++other)
        for (const quint32 count : {2U, 3U, 4U, 5U}) {
            Mesh mesh;
            for (int i = 0; i < 30; ++i)
                mesh.positions.push_back(static_cast<float>(i * i % 17));
            for (quint32 face = 0; face < 4; ++face) {
                std::vector<quint32> corners(face == other ? count : 3);
                std::iota(corners.begin(), corners.end(), face);
                mesh.addFace(corners);
            }
            ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3})) << other << ", " << count;
            ++mesh.starts[static_cast<int>(other)];
            ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {0, 1, 2, 3})) << other << ", " << count;
            for (std::size_t i = 0; i < 4; ++i) {
                std::vector<quint32> faces = {0, 1, 2, 3};
                faces[i] = (faces[i] + 1) % 4;
                ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), faces)) << other << ", " << count;
            }
        }
}

// Positions of later faces are prefetched.
TEST_F(TriangleWriterTest, FacesOverDistantPositionsAreTriangulated) {
    constexpr quint32 kFar = 200'000;
    for (const quint32 count : {3U, 4U}) {
        Mesh mesh;
        mesh.positions.resize(3 * std::size_t{kFar});
        for (std::size_t i = 0; i < mesh.positions.size(); ++i)
            mesh.positions[i] = static_cast<float>(i * 7919 % 1000);
        std::vector<quint32> faces;
        for (quint32 face = 0; face < 100; ++face) {
            std::vector<quint32> corners(count);
            for (quint32 i = 0; i < count; ++i)
                corners[i] = (face * 4 + i) * 7919 % (kFar - 1);
            mesh.addFace(corners);
            faces.push_back(face);
        }
        for (std::size_t kept = 0; kept < 5; ++kept) {
            ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), faces));
            mesh.corners.pop_back();
        }
    }
}

TEST_F(TriangleWriterTest, KeepsNothingFromEarlierCalls) {
    std::mt19937 random(4);
    for (int round = 0; round < 20; ++round) {
        // Positions that the second mesh lacks are zero, not those of the first.
        Mesh large = randomMesh(random, 50, 30, 0);
        large.addFace({1, 2, 3, 4, 5, 6, 7, kNone});
        Mesh small = randomMesh(random, 20, 3, 2);
        for (Mesh* mesh : {&large, &small, &large}) {
            std::vector<quint32> faces(mesh->counts.size());
            std::iota(faces.begin(), faces.end(), 0U);
            ASSERT_NO_FATAL_FAILURE(expectCut(mesh->table(), faces));
        }
    }
}

/// A mesh of equal faces of `count` corners each.
Mesh meshOfEqual(quint32 faceCount, quint32 count) {
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, -0.5F, 0.5F, 0, 9, 9, 9};
    for (quint32 face = 0; face < faceCount; ++face) {
        std::vector<quint32> corners(count);
        std::iota(corners.begin(), corners.end(), 0U);
        mesh.addFace(corners);
    }
    return mesh;
}

std::vector<quint32> everyFace(quint32 count) {
    std::vector<quint32> faces(count);
    std::iota(faces.begin(), faces.end(), 0U);
    return faces;
}

TEST_F(TriangleWriterTest, IndicesAreAppendedInFullBlocks) {
    Mesh quadrilaterals = meshOfEqual(30'000, 4);
    ASSERT_TRUE(triangulate(quadrilaterals.table(), everyFace(30'000)));
    EXPECT_THAT(_stream.appended, ElementsAre(65'520, 65'520, 48'960)) << "2730 times four faces fit";
    _stream.appended.clear();
    Mesh pentagons = meshOfEqual(15'000, 5);
    ASSERT_TRUE(triangulate(pentagons.table(), everyFace(15'000)));
    EXPECT_THAT(_stream.appended, ElementsAre(65'529, 65'529, 3'942)) << "7281 faces";
}

TEST_F(TriangleWriterTest, BlockOfASmallMeshFitsItsTriangles) {
    Mesh mesh = meshOfEqual(10, 5);
    ASSERT_TRUE(triangulate(mesh.table(), everyFace(10)));
    EXPECT_THAT(_stream.appended, ElementsAre(90));
    ASSERT_TRUE(triangulate(mesh.table(), std::vector<quint32>(20, 0)));
    EXPECT_THAT(_stream.appended, ElementsAre(90, 144, 36)) << "the capacity is 150";
}

TEST_F(TriangleWriterTest, LargePolygonGetsABlockOfItsSize) {
    Mesh mesh = meshOfEqual(2, 3);
    std::vector<quint32> circle;
    for (quint32 k = 0; k < 25'000; ++k) {
        circle.push_back(static_cast<quint32>(mesh.positions.size() / 3));
        for (const double value : {std::cos(k * 2.5e-4), std::sin(k * 2.5e-4), 0.0})
            mesh.positions.push_back(static_cast<float>(value));
    }
    mesh.addFace(circle);
    ASSERT_TRUE(triangulate(mesh.table(), {0, 2, 1, 0}));
    EXPECT_THAT(_stream.appended, ElementsAre(3, 74'994, 6));
}

TEST_F(TriangleWriterTest, EmptyModelDataArrayReservesTheExpectedIndices) {
    Mesh mesh = meshOfEqual(4, 3);
    const GuardedArray<quint32> faces(everyFace(4));
    const auto cutInto = [&](ModelDataArray& array, quint64 expected) {
        TriangleWriter own(expected);
        ASSERT_TRUE(own.append(mesh.table(), {faces.data(), faces.size()}, array));
    };
    const std::vector<quint32> more(5000);
    ModelDataArray array(kUnsignedInt);
    cutInto(array, 5012);
    const void* const place = array.data(0);
    array.append(more.size(), more.data());
    EXPECT_EQ(array.data(0), place);
    array.append(more.size(), more.data());
    EXPECT_NE(array.data(0), place);

    ModelDataArray begun(kUnsignedInt, 1);
    const void* const placeOfBegun = begun.data(0);
    cutInto(begun, 100'000);
    const void* const placeAfter = begun.data(0);
    EXPECT_NE(placeAfter, placeOfBegun);
    begun.append(more.size(), more.data());
    EXPECT_NE(begun.data(0), placeAfter) << "an array that is not empty reserves nothing";
}

TEST_F(TriangleWriterTest, RefusedIndicesEndTheTriangulation) {
    for (const quint32 count : {3U, 4U, 5U}) {
        _stream.isFull = true;
        _stream.appended.clear();
        Mesh mesh = meshOfEqual(50'000, count);
        EXPECT_FALSE(triangulate(mesh.table(), everyFace(50'000))) << count;
        EXPECT_EQ(_stream.appended.size(), 1U) << "triangulation stops";
        EXPECT_FALSE(triangulate(mesh.table(), {0}));
        EXPECT_EQ(_stream.appended.back(), 3 * (count - 2)) << "refused indices are dropped";
        _stream.isFull = false;
        ASSERT_NO_FATAL_FAILURE(expectCut(mesh.table(), {1, 2}));
    }
}

TEST_F(TriangleWriterTest, WithoutFacesNothingIsAppended) {
    Mesh mesh = meshOfEqual(1, 3);
    _stream.isFull = true;
    EXPECT_TRUE(triangulate(mesh.table(), {}));
    EXPECT_TRUE(triangulate(mesh.table(), {7}));
    EXPECT_THAT(_stream.appended, IsEmpty());
    EXPECT_EQ(_writer.untriangulatedFaces(), 1U);
}

TEST_F(TriangleWriterTest, PolygonBeyondTheCapacityOfAStreamIsRefused) {
    constexpr quint32 kTooMany = 178'956'973; // 3 * (corners - 2) reaches 2^29
    const Testing::SparseArray<quint32> corners(kTooMany);
    if (!corners.isThere())
        GTEST_SKIP() << "there are no such addresses";
    Mesh mesh = meshOfEqual(1, 3);
    mesh.counts[0] = kTooMany;
    FaceTable table = mesh.table();
    table.corners = {corners.data(), kTooMany};
    EXPECT_FALSE(triangulate(table, {0}));
    EXPECT_THAT(_stream.appended, IsEmpty());
}

TEST_F(TriangleWriterTest, MeterIsCalledEverySixteenThousandCorners) {
    std::vector<int> calls;
    const WorkMeter meter = [&calls](int corners) { calls.push_back(corners); };
    TriangleWriter metered(0, meter);
    const auto cutAll = [&](Mesh mesh, quint32 faces) {
        const GuardedArray<quint32> list(everyFace(faces));
        ASSERT_TRUE(metered.append(mesh.table(), {list.data(), list.size()}, _stream));
    };
    cutAll(meshOfEqual(10'000, 4), 10'000);
    EXPECT_THAT(calls, ElementsAre(16'384, 16'384));
    cutAll(meshOfEqual(3'100, 3), 3'100);
    EXPECT_THAT(calls, ElementsAre(16'384, 16'384, 16'388)) << "the remainder is kept between calls";
    cutAll(meshOfEqual(3'248, 5), 3'248);
    EXPECT_THAT(calls, ElementsAre(16'384, 16'384, 16'388, 16'384));
}

TEST_F(TriangleWriterTest, CornersOfLargePolygonsAreMeteredDuringTriangulation) {
    int calls = 0;
    int sum = 0;
    TriangleWriter metered(0, [&](int corners) {
        ++calls;
        sum += corners;
    });
    Mesh mesh;
    std::vector<quint32> circle;
    for (quint32 k = 0; k < 32'768; ++k) {
        circle.push_back(k);
        for (const double value : {std::cos(k * 1.9e-4), std::sin(k * 1.9e-4), 0.0})
            mesh.positions.push_back(static_cast<float>(value));
    }
    mesh.addFace(circle);
    const GuardedArray<quint32> list{0};
    ASSERT_TRUE(metered.append(mesh.table(), {list.data(), 1}, _stream));
    EXPECT_GT(calls, 10);
    EXPECT_EQ(sum, 16'384 + 15'872) << "while prepared and while clipped; the rest comes with the next faces";
    Mesh quadrilaterals = meshOfEqual(5'000, 4);
    const GuardedArray<quint32> others(everyFace(4'000));
    ASSERT_TRUE(metered.append(quadrilaterals.table(), {others.data(), others.size()}, _stream));
    EXPECT_EQ(sum, 16'384 + 15'872 + 16'384);
}

TEST_F(TriangleWriterTest, CancellationByTheMeterLeavesNoState) {
    bool goesOn = false;
    TriangleWriter metered(0, [&goesOn](int) {
        if (!goesOn)
            throw std::runtime_error("enough");
    });
    Mesh mesh = meshOfEqual(10'000, 5);
    const GuardedArray<quint32> list(everyFace(10'000));
    EXPECT_THROW(metered.append(mesh.table(), {list.data(), list.size()}, _stream), std::runtime_error);
    EXPECT_THAT(_stream.appended, IsEmpty());
    goesOn = true;
    ASSERT_TRUE(metered.append(mesh.table(), {list.data(), 2}, _stream));
    EXPECT_EQ(_stream.size(), 18U);
}

TEST_F(TriangleWriterTest, IndexLimitIsThreePerCornerExceptTwo) {
    GuardedArray<quint32> counts{0, 1, 2, 3, 4, 5, 0, 0x80000000};
    EXPECT_EQ(maxTriangleIndices(WordView{counts.data(), 7}), 3U + 6U + 9U);
    EXPECT_EQ(maxTriangleIndices(WordView{counts.data(), 8}), 18U + 3 * (quint64{0x80000000} - 2));
    EXPECT_EQ(maxTriangleIndices(WordView{}), 0U);
    EXPECT_EQ(maxTriangleIndices(UniformFaces{4, 3'000'000'000}), 18'000'000'000U);
    EXPECT_EQ(maxTriangleIndices(UniformFaces{2, 5}), 0U);
    EXPECT_EQ(maxTriangleIndices(UniformFaces()), 0U);
}

} // namespace
} // namespace Atelier::Vel
