#include <numeric>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include <velmodel/modelbuilder.h>
#include <velmodel/modeldataarray.h>

#include "drawdata/trianglewriter.h"
#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/modelbuilderaccess.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using Testing::elements;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::PlainStream;

constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kFloat = 0x1406;
const QString kGroup = QStringLiteral("group");

/// Faces over the corners of a unit square, triangulated directly.
class GroupTrianglesTest : public testing::Test {
protected:
    GroupTrianglesTest() {
        const float square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0.5F, 0};
        positions->append(std::size(square), square);
    }

    /// The vertices of each face begin with another one.
    void addFaces(ModelBuilder& builder, quint32 count, quint32 cornerCount) {
        const std::vector<quint32> counts(count, cornerCount);
        builder.addVertexCountsToFaces(count, counts.data());
        std::vector<quint32> list;
        for (quint32 face = 0; face < count; ++face) {
            starts.append(static_cast<unsigned int>(list.size()));
            for (quint32 corner = 0; corner < cornerCount; ++corner)
                list.push_back((face + corner) % cornerCount);
        }
        corners->append(list.size(), list.data());
    }
    std::vector<quint32> triangles(ModelBuilder& builder) {
        const ModelBuilderAccess access(builder);
        access.prepare(kGroup, positions, corners, starts);
        return elements<quint32>(access.gpuIndices());
    }

public:
    QSharedPointer<ModelDataStream> positions = QSharedPointer<PlainStream>::create(kFloat, 0U);
    QSharedPointer<ModelDataStream> corners = QSharedPointer<PlainStream>::create(kUnsignedInt, 0U);
    QVector<unsigned int> starts;
    MessageLog log;
};

/// Runs of consecutive faces, each a first one and a number of them.
using Runs = std::vector<std::pair<quint32, quint32>>;

/// Short and long runs, including the lengths at which they are passed on in parts.
Runs randomRuns(std::mt19937& random, quint32 faceCount) {
    const quint32 lengths[] = {1, 1, 1, 2, 2, 3, 7, 2047, 2048, 2049};
    Runs runs;
    for (std::size_t i = random() % 30; i-- > 0;) {
        const quint32 length = lengths[random() % std::size(lengths)];
        const bool follows = !runs.empty() && random() % 4 == 0;
        const quint32 first = follows ? runs.back().first + runs.back().second
                                      : static_cast<quint32>(random() % (faceCount - length));
        runs.emplace_back(first, std::min(length, faceCount - std::min(first, faceCount)));
    }
    return runs;
}

/// The numbers that a meter receives during the triangulation of a group.
class TriangleWriterMeterTest : public testing::Test {
protected:
    static std::vector<int> told(quint32 cornerCount, std::vector<unsigned int> faces,
                                 unsigned int faceCount) {
        const MessageLog log;
        float square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0.5F, 0};
        std::vector<quint32> corners(std::size_t{faceCount} * cornerCount);
        for (std::size_t i = 0; i < corners.size(); ++i)
            corners[i] = static_cast<quint32>(i % cornerCount);
        corners.back() = 4;
        std::vector<quint32> counts(faceCount, cornerCount);
        QVector<unsigned int> starts;
        for (unsigned int face = 0; face < faceCount; ++face)
            starts.append(face * cornerCount);
        std::vector<int> calls;
        TriangleWriter writer(0, [&calls](int count) { calls.push_back(count); });
        const FaceTable table{
            {counts.data(), faceCount},          starts.constData(),
            static_cast<quint64>(starts.size()), {},
            {corners.data(), corners.size()},    {reinterpret_cast<unsigned char*>(square), sizeof square}};
        PlainStream triangles(kUnsignedInt, 0);
        EXPECT_TRUE(writer.append(table, {faces.data(), faces.size()}, triangles));
        return calls;
    }
    static std::vector<unsigned int> inOrder(unsigned int count) {
        std::vector<unsigned int> faces(count);
        std::iota(faces.begin(), faces.end(), 0U);
        return faces;
    }
    static std::vector<unsigned int> backwards(unsigned int count) {
        std::vector<unsigned int> faces = inOrder(count);
        std::reverse(faces.begin(), faces.end());
        return faces;
    }
};

} // namespace

TEST_F(GroupTrianglesTest, AnyRunsOfFacesGiveTheSameAsListedFaces) {
    constexpr quint32 kFaces = 6000;
    std::mt19937 random(4);
    ModelBuilder listed;
    ModelBuilder inRuns;
    ModelBuilderAccess::consumeInput(inRuns);
    addFaces(listed, kFaces, 3);
    const std::vector<quint32> counts(kFaces, 3);
    inRuns.addVertexCountsToFaces(kFaces, counts.data());
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        for (ModelBuilder* const builder : {&listed, &inRuns}) {
            builder->createMaterialGroup(kGroup, InstanceData(), -1, 0);
            ModelBuilderAccess(*builder).gpuIndices().reset();
        }
        for (const auto& [first, count] : randomRuns(random, kFaces)) {
            std::vector<unsigned int> faces(count);
            std::iota(faces.begin(), faces.end(), first);
            listed.addFacesToMaterialGroup(kGroup, count, faces.data(), QString());
            ModelBuilderAccess(inRuns).addFaceRun(kGroup, first, count);
        }
        ASSERT_EQ(triangles(inRuns), triangles(listed));
    }
}

TEST_F(GroupTrianglesTest, FacesInARunOfAnUnknownGroupAreNotTaken) {
    ModelBuilder builder;
    ModelBuilderAccess::consumeInput(builder);
    EXPECT_FALSE(ModelBuilderAccess(builder).addFaceRun(kGroup, 0, 1));
    EXPECT_FALSE(builder.hasMaterialGroup(kGroup));
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    EXPECT_TRUE(ModelBuilderAccess(builder).addFaceRun(kGroup, 0, 1));
}

// More than the capacity of a stream: no memory is allocated for them.
TEST_F(GroupTrianglesTest, PolygonOfTooManyTrianglesIsRefused) {
    constexpr quint32 kCorners = 178'956'973;
    ModelBuilder builder;
    builder.addVertexCountsToFaces(1, &kCorners);
    starts.append(0);
    corners = QSharedPointer<ModelDataArray>::create(kUnsignedInt, kCorners);
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    const unsigned int face = 0;
    builder.addFacesToMaterialGroup(kGroup, 1, &face, QString());
    EXPECT_THAT(triangles(builder), IsEmpty());
    EXPECT_TRUE(ModelBuilderAccess(builder).gpuIndices().isNull());
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral(
                    "Data for the triangle indices refused: a stream holds at most 2147483647 bytes")));
}

TEST_F(TriangleWriterMeterTest, CountsSixteenThousandCornersAtATime) {
    // One by one, of four corners each.
    EXPECT_THAT(told(4, backwards(4095), 4096), IsEmpty());
    EXPECT_THAT(told(4, backwards(4096), 4096), ElementsAre(16384));
    EXPECT_THAT(told(4, backwards(8191), 8192), ElementsAre(16384));
    EXPECT_THAT(told(4, backwards(8192), 8192), ElementsAre(16384, 16384));
    // Four at a time, which leave the last vertex alone: 12 or 16 corners.
    EXPECT_THAT(told(3, inOrder(5460), 5468), IsEmpty());
    EXPECT_THAT(told(3, inOrder(5464), 5468), ElementsAre(16392));
    EXPECT_THAT(told(3, inOrder(5464 + 5460), 12'000), ElementsAre(16392));
    EXPECT_THAT(told(4, inOrder(4092), 4100), IsEmpty());
    EXPECT_THAT(told(4, inOrder(4096), 4100), ElementsAre(16384));
}

TEST_F(TriangleWriterMeterTest, CountsFacesThatCannotBeTriangulatedAndNoneThatDoNotExist) {
    EXPECT_THAT(told(2, backwards(8191), 8192), IsEmpty());
    EXPECT_THAT(told(2, backwards(8192), 8192), ElementsAre(16384));
    std::vector<unsigned int> faces = backwards(8191);
    faces.insert(faces.begin(), 10'000, 8192U);
    EXPECT_THAT(told(2, faces, 8192), IsEmpty());
}

} // namespace Atelier::Vel
