#include <algorithm>
#include <memory>
#include <numeric>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/modelbuilder.h>

#include "modeldescription.h"
#include "soundmodel.h"
#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/modelbuilderaccess.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAreArray;
using Testing::GuardedMemory;
using Testing::Lie;
using Testing::MessageLog;
using Testing::PlainStream;

constexpr unsigned int kFloat = 0x1406;
const QString kPosition = QStringLiteral("position");
const QString kUv = QStringLiteral("uv");

/// A mesh, and the way in which a builder gets it.
struct Way {
    const char* name;
    bool keepsInput;
    bool mergesCorners;
    std::vector<unsigned int> counts; ///< of corners, by face; the first face is in no group
    quint32 positions;
    /// The purposes of the streams, in the order of the requests.
    std::vector<const char*> purposes;

    bool isUniform() const {
        return !keepsInput && std::equal(counts.begin() + 1, counts.end(), counts.begin());
    }
    /// With triangles.
    bool overwritesCorners() const { return isUniform() && counts.front() == 3; }

    friend void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }
};

/// A copy that ends before an inaccessible page: a stream that reads beyond it ends the test.
template<typename T>
std::unique_ptr<GuardedMemory> guarded(const std::vector<T>& values) {
    std::unique_ptr<GuardedMemory> memory(new GuardedMemory(values.size() * sizeof(T)));
    std::copy(values.begin(), values.end(), memory->as<T>());
    return memory;
}

class Feeder {
public:
    Feeder(const Way& way, ModelBuilder& builder) : _way(way), _builder(builder) {}

    void feed() const {
        std::vector<float> positions;
        for (quint32 i = 0; i < _way.positions; ++i)
            positions.insert(positions.end(),
                             {static_cast<float>(i % 3 + i / 9), static_cast<float>(i / 3 % 3), 0.25F});
        addValues(kPosition, 3, positions);
        addValues(kUv, 2, {0, 0, 0, 1, 1, 0, 1, 1, 0.5F, 0.5F});
        _builder.addVertexCountsToFaces(_way.counts.size(), guarded(_way.counts)->as<unsigned int>());
        addGroups();
        addCorners();
        _builder.generateNormals(QStringLiteral("normal"));
    }

private:
    void addValues(const QString& name, int components, const std::vector<float>& values) const {
        _builder.createVertexAttribute(name, components, kFloat, 0, 0);
        _builder.addValuesToVertexAttribute(name, values.size(), guarded(values)->as<float>(), kFloat);
    }
    void addGroups() const {
        const auto faces = static_cast<unsigned int>(_way.counts.size());
        const unsigned int half = faces / 2;
        for (const auto& [name, first, end] : {std::tuple("a", 1U, half), std::tuple("b", half, faces)}) {
            const QString group = QString::fromLatin1(name);
            _builder.createMaterialGroup(group, InstanceData(group), -1, 0);
            std::vector<unsigned int> numbers(end - first);
            std::iota(numbers.begin(), numbers.end(), first);
            if (_way.keepsInput)
                _builder.addFacesToMaterialGroup(group, numbers.size(), guarded(numbers)->as<unsigned int>(),
                                                 QString());
            else
                ModelBuilderAccess(_builder).addFaceRun(group, first, end - first);
        }
    }
    void addCorners() const {
        std::vector<unsigned int> positions;
        std::vector<unsigned int> uvs;
        const unsigned int corners = std::accumulate(_way.counts.begin(), _way.counts.end(), 0U);
        for (unsigned int corner = 0; corner < corners; ++corner) {
            positions.push_back(corner % _way.positions);
            uvs.push_back(corner % _way.positions % 5);
        }
        const auto positionList = guarded(positions);
        const auto uvList = guarded(uvs);
        const CornerList lists[] = {{&kPosition, positionList->as<unsigned int>()},
                                    {&kUv, uvList->as<unsigned int>()}};
        if (_way.mergesCorners)
            return ModelBuilderAccess(_builder).addCorners(lists, 2, corners);
        _builder.addIndicesToVertexAttribute(kPosition, corners, lists[0].indices);
        _builder.addIndicesToVertexAttribute(kUv, corners, lists[1].indices);
    }

    const Way& _way;
    ModelBuilder& _builder;
};

/// The result of an upload.
struct Outcome {
    QStringList facts;
    std::vector<QByteArray> uploads;
    QString unsoundness;
    std::vector<QString> warnings;
    std::vector<QString> assertions;
    std::vector<quint64> counts; ///< of elements in the requested streams
};

template<typename Stream>
Outcome upload(const Way& way, std::size_t liar, Lie lie) {
    Outcome outcome;
    const Testing::RecordingContext context;
    const MessageLog log;
    const auto allocator = QSharedPointer<Testing::LyingAllocator<Stream>>::create();
    allocator->lie(liar, lie);
    ModelBuilder builder(way.keepsInput ? allocator : QSharedPointer<ModelDataStreamAllocator>());
    if (!way.keepsInput)
        ModelBuilderAccess::consumeInput(builder, allocator);
    Feeder(way, builder).feed();
    GPUModel model;
    builder.upload(&model, InstanceData(QStringLiteral("i")), kPosition, QString(), 0x88E4, 4);
    outcome.facts = Testing::describe(model);
    for (const Testing::Recording::Upload& upload : context.recording().uploads)
        outcome.uploads.push_back(upload.bytes);
    outcome.unsoundness = Testing::unsoundness(model, context.recording());
    outcome.warnings = log.texts(QtWarningMsg);
    outcome.assertions = log.texts(QtCriticalMsg);
    for (const auto& request : allocator->requests())
        outcome.counts.push_back(request.count);
    return outcome;
}

/// The expected effect of a lie.
struct Expectation {
    enum Model { Right, None, Partial } model = Right;
    std::vector<QString> warnings;
    std::vector<QString> assertions;
    bool isSound = true;
};

QString missing(const char* purpose) {
    return QStringLiteral("Unable to upload: no stream could be made for %1").arg(purpose);
}

QString refused(const QString& purpose) {
    return QStringLiteral("Data for %1 refused: a stream holds at most 2147483647 bytes").arg(purpose);
}

QString attributeOf(const QString& purpose) {
    return QStringLiteral("vertex attribute '%1'").arg(purpose.section(' ', 1));
}

QString typeAssertion(unsigned int type) {
    return QString::asprintf("[modelbuilder:848] [ !! ] Assertion 'oldIndices->type() == GL_UNSIGNED_INT' "
                             "failed: Index not uint32 0x%X",
                             type);
}

QString faceTypeAssertion(unsigned int type) {
    return QString::asprintf("[modelbuilder:923] [ !! ] Assertion 'GL_UNSIGNED_INT == "
                             "_verticesPerFace->type()' failed: Wrong Face type 0x%X, needs to be 0x1405",
                             type);
}

/// The expected effect of a lie of a stream of `count` elements. A stream of a wrong length is resized.
template<typename Stream>
Lie seenAs(Lie lie, quint64 count) {
    constexpr bool kGrowsByResize = !std::is_base_of_v<ModelDataArray, Stream>;
    switch (lie) {
    case Lie::Short:
    case Lie::Long:
        return Lie::None;
    case Lie::LongForGood:
        return Lie::Missing;
    case Lie::ShortForGood:
        return count != 0 ? Lie::Missing : kGrowsByResize ? Lie::NoAppend : Lie::None;
    case Lie::NoType:
        return count == 0 ? Lie::NoType : Lie::Missing;
    case Lie::NoAppend:
        return count == 0 ? Lie::NoAppend : Lie::None;
    case Lie::NoResize:
        return count == 0 && kGrowsByResize ? Lie::NoAppend : Lie::None;
    default:
        return lie;
    }
}

unsigned int typeOf(Lie lie) {
    return lie == Lie::NarrowType  ? 0x1403
           : lie == Lie::WideType  ? 0x140A
           : lie == Lie::OtherType ? 0x1404
                                   : 0x1407;
}

bool isOfOtherType(Lie lie) {
    return lie == Lie::NarrowType || lie == Lie::WideType || lie == Lie::OtherType || lie == Lie::NoType;
}

using Model = Expectation::Model;

/// Streams that the input goes into.
Expectation expectedOfInput(const QString& purpose, Lie lie, const Way& way) {
    const bool isLost =
        lie == Lie::WideType || lie == Lie::NoType || lie == Lie::NoData || lie == Lie::NoAppend;
    if (purpose == "the faces") {
        const auto assertions = std::vector<QString>(2, faceTypeAssertion(typeOf(lie)));
        if (way.isUniform())
            return {Model::Right, {}, isOfOtherType(lie) ? assertions : std::vector<QString>()};
        if (isLost)
            return {Model::None, {refused(purpose)}, {}};
        if (lie == Lie::NarrowType || lie == Lie::OtherType)
            return {lie == Lie::OtherType ? Model::Right : Model::Partial, {}, assertions};
        return {Model::None, {}, {}};
    }
    if (purpose.startsWith("values ")) {
        if (lie == Lie::Missing)
            return purpose == "values uv"
                       ? Expectation{Model::Partial, {}, {}}
                       : Expectation{Model::None, {missing("vertex attribute 'position'")}, {}};
        if (isOfOtherType(lie))
            return {Model::None, {}, {}};
        return {Model::None, {refused(attributeOf(purpose))}, {}};
    }
    if (purpose.startsWith("indices ")) {
        const auto half = std::accumulate(way.counts.begin(), way.counts.end(), 0U);
        if (way.mergesCorners || lie == Lie::OtherType)
            return {};
        if (isLost)
            return {Model::None, {refused(attributeOf(purpose))}, {}};
        if (lie == Lie::NarrowType)
            return {Model::Partial,
                    {QStringLiteral("%1 corners have no valid index into %2 and take a value of zeros")
                         .arg(half - half / 2)
                         .arg(attributeOf(purpose))},
                    {}};
        return {Model::None, {}, {}};
    }
    if (isLost)
        return {Model::Partial,
                {refused(QStringLiteral("material group '%1'").arg(purpose.section(' ', 1)))},
                {}};
    return {lie == Lie::OtherType ? Model::Right : Model::Partial, {}, {}};
}

Expectation expectation(const QString& purpose, Lie lie, const Way& way) {
    const bool isLost =
        lie == Lie::WideType || lie == Lie::NoType || lie == Lie::NoData || lie == Lie::NoAppend;
    if (lie == Lie::None || purpose == "not used")
        return {};
    if (purpose == "the corner indices") {
        if (lie == Lie::Missing || lie == Lie::NoData)
            return {Model::None, {missing("the corner indices")}, {}};
        if (lie == Lie::WideType && way.overwritesCorners())
            return {Model::None, {refused("the triangle indices")}, {typeAssertion(typeOf(lie))}};
        return {lie == Lie::NarrowType ? Model::Partial : Model::Right, {}, {typeAssertion(typeOf(lie))}};
    }
    if (purpose == "merged corners") {
        if (lie == Lie::NoData || lie == Lie::NoAppend)
            return {Model::None, {refused(QStringLiteral("vertex attribute 'position'"))}, {}};
        return {};
    }
    if (purpose.startsWith("result "))
        return {Model::None, {missing(qUtf8Printable(attributeOf(purpose)))}, {}};
    if (purpose == "the triangle indices") {
        if (lie == Lie::Missing)
            return {Model::None, {missing("the triangle indices")}, {}};
        if (isLost)
            return {Model::None, {refused(purpose)}, {}};
        // Wide indices are uploaded with the type that their stream says.
        const bool areShortened = way.positions < 0xFFFF;
        return {lie == Lie::OtherType && areShortened ? Model::Right : Model::Partial, {}, {}, areShortened};
    }
    if (purpose == "the index buffer") {
        if (lie == Lie::WideType || lie == Lie::OtherType)
            return {};
        return {Model::None, {missing("the index buffer")}, {}};
    }
    return expectedOfInput(purpose, lie, way);
}

constexpr const char* kPassedOver = nullptr;

class LyingStreamsTest : public testing::TestWithParam<Way> {
protected:
    /// Lets each stream lie in each way. Expects no access beyond its memory, and the expected model.
    template<typename Stream>
    void expectLiesAreSurvived() const {
        const Way& way = GetParam();
        const Outcome faithful = upload<Stream>(way, 0, Lie::None);
        ASSERT_FALSE(faithful.facts.isEmpty());
        ASSERT_EQ(faithful.counts.size(), way.purposes.size());
        ASSERT_EQ(faithful.unsoundness, QString());
        ASSERT_TRUE(faithful.warnings.empty() && faithful.assertions.empty());
        for (std::size_t liar = 0; liar < way.purposes.size(); ++liar)
            for (const Lie lie : Testing::kLies) {
                if (way.purposes[liar] == kPassedOver)
                    continue;
                SCOPED_TRACE(testing::Message() << way.purposes[liar] << ", lie " << static_cast<int>(lie));
                const Outcome outcome = upload<Stream>(way, liar, lie);
                expectAsItHasToBe(outcome, faithful,
                                  expectation(QString::fromLatin1(way.purposes[liar]),
                                              seenAs<Stream>(lie, faithful.counts[liar]), way));
            }
    }

private:
    static void expectAsItHasToBe(const Outcome& outcome, const Outcome& faithful,
                                  const Expectation& expected) {
        EXPECT_THAT(outcome.warnings, ElementsAreArray(expected.warnings));
        EXPECT_THAT(outcome.assertions, ElementsAreArray(expected.assertions));
        EXPECT_EQ(outcome.facts.isEmpty(), expected.model == Model::None);
        EXPECT_EQ(outcome.facts == faithful.facts && outcome.uploads == faithful.uploads,
                  expected.model == Model::Right);
        if (expected.isSound) {
            EXPECT_EQ(outcome.unsoundness, QString());
        }
    }
};

TEST_P(LyingStreamsTest, NoLieReadsBeyondMemoryOrSilentlyChangesTheModel) {
    expectLiesAreSurvived<PlainStream>();
}

std::string nameOf(const testing::TestParamInfo<Way>& way) {
    return way.param.name;
}

const std::vector<unsigned int> kMixed = {3, 3, 4, 5, 3, 4, 4};
const std::vector<unsigned int> kQuadrilaterals = std::vector<unsigned int>(7, 4);
const std::vector<unsigned int> kTriangles = std::vector<unsigned int>(7, 3);

std::vector<unsigned int> withManyVertices(std::vector<unsigned int> counts) {
    counts.front() = 0xFFFF;
    return counts;
}

/// Those of the streams of the input and what follows them.
std::vector<const char*> purposes(std::initializer_list<const char*> followers) {
    std::vector<const char*> all = {"the faces",        "not used",  "values position",
                                    "indices position", "values uv", "indices uv"};
    all.insert(all.end(), followers);
    return all;
}

/// Lies of the input have the same effect for any number of vertices.
std::vector<const char*> purposesBehindTheInput(std::size_t inputs,
                                                std::initializer_list<const char*> followers) {
    std::vector<const char*> all(inputs, kPassedOver);
    all.insert(all.end(), followers);
    return all;
}

INSTANTIATE_TEST_SUITE_P(
    Ways, LyingStreamsTest,
    testing::Values(Way{"InputIsKept", true, false, kMixed, 9,
                        purposes({"group a", "group b", "the corner indices", "result position", "result uv",
                                  "the triangle indices", "result normal", "the index buffer"})},
                    Way{"InputOfManyVerticesIsKept", true, false, withManyVertices(kMixed), 0xFFFF,
                        purposesBehindTheInput(8, {"the corner indices", "result position", "result uv",
                                                   "the triangle indices", "result normal"})},
                    Way{"CornersAreMerged", false, true, kMixed, 9,
                        purposes({"merged corners", "result position", "result uv", "the triangle indices",
                                  "result normal", "the index buffer"})},
                    Way{"CornersOfManyVerticesAreMerged", false, true, withManyVertices(kMixed), 0xFFFF,
                        purposesBehindTheInput(7, {"result position", "result uv", "the triangle indices",
                                                   "result normal"})},
                    Way{"CornersOfQuadrilateralsAreMerged", false, true, kQuadrilaterals, 9,
                        purposes({"merged corners", "result position", "result uv", "the triangle indices",
                                  "result normal", "the index buffer"})},
                    Way{"TrianglesOverwriteMergedCorners", false, true, kTriangles, 9,
                        purposes({"merged corners", "result position", "result uv", "result normal",
                                  "the index buffer"})},
                    Way{"TrianglesOverwriteCornersThatAreNotMerged", false, false, kTriangles, 9,
                        purposes({"the corner indices", "result position", "result uv", "result normal",
                                  "the index buffer"})}),
    nameOf);

class LyingArraysTest : public LyingStreamsTest {};

TEST_P(LyingArraysTest, NoLieSilentlyChangesTheModel) {
    expectLiesAreSurvived<ModelDataArray>();
}

// The library's own index list becomes the list of corners unless merging still needs it.
INSTANTIATE_TEST_SUITE_P(
    Ways, LyingArraysTest,
    testing::Values(Way{"CornersOverwriteAList", false, false, kMixed, 9,
                        purposes({"result position", "result uv", "the triangle indices", "result normal",
                                  "the index buffer"})},
                    Way{"TrianglesOverwriteAList", false, false, kTriangles, 9,
                        purposes({"result position", "result uv", "result normal", "the index buffer"})},
                    Way{"CornersThatHardlyMergeGoElsewhere", false, false, kTriangles, 20,
                        purposes({"the corner indices", "result position", "result uv", "result normal",
                                  "the index buffer"})}),
    nameOf);

} // namespace
} // namespace Atelier::Vel
