#include <velmodel/modelbuilder.h>

#include <type_traits>

#include <gmock/gmock.h>

#include <velmodel/modeldataarray.h>

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

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kDouble = 0x140A;
const QString kName = QStringLiteral("va_Vertex");
const QString kGroup = QStringLiteral("group");

/// A minimal valid builder: one group, one face count, one value and one index.
void makeValid(ModelBuilder& builder) {
    const float value = 1.0F;
    const unsigned int zero = 0;
    const unsigned int one = 1;
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    builder.addVertexCountsToFaces(1, &one);
    builder.createVertexAttribute(kName, 1, kFloat, 0, 0);
    builder.addValuesToVertexAttribute(kName, 1, &value, kFloat);
    builder.addIndicesToVertexAttribute(kName, 1, &zero);
}

static_assert(std::is_convertible_v<QSharedPointer<ModelDataStreamAllocator>, ModelBuilder>);

TEST(ModelBuilderTest, ConstantsAreThoseOfUnsignedInt) {
    EXPECT_EQ(ModelBuilder::kIndexType, 0x1405U);
    EXPECT_EQ(ModelBuilder::kIndexStride, 4);
    static_assert(std::is_same_v<decltype(ModelBuilder::kIndexType), const quint32>);
    static_assert(std::is_same_v<decltype(ModelBuilder::kIndexStride), const qint32>);
    static_assert(!std::is_copy_constructible_v<ModelBuilder> && !std::is_polymorphic_v<ModelBuilder>);
}

TEST(ModelBuilderTest, IsValidWithAGroupAFaceAValueAndAnIndex) {
    ModelBuilder builder;
    EXPECT_FALSE(builder.isValid());
    const float value = 1.0F;
    const unsigned int zero = 0;
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    EXPECT_FALSE(builder.isValid());
    builder.addVertexCountsToFaces(1, &zero);
    EXPECT_FALSE(builder.isValid());
    builder.createVertexAttribute(kName, 1, kFloat, 0, 0);
    EXPECT_FALSE(builder.isValid()) << "an attribute without data";
    builder.addValuesToVertexAttribute(kName, 1, &value, kFloat);
    EXPECT_FALSE(builder.isValid());
    builder.addIndicesToVertexAttribute(kName, 1, &zero);
    EXPECT_TRUE(builder.isValid());
    builder.createVertexAttribute(QStringLiteral("other"), 1, kFloat, 0, 0);
    EXPECT_FALSE(builder.isValid());
}

TEST(ModelBuilderTest, AttributeWithoutInputStreamKeepsTheBuilderValid) {
    ModelBuilder builder;
    makeValid(builder);
    ModelBuilderAccess(builder).attribute("generated");
    EXPECT_TRUE(builder.isValid());
}

TEST(ModelBuilderTest, AttributeWithoutIndexStreamIsNotValid) {
    ModelBuilder builder;
    makeValid(builder);
    ModelBuilderAccess(builder).attribute("va_Vertex").streams[kIndices].reset();
    EXPECT_FALSE(builder.isValid());
}

TEST(ModelBuilderTest, UnknownNamesAreNoErrors) {
    ModelBuilder builder;
    const MessageLog log;
    const unsigned int zero = 0;
    EXPECT_FALSE(builder.hasMaterialGroup(kGroup));
    EXPECT_EQ(builder.materialGroupId(kGroup), -1);
    EXPECT_EQ(builder.materialGroupFlags(kGroup), 0U);
    EXPECT_FALSE(builder.addFacesToMaterialGroup(kGroup, 1, &zero, QString()));
    EXPECT_FALSE(builder.hasVertexAttribute(kName));
    builder.addValuesToVertexAttribute(kName, 1, &zero, kFloat);
    builder.addIndicesToVertexAttribute(kName, 1, &zero);
    EXPECT_FALSE(builder.hasMaterialGroup(kGroup)) << "the query inserts nothing";
    EXPECT_FALSE(builder.hasVertexAttribute(kName));
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(ModelBuilderTest, NamesAreCaseSensitive) {
    ModelBuilder builder;
    builder.createMaterialGroup(QStringLiteral("Red"), InstanceData(), -1, 0);
    EXPECT_TRUE(builder.hasMaterialGroup(QStringLiteral("Red")));
    EXPECT_FALSE(builder.hasMaterialGroup(QStringLiteral("red")));
}

TEST(ModelBuilderTest, NegativeIdStandsForTheNumberOfGroups) {
    ModelBuilder builder;
    const unsigned int face = 4;
    builder.createMaterialGroup(QStringLiteral("a"), InstanceData(), -1, 0);
    builder.createMaterialGroup(QStringLiteral("b"), InstanceData(), -7, 0);
    EXPECT_EQ(builder.materialGroupId(QStringLiteral("a")), 0);
    EXPECT_EQ(builder.materialGroupId(QStringLiteral("b")), 1);
    builder.addFacesToMaterialGroup(QStringLiteral("a"), 1, &face, QString());
    builder.createMaterialGroup(QStringLiteral("a"), InstanceData(), -1, 0);
    EXPECT_EQ(builder.materialGroupId(QStringLiteral("a")), 2);
    EXPECT_TRUE(ModelBuilderAccess(builder).groups()[QStringLiteral("a")].faces.stream()->isEmpty());
}

TEST(ModelBuilderTest, GivenIdIsKept) {
    ModelBuilder builder;
    builder.createMaterialGroup(QStringLiteral("x"), InstanceData(), 5, 0);
    builder.createMaterialGroup(QStringLiteral("y"), InstanceData(), 5, 0);
    EXPECT_EQ(builder.materialGroupId(QStringLiteral("x")), 5);
    EXPECT_EQ(builder.materialGroupId(QStringLiteral("y")), 5);
}

TEST(ModelBuilderTest, ReusedGroupNameDropsItsFacesAndObjectName) {
    ModelBuilder builder;
    const unsigned int face = 0;
    builder.createMaterialGroup(kGroup, InstanceData(QStringLiteral("one")), 1, 1);
    builder.addFacesToMaterialGroup(kGroup, 1, &face, QStringLiteral("object"));
    builder.createMaterialGroup(kGroup, InstanceData(QStringLiteral("two")), 2, ~quint64{0});
    const auto& group = ModelBuilderAccess(builder).groups()[kGroup];
    EXPECT_EQ(group.material.name(), QStringLiteral("two"));
    EXPECT_EQ(group.id, 2);
    EXPECT_TRUE(group.faces.stream()->isEmpty());
    EXPECT_EQ(builder.materialGroupFlags(kGroup), ~quint64{0});
    EXPECT_TRUE(group.objectName.isNull());
}

TEST(ModelBuilderTest, FirstObjectNameStaysAndAnotherGivesAWarning) {
    ModelBuilder builder;
    const MessageLog log;
    const unsigned int faces[] = {3, 4};
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    EXPECT_TRUE(builder.addFacesToMaterialGroup(kGroup, 1, faces, QStringLiteral("Wand")));
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_TRUE(builder.addFacesToMaterialGroup(kGroup, 1, faces + 1, QStringLiteral("Tür")));
    ASSERT_EQ(log.messages().size(), 1U);
    const Testing::LoggedMessage& message = log.messages()[0];
    EXPECT_EQ(message.level, QtWarningMsg);
    EXPECT_EQ(message.text, QStringLiteral("adding object 'Tür'' to material group for object 'Wand'"));
    EXPECT_FALSE(message.hasContext);
    const auto& group = ModelBuilderAccess(builder).groups()[kGroup];
    EXPECT_EQ(group.objectName, QStringLiteral("Wand"));
    EXPECT_THAT(elements<quint32>(group.faces.stream()), ElementsAre(3, 4));
}

TEST(ModelBuilderTest, NullObjectNameCountsAsUnset) {
    ModelBuilder builder;
    const MessageLog log;
    const unsigned int face = 0;
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    builder.addFacesToMaterialGroup(kGroup, 1, &face, QString());
    builder.addFacesToMaterialGroup(kGroup, 1, &face, QLatin1String(""));
    builder.addFacesToMaterialGroup(kGroup, 1, &face, QString());
    EXPECT_THAT(log.messages(), IsEmpty()) << "null and empty are equal";
    builder.addFacesToMaterialGroup(kGroup, 1, &face, QStringLiteral("late"));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("adding object 'late'' to material group for object ''")));
}

TEST(ModelBuilderTest, NullObjectNameAfterAnotherGivesAWarning) {
    ModelBuilder builder;
    const MessageLog log;
    const unsigned int face = 0;
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    builder.addFacesToMaterialGroup(kGroup, 1, &face, QStringLiteral("a"));
    builder.addFacesToMaterialGroup(kGroup, 1, &face, QString());
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("adding object ''' to material group for object 'a'")));
}

TEST(ModelBuilderTest, ValuesOfAnotherTypeAreIgnored) {
    ModelBuilder builder;
    const MessageLog log;
    const double value = 1.0;
    builder.createVertexAttribute(kName, 1, kFloat, 0, 0);
    builder.addValuesToVertexAttribute(kName, 1, &value, kDouble);
    EXPECT_TRUE(ModelBuilderAccess(builder).attribute("va_Vertex").streams[0]->isEmpty());
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(ModelBuilderTest, CreatingAnAttributeSizesItsStreams) {
    ModelBuilder builder;
    const unsigned int index = 9;
    builder.createVertexAttribute(kName, 4, kDouble, 8, 3);
    builder.addIndicesToVertexAttribute(kName, 1, &index);
    const auto& record = ModelBuilderAccess(builder).attribute("va_Vertex");
    EXPECT_EQ(record.components, 4);
    EXPECT_EQ(record.streams[kValues]->type(), kDouble);
    EXPECT_EQ(record.streams[kValues]->size(), 8U);
    EXPECT_EQ(record.streams[kIndices]->type(), ModelBuilder::kIndexType);
    EXPECT_EQ(record.streams[kIndices]->size(), 4U);
    EXPECT_EQ(*static_cast<quint32*>(record.streams[kIndices]->data(3)), 9U);
    EXPECT_TRUE(record.streams[kGPUValues].isNull());
    EXPECT_TRUE(record.streams[kGPUIndices].isNull());
}

TEST(ModelBuilderTest, ReusedAttributeNameDropsItsContents) {
    ModelBuilder builder;
    makeValid(builder);
    const ModelBuilderAccess access(builder);
    access.buildGPUFriendlyStreams(false);
    builder.createVertexAttribute(kName, 2, kDouble, 0, 0);
    const auto& record = access.attribute("va_Vertex");
    EXPECT_EQ(record.components, 2);
    EXPECT_TRUE(record.streams[kValues]->isEmpty());
    EXPECT_TRUE(record.streams[kIndices]->isEmpty());
    EXPECT_TRUE(record.streams[kGPUValues].isNull());
    EXPECT_TRUE(record.streams[kGPUIndices].isNull());
}

TEST(ModelBuilderTest, AppendingNothingChangesNothing) {
    ModelBuilder builder;
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    builder.createVertexAttribute(kName, 1, kFloat, 0, 0);
    builder.addVertexCountsToFaces(0, nullptr);
    builder.addValuesToVertexAttribute(kName, 0, nullptr, kFloat);
    builder.addIndicesToVertexAttribute(kName, 0, nullptr);
    EXPECT_TRUE(builder.addFacesToMaterialGroup(kGroup, 0, nullptr, QString()));
    const ModelBuilderAccess access(builder);
    EXPECT_TRUE(access.verticesPerFace()->isEmpty());
    EXPECT_TRUE(access.attribute("va_Vertex").streams[kValues]->isEmpty());
    EXPECT_TRUE(access.attribute("va_Vertex").streams[kIndices]->isEmpty());
    EXPECT_TRUE(access.groups()[kGroup].faces.stream()->isEmpty());
}

TEST(ModelBuilderTest, RemovalsOfVerticesDoNothing) {
    ModelBuilder builder;
    makeValid(builder);
    builder.removeUnusedVertices();
    builder.removeDuplicateVertices();
    const ModelBuilderAccess access(builder);
    EXPECT_TRUE(builder.isValid());
    EXPECT_EQ(access.groups().size(), 1);
    EXPECT_EQ(access.attributes().size(), 1);
    EXPECT_THAT(elements<quint32>(access.verticesPerFace()), ElementsAre(1));
    EXPECT_THAT(elements<float>(access.attribute("va_Vertex").streams[kValues]), ElementsAre(1.0F));
    EXPECT_TRUE(access.attribute("va_Vertex").streams[kGPUValues].isNull());
    EXPECT_TRUE(access.gpuIndices()->isEmpty());
}

TEST(ModelBuilderTest, LastNormalsAttributeCounts) {
    ModelBuilder builder;
    const ModelBuilderAccess access(builder);
    EXPECT_TRUE(access.normalsAttributeName().isNull());
    builder.generateNormals(QStringLiteral("a"));
    builder.generateNormals(QStringLiteral("b"));
    EXPECT_EQ(access.normalsAttributeName(), QStringLiteral("b"));
    builder.clear();
    EXPECT_TRUE(access.normalsAttributeName().isNull());
}

TEST(ModelBuilderTest, ClearRestoresTheInitialState) {
    const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
    ModelBuilder builder(allocator, 1);
    makeValid(builder);
    const ModelBuilderAccess access(builder);
    access.buildGPUFriendlyStreams(false);
    access.drawCommands()[0].append(DrawElementsIndirectCommand());
    access.drawGroupNames()[0].append(kGroup);
    const auto faces = access.verticesPerFace();
    const auto indices = access.gpuIndices();
    builder.clear();
    EXPECT_FALSE(builder.isValid());
    EXPECT_TRUE(access.groups().isEmpty());
    EXPECT_TRUE(access.attributes().isEmpty());
    EXPECT_TRUE(access.drawCommands().isEmpty());
    EXPECT_TRUE(access.drawGroupNames().isEmpty());
    for (const auto& [now, then] :
         {std::pair(access.verticesPerFace(), faces), std::pair(access.gpuIndices(), indices)}) {
        ASSERT_FALSE(now.isNull());
        EXPECT_NE(now, then);
        EXPECT_TRUE(now->isEmpty());
        EXPECT_EQ(now->type(), ModelBuilder::kIndexType);
    }
    EXPECT_EQ(builder.statistics().corners, 0U);
    const int before = allocator->count();
    makeValid(builder);
    EXPECT_TRUE(builder.isValid());
    EXPECT_GT(allocator->count(), before) << "the allocator is kept";
}

TEST(ModelBuilderTest, EveryStreamComesFromTheAllocator) {
    const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
    ModelBuilder builder(allocator);
    EXPECT_EQ(allocator->count(), 2);
    builder.createMaterialGroup(kGroup, InstanceData(), -1, 0);
    EXPECT_EQ(allocator->count(), 3);
    builder.createVertexAttribute(kName, 1, kFloat, 0, 0);
    EXPECT_EQ(allocator->count(), 5);
}

TEST(ModelBuilderTest, FailingAllocatorLeavesNullStreams) {
    ModelBuilder builder(QSharedPointer<Testing::NullAllocator>::create());
    makeValid(builder);
    const unsigned int face = 0;
    EXPECT_TRUE(builder.addFacesToMaterialGroup(kGroup, 1, &face, QString()));
    const ModelBuilderAccess access(builder);
    EXPECT_FALSE(builder.isValid());
    EXPECT_TRUE(access.verticesPerFace().isNull());
    EXPECT_TRUE(access.gpuIndices().isNull());
    EXPECT_TRUE(access.groups()[kGroup].faces.stream().isNull());
    EXPECT_TRUE(access.attribute("va_Vertex").streams[kValues].isNull());
}

TEST(ModelBuilderTest, DataBeyondTheCapacityOfAStreamIsRefusedAndReportedOnce) {
    ModelBuilder builder;
    makeValid(builder);
    const MessageLog log;
    const unsigned int data = 0;
    const quint64 tooMany = 0x20000000;
    for (int round = 0; round < 2; ++round) {
        builder.addValuesToVertexAttribute(kName, tooMany, &data, kFloat);
        builder.addIndicesToVertexAttribute(kName, tooMany, &data);
        builder.addVertexCountsToFaces(tooMany, &data);
        EXPECT_TRUE(builder.addFacesToMaterialGroup(kGroup, tooMany, &data, QString()));
    }
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(
            QStringLiteral(
                "Data for vertex attribute 'va_Vertex' refused: a stream holds at most 2147483647 bytes"),
            QStringLiteral("Data for the faces refused: a stream holds at most 2147483647 bytes"),
            QStringLiteral(
                "Data for material group 'group' refused: a stream holds at most 2147483647 bytes")));
    EXPECT_THAT(builder.refusedStreams(),
                ElementsAre(QStringLiteral("vertex attribute 'va_Vertex'"), QStringLiteral("the faces"),
                            QStringLiteral("material group 'group'")));
    EXPECT_TRUE(builder.isValid()) << "earlier data are kept";
    builder.clear();
    EXPECT_THAT(builder.refusedStreams(), IsEmpty());
}

TEST(ModelBuilderTest, InitialSizesBeyondTheCapacityOfAStreamAreRefused) {
    ModelBuilder builder;
    const MessageLog log;
    builder.createVertexAttribute(kName, 1, kDouble, ~quint64{0} / 8, 0);
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral("Data for vertex attribute 'va_Vertex' refused: a stream holds at "
                                           "most 2147483647 bytes")));
    EXPECT_TRUE(ModelBuilderAccess(builder).attribute("va_Vertex").streams[0].isNull());
    builder.createVertexAttribute(QStringLiteral("other"), 1, kFloat, 0, 0x20000000);
    EXPECT_THAT(
        log.texts(QtWarningMsg).back(),
        QStringLiteral("Data for vertex attribute 'other' refused: a stream holds at most 2147483647 bytes"));
    EXPECT_TRUE(ModelBuilderAccess(builder).attribute("other").streams[1].isNull());
    EXPECT_EQ(builder.refusedStreams().size(), 2);
}

TEST(ModelBuilderTest, MissingStreamsOfSizesThatFitAreNotRefused) {
    ModelBuilder builder(QSharedPointer<Testing::NullAllocator>::create());
    const MessageLog log;
    builder.createVertexAttribute(kName, 1, kFloat, 0x1FFFFFFF, 0x1FFFFFFF);
    EXPECT_THAT(builder.refusedStreams(), IsEmpty());
    EXPECT_THAT(log.messages(), IsEmpty());
}

} // namespace
} // namespace Atelier::Vel
