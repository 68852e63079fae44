#include <algorithm>
#include <initializer_list>
#include <memory>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/vertexarrayobject.h>
#include <velmodel/modelbuilder.h>

#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/modelbuilderaccess.h"
#include "support/recordingcontext.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using Testing::elements;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::RecordingContext;

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kUnsignedShort = 0x1403;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kStaticDraw = 0x88E4;
constexpr unsigned int kTriangles = 4;

const QString kPosition = QStringLiteral("position");
const QString kNormal = QStringLiteral("normal");

template<typename T>
std::vector<T> uploaded(const RecordingContext& context, std::size_t upload) {
    const QByteArray& bytes = context.recording().uploads.at(upload).bytes;
    std::vector<T> result(static_cast<std::size_t>(bytes.size()) / sizeof(T));
    std::copy_n(bytes.constData(), bytes.size(), reinterpret_cast<char*>(result.data()));
    return result;
}

/// Makes a limited number of objects; filling them fails.
class ScarceContext : public OpenGLDeviceContext {
public:
    explicit ScarceContext(int objects) : _left(objects) {}

    QSharedPointer<BufferObject> createBufferObject() override {
        return _left-- > 0 ? OpenGLDeviceContext::createBufferObject() : QSharedPointer<BufferObject>();
    }
    QSharedPointer<VertexArrayObject> createVertexArrayObject() override {
        return _left-- > 0 ? OpenGLDeviceContext::createVertexArrayObject()
                           : QSharedPointer<VertexArrayObject>();
    }

private:
    int _left;
};

/// Its streams of one type can report a larger size than they have.
class BoastingAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        return new Stream(type, count, _boast);
    }
    void boast(unsigned int type, quint64 size) { *_boast = {type, size}; }

private:
    struct Boast {
        unsigned int type = 0;
        quint64 size = 0;
    };

    class Stream : public Testing::PlainStream {
    public:
        Stream(unsigned int type, quint64 count, QSharedPointer<Boast> boast)
            : PlainStream(type, count), _boast(std::move(boast)) {}
        quint64 size() const override { return type() == _boast->type ? _boast->size : PlainStream::size(); }

    private:
        QSharedPointer<Boast> _boast;
    };

    QSharedPointer<Boast> _boast = QSharedPointer<Boast>::create();
};

/// Its buffers use only the number of elements.
class CountingContext : public OpenGLDeviceContext {
public:
    QSharedPointer<BufferObject> createBufferObject() override {
        return QSharedPointer<Buffer>::create(counts);
    }

    QSharedPointer<std::vector<int>> counts = QSharedPointer<std::vector<int>>::create();

private:
    class Buffer : public BufferObject {
    public:
        explicit Buffer(QSharedPointer<std::vector<int>> counts) : _counts(std::move(counts)) {}
        bool bind() override { return true; }
        void unbind() override {}
        // Both kinds of index uploads end here, too.
        bool uploadArbitraryData(const void* /*data*/, int count, unsigned int /*usage*/,
                                 unsigned long long /*elementSize*/) override {
            _counts->push_back(count);
            return true;
        }

    private:
        QSharedPointer<std::vector<int>> _counts;
    };
};

/// Feeds a builder with a square of two triangles, one group each.
class ModelUploadTest : public testing::Test {
protected:
    ModelUploadTest() { makeBuilder({}, 0); }

    void makeBuilder(QSharedPointer<ModelDataStreamAllocator> allocator, quint64 mask) {
        builder = std::make_unique<ModelBuilder>(std::move(allocator), mask);
        fill();
    }
    void fill() {
        const float positions[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
        const unsigned int corners[] = {0, 1, 2, 0, 2, 3};
        const unsigned int counts[] = {3, 3};
        builder->createVertexAttribute(kPosition, 3, kFloat, 0, 0);
        builder->addValuesToVertexAttribute(kPosition, 12, positions, kFloat);
        builder->addIndicesToVertexAttribute(kPosition, 6, corners);
        builder->addVertexCountsToFaces(2, counts);
        group("second", 8, 0x12, 1);
        group("first", 3, 0x21, 0);
        builder->createMaterialGroup(QStringLiteral("empty"), InstanceData(), 0, 0);
    }
    void group(const char* name, int id, quint64 flags, unsigned int face) {
        InstanceData material(QStringLiteral("material of %1").arg(name));
        builder->createMaterialGroup(QString::fromLatin1(name), material, id, flags);
        builder->addFacesToMaterialGroup(QString::fromLatin1(name), 1, &face,
                                         QStringLiteral("object of %1").arg(name));
    }
    void upload(const QString& position = kPosition, const QString& groupIdMember = QString()) {
        builder->upload(&model, InstanceData(QStringLiteral("instance")), position, groupIdMember,
                        kStaticDraw, kTriangles);
    }
    ModelBuilderAccess access() { return ModelBuilderAccess(*builder); }

public:
    RecordingContext context;
    GPUModel model;
    MessageLog log;
    std::unique_ptr<ModelBuilder> builder;
};

TEST_F(ModelUploadTest, CallsComeInTheirOrder) {
    const float uv[] = {0, 0, 1, 1};
    const unsigned int corners[] = {0, 1, 1, 0, 1, 1};
    builder->createVertexAttribute(QStringLiteral("a uv"), 2, kFloat, 0, 0);
    builder->addValuesToVertexAttribute(QStringLiteral("a uv"), 4, uv, kFloat);
    builder->addIndicesToVertexAttribute(QStringLiteral("a uv"), 6, corners);
    builder->generateNormals(kNormal);
    upload();
    EXPECT_EQ(context.calls().join('\n').toStdString(), "new buffer 0\n"
                                                        "buffer 0: target 0x8893\n"
                                                        "buffer 0: bind\n"
                                                        "buffer 0: 6 ushort, usage 0x88e4\n"
                                                        "buffer 0: unbind\n"
                                                        "new buffer 1\n"
                                                        "buffer 1: target 0x8892\n"
                                                        "buffer 1: bind\n"
                                                        "buffer 1: 8 elements of 4 bytes, usage 0x88e4\n"
                                                        "buffer 1: unbind\n"
                                                        "new buffer 2\n"
                                                        "buffer 2: target 0x8892\n"
                                                        "buffer 2: bind\n"
                                                        "buffer 2: 12 elements of 4 bytes, usage 0x88e4\n"
                                                        "buffer 2: unbind\n"
                                                        "new buffer 3\n"
                                                        "buffer 3: target 0x8892\n"
                                                        "buffer 3: bind\n"
                                                        "buffer 3: 12 elements of 4 bytes, usage 0x88e4\n"
                                                        "buffer 3: unbind\n"
                                                        "new array 0\n"
                                                        "array 0: a uv, 2 components, type 0x1406\n"
                                                        "array 0: normal, 3 components, type 0x1406\n"
                                                        "array 0: position, 3 components, type 0x1406");
}

TEST_F(ModelUploadTest, DrawableHoldsTheWholeIndexBufferAndTheCommands) {
    upload();
    ASSERT_EQ(model.drawableCount(), 1);
    DrawBuffers& drawable = *model.drawable(0);
    EXPECT_EQ(drawable.indexCount(), 6);
    EXPECT_EQ(drawable.indexType(), kUnsignedShort);
    EXPECT_EQ(drawable.vertexCount(), 4U);
    EXPECT_EQ(drawable.primitiveType(), kTriangles);
    EXPECT_EQ(drawable.parent(), nullptr);
    ASSERT_EQ(drawable.drawElementsIndirectCommands().size(), 2);
    EXPECT_EQ(drawable.drawElementsIndirectCommands()[1].firstIndex, 3U);
    EXPECT_EQ(drawable.drawElementsIndirectCommands()[1].count, 3U);
    EXPECT_EQ(drawable.drawElementsIndirectCommands()[1].instanceCount, 1U);
    EXPECT_THAT(uploaded<quint16>(context, 0), ElementsAre(0, 1, 2, 0, 2, 3));
    EXPECT_THAT(uploaded<float>(context, 1), ElementsAre(0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0));
}

TEST_F(ModelUploadTest, GroupsAreOrderedByIdAndThenByName) {
    group("also eight", 8, 0, 0);
    upload();
    EXPECT_EQ(model.materialName(0, 0), QStringLiteral("first"));
    EXPECT_EQ(model.materialName(0, 1), QStringLiteral("also eight"));
    EXPECT_EQ(model.materialName(0, 2), QStringLiteral("second"));
    EXPECT_EQ(model.objectName(0, 0), QStringLiteral("object of first"));
    EXPECT_EQ(model.objectName(0, 2), QStringLiteral("object of second"));
    EXPECT_TRUE(model.materialName(0, 3).isNull()) << "a group without faces is not drawn";
}

TEST_F(ModelUploadTest, NullGroupIdMemberPassesTheMaterialsOn) {
    upload();
    ASSERT_NE(model.materials(0), nullptr);
    EXPECT_EQ(model.materials(0)->name(), QStringLiteral("material of first"));
    ASSERT_EQ(model.materials(0)->items().size(), 2);
    EXPECT_EQ(model.materials(0)->items()[1].name(), QStringLiteral("material of second"));
    ASSERT_NE(model.instances(0), nullptr);
    EXPECT_EQ(model.instances(0)->name(), QStringLiteral("instance"));
    EXPECT_EQ(model.instances(0)->items().size(), 2);
    EXPECT_THAT(model.instances(0)->items()[0].valueNames(), IsEmpty());
}

TEST_F(ModelUploadTest, GroupIdMemberPutsTheIdsIntoTheInstances) {
    for (const QString& member : {QStringLiteral("id"), QString(QLatin1String(""))}) {
        ASSERT_FALSE(member.isNull());
        GPUModel other;
        builder->upload(&other, InstanceData(QStringLiteral("instance")), kPosition, member, kStaticDraw,
                        kTriangles);
        EXPECT_EQ(other.materials(0), nullptr);
        ASSERT_EQ(other.instances(0)->items().size(), 2);
        const qint32 ids[] = {3, 8};
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(other.instances(0)->items()[i].value(member),
                      QByteArray(reinterpret_cast<const char*>(&ids[i]), 4));
    }
}

TEST_F(ModelUploadTest, MaskOfZeroDrawsAllGroupsWithKeyZero) {
    group("third", 9, ~quint64{0}, 1);
    upload();
    ASSERT_EQ(model.drawableCount(), 1);
    EXPECT_EQ(model.key(0), 0U);
    EXPECT_EQ(model.drawable(0)->drawElementsIndirectCommands().size(), 3);
}

TEST_F(ModelUploadTest, DrawKeysAscendAndGetADrawableEach) {
    makeBuilder({}, 0x0F);
    upload();
    ASSERT_EQ(model.drawableCount(), 2);
    EXPECT_EQ(model.key(0), 1U);
    EXPECT_EQ(model.key(1), 2U);
    EXPECT_EQ(model.materialName(0, 0), QStringLiteral("first"));
    EXPECT_EQ(model.materialName(1, 0), QStringLiteral("second"));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(model.drawable(i)->indexCount(), 6);
        ASSERT_EQ(model.drawable(i)->drawElementsIndirectCommands().size(), 1);
        EXPECT_EQ(model.drawable(i)->drawElementsIndirectCommands()[0].firstIndex, i == 0 ? 0U : 3U);
    }
    EXPECT_EQ(model.drawable(0)->indexBuffer(), model.drawable(1)->indexBuffer());
    EXPECT_NE(model.drawable(0)->VAO(), model.drawable(1)->VAO());
    EXPECT_EQ(context.recording().uploads.size(), 2U) << "buffers are shared";
    EXPECT_EQ(model.materials(1)->name(), QStringLiteral("material of second"));
}

TEST_F(ModelUploadTest, InvalidBuilderUploadsNothing) {
    builder->clear();
    upload();
    EXPECT_EQ(model.drawableCount(), 0);
    EXPECT_THAT(context.calls(), IsEmpty());
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(ModelUploadTest, UnknownPositionAttributeUploadsNothing) {
    upload(QStringLiteral("unknown"));
    EXPECT_THAT(context.calls(), IsEmpty());
    EXPECT_FALSE(builder->hasVertexAttribute(QStringLiteral("unknown")));
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(ModelUploadTest, NullModelUploadsNothing) {
    builder->upload(nullptr, InstanceData(), kPosition, QString(), kStaticDraw, kTriangles);
    EXPECT_THAT(context.calls(), IsEmpty());
}

TEST_F(ModelUploadTest, WithoutAContextNothingHappens) {
    OpenGLDeviceContext::setCurrent({});
    upload();
    EXPECT_EQ(model.drawableCount(), 0);
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_TRUE(access().gpuIndices()->isEmpty()) << "not even prepared";
}

TEST_F(ModelUploadTest, SecondUploadPreparesNothingAndUploadsTheSameAgain) {
    upload();
    const Testing::Recording first = context.recording();
    log.clear();
    context.forget();
    const unsigned int count = 3;
    builder->addVertexCountsToFaces(1, &count);
    upload();
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_EQ(model.drawableCount(), 2);
    EXPECT_EQ(model.drawable(1)->drawElementsIndirectCommands().size(), 2);
    ASSERT_EQ(context.recording().uploads.size(), first.uploads.size());
    for (std::size_t i = 0; i < first.uploads.size(); ++i)
        EXPECT_EQ(context.recording().uploads[i].bytes, first.uploads[i].bytes);
    EXPECT_NE(model.drawable(0)->indexBuffer(), model.drawable(1)->indexBuffer());
}

TEST_F(ModelUploadTest, UploadAfterClearSeesTheNewInput) {
    upload();
    builder->clear();
    fill();
    upload();
    EXPECT_EQ(model.drawableCount(), 2);
    EXPECT_EQ(model.drawable(1)->drawElementsIndirectCommands().size(), 2);
}

TEST_F(ModelUploadTest, ModelWithoutTrianglesIsPreparedAgain) {
    builder->clear();
    const float zeros[] = {0, 0, 0};
    const unsigned int list[] = {0, 0};
    const unsigned int count = 2;
    builder->createVertexAttribute(kPosition, 3, kFloat, 0, 0);
    builder->addValuesToVertexAttribute(kPosition, 3, zeros, kFloat);
    builder->addIndicesToVertexAttribute(kPosition, 2, list);
    builder->addVertexCountsToFaces(1, &count);
    group("a", 0, 0, 0);
    builder->generateNormals(kNormal);
    upload();
    EXPECT_EQ(model.drawable(0)->drawElementsIndirectCommands().size(), 1);
    EXPECT_EQ(model.drawable(0)->drawElementsIndirectCommands()[0].count, 0U);
    upload();
    EXPECT_EQ(model.drawable(1)->drawElementsIndirectCommands().size(), 2);
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 2U);
}

TEST_F(ModelUploadTest, GroupsWithoutFacesUploadBuffersAndNoDrawable) {
    builder->createMaterialGroup(QStringLiteral("first"), InstanceData(), -1, 0);
    builder->createMaterialGroup(QStringLiteral("second"), InstanceData(), -1, 0);
    upload();
    EXPECT_EQ(model.drawableCount(), 0);
    ASSERT_EQ(context.recording().uploads.size(), 2U);
    EXPECT_EQ(context.recording().uploads[0].count, 0);
    EXPECT_EQ(context.recording().uploads[1].count, 12);
}

TEST_F(ModelUploadTest, NormalsGetTheirOwnAttribute) {
    builder->generateNormals(kNormal);
    upload();
    ASSERT_TRUE(builder->hasVertexAttribute(kNormal));
    const auto& record = access().attribute("normal");
    EXPECT_EQ(record.components, 3);
    EXPECT_EQ(record.streams[kGPUIndices], access().attribute("position").streams[kGPUIndices]);
    EXPECT_TRUE(record.streams[kValues].isNull());
    EXPECT_THAT(uploaded<float>(context, 1), ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1));
    const float value = 1;
    builder->addValuesToVertexAttribute(kNormal, 1, &value, kFloat);
    EXPECT_TRUE(builder->isValid()) << "nothing was appended";
}

TEST_F(ModelUploadTest, NormalsReplaceADeclaredAttribute) {
    const float normal[] = {7, 8, 9};
    const unsigned int zeros[] = {0, 0, 0, 0, 0, 0};
    builder->createVertexAttribute(kNormal, 3, kFloat, 0, 0);
    builder->addValuesToVertexAttribute(kNormal, 3, normal, kFloat);
    builder->addIndicesToVertexAttribute(kNormal, 6, zeros);
    builder->generateNormals(kNormal);
    upload();
    EXPECT_THAT(uploaded<float>(context, 1), ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1));
    EXPECT_THAT(elements<float>(access().attribute("normal").streams[kValues]), ElementsAre(7, 8, 9));
}

TEST_F(ModelUploadTest, NormalsMayReplaceThePositions) {
    builder->generateNormals(kPosition);
    upload();
    EXPECT_THAT(uploaded<float>(context, 1), ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1));
}

TEST_F(ModelUploadTest, PositionsOfTwoComponentsAreReadAsThree) {
    builder->clear();
    const float positions[] = {0, 0, 1, 0, 1, 1};
    const unsigned int corners[] = {0, 1, 2};
    const unsigned int count = 3;
    builder->createVertexAttribute(kPosition, 2, kFloat, 0, 0);
    builder->addValuesToVertexAttribute(kPosition, 6, positions, kFloat);
    builder->addIndicesToVertexAttribute(kPosition, 3, corners);
    builder->addVertexCountsToFaces(1, &count);
    group("a", 0, 0, 0);
    builder->generateNormals(kNormal);
    upload();
    ASSERT_EQ(model.drawableCount(), 1);
    EXPECT_EQ(model.drawable(0)->vertexCount(), 3U);
    EXPECT_EQ(uploaded<float>(context, 1).size(), 9U);
}

TEST_F(ModelUploadTest, PositionsWithoutComponentsGiveNoVertices) {
    const float value = 1;
    const unsigned int zero = 0;
    builder->createVertexAttribute(QStringLiteral("none"), 0, kFloat, 0, 0);
    builder->addValuesToVertexAttribute(QStringLiteral("none"), 1, &value, kFloat);
    builder->addIndicesToVertexAttribute(QStringLiteral("none"), 1, &zero);
    builder->generateNormals(kNormal);
    upload(QStringLiteral("none"));
    ASSERT_EQ(model.drawableCount(), 1);
    EXPECT_EQ(model.drawable(0)->vertexCount(), 0U);
}

/// Vertices that are all different, and one triangle of the first, the second and the last.
class IndexWidthTest : public ModelUploadTest {
protected:
    void uploadVertices(unsigned int vertexCount) {
        builder->clear();
        std::vector<float> positions;
        std::vector<unsigned int> corners;
        for (unsigned int i = 0; i < vertexCount; ++i) {
            positions.insert(positions.end(), {static_cast<float>(i), static_cast<float>(i % 7), 0.0F});
            corners.push_back(i);
        }
        corners.insert(corners.end(), {0, 1, vertexCount - 1});
        builder->createVertexAttribute(kPosition, 3, kFloat, 0, 0);
        builder->addValuesToVertexAttribute(kPosition, positions.size(), positions.data(), kFloat);
        builder->addIndicesToVertexAttribute(kPosition, corners.size(), corners.data());
        const unsigned int counts[] = {vertexCount, 3};
        builder->addVertexCountsToFaces(2, counts);
        group("a", 0, 0, 1);
        upload();
    }
};

TEST_F(IndexWidthTest, BelowTheRestartIndexTheyAreShort) {
    uploadVertices(65534);
    EXPECT_EQ(model.drawable(0)->indexType(), kUnsignedShort);
    EXPECT_EQ(model.drawable(0)->vertexCount(), 65534U);
    EXPECT_THAT(uploaded<quint16>(context, 0), testing::UnorderedElementsAre(0, 1, 65533));
    EXPECT_EQ(context.recording().uploads[0].elementSize, 2U);
    EXPECT_EQ(access().gpuIndices()->type(), kUnsignedInt) << "the builder's own indices stay wide";
}

TEST_F(IndexWidthTest, FromTheRestartIndexOnTheyAreWide) {
    uploadVertices(65535);
    EXPECT_EQ(model.drawable(0)->indexType(), kUnsignedInt);
    EXPECT_THAT(uploaded<quint32>(context, 0), testing::UnorderedElementsAre(0, 1, 65534));
    EXPECT_EQ(context.recording().uploads[0].elementSize, 4U);
}

TEST_F(ModelUploadTest, PlainClientStreamsGiveTheSameModel) {
    builder->generateNormals(kNormal);
    upload();
    const Testing::Recording own = context.recording();
    context.forget();
    makeBuilder(QSharedPointer<Testing::PlainAllocator>::create(), 0);
    builder->generateNormals(kNormal);
    upload();
    ASSERT_EQ(context.recording().uploads.size(), own.uploads.size());
    for (std::size_t i = 0; i < own.uploads.size(); ++i)
        EXPECT_EQ(context.recording().uploads[i].bytes, own.uploads[i].bytes);
    EXPECT_EQ(model.drawableCount(), 2);
}

TEST_F(ModelUploadTest, ShortIndexStreamsStayInsideTheirBytes) {
    makeBuilder(QSharedPointer<Testing::ShortIndexAllocator>::create(), 0);
    builder->generateNormals(kNormal);
    upload();
    upload();
    // 848 once, 923 once for each group.
    EXPECT_THAT(log.texts(QtCriticalMsg), testing::SizeIs(testing::Ge(3)));
}

TEST_F(ModelUploadTest, ShortIndexStreamsOfManyVerticesStayInsideTheirBytes) {
    makeBuilder(QSharedPointer<Testing::ShortIndexAllocator>::create(), 0);
    access().verticesPerFace() = QSharedPointer<ModelDataArray>::create(kUnsignedInt);
    const unsigned int counts[] = {200000, 3};
    builder->addVertexCountsToFaces(2, counts);
    builder->createVertexAttribute(kPosition, 3, kFloat, 0, 0);
    std::vector<float> positions;
    std::vector<quint32> list;
    for (quint32 i = 0; i < 200003; ++i) {
        positions.insert(positions.end(), {static_cast<float>(i), 0, static_cast<float>(i % 3)});
        list.push_back(i);
    }
    builder->addValuesToVertexAttribute(kPosition, positions.size(), positions.data(), kFloat);
    access().attribute("position").streams[kIndices] = QSharedPointer<ModelDataArray>::create(kUnsignedInt);
    builder->addIndicesToVertexAttribute(kPosition, list.size(), list.data());
    upload();
    EXPECT_GT(model.drawableCount(), 0);
    EXPECT_EQ(model.drawable(0)->indexType(), kUnsignedShort) << "the type that the stream reports";
}

TEST_F(ModelUploadTest, FailingAllocatorLeavesTheModelUnchangedWithOneWarning) {
    for (int streams = 0;; ++streams) {
        SCOPED_TRACE(streams);
        const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
        makeBuilder(allocator, 0);
        builder->generateNormals(kNormal);
        allocator->limit(streams);
        log.clear();
        upload();
        if (model.drawableCount() != 0) {
            // Corner indices, positions, triangle indices, normals, the short copy of the indices.
            EXPECT_EQ(streams, 5);
            break;
        }
        ASSERT_EQ(log.texts(QtWarningMsg).size(), 1U);
        EXPECT_TRUE(log.texts(QtWarningMsg)[0].startsWith("Unable to upload: no stream could be made for "));
        // With streams available again, the next upload works.
        allocator->limit(100);
        GPUModel other;
        builder->upload(&other, InstanceData(), kPosition, QString(), kStaticDraw, kTriangles);
        EXPECT_EQ(other.drawableCount(), 1);
        EXPECT_EQ(other.drawable(0)->drawElementsIndirectCommands().size(), 2);
    }
}

TEST_F(ModelUploadTest, ContextWithoutFurtherObjectsGivesOneWarning) {
    const QString missing[] = {"the index buffer", "the buffer of vertex attribute 'normal'",
                               "the buffer of vertex attribute 'position'",
                               "the vertex array of a drawable, which draws nothing"};
    for (int objects = 0; objects < 5; ++objects) {
        makeBuilder({}, 0);
        builder->generateNormals(kNormal);
        OpenGLDeviceContext::setCurrent(QSharedPointer<ScarceContext>::create(objects));
        log.clear();
        upload();
        EXPECT_EQ(model.drawableCount(), std::max(0, objects - 2)) << objects;
        if (objects < 4)
            EXPECT_THAT(log.texts(QtWarningMsg),
                        ElementsAre("Unable to upload: the context made no object for " + missing[objects]));
        else
            EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
        model.draw();
        EXPECT_FALSE(model.bounds().isValid);
    }
}

TEST_F(ModelUploadTest, PositionsWithoutStreamsStopTheUpload) {
    access().attribute("position").streams[kValues].reset();
    upload();
    EXPECT_THAT(context.calls(), IsEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral(
                    "Unable to upload: no stream could be made for vertex attribute 'position'")));
}

// The results of the first upload are released with the attribute.
TEST_F(ModelUploadTest, PositionsRedeclaredAfterAnUploadStopTheNextOne) {
    upload();
    const float values[] = {1, 2, 3};
    const unsigned int zero = 0;
    builder->createVertexAttribute(kPosition, 3, kFloat, 0, 0);
    builder->addValuesToVertexAttribute(kPosition, 3, values, kFloat);
    builder->addIndicesToVertexAttribute(kPosition, 1, &zero);
    context.forget();
    log.clear();
    upload();
    EXPECT_THAT(context.calls(), IsEmpty());
    EXPECT_EQ(model.drawableCount(), 1);
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral(
                    "Unable to upload: no stream could be made for vertex attribute 'position'")));
}

TEST_F(ModelUploadTest, MissingTriangleStreamIsAllocatedAgain) {
    access().gpuIndices().reset();
    upload();
    EXPECT_EQ(model.drawableCount(), 1);
}

TEST_F(ModelUploadTest, MissingTriangleStreamThatCannotBeAllocatedStopsTheUpload) {
    const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
    makeBuilder(allocator, 0);
    access().gpuIndices().reset();
    // Corner indices and positions.
    allocator->limit(2);
    upload();
    EXPECT_EQ(model.drawableCount(), 0);
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("Unable to upload: no stream could be made for the triangle indices")));
}

TEST_F(ModelUploadTest, AttributeBeyondTheMaximumCountStopsTheUpload) {
    const auto allocator = QSharedPointer<BoastingAllocator>::create();
    makeBuilder(allocator, 0);
    upload();
    ASSERT_EQ(model.drawableCount(), 1);
    allocator->boast(kFloat, quint64{1} << 31);
    upload();
    EXPECT_EQ(model.drawableCount(), 1);
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("Unable to upload: no stream could be made for the buffer of vertex "
                                   "attribute 'position'")));
}

TEST_F(ModelUploadTest, MaximumCountOfElementsIsUploaded) {
    const auto allocator = QSharedPointer<BoastingAllocator>::create();
    makeBuilder(allocator, 0);
    upload();
    const auto counting = QSharedPointer<CountingContext>::create();
    OpenGLDeviceContext::setCurrent(counting);
    allocator->boast(kFloat, 2147483647);
    upload();
    EXPECT_EQ(model.drawableCount(), 2);
    EXPECT_THAT(*counting->counts, ElementsAre(6, 2147483647));
    counting->counts->clear();
    // With the claimed number of vertices, indices are wide.
    allocator->boast(kUnsignedInt, 2147483647);
    access().attribute("position").streams[kGPUValues]->resize(3 * 0xFFFF);
    upload();
    EXPECT_EQ(model.drawableCount(), 3);
    EXPECT_THAT(*counting->counts, ElementsAre(2147483647, 3 * 0xFFFF));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
    allocator->boast(kUnsignedInt, quint64{1} << 31);
    upload();
    EXPECT_EQ(model.drawableCount(), 3);
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("Unable to upload: no stream could be made for the index buffer")));
}

TEST_F(ModelUploadTest, AttributeDeclaredAfterAnUploadIsSkipped) {
    upload();
    const float value = 1;
    const unsigned int zero = 0;
    builder->createVertexAttribute(QStringLiteral("late"), 1, kFloat, 0, 0);
    builder->addValuesToVertexAttribute(QStringLiteral("late"), 1, &value, kFloat);
    builder->addIndicesToVertexAttribute(QStringLiteral("late"), 1, &zero);
    context.forget();
    upload();
    EXPECT_EQ(context.recording().uploads.size(), 2U);
    EXPECT_EQ(model.drawableCount(), 2);
}

TEST_F(ModelUploadTest, StatisticsReportWhatWasFound) {
    const unsigned int counts[] = {2, 3};
    const unsigned int corners[] = {0, 1, 0, 99, 99};
    builder->addVertexCountsToFaces(2, counts);
    builder->addIndicesToVertexAttribute(kPosition, 5, corners);
    group("line", 1, 0, 2);
    group("bad", 1, 0, 3);
    upload();
    const ModelBuilder::Statistics& statistics = builder->statistics();
    EXPECT_EQ(statistics.corners, 11U);
    EXPECT_EQ(statistics.vertices, 4U);
    EXPECT_EQ(statistics.substitutedCorners, 2U);
    EXPECT_EQ(statistics.triangles, 3U);
    EXPECT_EQ(statistics.untriangulatedFaces, 1U);
}

TEST_F(ModelUploadTest, StatisticsCountUntriangulatedFacesOncePerGroup) {
    const unsigned int counts[] = {2, 1, 0};
    const unsigned int corners[] = {0, 1, 2};
    builder->addVertexCountsToFaces(3, counts);
    builder->addIndicesToVertexAttribute(kPosition, 3, corners);
    group("line", 1, 0, 2);
    group("point", 2, 0, 3);
    group("nothing", 9, 0, 4);
    upload();
    EXPECT_EQ(builder->statistics().untriangulatedFaces, 3U);
    EXPECT_EQ(builder->statistics().triangles, 2U);
}

// 16-bit streams hold half of the entries; missing entries are vertex 0.
TEST_F(ModelUploadTest, ShortIndicesWithoutAnEntryAreZeros) {
    makeBuilder(QSharedPointer<Testing::LyingAllocator<Testing::PlainStream>>::create(), 0);
    upload();
    const quint16 indices[] = {3, 0, 2, 0, 1, 0, 7};
    access().gpuIndices() = QSharedPointer<Testing::PlainStream>::create(kUnsignedShort, 0U);
    access().gpuIndices()->append(7, indices);
    context.forget();
    upload();
    EXPECT_THAT(uploaded<quint16>(context, 0), ElementsAre(3, 2, 1, 0, 0, 0, 0));
    EXPECT_EQ(model.drawable(1)->indexCount(), 7);
}

TEST_F(ModelUploadTest, BoxesOfCommandsAreGivenOnlyWithTheirOption) {
    makeBuilder({}, 0x0F);
    const DrawData data = builder->prepare(kPosition);
    ASSERT_EQ(data.drawableCount(), 2);
    UploadOptions options;
    ASSERT_TRUE(Vel::upload(data, model, options));
    EXPECT_FALSE(model.commandBounds(0, 0).isValid);
    options.commandBounds = true;
    DrawData consumed = builder->prepare(kPosition);
    ASSERT_TRUE(Vel::upload(std::move(consumed), model, options)) << "the positions are freed";
    ASSERT_EQ(model.drawableCount(), 4);
    for (int drawable = 0; drawable < 2; ++drawable)
        for (int command = 0; command < data.commandCount(drawable); ++command) {
            const DrawData::Box box = data.commandBox(drawable, command);
            const GPUModel::Bounds given = model.commandBounds(2 + drawable, command);
            EXPECT_TRUE(given.isValid);
            EXPECT_EQ(given.minimum, box.minimum);
            EXPECT_EQ(given.maximum, box.maximum);
        }
    const GPUModel::Bounds all = model.placedBounds();
    EXPECT_EQ(all.minimum, QVector3D(0, 0, 0));
    EXPECT_EQ(all.maximum, QVector3D(1, 1, 0));
}

TEST_F(ModelUploadTest, EachCommandGetsAllInstances) {
    makeBuilder({}, 0);
    UploadOptions options{InstanceData(QStringLiteral("not used")), QStringLiteral("id")};
    for (const char* name : {"left", "right", "behind"}) {
        InstanceData instance(QStringLiteral("copies"));
        instance.set(QStringLiteral("name"), name, 4);
        options.instances << instance;
    }
    ASSERT_TRUE(Vel::upload(builder->prepare(kPosition), model, options));
    ASSERT_EQ(model.drawableCount(), 1);
    EXPECT_EQ(model.instances(0)->name(), QStringLiteral("copies"));
    const QList<InstanceData>& items = model.instances(0)->items();
    ASSERT_EQ(items.size(), 2 * 3);
    const char* const names[] = {"left", "righ", "behi"};
    for (int i = 0; i < items.size(); ++i) {
        EXPECT_EQ(items[i].value(QStringLiteral("name")), QByteArray(names[i % 3], 4)) << i;
        const qint32 id = i < 3 ? 3 : 8;
        EXPECT_EQ(items[i].value(QStringLiteral("id")), QByteArray(reinterpret_cast<const char*>(&id), 4))
            << i;
    }
    for (const DrawElementsIndirectCommand& command : model.drawable(0)->drawElementsIndirectCommands())
        EXPECT_EQ(command.instanceCount, 3U);
}

} // namespace
} // namespace Atelier::Vel
