#include <cstring>
#include <initializer_list>
#include <numeric>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include <velmodel/modelbuilder.h>
#include <velmodel/modeldataarray.h>
#include <velmodel/triangulation.h>

#include "literal/literaltriangulation.h"
#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/modelbuilderaccess.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using Testing::elements;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Testing::MessageLog;

constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kFloat = 0x1406;

const QString kNoEarLeft = QStringLiteral("Unable to triangulate polygon.");
const QString kTooFewCorners = QStringLiteral("Cannot triangulate a polygon with fewer than 3 vertices");

/// A builder whose faces and groups are prepared over streams that the test makes.
class MaterialGroupsTest : public testing::Test {
protected:
    ModelBuilderAccess access() { return ModelBuilderAccess(builder); }

    void faces(std::initializer_list<unsigned int> counts) {
        builder.addVertexCountsToFaces(counts.size(), counts.begin());
        for (const unsigned int count : counts) {
            starts.append(next);
            next += count;
        }
    }
    void group(const char* name, std::initializer_list<unsigned int> numbers, quint64 flags = 0) {
        builder.createMaterialGroup(QString::fromLatin1(name), InstanceData(), -1, flags);
        builder.addFacesToMaterialGroup(QString::fromLatin1(name), numbers.size(), numbers.begin(),
                                        QString());
    }
    void fill(const QSharedPointer<ModelDataStream>& stream, std::initializer_list<quint32> values) {
        stream->append(values.size(), values.begin());
    }
    void fillPositions(std::initializer_list<float> values) {
        positions->append(values.size(), values.begin());
    }
    void prepare(const char* name) {
        access().prepare(QString::fromLatin1(name), positions, corners, starts);
    }
    std::vector<quint32> triangles() { return elements<quint32>(access().gpuIndices()); }
    DrawElementsIndirectCommand command(quint64 key, int i) { return access().drawCommands()[key][i]; }

    /// A unit square with a fifth vertex above it.
    void square() { fillPositions({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0.5F, 2, 0}); }

public:
    ModelBuilder builder{QSharedPointer<Testing::PlainAllocator>::create(), 0xF0};
    QSharedPointer<ModelDataStream> positions = QSharedPointer<Testing::PlainStream>::create(kFloat, 0U);
    QSharedPointer<ModelDataStream> corners = QSharedPointer<Testing::PlainStream>::create(kUnsignedInt, 0U);
    QVector<unsigned int> starts;
    unsigned int next = 0;
    MessageLog log;
};

TEST_F(MaterialGroupsTest, TriangulatesTheFacesOfAGroupInTheirOrder) {
    square();
    faces({3, 4, 5});
    fill(corners, {0, 1, 2, 0, 1, 2, 3, 0, 1, 2, 4, 3});
    group("a", {1, 0, 2});
    prepare("a");
    QVector<unsigned int> expected;
    const int list[] = {0, 1, 2, 0, 1, 2, 3, 0, 1, 2, 4, 3};
    const auto* const data = static_cast<const float*>(positions->data(0));
    Literal::triangulate3D(4, list + 3, data, expected);
    Literal::triangulate3D(3, list, data, expected);
    Literal::triangulate3D(5, list + 7, data, expected);
    EXPECT_EQ(expected.size(), 18);
    EXPECT_THAT(triangles(), ElementsAreArray(expected.begin(), expected.end()));
    const DrawElementsIndirectCommand first = command(0, 0);
    EXPECT_EQ(first.count, 18U);
    EXPECT_EQ(first.instanceCount, 1U);
    EXPECT_EQ(first.firstIndex, 0U);
    EXPECT_EQ(first.baseVertex, 0U);
    EXPECT_EQ(first.baseInstance, 0U);
    EXPECT_THAT(access().drawGroupNames()[0], ElementsAre(QStringLiteral("a")));
    EXPECT_EQ(builder.statistics().triangles, 6U);
    EXPECT_EQ(builder.statistics().untriangulatedFaces, 0U);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(MaterialGroupsTest, GroupWithoutTrianglesStillGetsACommand) {
    square();
    faces({3, 2});
    fill(corners, {0, 1, 2, 0, 1});
    group("a", {0});
    group("b", {1});
    prepare("a");
    prepare("b");
    EXPECT_EQ(command(0, 1).count, 0U);
    EXPECT_EQ(command(0, 1).firstIndex, 3U);
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kTooFewCorners));
    EXPECT_EQ(builder.statistics().untriangulatedFaces, 1U);
}

TEST_F(MaterialGroupsTest, EqualKeysShareAVectorAndDifferentOnesTheIndices) {
    square();
    faces({3, 4, 3});
    fill(corners, {0, 1, 2, 0, 1, 2, 3, 0, 1, 4});
    group("a", {0}, 0x10);
    group("b", {1}, 0x2F);
    group("c", {2}, 0x1F);
    prepare("a");
    prepare("b");
    prepare("c");
    EXPECT_EQ(access().drawCommands().size(), 2);
    EXPECT_THAT(access().drawGroupNames()[0x10], ElementsAre(QStringLiteral("a"), QStringLiteral("c")));
    EXPECT_THAT(access().drawGroupNames()[0x20], ElementsAre(QStringLiteral("b")));
    EXPECT_EQ(command(0x10, 0).firstIndex, 0U);
    EXPECT_EQ(command(0x20, 0).firstIndex, 3U);
    EXPECT_EQ(command(0x20, 0).count, 6U);
    EXPECT_EQ(command(0x10, 1).firstIndex, 9U);
    EXPECT_EQ(triangles().size(), 12U);
}

TEST_F(MaterialGroupsTest, PreparingTwiceRecordsTwice) {
    square();
    faces({3});
    fill(corners, {0, 1, 2});
    group("a", {0});
    prepare("a");
    prepare("a");
    EXPECT_EQ(command(0, 1).firstIndex, 3U);
    EXPECT_THAT(triangles(), ElementsAre(0, 1, 2, 0, 1, 2));
}

TEST_F(MaterialGroupsTest, FirstGroupStartsFromAFreshStream) {
    square();
    faces({3});
    fill(corners, {0, 1, 2});
    group("a", {0});
    const auto before = access().gpuIndices();
    access().gpuIndices()->setType(0x1403);
    prepare("a");
    EXPECT_NE(access().gpuIndices(), before);
    EXPECT_EQ(access().gpuIndices()->type(), kUnsignedInt);
}

TEST_F(MaterialGroupsTest, FacesWithTooFewCornersGiveNothing) {
    square();
    faces({0, 1, 2, 3, 0});
    fill(corners, {0, 0, 1, 0, 1, 2});
    group("a", {0, 1, 2, 4, 3});
    prepare("a");
    EXPECT_THAT(triangles(), ElementsAre(0, 1, 2));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(kTooFewCorners, kTooFewCorners, kTooFewCorners, kTooFewCorners));
    EXPECT_EQ(builder.statistics().untriangulatedFaces, 4U);
}

TEST_F(MaterialGroupsTest, FacesOutsideTheTablesGiveNothing) {
    square();
    faces({3, 3});
    fill(corners, {0, 1, 2, 0});
    group("a", {2, 0xFFFFFFFF, 1, 0});
    prepare("a");
    EXPECT_THAT(triangles(), ElementsAre(0, 1, 2));
    starts = {4000000000U, 2U};
    prepare("a");
    starts.clear();
    prepare("a");
    EXPECT_THAT(triangles(), ElementsAre(0, 1, 2));
    EXPECT_EQ(builder.statistics().untriangulatedFaces, 3U + 4U + 4U);
}

// Faces far ahead are prefetched, even if they do not exist.
TEST_F(MaterialGroupsTest, ManyFacesOutsideTheTablesGiveNothing) {
    square();
    faces({3, 3, 3});
    fill(corners, {0, 1, 2, 0});
    std::vector<unsigned int> numbers;
    for (unsigned int k = 0; k < 100; ++k)
        numbers.push_back(k % 3 == 0 ? 0xFFFFFFFF - k : k % 3);
    group("a", {});
    builder.addFacesToMaterialGroup(QStringLiteral("a"), numbers.size(), numbers.data(), QString());
    prepare("a");
    EXPECT_THAT(triangles(), testing::IsEmpty()) << "faces 1 and 2 reach beyond the corners";
    EXPECT_EQ(builder.statistics().untriangulatedFaces, 100U);
}

TEST_F(MaterialGroupsTest, NegativeCornerCountGivesNothing) {
    square();
    faces({0xFFFFFFFD, 3});
    fill(corners, {0, 1, 2});
    group("a", {0});
    prepare("a");
    EXPECT_THAT(triangles(), IsEmpty());
}

TEST_F(MaterialGroupsTest, PositionsAfterTheEndAreZero) {
    // Vertex 4 has no z, vertices 5 and 0x80000000 do not exist: with other values, the ear of vertex 3 would
    // be different.
    fillPositions({4, 0, 0, 4, 4, 0, 1, 5, 0, -2, 3, 0, -1, 1});
    faces({5, 5, 4});
    fill(corners, {0, 1, 2, 3, 5, 3, 4, 0x80000000, 0, 1, 0, 1, 3, 5});
    group("a", {0, 1, 2});
    const auto expected = [&](const std::vector<float>& places) {
        QVector<unsigned int> cut;
        const int list[] = {0, 1, 2, 3, 5, 3, 4, 5, 0, 1, 0, 1, 3, 5};
        for (const auto& [first, count] : {std::pair<int, int>{0, 5}, {5, 5}, {10, 4}})
            Literal::triangulate3D(count, list + first, places.data(), cut);
        for (int i = 9; i < 18; ++i)
            if (cut[i] == 5)
                cut[i] = 0x80000000;
        return std::vector<quint32>(cut.begin(), cut.end());
    };
    prepare("a");
    EXPECT_EQ(triangles(), expected({4, 0, 0, 4, 4, 0, 1, 5, 0, -2, 3, 0, -1, 1, 0, 0, 0, 0}));
    EXPECT_NE(triangles(), expected({4, 0, 0, 4, 4, 0, 1, 5, 0, -2, 3, 0, -1, 1, 0, 9, -9, 0}));
    positions.reset();
    prepare("a");
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(kNoEarLeft, kNoEarLeft)) << "all corners are equal";
    EXPECT_EQ(triangles().size(), 24U + 6U);
}

TEST_F(MaterialGroupsTest, FacesOfAnotherTypeAreAssertedAndReadAsWords) {
    square();
    faces({3});
    fill(corners, {0, 1, 2});
    group("a", {0});
    access().verticesPerFace()->setType(kFloat);
    prepare("a");
    prepare("a");
    const QString text =
        QStringLiteral("[modelbuilder:923] [ !! ] Assertion 'GL_UNSIGNED_INT == "
                       "_verticesPerFace->type()' failed: Wrong Face type 0x1406, needs to be "
                       "0x1405");
    EXPECT_THAT(log.texts(QtCriticalMsg), ElementsAre(text, text));
    EXPECT_THAT(triangles(), ElementsAre(0, 1, 2, 0, 1, 2));
}

TEST_F(MaterialGroupsTest, FaceCountsOfShortTypeEndWithTheLastWholeWord) {
    square();
    faces({3, 3, 3});
    fill(corners, {0, 1, 2, 0, 1, 2, 0, 1, 2});
    group("a", {0, 1, 2});
    auto& counts = access().verticesPerFace();
    const quint32 word = 3;
    counts = QSharedPointer<Testing::PlainStream>::create(0x1403U, 3U);
    std::memcpy(counts->data(0), &word, sizeof word);
    prepare("a");
    EXPECT_THAT(triangles(), ElementsAre(0, 1, 2)) << "three elements of two bytes hold one count";
}

TEST_F(MaterialGroupsTest, MissingStreamsGiveAnEmptyCommand) {
    group("a", {0});
    access().verticesPerFace().reset();
    corners.reset();
    prepare("a");
    EXPECT_EQ(command(0, 0).count, 0U);
    access().groups()[QStringLiteral("a")].faces.setStream({});
    prepare("a");
    EXPECT_EQ(command(0, 1).count, 0U);
}

TEST_F(MaterialGroupsTest, MoreIndicesThanABlockStayInOrder) {
    square();
    constexpr unsigned int kFaces = 16000; // 72,000 indices
    for (unsigned int face = 0; face < kFaces; ++face) {
        const unsigned int count = 3 + face % 2;
        const quint32 list[] = {face % 3, 3, 4, 2};
        builder.addVertexCountsToFaces(1, &count);
        corners->append(count, list);
        starts.append(next);
        next += count;
    }
    group("a", {});
    QVector<unsigned int> expected;
    for (unsigned int face = 0; face < kFaces; ++face) {
        builder.addFacesToMaterialGroup(QStringLiteral("a"), 1, &face, QString());
        const unsigned int start = starts[static_cast<int>(face)];
        Literal::triangulate3D(3 + static_cast<int>(face % 2), static_cast<const int*>(corners->data(start)),
                               static_cast<const float*>(positions->data(0)), expected);
    }
    prepare("a");
    EXPECT_TRUE(triangles() == std::vector<quint32>(expected.begin(), expected.end()));
    EXPECT_EQ(command(0, 0).count, kFaces / 2 * 9);
}

TEST_F(MaterialGroupsTest, PolygonLargerThanABlockIsTriangulated) {
    constexpr int kCorners = 30000;
    constexpr float kHalf = 15000.0F;
    faces({kCorners, 3});
    for (int i = 0; i < kCorners; ++i) {
        const float x = static_cast<float>(i < kCorners / 2 ? i : kCorners - 1 - i);
        const float bulge = x * (kHalf - 1.0F - x) * 0.001F;
        fillPositions({x, i < kCorners / 2 ? -bulge : bulge + 1.0F, 0});
        fill(corners, {static_cast<quint32>(i)});
    }
    fill(corners, {0, 1, 2});
    group("a", {0, 1});
    prepare("a");
    QVector<unsigned int> expected;
    Triangulate3D(kCorners, static_cast<const int*>(corners->data(0)),
                  static_cast<const float*>(positions->data(0)), expected);
    ASSERT_EQ(expected.size(), 3 * (kCorners - 2));
    EXPECT_EQ(triangles().size(), static_cast<std::size_t>(expected.size()) + 3);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), triangles().begin()));
}

TEST_F(MaterialGroupsTest, WithoutAnIndexStreamTheGroupIsDropped) {
    const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
    ModelBuilder limited(allocator);
    const ModelBuilderAccess limitedAccess(limited);
    limited.createMaterialGroup(QStringLiteral("a"), InstanceData(), -1, 0);
    allocator->limit(0);
    limitedAccess.prepare(QStringLiteral("a"), positions, corners, starts);
    EXPECT_TRUE(limitedAccess.gpuIndices().isNull());
    EXPECT_TRUE(limitedAccess.drawCommands().isEmpty());
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("Unable to upload: no stream could be made for the triangle indices")));
}

/// Accepts only the first ten elements.
class FullStream : public Testing::PlainStream {
public:
    using PlainStream::PlainStream;
    void append(quint64 count, const void* src) override {
        if (size() + count <= 10)
            PlainStream::append(count, src);
    }
};

TEST_F(MaterialGroupsTest, RefusedIndicesDropTheGroup) {
    square();
    faces({4, 4});
    fill(corners, {0, 1, 2, 3, 0, 1, 2, 3});
    group("a", {0, 1});
    access().gpuIndices() = QSharedPointer<FullStream>::create(kUnsignedInt, 3U);
    prepare("a");
    EXPECT_TRUE(access().gpuIndices().isNull());
    EXPECT_TRUE(access().drawCommands().isEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral(
                    "Data for the triangle indices refused: a stream holds at most 2147483647 bytes")));
}

/// Forty thousand faces of `count` corners each, over four positions.
struct LongMesh {
    static constexpr quint32 kFaces = 40'000;

    ModelBuilder builder;
    QVector<unsigned int> starts;
    QSharedPointer<ModelDataStream> corners = QSharedPointer<ModelDataArray>::create(kUnsignedInt);

    LongMesh(quint32 count, bool uploadsOnce) {
        if (uploadsOnce)
            ModelBuilderAccess::consumeInput(builder);
        const std::vector<quint32> counts(kFaces, count);
        builder.addVertexCountsToFaces(kFaces, counts.data());
        builder.createMaterialGroup(QStringLiteral("a"), InstanceData(), -1, 0);
        std::vector<quint32> numbers(kFaces);
        std::iota(numbers.begin(), numbers.end(), 0U);
        if (uploadsOnce) {
            ModelBuilderAccess(builder).addFaceRun(QStringLiteral("a"), 0, kFaces / 2);
            ModelBuilderAccess(builder).addFaceRun(QStringLiteral("a"), kFaces / 2 + 1, kFaces / 2 - 1);
        } else {
            builder.addFacesToMaterialGroup(QStringLiteral("a"), kFaces, numbers.data(), QString());
        }
        const quint32 square[] = {0, 1, 2, 3, 4};
        for (quint32 face = 0; face < kFaces; ++face) {
            starts.append(face * count);
            corners->append(count, square);
        }
    }
};

// Indices are passed on in blocks: the first block is refused while faces remain.
TEST_F(MaterialGroupsTest, IndicesRefusedEarlyDropTheGroupToo) {
    square();
    for (const quint32 count : {3U, 4U, 5U})
        for (const bool uploadsOnce : {false, true}) {
            LongMesh mesh(count, uploadsOnce);
            const ModelBuilderAccess meshAccess(mesh.builder);
            meshAccess.gpuIndices() = QSharedPointer<FullStream>::create(kUnsignedInt, 3U);
            meshAccess.prepare(QStringLiteral("a"), positions, mesh.corners, mesh.starts);
            EXPECT_TRUE(meshAccess.gpuIndices().isNull()) << count << ' ' << uploadsOnce;
        }
}

TEST_F(MaterialGroupsTest, FacesInRunsGiveTheSameAsListedFaces) {
    square();
    for (const quint32 count : {3U, 4U, 5U}) {
        LongMesh listed(count, false);
        LongMesh inRuns(count, true);
        for (LongMesh* mesh : {&listed, &inRuns})
            ModelBuilderAccess(mesh->builder)
                .prepare(QStringLiteral("a"), positions, mesh->corners, mesh->starts);
        const auto expected = elements<quint32>(ModelBuilderAccess(listed.builder).gpuIndices());
        const auto indices = elements<quint32>(ModelBuilderAccess(inRuns.builder).gpuIndices());
        // All faces are the same, and the runs leave one out.
        const std::size_t ofFace = std::size_t{3} * (count - 2);
        EXPECT_EQ(expected.size(), LongMesh::kFaces * ofFace);
        EXPECT_THAT(indices, ElementsAreArray(expected.data(), expected.size() - ofFace));
    }
}

} // namespace
} // namespace Atelier::Vel
