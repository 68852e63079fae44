#include <velmodel/drawdata.h>

#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velmodel/modelbuilder.h>

#include "modeldescription.h"
#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::RecordingContext;

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kUnsignedByte = 0x1401;
constexpr quint64 kMask = 0xF0;
const QString kPosition = QStringLiteral("position");
const QString kColor = QStringLiteral("color");

/// A square of two triangles and a group without faces. Each triangle is a group with its own draw key.
class DrawDataTest : public testing::Test {
protected:
    DrawDataTest() { makeBuilder({}); }

    void makeBuilder(QSharedPointer<ModelDataStreamAllocator> allocator) {
        builder = std::make_unique<ModelBuilder>(std::move(allocator), kMask);
        const float positions[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
        const unsigned char colors[] = {1, 2, 3, 4, 5, 6, 7, 8};
        const unsigned int corners[] = {0, 1, 2, 0, 2, 3};
        const unsigned int colorOf[] = {0, 0, 1, 0, 0, 1};
        const unsigned int counts[] = {3, 3};
        builder->createVertexAttribute(kPosition, 3, kFloat, 0, 0);
        builder->addValuesToVertexAttribute(kPosition, 12, positions, kFloat);
        builder->addIndicesToVertexAttribute(kPosition, 6, corners);
        builder->createVertexAttribute(kColor, 4, kUnsignedByte, 0, 0);
        builder->addValuesToVertexAttribute(kColor, 8, colors, kUnsignedByte);
        builder->addIndicesToVertexAttribute(kColor, 6, colorOf);
        builder->addVertexCountsToFaces(2, counts);
        group("second", 8, 0x22, 1, QStringLiteral("object"));
        group("first", 3, 0x11, 0, QString());
        builder->createMaterialGroup(QStringLiteral("empty"), InstanceData(), 0, 0);
    }
    void group(const char* name, int id, quint64 flags, unsigned int face, const QString& objectName) {
        const InstanceData material(QStringLiteral("material of %1").arg(name));
        builder->createMaterialGroup(QString::fromLatin1(name), material, id, flags);
        builder->addFacesToMaterialGroup(QString::fromLatin1(name), 1, &face, objectName);
    }

    /// The results of an upload: the calls, the bytes and the contents of the model.
    template<typename Upload>
    static QStringList uploaded(const Upload& upload) {
        const RecordingContext context;
        GPUModel model;
        upload(model);
        QStringList result = context.calls() + Testing::describe(model);
        for (const auto& buffer : context.recording().uploads)
            result.append(QString::fromLatin1(buffer.bytes.toHex()));
        return result;
    }
    static UploadOptions options(const QString& groupIdMember = {}) {
        return {InstanceData(QStringLiteral("instance")), groupIdMember, 0x88E8, 5};
    }
    QStringList uploadedByTheBuilder(const QString& groupIdMember = {}) {
        return uploaded([&](GPUModel& model) {
            const UploadOptions given = options(groupIdMember);
            builder->upload(&model, given.instance, kPosition, given.groupIdMember, given.usage,
                            given.primitiveType);
        });
    }

public:
    std::unique_ptr<ModelBuilder> builder;
    MessageLog log;
};

template<typename T>
std::vector<T> values(const DrawData::Attribute& attribute) {
    const auto* const begin = static_cast<const T*>(attribute.data);
    return std::vector<T>(begin, begin + attribute.bytes / sizeof(T));
}

std::vector<quint32> indices(const DrawData& data) {
    return std::vector<quint32>(data.indices().data, data.indices().data + data.indices().count);
}

} // namespace

TEST_F(DrawDataTest, NullDrawDataHoldsNothing) {
    const DrawData data;
    EXPECT_TRUE(data.isNull());
    EXPECT_THAT(data.attributes(), IsEmpty());
    EXPECT_EQ(data.indices().count, 0U);
    EXPECT_EQ(data.indices().data, nullptr);
    EXPECT_EQ(data.vertexCount(), 0U);
    EXPECT_EQ(data.drawableCount(), 0);
}

TEST_F(DrawDataTest, IsPreparedWithoutAContext) {
    const DrawData data = builder->prepare(kPosition);
    ASSERT_FALSE(data.isNull());
    EXPECT_EQ(data.vertexCount(), 5U);
    EXPECT_THAT(indices(data), ElementsAre(0, 1, 2, 0, 3, 4));
    const QVector<DrawData::Attribute> attributes = data.attributes();
    ASSERT_EQ(attributes.size(), 2);
    EXPECT_EQ(attributes[0].name, kColor);
    EXPECT_EQ(attributes[0].components, 4);
    EXPECT_EQ(attributes[0].type, kUnsignedByte);
    EXPECT_EQ(attributes[0].vertexCount, 5U);
    EXPECT_EQ(attributes[0].bytes, 20U);
    EXPECT_THAT(values<unsigned char>(attributes[0]),
                ElementsAre(1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 7, 8, 1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_EQ(attributes[1].name, kPosition);
    EXPECT_THAT(values<float>(attributes[1]), ElementsAre(0, 0, 0, 1, 0, 0, 1, 1, 0, 1, 1, 0, 0, 1, 0));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(DrawDataTest, GroupsDescribeWhatTheCommandsDraw) {
    group("third", 1, 0x2F, 0, QStringLiteral("other"));
    const DrawData data = builder->prepare(kPosition);
    ASSERT_EQ(data.drawableCount(), 2);
    EXPECT_EQ(data.drawKey(0), 0x10U);
    EXPECT_EQ(data.drawKey(1), 0x20U);
    ASSERT_EQ(data.commandCount(0), 1);
    ASSERT_EQ(data.commandCount(1), 2);
    EXPECT_EQ(data.command(0, 0).firstIndex, 3U);
    EXPECT_EQ(data.command(0, 0).count, 3U);
    EXPECT_EQ(data.command(1, 1).firstIndex, 6U);
    EXPECT_EQ(data.group(0, 0).name, QStringLiteral("first"));
    EXPECT_TRUE(data.group(0, 0).objectName.isNull());
    EXPECT_EQ(data.group(0, 0).id, 3);
    EXPECT_EQ(data.group(0, 0).material.name(), QStringLiteral("material of first"));
    EXPECT_EQ(data.group(1, 0).name, QStringLiteral("third"));
    EXPECT_EQ(data.group(1, 0).objectName, QStringLiteral("other"));
    EXPECT_EQ(data.group(1, 1).name, QStringLiteral("second"));
    EXPECT_EQ(data.group(1, 1).objectName, QStringLiteral("object"));
    EXPECT_EQ(data.group(1, 1).id, 8);
}

TEST_F(DrawDataTest, TexturePathsAreThoseOfTheMaterialsInTheOrderOfTheCommands) {
    const auto addMaterial = [this](const char* name, int id, std::initializer_list<const char*> maps) {
        InstanceData material(QStringLiteral("material"));
        for (const char* map : maps)
            material.setTexture(QStringLiteral("map_") + QLatin1String(map), QString::fromLatin1(map));
        material.setTexture(QStringLiteral("object"), static_cast<Texture*>(nullptr));
        const unsigned int face = 0;
        builder->createMaterialGroup(QString::fromLatin1(name), material, id, 0);
        builder->addFacesToMaterialGroup(QString::fromLatin1(name), 1, &face, QString());
    };
    addMaterial("later", 101, {"wood", "grain"});
    addMaterial("earlier", 100, {"stone", "wood"});
    EXPECT_THAT(builder->prepare(kPosition).texturePaths(), ElementsAre("stone", "wood", "grain"));
    makeBuilder({});
    EXPECT_THAT(builder->prepare(kPosition).texturePaths(), IsEmpty());
    EXPECT_THAT(DrawData().texturePaths(), IsEmpty());
}

TEST_F(DrawDataTest, WithoutAValidBuilderItIsNull) {
    EXPECT_TRUE(builder->prepare(QStringLiteral("none")).isNull());
    builder->createVertexAttribute(QStringLiteral("void"), 1, kFloat, 0, 0);
    EXPECT_TRUE(builder->prepare(kPosition).isNull());
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(DrawDataTest, MissingStreamMakesItNull) {
    const auto allocator = QSharedPointer<Testing::LyingAllocator<Testing::PlainStream>>::create();
    makeBuilder(allocator);
    allocator->lie(allocator->requests().size(), Testing::Lie::Missing);
    EXPECT_TRUE(builder->prepare(kPosition).isNull());
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 1U);
}

TEST_F(DrawDataTest, OutlivesItsBuilderAndLaterChanges) {
    const DrawData data = builder->prepare(kPosition);
    const std::vector<quint32> before = indices(data);
    const std::vector<float> positions = values<float>(data.attributes()[1]);
    builder->createMaterialGroup(QStringLiteral("first"), InstanceData(QStringLiteral("new")), 70, 0);
    builder->createVertexAttribute(kPosition, 2, kFloat, 0, 0);
    builder->clear();
    builder.reset();
    EXPECT_EQ(indices(data), before);
    EXPECT_EQ(values<float>(data.attributes()[1]), positions);
    EXPECT_EQ(data.group(0, 0).id, 3);
    EXPECT_EQ(data.group(0, 0).material.name(), QStringLiteral("material of first"));
}

TEST_F(DrawDataTest, SecondCallSharesTheStreamsAndUsesTheCurrentGroups) {
    const DrawData first = builder->prepare(kPosition);
    const float more[] = {9, 9, 9};
    builder->addValuesToVertexAttribute(kPosition, 3, more, kFloat);
    builder->createMaterialGroup(QStringLiteral("first"), InstanceData(QStringLiteral("new")), 70, 0);
    const DrawData second = builder->prepare(kPosition);
    EXPECT_EQ(second.indices().data, first.indices().data);
    EXPECT_EQ(second.attributes()[1].data, first.attributes()[1].data);
    EXPECT_EQ(second.group(0, 0).id, 70);
    EXPECT_EQ(second.group(0, 0).material.name(), QStringLiteral("new"));
}

// A builder keeps its input, so it can prepare it later.
TEST_F(DrawDataTest, CancelledPreparationCanBeRepeated) {
    builder->generateNormals(QStringLiteral("normal"));
    for (const LoadPhase phase : {LoadPhase::Merging, LoadPhase::Triangulating, LoadPhase::MakingNormals}) {
        EXPECT_TRUE(builder->prepare(kPosition, [phase](const LoadStep& step) { return step.phase != phase; })
                        .isNull());
        EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
        EXPECT_EQ(builder->statistics().triangles, 0U);
    }
    const QStringList afterCancelling = uploadedByTheBuilder();
    makeBuilder({});
    builder->generateNormals(QStringLiteral("normal"));
    EXPECT_EQ(afterCancelling, uploadedByTheBuilder());
}

TEST_F(DrawDataTest, RedeclaredAttributeIsOmitted) {
    builder->prepare(kPosition);
    const unsigned char value = 1;
    const unsigned int index = 0;
    builder->createVertexAttribute(kColor, 1, kUnsignedByte, 0, 0);
    builder->addValuesToVertexAttribute(kColor, 1, &value, kUnsignedByte);
    builder->addIndicesToVertexAttribute(kColor, 1, &index);
    const DrawData data = builder->prepare(kPosition);
    ASSERT_EQ(data.attributes().size(), 1);
    EXPECT_EQ(data.attributes()[0].name, kPosition);
    EXPECT_EQ(data.vertexCount(), 5U);
}

TEST_F(DrawDataTest, UploadsTheSameAsTheBuilder) {
    for (const QString& member : {QString(), QStringLiteral("id")}) {
        const QStringList expected = uploadedByTheBuilder(member);
        ASSERT_GT(expected.size(), 20);
        const DrawData data = builder->prepare(kPosition);
        EXPECT_EQ(uploaded([&](GPUModel& model) { EXPECT_TRUE(upload(data, model, options(member))); }),
                  expected);
        EXPECT_EQ(uploaded([&](GPUModel& model) {
                      EXPECT_TRUE(upload(builder->prepare(kPosition), model, options(member)));
                  }),
                  expected);
        EXPECT_EQ(uploaded([&](GPUModel& model) { upload(data, model, options(member)); }), expected)
            << "an upload does not change it";
    }
}

TEST_F(DrawDataTest, UploadReleasesMovedDataAndKeepsCopies) {
    DrawData data = builder->prepare(kPosition);
    const DrawData copy(data);
    const QStringList expected = uploadedByTheBuilder();
    EXPECT_EQ(uploaded([&](GPUModel& model) { upload(std::move(data), model, options()); }), expected);
    EXPECT_TRUE(data.isNull()); // NOLINT(bugprone-use-after-move): an upload guarantees it
    EXPECT_EQ(indices(copy).size(), 6U);
    EXPECT_EQ(copy.group(1, 0).objectName, QStringLiteral("object"));
    EXPECT_EQ(uploaded([&](GPUModel& model) { upload(copy, model, options()); }), expected);
}

TEST_F(DrawDataTest, UploadNeedsDataAndAContext) {
    GPUModel model;
    EXPECT_FALSE(upload(builder->prepare(kPosition), model, {}));
    const RecordingContext context;
    EXPECT_FALSE(upload(DrawData(), model, {}));
    EXPECT_EQ(model.drawableCount(), 0);
    EXPECT_THAT(context.calls(), IsEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
    EXPECT_TRUE(upload(builder->prepare(kPosition), model, {}));
    EXPECT_EQ(model.drawableCount(), 2);
}

TEST_F(DrawDataTest, UploadReportsAMissingBuffer) {
    const auto allocator = QSharedPointer<Testing::LyingAllocator<Testing::PlainStream>>::create();
    makeBuilder(allocator);
    const DrawData data = builder->prepare(kPosition);
    builder.reset();
    allocator->lie(allocator->requests().size(), Testing::Lie::Missing);
    const RecordingContext context;
    GPUModel model;
    EXPECT_FALSE(upload(data, model, {}));
    EXPECT_EQ(model.drawableCount(), 0);
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("Unable to upload: no stream could be made for the index buffer")));
}

TEST_F(DrawDataTest, DefaultOptionsMatchThoseOfALoad) {
    const RecordingContext context;
    GPUModel model;
    upload(builder->prepare(kPosition), model, {});
    EXPECT_TRUE(context.calls().contains(QStringLiteral("buffer 0: 6 ushort, usage 0x88e4")));
    EXPECT_EQ(model.drawable(0)->primitiveType(), 4U);
    EXPECT_NE(model.materials(0), nullptr);
}

TEST_F(DrawDataTest, BoxEnclosesTheFinitePositionsOfACommand) {
    const DrawData data = builder->prepare(kPosition);
    const DrawData::Box box = data.commandBox(0, 0);
    EXPECT_TRUE(box.isValid);
    EXPECT_EQ(box.minimum, QVector3D(0, 0, 0));
    EXPECT_EQ(box.maximum, QVector3D(1, 1, 0));
    ModelBuilder odd;
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const float positions[] = {NAN, 0, 0, 2, -3, 4, kInfinity, 0, 0, 5, 6, -7};
    const unsigned int corners[] = {0, 1, 2, 1, 3, 3, 0, 0, 2};
    const unsigned int counts[] = {3, 3, 3};
    odd.createVertexAttribute(kPosition, 3, kFloat, 0, 0);
    odd.addValuesToVertexAttribute(kPosition, 12, positions, kFloat);
    odd.addIndicesToVertexAttribute(kPosition, 9, corners);
    odd.addVertexCountsToFaces(3, counts);
    for (unsigned int face = 0; face < 3; ++face) {
        odd.createMaterialGroup(QString::number(face), InstanceData(), -1, 0);
        odd.addFacesToMaterialGroup(QString::number(face), 1, &face, QString());
    }
    const DrawData oddData = odd.prepare(kPosition);
    ASSERT_EQ(oddData.commandCount(0), 3);
    EXPECT_EQ(oddData.commandBox(0, 0).minimum, QVector3D(2, -3, 4));
    EXPECT_EQ(oddData.commandBox(0, 0).maximum, QVector3D(2, -3, 4));
    EXPECT_EQ(oddData.commandBox(0, 1).minimum, QVector3D(2, -3, -7));
    EXPECT_EQ(oddData.commandBox(0, 1).maximum, QVector3D(5, 6, 4));
    EXPECT_FALSE(oddData.commandBox(0, 2).isValid) << "no position is finite";
}

TEST_F(DrawDataTest, BoxWithoutThreeFloatsIsNotValid) {
    const DrawData data = builder->prepare(kColor);
    ASSERT_FALSE(data.isNull());
    EXPECT_FALSE(data.commandBox(0, 0).isValid);
}

TEST_F(DrawDataTest, OptimisedDataIsNewIfTheBuildSupportsIt) {
    const DrawData data = builder->prepare(kPosition);
    const DrawData optimised = data.optimised();
    EXPECT_EQ(optimised.indices().data != data.indices().data, DrawData::canOptimise());
    EXPECT_EQ(optimised.vertexCount(), 5U);
    EXPECT_EQ(optimised.group(1, 0).objectName, QStringLiteral("object"));
    EXPECT_EQ(data.vertexCacheStatistics().acmr, DrawData::canOptimise() ? 2.5F : 0);
    EXPECT_EQ(data.vertexCacheStatistics().atvr, DrawData::canOptimise() ? 1 : 0);
}

} // namespace Atelier::Vel
