#include <memory>
#include <numeric>

#include <gmock/gmock.h>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/opengldevicecontext.h>
#include <velmodel/modelbuilder.h>

#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/modelbuilderaccess.h"
#include "support/recordingcontext.h"
#include "uploaded.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Testing::Lie;
using Testing::listed;
using Testing::MessageLog;
using Testing::PlainStream;
using Testing::Uploaded;

constexpr unsigned int kFloat = 0x1406;
const QString kPosition = QStringLiteral("position");

/// Faces with 3, 4, 2 and 5 corners over a grid of positions, in three groups.
void feedGrid(ModelBuilder& builder, quint32 positionCount) {
    std::vector<float> positions;
    for (quint32 i = 0; i < positionCount; ++i)
        positions.insert(positions.end(), {static_cast<float>(i % 4), static_cast<float>(i / 4 % 4),
                                           static_cast<float>(i / 16)});
    const std::vector<unsigned int> counts = {3, 4, 2, 5, 3, 4, positionCount};
    std::vector<unsigned int> corners(std::accumulate(counts.begin(), counts.end(), 0U));
    for (std::size_t corner = 0; corner < corners.size(); ++corner)
        corners[corner] = static_cast<unsigned int>(corner * 5) % (positionCount + 1);
    builder.createVertexAttribute(kPosition, 3, kFloat, 0, 0);
    builder.addValuesToVertexAttribute(kPosition, positions.size(), positions.data(), kFloat);
    builder.addIndicesToVertexAttribute(kPosition, corners.size(), corners.data());
    builder.addVertexCountsToFaces(counts.size(), counts.data());
    for (unsigned int group = 0; group < 3; ++group) {
        const unsigned int faces[] = {group, group + 3};
        const QString name = QStringLiteral("group %1").arg(group);
        builder.createMaterialGroup(name, InstanceData(QStringLiteral("material of ") + name), -1, group);
        builder.addFacesToMaterialGroup(name, 2, faces, QStringLiteral("object of ") + name);
    }
    builder.generateNormals(QStringLiteral("normal"));
}

/// A square with texture coordinates and without normals.
void feedSquare(ModelBuilder& builder) {
    const float positions[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const float uvs[] = {0, 0, 1, 1};
    const unsigned int corners[] = {0, 1, 2, 3};
    const unsigned int uvCorners[] = {0, 1, 0, 1};
    const unsigned int count = 4;
    const unsigned int face = 0;
    builder.createVertexAttribute(kPosition, 3, kFloat, 0, 0);
    builder.addValuesToVertexAttribute(kPosition, 12, positions, kFloat);
    builder.addIndicesToVertexAttribute(kPosition, 4, corners);
    builder.createVertexAttribute(QStringLiteral("uv"), 2, kFloat, 0, 0);
    builder.addValuesToVertexAttribute(QStringLiteral("uv"), 4, uvs, kFloat);
    builder.addIndicesToVertexAttribute(QStringLiteral("uv"), 4, uvCorners);
    builder.addVertexCountsToFaces(1, &count);
    builder.createMaterialGroup(QStringLiteral("square"), InstanceData(), -1, 1);
    builder.addFacesToMaterialGroup(QStringLiteral("square"), 1, &face, QString());
}

const std::vector<quint64> kNone(5, 0);

Uploaded upload(ModelBuilder& builder) {
    return Testing::upload(builder, kPosition);
}

/// Makes streams with an optional maximum of elements, and can refuse to make streams.
class TightAllocator : public ModelDataStreamAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        return _left-- > 0 ? new Stream(type, count, _max) : nullptr;
    }
    /// Sets the number of further streams, and the number of elements that each of them accepts.
    void limit(int streams, quint64 elements) {
        _left = streams;
        *_max = elements;
    }
    void endLimit() { limit(1 << 30, 1 << 30); }

private:
    class Stream : public PlainStream {
    public:
        Stream(unsigned int type, quint64 count, QSharedPointer<quint64> most)
            : PlainStream(type, count), _max(std::move(most)) {}
        void append(quint64 count, const void* src) override {
            if (size() + count <= *_max)
                PlainStream::append(count, src);
        }

    private:
        QSharedPointer<quint64> _max;
    };

    int _left = 1 << 30;
    QSharedPointer<quint64> _max = QSharedPointer<quint64>::create(quint64{1} << 30);
};

class BuilderReuseTest : public testing::Test {
protected:
    /// A failed preparation must leave no triangles and no commands; the next one must succeed as if it were
    /// the first.
    void expectNothingLeft(const QString& warning) {
        const Uploaded failed = upload(builder);
        EXPECT_THAT(failed.facts, IsEmpty());
        EXPECT_EQ(failed.warnings.back(), warning);
        EXPECT_EQ(failed.statistics[2], 0U);
        EXPECT_EQ(failed.statistics[3], 0U);
        const ModelBuilderAccess access(builder);
        EXPECT_TRUE(access.drawCommands().isEmpty());
        EXPECT_TRUE(access.drawGroupNames().isEmpty());
        EXPECT_TRUE(access.gpuIndices().isNull() || access.gpuIndices()->isEmpty());
    }
    /// Expects the results of a new builder. Ignores warnings, which may have been given before.
    void expectUploadedAsByANewOne() {
        allocator->endLimit();
        ModelBuilder other(QSharedPointer<TightAllocator>::create(), 1);
        feedGrid(other, 20);
        Uploaded expected = upload(other);
        Uploaded uploaded = upload(builder);
        expected.warnings.clear();
        uploaded.warnings.clear();
        EXPECT_EQ(uploaded, expected);
    }

public:
    QSharedPointer<TightAllocator> allocator = QSharedPointer<TightAllocator>::create();
    ModelBuilder builder{allocator, 1};
};

} // namespace

TEST_F(BuilderReuseTest, ClearedBuilderUploadsTheSameAsANewOne) {
    const auto feeds = {+[](ModelBuilder& fed) { feedGrid(fed, 20); },
                        +[](ModelBuilder& fed) { feedSquare(fed); },
                        +[](ModelBuilder& fed) { feedGrid(fed, 0x10000); }};
    for (const auto first : feeds)
        for (const auto second : feeds) {
            ModelBuilder reused({}, 1);
            first(reused);
            EXPECT_FALSE(upload(reused).facts.isEmpty());
            EXPECT_NE(listed(reused.statistics()), kNone);
            reused.clear();
            EXPECT_EQ(listed(reused.statistics()), kNone);
            second(reused);
            ModelBuilder fresh({}, 1);
            second(fresh);
            EXPECT_EQ(upload(reused), upload(fresh));
        }
}

TEST_F(BuilderReuseTest, FurtherUploadsAreAllTheSame) {
    feedGrid(builder, 20);
    const Uploaded first = upload(builder);
    for (int round = 0; round < 3; ++round) {
        const Uploaded again = upload(builder);
        EXPECT_EQ(again.calls, first.calls);
        EXPECT_TRUE(again.buffers == first.buffers);
        EXPECT_EQ(again.facts, first.facts);
        EXPECT_EQ(again.statistics, first.statistics);
        EXPECT_THAT(again.warnings, IsEmpty());
    }
}

TEST_F(BuilderReuseTest, MissingStreamsLeaveNoTrianglesOrCommands) {
    const QString missing[] = {"the corner indices", "vertex attribute 'position'", "the triangle indices",
                               "vertex attribute 'normal'"};
    for (int streams = 0; streams < 4; ++streams) {
        SCOPED_TRACE(streams);
        builder.clear();
        feedGrid(builder, 20);
        allocator->limit(streams, 1 << 30);
        expectNothingLeft("Unable to upload: no stream could be made for " + missing[streams]);
        expectUploadedAsByANewOne();
    }
}

TEST_F(BuilderReuseTest, RefusedTrianglesLeaveNoTrianglesOrCommands) {
    // The first group has two faces of 3 and 5 corners, the others have more.
    for (const quint64 elements : {quint64{0}, quint64{3}, quint64{12}, quint64{24}}) {
        SCOPED_TRACE(elements);
        builder.clear();
        feedGrid(builder, 20);
        allocator->limit(1 << 30, elements);
        expectNothingLeft("Data for the triangle indices refused: a stream holds at most 2147483647 bytes");
        expectUploadedAsByANewOne();
    }
}

TEST_F(BuilderReuseTest, NextUploadCreatesTheMissingBuffers) {
    class EmptyContext : public OpenGLDeviceContext {
        QSharedPointer<BufferObject> createBufferObject() override { return {}; }
    };
    feedGrid(builder, 20);
    OpenGLDeviceContext::setCurrent(QSharedPointer<EmptyContext>::create());
    GPUModel model;
    const MessageLog log;
    builder.upload(&model, InstanceData(), kPosition, QString(), 0x88E4, 4);
    EXPECT_EQ(model.drawableCount(), 0);
    expectUploadedAsByANewOne();
}

// Released vertices are not counted any more.
TEST_F(BuilderReuseTest, VerticesThatCannotBeMadeAgainAreNotCounted) {
    const float positions[] = {0, 0, 0, 1, 0, 0};
    const unsigned int corners[] = {0, 1, 7};
    const unsigned int counts[] = {2, 1};
    const unsigned int faces[] = {0, 1};
    const auto declare = [&] {
        builder.createVertexAttribute(kPosition, 3, kFloat, 0, 0);
        builder.addValuesToVertexAttribute(kPosition, 6, positions, kFloat);
        builder.addIndicesToVertexAttribute(kPosition, 3, corners);
    };
    declare();
    builder.addVertexCountsToFaces(2, counts);
    builder.createMaterialGroup(QStringLiteral("lines"), InstanceData(), -1, 0);
    builder.addFacesToMaterialGroup(QStringLiteral("lines"), 2, faces, QString());
    EXPECT_THAT(upload(builder).statistics, ElementsAre(3, 2, 0, 2, 1))
        << "without triangles, the builder prepares again";
    EXPECT_THAT(upload(builder).statistics, ElementsAre(3, 2, 0, 2, 1));
    declare();
    allocator->limit(0, 0);
    EXPECT_EQ(upload(builder).statistics, kNone);
    allocator->endLimit();
    EXPECT_THAT(upload(builder).statistics, ElementsAre(3, 2, 0, 2, 1));
}

TEST_F(BuilderReuseTest, GroupMadeAnewAfterAnUploadLendsItsMaterialToTheOldTriangles) {
    feedGrid(builder, 20);
    const Uploaded before = upload(builder);
    builder.createMaterialGroup(QStringLiteral("group 1"), InstanceData(QStringLiteral("other")), 7, 0);
    const Uploaded after = upload(builder);
    EXPECT_TRUE(after.buffers == before.buffers);
    QStringList expected = before.facts;
    expected.replaceInStrings(QStringLiteral("material of group 1"), QStringLiteral("other"));
    expected.replaceInStrings(QStringLiteral("'object of group 1'"), QStringLiteral("''"));
    EXPECT_EQ(after.facts, expected);
    EXPECT_NE(after.facts, before.facts);
    const Testing::RecordingContext context;
    GPUModel model;
    builder.upload(&model, InstanceData(), kPosition, QStringLiteral("id"), 0x88E4, 4);
    const qint32 id = 7;
    EXPECT_EQ(model.instances(1)->items().at(0).value(QStringLiteral("id")),
              QByteArray(reinterpret_cast<const char*>(&id), sizeof id));
}

TEST_F(BuilderReuseTest, NullNameTurnsNormalsOff) {
    feedGrid(builder, 20);
    builder.generateNormals(QString());
    const Uploaded uploaded = upload(builder);
    EXPECT_EQ(uploaded.buffers.size(), 2U);
    EXPECT_FALSE(builder.hasVertexAttribute(QStringLiteral("normal")));
}

TEST_F(BuilderReuseTest, RefusalsAreReportedAgainAfterClear) {
    const unsigned int count = 3;
    allocator->limit(1 << 30, 0);
    const MessageLog log;
    for (int round = 0; round < 2; ++round) {
        builder.clear();
        builder.addVertexCountsToFaces(1, &count);
        builder.addVertexCountsToFaces(1, &count);
        EXPECT_THAT(builder.refusedStreams(), ElementsAre(QStringLiteral("the faces")));
    }
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 2U);
}

} // namespace Atelier::Vel
