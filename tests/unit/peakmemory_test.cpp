#include <algorithm>
#include <cstring>
#include <functional>
#include <numeric>
#include <vector>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>
#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/vertexarrayobject.h>
#include <velmodel/drawdata.h>

#include "allocationcount.h"
#include "drawdata/preparation.h"
#include "mesh/mesh.h"
#include "support/clientstreams.h"
#include "support/messagelog.h"

namespace Atelier::Vel {
namespace {

using testing::ElementsAre;
using Testing::MessageLog;

constexpr unsigned int kUnsignedShort = 0x1403;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kFloat = 0x1406;

// Memory that is not accounted for: names, tables of a few entries.
constexpr std::size_t kLittle = std::size_t{64} << 10;

const QString kPosition = QStringLiteral("position");
const QString kUv = QStringLiteral("uv");

/// The bytes of all streams.
std::size_t streamBytes = 0;

/// Bytes of a stream that are counted separately.
class CountedBytes {
public:
    ~CountedBytes() { streamBytes -= _bytes.capacity(); }

    std::size_t size() const { return _bytes.size(); }
    unsigned char* data() { return _bytes.data(); }
    void write(std::size_t first, const void* bytes, std::size_t count) {
        if (count != 0)
            std::memcpy(_bytes.data() + first, bytes, count);
    }
    void resize(std::size_t bytes) {
        streamBytes -= _bytes.capacity();
        _bytes.resize(bytes);
        streamBytes += _bytes.capacity();
    }

private:
    std::vector<unsigned char> _bytes;
};

/// Records the existing memory at each request.
class Witness {
public:
    /// The memory of everything but streams.
    static std::size_t otherBytes() { return Testing::bytesInUse() - streamBytes; }

    std::vector<ModelDataStream*> streams;
    std::function<void(unsigned int type)> streamAskedFor;
    std::function<void()> bufferAskedFor;
    std::function<void()> arrayAskedFor;
    std::function<void()> attributeRegistered;

    void streamWasAskedFor(unsigned int type) const {
        if (streamAskedFor)
            streamAskedFor(type);
    }
    static void call(const std::function<void()>& what) {
        if (what)
            what();
    }
    /// The types of the streams that are alive.
    std::vector<unsigned int> types() const {
        std::vector<unsigned int> types;
        std::transform(streams.begin(), streams.end(), std::back_inserter(types),
                       [](const ModelDataStream* stream) { return stream->type(); });
        return types;
    }
};

class WitnessedStream : public Testing::StreamOver<CountedBytes> {
public:
    WitnessedStream(Witness& witness, unsigned int type, quint64 count)
        : StreamOver(type, count), _witness(witness) {
        _witness.streams.push_back(this);
    }
    ~WitnessedStream() override {
        auto& streams = _witness.streams;
        streams.erase(std::find(streams.begin(), streams.end(), this));
    }

private:
    Witness& _witness;
};

class WitnessedAllocator : public ModelDataStreamAllocator {
public:
    explicit WitnessedAllocator(Witness& witness) : _witness(witness) {}
    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        _witness.streamWasAskedFor(type);
        return new WitnessedStream(_witness, type, count);
    }

private:
    Witness& _witness;
};

class WitnessedArray : public VertexArrayObject {
public:
    explicit WitnessedArray(const Witness& witness) : _witness(witness) {}
    void registerBO(const QString& name, QSharedPointer<BufferObject> buffer, int components,
                    unsigned int type) override {
        Witness::call(_witness.attributeRegistered);
        VertexArrayObject::registerBO(name, buffer, components, type);
    }

private:
    const Witness& _witness;
};

/// Its buffers keep nothing.
class WitnessedContext : public OpenGLDeviceContext {
public:
    explicit WitnessedContext(const Witness& witness) : _witness(witness) {}
    QSharedPointer<BufferObject> createBufferObject() override {
        Witness::call(_witness.bufferAskedFor);
        return OpenGLDeviceContext::createBufferObject();
    }
    QSharedPointer<VertexArrayObject> createVertexArrayObject() override {
        Witness::call(_witness.arrayAskedFor);
        return QSharedPointer<WitnessedArray>::create(_witness);
    }

private:
    const Witness& _witness;
};

/// Corner c uses value c modulo `values`.
std::vector<unsigned int> cyclic(quint32 corners, quint32 values) {
    std::vector<unsigned int> indices(corners);
    for (quint32 corner = 0; corner < corners; ++corner)
        indices[corner] = corner % values;
    return indices;
}

/// A mesh that releases its input, and a witness of its upload.
class PeakMemoryTest : public testing::Test {
protected:
    void SetUp() override {
        if (!Testing::countsAllocations())
            GTEST_SKIP() << "allocations cannot be counted here";
        OpenGLDeviceContext::setCurrent(QSharedPointer<WitnessedContext>::create(witness));
    }
    void TearDown() override { OpenGLDeviceContext::setCurrent({}); }

    void addValues(const QString& name, int components, quint32 count) {
        std::vector<float> values(count * static_cast<std::size_t>(components));
        std::iota(values.begin(), values.end(), 0.0F);
        mesh.attributes.create(name, components, kFloat, 0, 0);
        mesh.attributes.addValues(name, values.size(), values.data(), kFloat);
    }
    void addFaces(const std::vector<unsigned int>& counts) { mesh.faces.add(counts.size(), counts.data()); }
    void addGroup(const QString& name, unsigned int firstFace, unsigned int count, quint64 flags = 0) {
        mesh.groups.create(name, InstanceData(), -1, flags);
        mesh.groups.addFaceRun(name, firstFace, count);
    }
    void upload() {
        ProgressMeter meter{{}};
        DrawData data = Preparation(mesh, 0xF, &mesh).prepare(kPosition, meter);
        EXPECT_TRUE(Vel::upload(std::move(data), model, {InstanceData()}));
        EXPECT_GT(model.drawableCount(), 0);
    }

    /// Three faces of twelve corners over so many values, with normals to be made. Notes which streams there
    /// are whenever one of floats is asked for.
    void addSmallMesh(quint32 values) {
        addValues(kPosition, 3, values);
        addValues(kUv, 2, values);
        const std::vector<unsigned int> indices = cyclic(12, values);
        for (const QString& name : {kPosition, kUv})
            mesh.attributes.addIndices(name, indices.size(), indices.data());
        addFaces({3, 4, 5});
        addGroup(QStringLiteral("group"), 0, 3);
        mesh.normalsAttribute = QStringLiteral("normal");
        witness.streamAskedFor = [this](unsigned int type) {
            if (type == kFloat)
                streamsAtFloats.push_back(witness.types());
        };
    }

public:
    MessageLog log;
    Witness witness;
    std::vector<std::vector<unsigned int>> streamsAtFloats;
    Mesh mesh{Input::Consumed, QSharedPointer<WitnessedAllocator>::create(witness)};
    GPUModel model;
};

} // namespace

// The faces, the values given, triangle indices to come, and one list for all corners.
TEST_F(PeakMemoryTest, ListsAreReleasedBeforeVerticesAreMade) {
    addSmallMesh(4);
    upload();
    ASSERT_EQ(streamsAtFloats.size(), 3U);
    EXPECT_THAT(streamsAtFloats[0], ElementsAre(kUnsignedInt, kFloat, kFloat, kUnsignedInt, kUnsignedInt));
    EXPECT_THAT(streamsAtFloats[1], ElementsAre(kUnsignedInt, kFloat, kUnsignedInt, kUnsignedInt, kFloat))
        << "the given positions were released before those of the vertices were made";
    EXPECT_THAT(streamsAtFloats[2], ElementsAre(kUnsignedInt, kUnsignedInt, kFloat, kFloat, kUnsignedInt))
        << "when normals are made, only the faces of the input remain";
}

// If each corner uses its own value, merging reads the lists until the vertices are made.
TEST_F(PeakMemoryTest, NeededListsAreReleasedAfterTheVertices) {
    addSmallMesh(11);
    upload();
    ASSERT_EQ(streamsAtFloats.size(), 3U);
    EXPECT_THAT(streamsAtFloats[0], ElementsAre(kUnsignedInt, kFloat, kUnsignedInt, kFloat, kUnsignedInt,
                                                kUnsignedInt, kUnsignedInt));
    EXPECT_THAT(streamsAtFloats[1], ElementsAre(kUnsignedInt, kUnsignedInt, kFloat, kUnsignedInt,
                                                kUnsignedInt, kUnsignedInt, kFloat));
    EXPECT_THAT(streamsAtFloats[2], ElementsAre(kUnsignedInt, kUnsignedInt, kFloat, kFloat, kUnsignedInt));
}

TEST_F(PeakMemoryTest, ShortIndicesAreReleasedBeforeTheNextBuffer) {
    addSmallMesh(4);
    std::vector<std::ptrdiff_t> shortStreams;
    witness.bufferAskedFor = [&] {
        const std::vector<unsigned int> types = witness.types();
        shortStreams.push_back(std::count(types.begin(), types.end(), kUnsignedShort));
    };
    upload();
    EXPECT_THAT(shortStreams, ElementsAre(1, 0, 0, 0));
}

TEST_F(PeakMemoryTest, ValuesAreReleasedOnceTheirBufferHasThem) {
    addSmallMesh(4);
    std::vector<std::ptrdiff_t> floatStreams;
    witness.bufferAskedFor = [&] {
        const std::vector<unsigned int> types = witness.types();
        floatStreams.push_back(std::count(types.begin(), types.end(), kFloat));
    };
    upload();
    EXPECT_THAT(floatStreams, ElementsAre(3, 3, 2, 1));
}

// Look-up tables of several megabytes are needed while corners come, and no longer; the tuples themselves
// are.
TEST_F(PeakMemoryTest, TablesOfTuplesAreReleasedBeforeVerticesAreMade) {
    constexpr quint32 kValues = 100'000;
    constexpr quint32 kCornersAtATime = 30'000;
    // Two words for each of twice the number of values: one large page, and another one for the alignment.
    constexpr std::size_t kTupleBytes = std::size_t{4} << 20;
    static_assert(std::size_t{kValues} * 4 * sizeof(quint32) <= kTupleBytes / 2);
    addValues(kPosition, 3, kValues);
    addValues(kUv, 2, kValues);
    addFaces(std::vector<unsigned int>(kValues, 3));
    addGroup(QStringLiteral("group"), 0, kValues);
    std::vector<unsigned int> positions(3 * kValues);
    for (quint32 corner = 0; corner < 3 * kValues; ++corner)
        positions[corner] = corner / 3;
    std::vector<unsigned int> uvs = positions;
    const std::size_t before = Witness::otherBytes();
    for (quint32 first = 0; first < 3 * kValues; first += kCornersAtATime) {
        const CornerList lists[] = {{&kPosition, &positions[first]}, {&kUv, &uvs[first]}};
        mesh.attributes.addCorners(lists, 2, kCornersAtATime);
    }
    std::vector<std::size_t> atFloats;
    witness.streamAskedFor = [&](unsigned int type) {
        if (type == kFloat)
            atFloats.push_back(Witness::otherBytes());
    };
    upload();
    ASSERT_EQ(atFloats.size(), 2U);
    EXPECT_LE(atFloats[0], before + kTupleBytes + kLittle);
}

// The memory of a group's runs of faces and of the triangulator.
TEST_F(PeakMemoryTest, FacesOfGroupsAndTheTriangulatorAreReleasedBeforeNormalsAreMade) {
    constexpr quint32 kFaces = 100'000;
    constexpr quint32 kCorners = 3'000;
    addValues(kPosition, 3, 4);
    std::vector<unsigned int> counts(kFaces, 3);
    counts.back() = kCorners;
    addFaces(counts);
    const std::vector<unsigned int> indices = cyclic(3 * (kFaces - 1) + kCorners, 4);
    mesh.attributes.addIndices(kPosition, indices.size(), indices.data());
    const QString group = QStringLiteral("group");
    mesh.groups.create(group, InstanceData(), -1, 0);
    const std::size_t withoutRuns = Witness::otherBytes();
    for (quint32 face = 1; face < kFaces; face += 2)
        mesh.groups.addFaceRun(group, face, 1);
    ASSERT_GE(Witness::otherBytes(), withoutRuns + kFaces / 2 * sizeof(quint32));
    mesh.normalsAttribute = QStringLiteral("normal");
    std::size_t atNormals = 0;
    witness.streamAskedFor = [&](unsigned int type) {
        if (type == kFloat)
            atNormals = Witness::otherBytes();
    };
    upload();
    EXPECT_LE(atNormals, withoutRuns + kLittle);
}

// When a drawable gets its attributes, its commands exist only once, in the drawable.
TEST_F(PeakMemoryTest, DrawDataReleasesTheCommandsThatTheDrawableHas) {
    constexpr quint32 kGroups = 20'000;
    addValues(kPosition, 3, 4);
    addFaces(std::vector<unsigned int>(kGroups, 3));
    const std::vector<unsigned int> indices = cyclic(3 * kGroups, 4);
    mesh.attributes.addIndices(kPosition, indices.size(), indices.data());
    for (quint32 group = 0; group < kGroups; ++group)
        addGroup(QString::number(group), group, 1);
    std::size_t beforeTheDrawable = 0;
    std::size_t atItsAttribute = 0;
    witness.arrayAskedFor = [&] { beforeTheDrawable = Witness::otherBytes(); };
    witness.attributeRegistered = [&] { atItsAttribute = Witness::otherBytes(); };
    upload();
    EXPECT_LE(atItsAttribute, beforeTheDrawable + kLittle);
    static_assert(kGroups * sizeof(DrawElementsIndirectCommand) > 4 * kLittle);
}

// The library's own arrays reserve all available addresses if their final length is unknown.
TEST_F(PeakMemoryTest, TrianglesTakeOnlyTheCapacityTheyNeed) {
    class SampledArrays : public ModelDataArrayAllocator {
    public:
        ModelDataStream* alloc(unsigned int type, quint64 count) override {
            samples.push_back(Testing::bytesInUse());
            return ModelDataArrayAllocator::alloc(type, count);
        }
        std::vector<std::size_t> samples;
    };
    constexpr quint32 kFaces = 60'000;
    // In whole large pages, and another one for the alignment.
    constexpr std::size_t kCapacity = std::size_t{4} << 20;
    static_assert(kFaces * 6 * sizeof(quint32) <= kCapacity / 2 &&
                  kFaces * 9 * sizeof(quint32) > kCapacity / 2);
    for (const bool isUniform : {false, true}) {
        const auto arrays = QSharedPointer<SampledArrays>::create();
        Mesh other(isUniform ? Input::Consumed : Input::Kept, arrays);
        const float square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
        other.attributes.create(kPosition, 3, kFloat, 0, 0);
        other.attributes.addValues(kPosition, 12, square, kFloat);
        const std::vector<unsigned int> indices = cyclic(4 * kFaces, 4);
        other.attributes.addIndices(kPosition, indices.size(), indices.data());
        const std::vector<unsigned int> counts(kFaces, 4);
        other.faces.add(kFaces, counts.data());
        const QString group = QStringLiteral("group");
        other.groups.create(group, InstanceData(), -1, 0);
        other.groups.addFaceRun(group, 0, kFaces);
        other.normalsAttribute = QStringLiteral("normal");
        ProgressMeter meter{{}};
        EXPECT_TRUE(
            Vel::upload(Preparation(other, 0, &other).prepare(kPosition, meter), model, {InstanceData()}));
        // The last three streams: triangles, normals, short indices.
        ASSERT_GT(arrays->samples.size(), 3U);
        const std::size_t* const last = &arrays->samples.back();
        EXPECT_LE(last[-1], last[-2] + kCapacity + kLittle) << isUniform;
    }
    EXPECT_EQ(model.drawableCount(), 2);
}

TEST_F(PeakMemoryTest, MeshReleasesTheGroupsBeforeTheFirstDrawable) {
    addSmallMesh(4);
    addGroup(QStringLiteral("other"), 1, 1, 1);
    std::vector<std::pair<bool, bool>> groups;
    witness.arrayAskedFor = [&] {
        groups.emplace_back(mesh.groups.contains(QStringLiteral("group")),
                            mesh.groups.contains(QStringLiteral("other")));
    };
    upload();
    EXPECT_THAT(groups, ElementsAre(std::pair(false, false), std::pair(false, false)));
}

} // namespace Atelier::Vel
