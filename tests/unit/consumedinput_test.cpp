#include "support/modelbuilderaccess.h"

#include <algorithm>
#include <numeric>
#include <random>

#include <gmock/gmock.h>

#include "support/clientstreams.h"
#include "uploaded.h"

namespace Atelier::Vel {
namespace {

using Testing::Uploaded;

constexpr unsigned int kFloat = 0x1406;

/// Faces of consecutive numbers, in a group.
struct Run {
    QString group;
    unsigned int first;
    unsigned int count;
};

struct Attribute {
    QString name;
    int components;
    std::vector<float> values;
    std::vector<unsigned int> indices;
};

/// The part that is added at a time: all corners of some faces.
struct Part {
    std::size_t firstFace;
    std::size_t faces;
    std::size_t firstCorner;
    std::size_t corners;
};

struct Mesh {
    std::vector<Attribute> attributes; ///< positions first
    std::vector<unsigned int> counts;
    std::vector<QString> groups;
    std::vector<Run> runs;
    std::vector<Part> parts;
    bool hasNormals = false;
};

class RandomMesh {
public:
    explicit RandomMesh(unsigned int seed) : _random(seed) {}

    /// Faces before `others` have equal numbers of corners; later faces have any number.
    Mesh make(unsigned int corners, std::size_t faceCount, std::size_t others) {
        Mesh mesh;
        for (std::size_t face = 0; face < faceCount; ++face)
            mesh.counts.push_back(face < others ? corners : below(6));
        const std::size_t cornerCount =
            std::accumulate(mesh.counts.begin(), mesh.counts.end(), std::size_t{0});
        const QString names[] = {"position", "normal", "uv"};
        const std::size_t attributeCount = 1 + below(3);
        for (std::size_t i = 0; i < attributeCount; ++i)
            mesh.attributes.push_back(attribute(names[i], i == 2 ? 2 : 3, cornerCount));
        addGroups(mesh);
        addParts(mesh);
        mesh.hasNormals = attributeCount == 1;
        return mesh;
    }

private:
    unsigned int below(std::size_t bound) { return static_cast<unsigned int>(_random() % bound); }

    Attribute attribute(const QString& name, int components, std::size_t cornerCount) {
        Attribute attribute{name, components, {}, {}};
        // Few values, which repeat, or many.
        const unsigned int valueCount = 4 + (below(2) == 0 ? below(20) : below(2 * cornerCount + 1));
        for (std::size_t i = 0; i < valueCount * static_cast<std::size_t>(components); ++i)
            attribute.values.push_back(static_cast<float>(below(5)));
        const bool hasInvalid = below(3) == 0;
        for (std::size_t corner = 0; corner < cornerCount; ++corner)
            attribute.indices.push_back(below(valueCount + (hasInvalid ? 2 : 0)));
        return attribute;
    }
    void addGroups(Mesh& mesh) {
        const auto faces = static_cast<unsigned int>(mesh.counts.size());
        for (const char* const name : {"a", "b", "c"})
            mesh.groups.push_back(QString::fromLatin1(name));
        const bool isInOrder = below(2) == 0;
        for (unsigned int first = 0; first < faces;) {
            const unsigned int count = 1 + below(faces - first);
            const std::size_t group = isInOrder ? std::min<std::size_t>(2, mesh.runs.size()) : below(3);
            if (below(5) != 0)
                mesh.runs.push_back({mesh.groups[group], first, count});
            first += count;
        }
    }
    void addParts(Mesh& mesh) {
        std::size_t corner = 0;
        for (std::size_t face = 0; face < mesh.counts.size();) {
            const std::size_t count = 1 + below(mesh.counts.size() - face);
            const auto first = mesh.counts.begin() + static_cast<std::ptrdiff_t>(face);
            const std::size_t corners =
                std::accumulate(first, first + static_cast<std::ptrdiff_t>(count), std::size_t{0});
            mesh.parts.push_back({face, count, corner, corners});
            face += count;
            corner += corners;
        }
    }

    std::mt19937 _random;
};

void addBegin(ModelBuilder& builder, const Mesh& mesh) {
    for (const QString& group : mesh.groups)
        builder.createMaterialGroup(group, InstanceData(group), -1, 0);
    for (const Attribute& attribute : mesh.attributes) {
        builder.createVertexAttribute(attribute.name, attribute.components, kFloat, 0, 0);
        builder.addValuesToVertexAttribute(attribute.name, attribute.values.size(), attribute.values.data(),
                                           kFloat);
    }
    if (mesh.hasNormals)
        builder.generateNormals(QStringLiteral("normal"));
}

void addLists(ModelBuilder& builder, const Mesh& mesh, const Part& part) {
    for (const Attribute& attribute : mesh.attributes)
        builder.addIndicesToVertexAttribute(attribute.name, part.corners,
                                            attribute.indices.data() + part.firstCorner);
}

/// As a client does.
Uploaded uploadOrdinarily(const Mesh& mesh) {
    ModelBuilder builder;
    addBegin(builder, mesh);
    builder.addVertexCountsToFaces(mesh.counts.size(), mesh.counts.data());
    for (const Run& run : mesh.runs) {
        std::vector<unsigned int> faces(run.count);
        std::iota(faces.begin(), faces.end(), run.first);
        builder.addFacesToMaterialGroup(run.group, run.count, faces.data(), QString());
    }
    for (const Part& part : mesh.parts)
        addLists(builder, mesh, part);
    return Testing::upload(builder, mesh.attributes[0].name);
}

/// Part by part, in runs.
Uploaded uploadConsumed(const Mesh& mesh, bool addsCornersAtOnce,
                        const QSharedPointer<ModelDataStreamAllocator>& allocator) {
    ModelBuilder builder;
    ModelBuilderAccess::consumeInput(builder, allocator);
    const ModelBuilderAccess access(builder);
    addBegin(builder, mesh);
    for (const Run& run : mesh.runs)
        EXPECT_TRUE(access.addFaceRun(run.group, run.first, run.count));
    for (const Part& part : mesh.parts) {
        builder.addVertexCountsToFaces(part.faces, mesh.counts.data() + part.firstFace);
        std::vector<std::vector<unsigned int>> indices;
        std::vector<CornerList> lists;
        for (const Attribute& attribute : mesh.attributes) {
            const auto first = attribute.indices.begin() + static_cast<std::ptrdiff_t>(part.firstCorner);
            indices.emplace_back(first, first + static_cast<std::ptrdiff_t>(part.corners));
        }
        for (std::size_t i = 0; i < indices.size(); ++i)
            lists.push_back({&mesh.attributes[i].name, indices[i].data()});
        if (addsCornersAtOnce)
            access.addCorners(lists.data(), lists.size(), static_cast<quint32>(part.corners));
        else
            addLists(builder, mesh, part);
    }
    return Testing::upload(builder, mesh.attributes[0].name);
}

void expectTheSame(const Mesh& mesh) {
    const Uploaded expected = uploadOrdinarily(mesh);
    for (const bool addsCornersAtOnce : {false, true}) {
        ASSERT_EQ(uploadConsumed(mesh, addsCornersAtOnce, {}), expected) << addsCornersAtOnce;
        ASSERT_EQ(uploadConsumed(mesh, addsCornersAtOnce, QSharedPointer<Testing::PlainAllocator>::create()),
                  expected)
            << addsCornersAtOnce;
    }
}

TEST(ConsumedInputTest, GivesTheSameAsAnOrdinaryUpload) {
    for (unsigned int seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        RandomMesh random(seed);
        const std::size_t faces = 1 + seed % 37;
        ASSERT_NO_FATAL_FAILURE(
            expectTheSame(random.make(seed % 6, faces, seed % 4 == 0 ? seed % faces : faces)));
    }
}

// Face counts and corners are passed on in blocks.
TEST(ConsumedInputTest, ManyFacesGiveTheSameAsAnOrdinaryUpload) {
    for (unsigned int seed = 0; seed < 12; ++seed) {
        SCOPED_TRACE(seed);
        RandomMesh random(seed + 1000);
        const std::size_t others = seed % 3 == 0 ? 4095 + seed / 3 : 9000;
        ASSERT_NO_FATAL_FAILURE(expectTheSame(random.make(1 + seed % 4, 9000, others)));
    }
}

} // namespace
} // namespace Atelier::Vel
