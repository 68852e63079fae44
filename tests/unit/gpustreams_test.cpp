#include <initializer_list>

#include <QtCore/QTextCodec>

#include <gmock/gmock.h>

#include <velmodel/modelbuilder.h>

#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/modelbuilderaccess.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using Testing::bytes;
using Testing::elements;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Testing::MessageLog;

constexpr unsigned int kUnsignedByte = 0x1401;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kDouble = 0x140A;

/// A builder with one function call per attribute.
class GPUStreamsTest : public testing::Test {
protected:
    template<typename T>
    void attribute(const char* name, int components, unsigned int type, std::initializer_list<T> values,
                   std::initializer_list<unsigned int> indices) {
        const QString text = QString::fromLatin1(name);
        builder->createVertexAttribute(text, components, type, 0, 0);
        builder->addValuesToVertexAttribute(text, values.size(), values.begin(), type);
        builder->addIndicesToVertexAttribute(text, indices.size(), indices.begin());
    }
    void faces(std::initializer_list<unsigned int> counts) {
        builder->addVertexCountsToFaces(counts.size(), counts.begin());
    }
    void useAllocator(QSharedPointer<ModelDataStreamAllocator> allocator) {
        builder = std::make_unique<ModelBuilder>(std::move(allocator));
    }

    ModelBuilderAccess access() { return ModelBuilderAccess(*builder); }
    void build(bool mergeCorners) { access().buildGPUFriendlyStreams(mergeCorners); }
    QSharedPointer<ModelDataStream>& stream(const char* name, int slot) {
        return access().attribute(name).streams[slot];
    }
    std::vector<quint32> indices(const char* name) { return elements<quint32>(stream(name, kGPUIndices)); }
    std::vector<float> values(const char* name) { return elements<float>(stream(name, kGPUValues)); }
    QString summary(int before, int after, int percent, int indexSize = 4) {
        return QString::asprintf("%p Vertices Map %8d -> %8d d %8d (%3d %%) %d",
                                 static_cast<const void*>(builder.get()), before, after, before - after,
                                 percent, indexSize);
    }

public:
    std::unique_ptr<ModelBuilder> builder = std::make_unique<ModelBuilder>();
    MessageLog log;
};

TEST_F(GPUStreamsTest, WithoutAttributesNothingIsMade) {
    const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
    useAllocator(allocator);
    faces({3});
    const int before = allocator->count();
    build(false);
    build(true);
    EXPECT_EQ(allocator->count(), before);
    EXPECT_TRUE(access().attributes().isEmpty());
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(GPUStreamsTest, CompleteStreamsAreUnchanged) {
    faces({3});
    attribute<float>("a", 1, kFloat, {1, 2}, {0, 1, 0});
    build(false);
    const auto before = access().attribute("a").streams;
    const QSharedPointer<ModelDataStream>& kept = before[kGPUValues];
    log.clear();
    build(true);
    EXPECT_EQ(stream("a", kGPUValues), kept);
    EXPECT_THAT(log.messages(), IsEmpty()) << "no second pass either";
}

TEST_F(GPUStreamsTest, OneIncompleteAttributeRebuildsAll) {
    faces({3});
    attribute<float>("a", 1, kFloat, {1, 2}, {0, 1, 0});
    attribute<float>("b", 1, kFloat, {3, 4}, {0, 1, 0});
    build(false);
    const auto keptA = stream("a", kGPUValues);
    stream("b", kGPUValues).reset();
    build(false);
    EXPECT_NE(stream("a", kGPUValues), keptA);
    EXPECT_THAT(values("b"), ElementsAre(3, 4));
}

TEST_F(GPUStreamsTest, TwoTrianglesShareTheirEqualVertices) {
    faces({3, 3});
    attribute<float>("p", 2, kFloat, {0, 0, 1, 0, 1, 1, 0, 1}, {0, 1, 2, 0, 2, 3});
    build(false);
    EXPECT_THAT(indices("p"), ElementsAre(0, 1, 2, 0, 2, 3));
    EXPECT_THAT(values("p"), ElementsAre(0, 0, 1, 0, 1, 1, 0, 1));
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(6, 4, 66)));
}

TEST_F(GPUStreamsTest, WorkedExampleOfTwoAttributes) {
    for (const bool mergeCorners : {true, false}) {
        builder->clear();
        log.clear();
        faces({3, 3});
        attribute<float>("normal", 1, kFloat, {10, 11}, {0, 0, 0, 0, 0, 1});
        attribute<float>("position", 1, kFloat, {20, 21, 22, 23}, {0, 1, 2, 0, 2, 3});
        build(mergeCorners);
        EXPECT_THAT(indices("position"), ElementsAre(0, 1, 2, 0, 2, 3));
        EXPECT_THAT(values("position"), ElementsAre(20, 21, 22, 23));
        EXPECT_THAT(values("normal"), ElementsAre(10, 10, 10, 11));
        EXPECT_THAT(log.texts(QtDebugMsg),
                    ElementsAre(mergeCorners ? summary(4, 4, 100) : summary(6, 4, 66)));
    }
}

TEST_F(GPUStreamsTest, CornersOfOnePositionAndDifferentNormalsStayApart) {
    for (const bool mergeCorners : {true, false}) {
        builder->clear();
        log.clear();
        faces({3, 3});
        attribute<float>("normal", 1, kFloat, {10, 11, 10}, {0, 1, 0, 1, 0, 2});
        attribute<float>("position", 1, kFloat, {20, 21}, {0, 0, 0, 0, 1, 0});
        build(mergeCorners);
        EXPECT_THAT(indices("position"), ElementsAre(0, 1, 0, 1, 2, 0));
        EXPECT_THAT(values("position"), ElementsAre(20, 20, 21));
        EXPECT_THAT(values("normal"), ElementsAre(10, 11, 10));
        // Different indices are different tuples, even if their values are equal.
        EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(mergeCorners ? summary(4, 3, 75) : summary(6, 3, 50)));
    }
}

TEST_F(GPUStreamsTest, CubeOfTwentyFourVertices) {
    faces({3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3});
    std::vector<float> coordinates;
    std::vector<unsigned int> list;
    for (unsigned int side = 0; side < 6; ++side)
        for (const unsigned int corner : {0U, 1U, 2U, 0U, 2U, 3U})
            list.push_back(side * 4 + corner);
    for (unsigned int value = 0; value < 24; ++value)
        coordinates.push_back(static_cast<float>(value));
    const QString name = QStringLiteral("v");
    builder->createVertexAttribute(name, 1, kFloat, 0, 0);
    builder->addValuesToVertexAttribute(name, 24, coordinates.data(), kFloat);
    builder->addIndicesToVertexAttribute(name, 36, list.data());
    build(false);
    EXPECT_THAT(indices("v"), ElementsAreArray(list));
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(36, 24, 66)));
}

TEST_F(GPUStreamsTest, SummaryHasNoContextAndTruncatesThePercentage) {
    faces({3});
    attribute<float>("a", 1, kFloat, {1, 2}, {0, 1, 0});
    build(false);
    ASSERT_EQ(log.messages().size(), 1U);
    EXPECT_EQ(log.messages()[0].text, summary(3, 2, 66));
    EXPECT_FALSE(log.messages()[0].hasContext);
}

TEST_F(GPUStreamsTest, NoDuplicatesKeepEverything) {
    faces({3});
    attribute<float>("a", 1, kFloat, {1, 2, 3}, {2, 1, 0});
    build(false);
    EXPECT_THAT(indices("a"), ElementsAre(0, 1, 2));
    EXPECT_THAT(values("a"), ElementsAre(3, 2, 1));
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(3, 3, 100)));
}

TEST_F(GPUStreamsTest, AllCornersAlikeGiveOneVertex) {
    faces({3, 1});
    attribute<float>("a", 2, kFloat, {1, 2, 1, 2}, {0, 1, 0, 1});
    build(false);
    EXPECT_THAT(indices("a"), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(values("a"), ElementsAre(1, 2));
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(4, 1, 25)));
}

TEST_F(GPUStreamsTest, OneDifferentByteMakesANewVertex) {
    faces({3});
    attribute<float>("position", 1, kFloat, {1}, {0, 0, 0});
    attribute<unsigned char>("uv", 4, kUnsignedByte, {1, 2, 3, 4, 1, 2, 3, 5}, {0, 1, 0});
    build(false);
    EXPECT_THAT(indices("uv"), ElementsAre(0, 1, 0));
    EXPECT_THAT(elements<quint8>(stream("uv", kGPUValues)), ElementsAre(1, 2, 3, 4, 1, 2, 3, 5));
    EXPECT_THAT(values("position"), ElementsAre(1, 1));
}

TEST_F(GPUStreamsTest, BytesAreComparedRatherThanNumbers) {
    faces({6});
    // Zero of both signs; twice the same NaN and another one; zero again.
    attribute<quint32>("a", 1, kUnsignedInt,
                       {0x00000000, 0x80000000, 0x7FC00000, 0x7FC00000, 0x7FC00001, 0x00000000},
                       {0, 1, 2, 3, 4, 5});
    access().attribute("a").streams[kValues]->setType(kFloat);
    build(false);
    EXPECT_THAT(indices("a"), ElementsAre(0, 1, 2, 2, 3, 0));
    EXPECT_EQ(stream("a", kGPUValues)->type(), kFloat);
}

TEST_F(GPUStreamsTest, EveryStrideIsCopiedBytewise) {
    faces({3});
    attribute<double>("d1", 1, kDouble, {1, 2}, {1, 0, 1});
    attribute<double>("d4", 4, kDouble, {1, 2, 3, 4, 5, 6, 7, 8}, {1, 0, 1});
    attribute<float>("f2", 2, kFloat, {1, 2, 3, 4}, {1, 0, 1});
    attribute<unsigned char>("b3", 3, kUnsignedByte, {1, 2, 3, 4, 5, 6}, {1, 0, 1});
    build(false);
    EXPECT_THAT(elements<double>(stream("d1", kGPUValues)), ElementsAre(2, 1));
    EXPECT_THAT(elements<double>(stream("d4", kGPUValues)), ElementsAre(5, 6, 7, 8, 1, 2, 3, 4));
    EXPECT_THAT(values("f2"), ElementsAre(3, 4, 1, 2));
    EXPECT_THAT(elements<quint8>(stream("b3", kGPUValues)), ElementsAre(4, 5, 6, 1, 2, 3));
}

TEST_F(GPUStreamsTest, OneIndexStreamServesAllAttributes) {
    faces({3});
    attribute<float>("a", 1, kFloat, {1}, {0, 0, 0});
    attribute<float>("b", 1, kFloat, {1}, {0, 0, 0});
    build(false);
    EXPECT_EQ(stream("a", kGPUIndices), stream("b", kGPUIndices));
    EXPECT_EQ(stream("a", kGPUIndices)->type(), ModelBuilder::kIndexType);
}

TEST_F(GPUStreamsTest, NoCornersGiveEmptyStreams) {
    faces({0, 0});
    attribute<float>("a", 1, kFloat, {1}, {0});
    attribute<float>("b", 1, kFloat, {1}, {0});
    build(false);
    for (const char* name : {"a", "b"}) {
        EXPECT_THAT(indices(name), IsEmpty());
        EXPECT_THAT(values(name), IsEmpty());
    }
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(0, 0, 0)));
}

TEST_F(GPUStreamsTest, InvalidIndicesStandForZeros) {
    faces({5});
    attribute<float>("a", 2, kFloat, {1, 2, 0, 0}, {0, 2, 0x7FFFFFFF, 1});
    build(false);
    EXPECT_THAT(indices("a"), ElementsAre(0, 1, 1, 1, 1)) << "a value of zeros is like any other";
    EXPECT_THAT(values("a"), ElementsAre(1, 2, 0, 0));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral(
                    "3 corners have no valid index into vertex attribute 'a' and take a value of zeros")));
    EXPECT_THAT(elements<quint32>(stream("a", kIndices)), ElementsAre(0, 2, 0x7FFFFFFF, 1))
        << "the list itself is unchanged";
    EXPECT_EQ(builder->statistics().substitutedCorners, 3U);
}

// Qt reads what it is given as UTF-8.
TEST_F(GPUStreamsTest, WarningNamesTheAttributeInTheEncodingOfTheLocale) {
    QTextCodec* const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    faces({1});
    attribute<float>("n\xE4he", 1, kFloat, {5}, {7});
    build(false);
    QTextCodec::setCodecForLocale(before);
    EXPECT_THAT(
        log.texts(QtWarningMsg),
        ElementsAre(QStringLiteral("1 corner has no valid index into vertex attribute 'n\uFFFDhe' and "
                                   "takes a value of zeros")));
}

TEST_F(GPUStreamsTest, OneWarningPerAttributeInTheOrderOfNames) {
    faces({1});
    attribute<float>("b", 1, kFloat, {1}, {1});
    attribute<float>("a", 1, kFloat, {1}, {1});
    attribute<float>("c", 1, kFloat, {1}, {0});
    build(false);
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(testing::ResultOf([](const QString& t) { return t.contains("'a'"); }, true),
                            testing::ResultOf([](const QString& t) { return t.contains("'b'"); }, true)));
    EXPECT_EQ(builder->statistics().substitutedCorners, 2U);
    EXPECT_EQ(log.messages().back().level, QtDebugMsg) << "the summary comes last";
}

TEST_F(GPUStreamsTest, UnfinishedLastValueDoesNotExist) {
    faces({2});
    attribute<float>("a", 3, kFloat, {1, 2, 3, 4, 5}, {0, 1});
    build(false);
    EXPECT_THAT(values("a"), ElementsAre(1, 2, 3, 0, 0, 0));
}

TEST_F(GPUStreamsTest, AttributeWithoutComponentsHasNoValues) {
    faces({2});
    attribute<float>("a", 0, kFloat, {1, 2}, {0, 1});
    attribute<float>("b", -3, kFloat, {1, 2}, {0, 1});
    attribute<float>("c", 1, kFloat, {1, 2}, {0, 1});
    build(false);
    EXPECT_THAT(values("a"), IsEmpty());
    EXPECT_THAT(values("b"), IsEmpty());
    EXPECT_THAT(values("c"), ElementsAre(1, 2));
    EXPECT_THAT(indices("a"), ElementsAre(0, 1));
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(2, 2, 100)));
}

TEST_F(GPUStreamsTest, AttributeOfNoScalarTypeHasNoValues) {
    faces({2});
    attribute<float>("a", 1, 0x1407, {1}, {0, 0});
    attribute<float>("c", 1, kFloat, {1, 2}, {0, 1});
    build(false);
    EXPECT_TRUE(bytes(stream("a", kGPUValues)).isEmpty());
    EXPECT_THAT(values("c"), ElementsAre(1, 2));
}

TEST_F(GPUStreamsTest, AttributeWithoutStreamsIsSkipped) {
    faces({2});
    attribute<float>("c", 1, kFloat, {1, 2}, {0, 1});
    access().attribute("absent").components = 3;
    build(false);
    EXPECT_TRUE(stream("absent", kGPUValues).isNull());
    EXPECT_THAT(values("c"), ElementsAre(1, 2));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(GPUStreamsTest, CornerCountWraps) {
    faces({0xFFFFFFFF, 3});
    attribute<float>("a", 1, kFloat, {1, 2}, {0, 1});
    build(false);
    EXPECT_THAT(indices("a"), ElementsAre(0, 1));
}

TEST_F(GPUStreamsTest, MoreCornersThanTheCapacityOfAStreamMakeNothing) {
    faces({0xFFFFFFFF});
    attribute<float>("a", 1, kFloat, {1, 2}, {0, 1});
    build(false);
    EXPECT_TRUE(stream("a", kGPUValues).isNull());
    EXPECT_TRUE(stream("a", kGPUIndices).isNull());
    EXPECT_THAT(log.messages(),
                ElementsAre(Testing::LoggedMessage{
                    QtWarningMsg,
                    QStringLiteral("Unable to upload: no stream could be made for the corner indices"),
                    {},
                    false}));
}

TEST_F(GPUStreamsTest, HugeValueSizesNeverWrap) {
    faces({3});
    attribute<float>("a", 0x40000000, kFloat, {1}, {0, 0, 0});
    build(false);
    EXPECT_TRUE(stream("a", kGPUValues).isNull());
    EXPECT_THAT(log.texts(QtWarningMsg).back(),
                QStringLiteral("Unable to upload: no stream could be made for vertex attribute 'a'"));
}

TEST_F(GPUStreamsTest, PlainClientStreamsWork) {
    useAllocator(QSharedPointer<Testing::PlainAllocator>::create());
    faces({3, 3});
    attribute<float>("p", 2, kFloat, {0, 0, 1, 0, 1, 1, 0, 1}, {0, 1, 2, 0, 2, 3});
    build(false);
    EXPECT_THAT(indices("p"), ElementsAre(0, 1, 2, 0, 2, 3));
    EXPECT_THAT(values("p"), ElementsAre(0, 0, 1, 0, 1, 1, 0, 1));
}

TEST_F(GPUStreamsTest, AllocatorThatRunsOutLeavesNoHalfBuiltStreams) {
    for (const int streams : {0, 1}) {
        const auto allocator = QSharedPointer<Testing::CountingAllocator>::create();
        useAllocator(allocator);
        faces({3});
        attribute<float>("a", 1, kFloat, {1}, {0, 0, 0});
        attribute<float>("b", 1, kFloat, {1}, {0, 0, 0});
        allocator->limit(streams);
        log.clear();
        build(false);
        EXPECT_THAT(log.texts(QtWarningMsg), testing::SizeIs(1));
        EXPECT_THAT(log.texts(QtDebugMsg), IsEmpty());
        for (const char* const name : {"a", "b"}) {
            EXPECT_TRUE(stream(name, kGPUValues).isNull());
            EXPECT_TRUE(stream(name, kGPUIndices).isNull());
        }
    }
}

TEST_F(GPUStreamsTest, ShortIndexStreamIsAssertedAndOnlyWholeEntriesAreWritten) {
    useAllocator(QSharedPointer<Testing::ShortIndexAllocator>::create());
    faces({2, 1, 0, 0});
    const quint32 words[] = {2, 1};
    // The client's streams take 16-bit elements: its counts and indices fill half of each entry.
    access().verticesPerFace()->setData(0, 4, words);
    attribute<float>("a", 1, kFloat, {5, 6}, {});
    auto& list = stream("a", kIndices);
    const quint32 entries[] = {1, 0, 1};
    list->append(6, entries);
    log.clear();
    build(false);
    const auto& result = stream("a", kGPUIndices);
    EXPECT_EQ(result->type(), 0x1403U);
    ASSERT_EQ(result->byteCount(), 6U);
    EXPECT_EQ(*static_cast<quint32*>(result->data(0)), 0U);
    EXPECT_THAT(values("a"), ElementsAre(6, 5));
    EXPECT_THAT(log.texts(QtCriticalMsg),
                ElementsAre(QStringLiteral(
                    "[modelbuilder:848] [ !! ] Assertion 'oldIndices->type() == GL_UNSIGNED_INT' failed: "
                    "Index not uint32 0x1403")));
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(3, 2, 66, 2)));
    EXPECT_EQ(log.messages().back().level, QtDebugMsg);
    EXPECT_FALSE(log.messages().front().hasContext);
}

/// Makes index streams of 16 bits, and streams of other types only when they are empty.
class NoResultAllocator : public Testing::ShortIndexAllocator {
public:
    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        return type == kUnsignedInt || count == 0 ? ShortIndexAllocator::alloc(type, count) : nullptr;
    }
};

TEST_F(GPUStreamsTest, ShortIndexStreamIsAssertedBeforeAResultIsMissing) {
    useAllocator(QSharedPointer<NoResultAllocator>::create());
    faces({2, 1, 0, 0});
    const quint32 words[] = {2, 1};
    access().verticesPerFace()->setData(0, 4, words);
    attribute<float>("a", 1, kFloat, {5, 6}, {});
    const quint32 entries[] = {1, 0, 1};
    stream("a", kIndices)->append(6, entries);
    build(false);
    ASSERT_EQ(log.messages().size(), 2U);
    EXPECT_EQ(log.messages()[0].text,
              QStringLiteral("[modelbuilder:848] [ !! ] Assertion 'oldIndices->type() == GL_UNSIGNED_INT' "
                             "failed: Index not uint32 0x1403"));
    EXPECT_EQ(log.messages()[1].text,
              QStringLiteral("Unable to upload: no stream could be made for vertex attribute 'a'"));
}

TEST_F(GPUStreamsTest, MoreVerticesAfterMergingThanBeforeIsAsserted) {
    const ModelDataArray list(kUnsignedInt);
    ModelBuilderAccess::assertReduction(2, 3, list);
    EXPECT_THAT(log.texts(QtCriticalMsg),
                ElementsAre(QStringLiteral(
                    "[modelbuilder:804] [ !! ] Assertion 'newVertexCount <= vertexCount' failed: 3 <= 2")));
}

class OptimizeGPUStreamsTest : public GPUStreamsTest {
protected:
    /// An attribute with GPU streams only, the index stream shared by all.
    void gpuAttribute(const char* name, int components, std::initializer_list<float> data) {
        auto& record = access().attribute(name);
        record.components = components;
        record.streams[kGPUValues] = QSharedPointer<ModelDataArray>::create(kFloat);
        record.streams[kGPUValues]->append(data.size(), data.begin());
        record.streams[kGPUIndices] = shared;
    }

public:
    QSharedPointer<ModelDataStream> shared = QSharedPointer<ModelDataArray>::create(kUnsignedInt);
};

TEST_F(OptimizeGPUStreamsTest, RewritesTheSharedListInPlace) {
    const quint32 list[] = {3, 2, 1, 0};
    shared->append(4, list);
    gpuAttribute("a", 1, {5, 6, 5, 7});
    gpuAttribute("b", 2, {1, 1, 1, 1, 1, 1, 1, 1});
    access().optimizeGPUStreams();
    EXPECT_EQ(stream("a", kGPUIndices), shared);
    EXPECT_EQ(stream("b", kGPUIndices), shared);
    EXPECT_THAT(elements<quint32>(shared), ElementsAre(2, 0, 1, 0));
    EXPECT_THAT(values("a"), ElementsAre(5, 6, 7));
    EXPECT_THAT(values("b"), ElementsAre(1, 1, 1, 1, 1, 1));
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(4, 3, 75)));
}

TEST_F(OptimizeGPUStreamsTest, RunningTwiceChangesNothingMore) {
    const quint32 list[] = {0, 1, 2};
    shared->append(3, list);
    gpuAttribute("a", 1, {5, 6, 5});
    access().optimizeGPUStreams();
    access().optimizeGPUStreams();
    EXPECT_THAT(elements<quint32>(shared), ElementsAre(0, 1, 0));
    EXPECT_THAT(values("a"), ElementsAre(5, 6));
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(3, 2, 66), summary(2, 2, 100)));
}

TEST_F(OptimizeGPUStreamsTest, IndicesWithoutAVertexAreUnchanged) {
    const quint32 list[] = {0, 3, 0xFFFFFFFF};
    shared->append(3, list);
    gpuAttribute("a", 1, {5, 5, 5});
    access().optimizeGPUStreams();
    EXPECT_THAT(elements<quint32>(shared), ElementsAre(0, 3, 0xFFFFFFFF));
}

TEST_F(OptimizeGPUStreamsTest, StreamsOfDifferentLengthsAreReadInsideThemselves) {
    const quint32 list[] = {0, 1, 2};
    shared->append(3, list);
    gpuAttribute("a", 1, {5});
    gpuAttribute("b", 1, {1, 2, 3});
    access().optimizeGPUStreams();
    EXPECT_THAT(values("a"), ElementsAre(5, 0, 0));
    EXPECT_THAT(values("b"), ElementsAre(1, 2, 3));
}

TEST_F(OptimizeGPUStreamsTest, ShortIndexStreamIsAssertedBeforeAResultIsMissing) {
    useAllocator(QSharedPointer<NoResultAllocator>::create());
    shared->setType(0x1403); // GL_UNSIGNED_SHORT
    gpuAttribute("a", 1, {5});
    access().optimizeGPUStreams();
    ASSERT_EQ(log.messages().size(), 2U);
    EXPECT_EQ(log.messages()[0].level, QtCriticalMsg);
    EXPECT_EQ(log.messages()[1].level, QtWarningMsg);
}

TEST_F(OptimizeGPUStreamsTest, WithoutStreamsNothingHappens) {
    access().optimizeGPUStreams();
    access().attribute("a").components = 1;
    access().optimizeGPUStreams();
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(OptimizeGPUStreamsTest, AttributeWithoutComponentsDoesNotCountVertices) {
    const quint32 list[] = {0, 1};
    shared->append(2, list);
    gpuAttribute("a", 1, {5, 6});
    gpuAttribute("b", 0, {1});
    access().optimizeGPUStreams();
    EXPECT_THAT(values("a"), ElementsAre(5, 6));
    EXPECT_THAT(values("b"), IsEmpty());
    EXPECT_THAT(elements<quint32>(shared), ElementsAre(0, 1));
}

TEST_F(OptimizeGPUStreamsTest, ZeroVerticesShowZeroPercent) {
    gpuAttribute("a", 1, {});
    access().optimizeGPUStreams();
    EXPECT_THAT(log.texts(QtDebugMsg), ElementsAre(summary(0, 0, 0)));
}

TEST_F(OptimizeGPUStreamsTest, ListOfShortsIsAssertedAndRewrittenByWholeWords) {
    shared = QSharedPointer<ModelDataArray>::create(0x1403U);
    const quint16 list[] = {2, 0, 1, 0, 77};
    shared->append(5, list);
    gpuAttribute("a", 1, {5, 6, 5});
    access().optimizeGPUStreams();
    EXPECT_THAT(elements<quint16>(shared), ElementsAre(0, 0, 1, 0, 77));
    EXPECT_THAT(log.texts(QtCriticalMsg), testing::SizeIs(1));
}

TEST_F(OptimizeGPUStreamsTest, FailingAllocatorLeavesTheStreamsUnchanged) {
    useAllocator(QSharedPointer<Testing::NullAllocator>::create());
    const quint32 list[] = {1, 0};
    shared->append(2, list);
    gpuAttribute("a", 1, {5, 5});
    access().optimizeGPUStreams();
    EXPECT_THAT(elements<quint32>(shared), ElementsAre(1, 0));
    EXPECT_THAT(values("a"), ElementsAre(5, 5));
    EXPECT_THAT(log.texts(QtWarningMsg), testing::SizeIs(1));
}

} // namespace
} // namespace Atelier::Vel
