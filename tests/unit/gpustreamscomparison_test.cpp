#include <random>

#include <gmock/gmock.h>

#include <velmodel/modelbuilder.h>

#include "literal/literalbuilder.h"
#include "support/messagelog.h"
#include "support/modelbuilderaccess.h"
#include "support/scale.h"
#include "support/streamcontents.h"

namespace Atelier::Vel {
namespace {

using Testing::bytes;
using Testing::elements;
using Testing::MessageLog;

const unsigned int kTypes[] = {0x1400, 0x1401, 0x1402, 0x1403, 0x1404, 0x1405, 0x1406, 0x140A, 0x140B};

/// The composition of a random mesh; the odds are in percent.
struct Recipe {
    int attributes = 3;
    quint32 corners = 300;
    int values = 40;
    int distinctValues = 20; ///< fewer than values: some values have the same bytes
    int ownIndexOdds = 0;    ///< corners with values that no other corner uses
    int invalidIndexOdds = 0;
    int shortListOdds = 0;
};

class RandomMesh {
public:
    explicit RandomMesh(unsigned int seed) : _random(seed) {}

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(_random); }
    bool happens(int odds) { return below(100) < odds; }

    Literal::Mesh mesh(const Recipe& recipe) {
        Literal::Mesh mesh;
        for (quint32 left = recipe.corners; left != 0;) {
            const quint32 count = qMin(left, static_cast<quint32>(below(7)));
            mesh.verticesPerFace.push_back(count);
            left -= count;
        }
        for (int i = 0; i < recipe.attributes; ++i) {
            const QString name = QStringLiteral("attribute %1").arg((i * 5) % 7);
            const unsigned int type = kTypes[below(9)];
            mesh.attributes.insert(name, attribute(recipe, type));
            types.insert(name, type);
        }
        return mesh;
    }

    QMap<QString, unsigned int> types;

private:
    Literal::Attribute attribute(const Recipe& recipe, unsigned int type) {
        Literal::Attribute attribute;
        attribute.elementSize = static_cast<int>(ModelDataStream::typeSize(type));
        attribute.components = 1 + below(4);
        std::vector<QByteArray> values;
        values.reserve(static_cast<std::size_t>(recipe.distinctValues));
        for (int i = 0; i < recipe.distinctValues; ++i)
            values.push_back(value(attribute.stride(), type));
        for (int i = 0; i < recipe.values; ++i)
            attribute.values.append(values[static_cast<std::size_t>(below(recipe.distinctValues))]);
        // An unfinished last value does not exist.
        if (happens(20) && attribute.components > 1)
            attribute.values.append(QByteArray(attribute.elementSize, '\x7F'));
        quint32 listed = recipe.corners;
        if (happens(recipe.shortListOdds))
            listed = static_cast<quint32>(1 + below(static_cast<int>(recipe.corners)));
        for (quint32 corner = 0; corner < listed; ++corner)
            attribute.indices.push_back(index(recipe, corner));
        return attribute;
    }

    quint32 index(const Recipe& recipe, quint32 corner) {
        if (happens(recipe.invalidIndexOdds)) {
            const quint32 invalid[] = {0x7FFFFFFF, 0xFFFFFFFF, static_cast<quint32>(recipe.values),
                                       static_cast<quint32>(recipe.values) + 3, 0x80000000};
            return invalid[below(5)];
        }
        if (happens(recipe.ownIndexOdds))
            return corner % static_cast<quint32>(recipe.values);
        return static_cast<quint32>(below(recipe.values));
    }

    QByteArray value(int stride, unsigned int type) {
        if (type == 0x1406) {
            // Different bytes, with equal numbers or with NaN.
            const quint32 patterns[] = {0x00000000, 0x80000000, 0x7FC00000, 0x7FC00001,
                                        0xFFC00000, 0x7F800001, 0x3F800000, 0x00000001};
            QByteArray bytes;
            for (int i = 0; i < stride / 4; ++i)
                bytes.append(reinterpret_cast<const char*>(&patterns[below(8)]), 4);
            return bytes;
        }
        QByteArray bytes;
        for (int i = 0; i < stride; ++i)
            bytes.append(static_cast<char>(below(4)));
        return bytes;
    }

    std::mt19937 _random;
};

void feed(ModelBuilder& builder, const Literal::Mesh& mesh, const QMap<QString, unsigned int>& types) {
    builder.addVertexCountsToFaces(mesh.verticesPerFace.size(), mesh.verticesPerFace.data());
    for (auto it = mesh.attributes.begin(); it != mesh.attributes.end(); ++it) {
        builder.createVertexAttribute(it.key(), it->components, types[it.key()], 0, 0);
        builder.addValuesToVertexAttribute(it.key(),
                                           static_cast<quint64>(it->values.size() / it->elementSize),
                                           it->values.constData(), types[it.key()]);
        builder.addIndicesToVertexAttribute(it.key(), it->indices.size(), it->indices.data());
    }
}

void expectSameStreams(ModelBuilder& builder, const Literal::Mesh& mesh) {
    const ModelBuilderAccess access(builder);
    for (auto it = mesh.attributes.begin(); it != mesh.attributes.end(); ++it) {
        const auto& streams = access.attributes()[it.key()].streams;
        ASSERT_EQ(elements<quint32>(streams[kGPUIndices]), mesh.gpuIndices);
        ASSERT_EQ(bytes(streams[kGPUValues]), it->gpuValues);
        ASSERT_EQ(bytes(streams[kValues]), it->values) << "the input changed";
        ASSERT_EQ(elements<quint32>(streams[kIndices]), it->indices);
    }
}

QString summary(const ModelBuilder& builder, const Literal::Mesh& mesh) {
    const int percent = mesh.vertexCount == 0 ? 0 : mesh.newVertexCount * 100 / mesh.vertexCount;
    return QString::asprintf("%p Vertices Map %8d -> %8d d %8d (%3d %%) %d",
                             static_cast<const void*>(&builder), mesh.vertexCount, mesh.newVertexCount,
                             mesh.vertexCount - mesh.newVertexCount, percent, 4);
}

void compare(const Recipe& recipe, unsigned int seed) {
    for (const bool mergeCorners : {false, true}) {
        SCOPED_TRACE(QStringLiteral("seed %1").arg(seed).toStdString());
        RandomMesh random(seed);
        Literal::Mesh mesh = random.mesh(recipe);
        ModelBuilder builder;
        feed(builder, mesh, random.types);
        MessageLog log;
        ModelBuilderAccess(builder).buildGPUFriendlyStreams(mergeCorners);
        Literal::buildGPUFriendlyStreams(mesh, mergeCorners);
        expectSameStreams(builder, mesh);
        ASSERT_THAT(log.texts(QtDebugMsg), testing::ElementsAre(summary(builder, mesh)));

        // The second pass by itself changes nothing.
        log.clear();
        ModelBuilderAccess(builder).optimizeGPUStreams();
        mesh.vertexCount = mesh.newVertexCount;
        expectSameStreams(builder, mesh);
        ASSERT_THAT(log.texts(QtDebugMsg), testing::ElementsAre(summary(builder, mesh)));
    }
}

TEST(GPUStreamsComparisonTest, AnyAttributesMergeAsDefined) {
    std::mt19937 random(1);
    for (unsigned int seed = 0; seed < static_cast<unsigned int>(Testing::scaled(400)); ++seed) {
        Recipe recipe;
        recipe.attributes = 1 + static_cast<int>(random() % 7);
        recipe.corners = static_cast<quint32>(random() % 500);
        recipe.values = 1 + static_cast<int>(random() % 200);
        recipe.distinctValues = 1 + static_cast<int>(random() % 200);
        recipe.ownIndexOdds = seed % 3 == 0 ? 95 : 0;
        recipe.invalidIndexOdds = seed % 4 == 0 ? 10 : 0;
        recipe.shortListOdds = seed % 5 == 0 ? 50 : 0;
        ASSERT_NO_FATAL_FAILURE(compare(recipe, seed));
    }
}

TEST(GPUStreamsComparisonTest, MeshesOfManyBlocksMergeAsDefined) {
    std::mt19937 random(2);
    for (unsigned int seed = 0; seed < static_cast<unsigned int>(Testing::scaled(12)); ++seed) {
        Recipe recipe;
        recipe.attributes = 1 + static_cast<int>(seed % 6);
        recipe.corners = static_cast<quint32>(20000 + random() % 5000);
        recipe.values = 100 + static_cast<int>(random() % 9000);
        recipe.distinctValues = seed % 2 == 0 ? 50 : 20000;
        recipe.ownIndexOdds = seed % 3 == 0 ? 98 : 0;
        recipe.invalidIndexOdds = seed % 4 == 0 ? 1 : 0;
        ASSERT_NO_FATAL_FAILURE(compare(recipe, seed));
    }
}

TEST(GPUStreamsComparisonTest, CornersThatShareNothingMergeAsDefined) {
    Recipe recipe;
    recipe.corners = 30000;
    recipe.values = 30000;
    recipe.distinctValues = 30000;
    recipe.ownIndexOdds = 100;
    ASSERT_NO_FATAL_FAILURE(compare(recipe, 1));
    recipe.distinctValues = 5;
    ASSERT_NO_FATAL_FAILURE(compare(recipe, 2));
}

TEST(GPUStreamsComparisonTest, FewCornersOfManyValuesMergeAsDefined) {
    Recipe recipe;
    recipe.corners = 60;
    recipe.values = 5000;
    recipe.distinctValues = 8;
    for (unsigned int seed = 0; seed < 20; ++seed)
        ASSERT_NO_FATAL_FAILURE(compare(recipe, seed));
}

TEST(GPUStreamsComparisonTest, OneValueWithVeryManyTuplesMergesAsDefined) {
    Literal::Mesh mesh;
    QMap<QString, unsigned int> types;
    mesh.verticesPerFace.assign(1, 40000);
    // Each attribute has 300 values, and nearly all corners use value 0 of the one that has the most.
    for (int i = 0; i < 3; ++i) {
        Literal::Attribute attribute;
        const QString name = QStringLiteral("attribute %1").arg(i);
        const quint32 valueCount = i == 0 ? 301 : 300;
        for (quint32 value = 0; value < valueCount * 3; ++value)
            attribute.values.append(reinterpret_cast<const char*>(&value), 4);
        for (quint32 corner = 0; corner < 40000; ++corner) {
            const quint32 pair = corner * 7919 % 40000;
            attribute.indices.push_back(i == 0 ? corner / 39990 : i == 1 ? pair % 300 : pair / 300);
        }
        mesh.attributes.insert(name, attribute);
        types.insert(name, 0x1405);
    }
    ModelBuilder builder;
    feed(builder, mesh, types);
    const MessageLog log;
    ModelBuilderAccess(builder).buildGPUFriendlyStreams(true);
    Literal::buildGPUFriendlyStreams(mesh, true);
    expectSameStreams(builder, mesh);
    EXPECT_EQ(mesh.newVertexCount, 40000);
    EXPECT_THAT(log.texts(QtDebugMsg), testing::ElementsAre(summary(builder, mesh)));
}

} // namespace
} // namespace Atelier::Vel
