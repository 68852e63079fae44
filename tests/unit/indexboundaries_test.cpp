#include <array>
#include <cstring>
#include <numeric>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/modelbuilder.h>

#include "support/clientstreams.h"
#include "support/messagelog.h"
#include "support/modelbuilderaccess.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {
namespace {

using Testing::MessageLog;
using Testing::PlainStream;

constexpr unsigned int kFloat = 0x1406;

/// The way in which indices are merged.
enum class Path { KeptLists, OverwrittenLists, MergedCorners };

/// A vertex attribute with the index of each corner; value v has the components v + 1.
struct Attribute {
    QString name;
    int components;
    quint32 valueCount;
    std::vector<quint32> indices;

    std::vector<float> values() const {
        std::vector<float> all;
        for (quint32 value = 0; value < valueCount; ++value)
            all.insert(all.end(), static_cast<std::size_t>(components), static_cast<float>(value + 1));
        return all;
    }
    bool hasValue(std::size_t corner) const {
        return corner < indices.size() && indices[corner] < valueCount;
    }
    float valueOf(std::size_t corner) const {
        return hasValue(corner) ? static_cast<float>(indices[corner] + 1) : 0.0F;
    }
};

/// Many triangles over three attributes; positions come first if corners are merged.
struct Mesh {
    static constexpr quint32 kFaces = 12;
    static constexpr quint32 kCorners = 3 * kFaces;

    // In the order of names, normals come before positions.
    std::array<Attribute, 3> attributes = {
        {{QStringLiteral("p"), 3, 7, {}}, {QStringLiteral("n"), 3, 5, {}}, {QStringLiteral("t"), 2, 3, {}}}};

    Mesh() {
        for (Attribute& attribute : attributes)
            for (quint32 corner = 0; corner < kCorners; ++corner)
                attribute.indices.push_back(corner % (attribute.valueCount - 1));
    }

    void feed(ModelBuilder& builder, Path path) const {
        if (path != Path::KeptLists)
            ModelBuilderAccess::consumeInput(builder);
        for (const Attribute& attribute : attributes) {
            const std::vector<float> values = attribute.values();
            builder.createVertexAttribute(attribute.name, attribute.components, kFloat, 0, 0);
            builder.addValuesToVertexAttribute(attribute.name, values.size(), values.data(), kFloat);
        }
        const std::vector<unsigned int> counts(kFaces, 3);
        builder.addVertexCountsToFaces(kFaces, counts.data());
        const QString group = QStringLiteral("group");
        builder.createMaterialGroup(group, InstanceData(), -1, 0);
        std::vector<unsigned int> faces(kFaces);
        std::iota(faces.begin(), faces.end(), 0U);
        if (path == Path::KeptLists)
            builder.addFacesToMaterialGroup(group, kFaces, faces.data(), QString());
        else
            ModelBuilderAccess(builder).addFaceRun(group, 0, kFaces);
        addCorners(builder, path);
    }

private:
    void addCorners(ModelBuilder& builder, Path path) const {
        std::array<std::vector<unsigned int>, 3> indices;
        std::array<CornerList, 3> lists{};
        for (std::size_t i = 0; i < 3; ++i) {
            indices[i] = attributes[i].indices;
            lists[i] = {&attributes[i].name, indices[i].data()};
        }
        if (path == Path::MergedCorners)
            return ModelBuilderAccess(builder).addCorners(lists.data(), lists.size(), kCorners);
        for (std::size_t i = 0; i < 3; ++i)
            builder.addIndicesToVertexAttribute(attributes[i].name, indices[i].size(), indices[i].data());
    }
};

/// The components of each corner, by way of the index buffer.
std::vector<float> uploadedCorners(const Testing::Recording& recording, std::size_t buffer, int components) {
    std::vector<float> values(static_cast<std::size_t>(recording.uploads.at(buffer).bytes.size()) /
                              sizeof(float));
    std::memcpy(values.data(), recording.uploads[buffer].bytes.constData(), values.size() * sizeof(float));
    std::vector<quint16> indices(static_cast<std::size_t>(recording.uploads.at(0).bytes.size()) /
                                 sizeof(quint16));
    std::memcpy(indices.data(), recording.uploads[0].bytes.constData(), indices.size() * sizeof(quint16));
    std::vector<float> corners;
    for (const quint16 index : indices)
        for (int i = 0; i < components; ++i)
            corners.push_back(
                values.at(static_cast<std::size_t>(index) * static_cast<std::size_t>(components) +
                          static_cast<std::size_t>(i)));
    return corners;
}

QString substitution(quint64 count, const QString& name) {
    if (count == 1)
        return QStringLiteral(
                   "1 corner has no valid index into vertex attribute '%1' and takes a value of zeros")
            .arg(name);
    return QStringLiteral(
               "%1 corners have no valid index into vertex attribute '%2' and take a value of zeros")
        .arg(count)
        .arg(name);
}

class IndexBoundariesTest : public testing::TestWithParam<Path> {
protected:
    /// Uploads a mesh and expects, corner by corner, the values that its indices name.
    void expectUploaded(const Mesh& mesh) const {
        const Testing::RecordingContext context;
        const MessageLog log;
        ModelBuilder builder(GetParam() == Path::OverwrittenLists
                                 ? QSharedPointer<ModelDataStreamAllocator>()
                                 : QSharedPointer<Testing::LyingAllocator<PlainStream>>::create());
        mesh.feed(builder, GetParam());
        GPUModel model;
        builder.upload(&model, InstanceData(), mesh.attributes[0].name, QString(), 0x88E4, 4);
        std::vector<QString> warnings;
        quint64 substituted = 0;
        std::size_t buffer = 1;
        for (const std::size_t i : {std::size_t{1}, std::size_t{0}, std::size_t{2}}) {
            const Attribute& attribute = mesh.attributes[i];
            std::vector<float> expected;
            quint64 withoutValue = 0;
            for (std::size_t corner = 0; corner < Mesh::kCorners; ++corner) {
                withoutValue += attribute.hasValue(corner) ? 0 : 1;
                expected.insert(expected.end(), static_cast<std::size_t>(attribute.components),
                                attribute.valueOf(corner));
            }
            if (withoutValue != 0)
                warnings.push_back(substitution(withoutValue, attribute.name));
            substituted += withoutValue;
            EXPECT_EQ(uploadedCorners(context.recording(), buffer++, attribute.components), expected)
                << attribute.name.toStdString();
        }
        EXPECT_EQ(log.texts(QtWarningMsg), warnings);
        EXPECT_EQ(builder.statistics().substitutedCorners, substituted);
    }
};

TEST_P(IndexBoundariesTest, LastValueExistsAndLaterValuesAreZeros) {
    for (std::size_t i = 0; i < 3; ++i)
        for (const std::size_t corner : {std::size_t{0}, std::size_t{35}}) {
            const quint32 count = Mesh().attributes[i].valueCount;
            for (const quint32 index : {count - 1, count, count + 1, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
                SCOPED_TRACE(testing::Message()
                             << "attribute " << i << ", index " << index << " of " << count);
                Mesh mesh;
                mesh.attributes[i].indices[corner] = index;
                expectUploaded(mesh);
            }
        }
}

TEST_P(IndexBoundariesTest, EachAttributeCountsItsOwn) {
    Mesh mesh;
    mesh.attributes[1].indices[4] = 5;
    mesh.attributes[1].indices[20] = 6;
    mesh.attributes[2].indices[4] = 3;
    mesh.attributes[2].indices[5] = 2;
    mesh.attributes[2].indices[6] = 4;
    mesh.attributes[2].indices[7] = 4;
    expectUploaded(mesh);
    mesh.attributes[0].indices[9] = 7;
    expectUploaded(mesh);
}

INSTANTIATE_TEST_SUITE_P(Paths, IndexBoundariesTest,
                         testing::Values(Path::KeptLists, Path::OverwrittenLists, Path::MergedCorners));

class IndexListLengthTest : public IndexBoundariesTest {};

TEST_P(IndexListLengthTest, ListsMayBeShorterOrLongerThanTheCorners) {
    const std::size_t lengths[] = {Mesh::kCorners - 1, Mesh::kCorners, Mesh::kCorners + 1};
    for (const std::size_t p : lengths)
        for (const std::size_t n : lengths)
            for (const std::size_t t : lengths) {
                SCOPED_TRACE(testing::Message() << p << ' ' << n << ' ' << t);
                Mesh mesh;
                mesh.attributes[0].indices.resize(p, 2);
                mesh.attributes[1].indices.resize(n, 1);
                mesh.attributes[2].indices.resize(t, 0);
                expectUploaded(mesh);
            }
}

INSTANTIATE_TEST_SUITE_P(Paths, IndexListLengthTest,
                         testing::Values(Path::KeptLists, Path::OverwrittenLists));

} // namespace
} // namespace Atelier::Vel
