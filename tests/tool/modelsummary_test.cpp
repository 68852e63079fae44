#include "modelsummary.h"

#include <numeric>

#include <gmock/gmock.h>

#include <velmodel/modelbuilder.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr unsigned int kUnsignedByte = 0x1401;
constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kVertices = 12;

InstanceData metal() {
    constexpr float kOpacity = 0.25F;
    InstanceData material(QStringLiteral("OBJMaterial"));
    material.set(QStringLiteral("d"), &kOpacity, sizeof kOpacity);
    material.setTexture(QStringLiteral("map_Kd"), QStringLiteral("/maps/metal.png"));
    return material;
}

void addGroup(ModelBuilder& builder, const char* name, const InstanceData& material, quint64 drawKey,
              const std::vector<unsigned int>& faces) {
    builder.createMaterialGroup(QString::fromLatin1(name), material, -1, drawKey);
    builder.addFacesToMaterialGroup(QString::fromLatin1(name), faces.size(), faces.data(), QString());
}

template<typename T>
void addAttribute(ModelBuilder& builder, const char* name, int components, unsigned int type, T first) {
    std::vector<T> values(kVertices * static_cast<std::size_t>(components));
    std::iota(values.begin(), values.end(), first);
    std::vector<unsigned int> indices(kVertices);
    std::iota(indices.begin(), indices.end(), 0U);
    builder.createVertexAttribute(QString::fromLatin1(name), components, type, 0, 0);
    builder.addValuesToVertexAttribute(QString::fromLatin1(name), values.size(), values.data(), type);
    builder.addIndicesToVertexAttribute(QString::fromLatin1(name), kVertices, indices.data());
}

/// Four triangles over twelve vertices, in three commands of two drawables.
DrawData mixedData() {
    ModelBuilder builder({}, 0xF);
    addAttribute(builder, "va_Vertex", 3, kFloat, -4.0F);
    addAttribute(builder, "aa_Weight", 4, kUnsignedByte, static_cast<unsigned char>(100));
    const unsigned int corners[] = {3, 3, 3, 3};
    builder.addVertexCountsToFaces(4, corners);
    addGroup(builder, "metal", metal(), 1, {0});
    addGroup(builder, "paint", InstanceData(QStringLiteral("OBJMaterial")), 1, {1, 2});
    addGroup(builder, "wire", InstanceData(), 2, {3});
    return builder.prepare(QStringLiteral("va_Vertex"));
}

ModelSummary summaryOf(const DrawData& data) {
    LoadedData loaded;
    loaded.data = data;
    loaded.report.bytesRead = 5000000;
    loaded.report.statistics.triangles = 4;
    loaded.seconds = 0.25;
    return summarize(QStringLiteral("mixed.obj"), loaded);
}

TEST(ModelSummaryTest, AddsUpAllDrawables) {
    const ModelSummary summary = summaryOf(mixedData());
    EXPECT_EQ(summary.file, "mixed.obj");
    EXPECT_EQ(summary.report.bytesRead, 5000000);
    EXPECT_EQ(summary.draws, 2);
    EXPECT_EQ(summary.commands, 3);
    // Indices, two attributes, three commands, two materials with a plan and three instances.
    EXPECT_EQ(summary.gpuBytes, 24U + 144 + 48 + 3 * 20 + 2 * 64 + 3 * 128);
    EXPECT_EQ(summary.notes, QStringList());
}

TEST(ModelSummaryTest, BoundsEncloseAllCommands) {
    const DrawData::Box bounds = summaryOf(mixedData()).bounds;
    EXPECT_TRUE(bounds.isValid);
    EXPECT_EQ(bounds.minimum, QVector3D(-4, -3, -2));
    EXPECT_EQ(bounds.maximum, QVector3D(29, 30, 31));
}

TEST(ModelSummaryTest, CacheStatisticsCoverAllTriangles) {
    const auto cache = summaryOf(mixedData()).cache;
    ASSERT_EQ(cache.has_value(), DrawData::canOptimise());
    if (cache) {
        EXPECT_EQ(cache->acmr, 3);
        EXPECT_EQ(cache->atvr, 1);
    }
}

TEST(ModelSummaryTest, AttributesAreSortedAndNamedOnce) {
    const ModelSummary summary = summaryOf(mixedData());
    ASSERT_EQ(summary.attributes.size(), 2);
    EXPECT_EQ(summary.attributes[0].name, "aa_Weight");
    EXPECT_EQ(summary.attributes[0].components, 4);
    EXPECT_EQ(summary.attributes[0].type, "GL_UNSIGNED_BYTE");
    EXPECT_EQ(summary.attributes[1].name, "va_Vertex");
    EXPECT_EQ(summary.attributes[1].components, 3);
    EXPECT_EQ(summary.attributes[1].type, "GL_FLOAT");
}

TEST(ModelSummaryTest, MaterialsAreTakenFromTheCommands) {
    const ModelSummary summary = summaryOf(mixedData());
    ASSERT_EQ(summary.materials.size(), 3);
    EXPECT_EQ(summary.materials[0].name, "metal");
    EXPECT_EQ(summary.materials[0].triangles, 1U);
    ASSERT_EQ(summary.materials[0].textures.size(), 1);
    EXPECT_EQ(summary.materials[0].textures[0].map, "map_Kd");
    EXPECT_EQ(summary.materials[0].textures[0].path, "/maps/metal.png");
    EXPECT_EQ(summary.materials[0].textures[0].status, "missing");
    EXPECT_FALSE(summary.materials[0].textures[0].size.isValid());
    EXPECT_EQ(summary.materials[1].name, "paint");
    EXPECT_EQ(summary.materials[1].triangles, 2U);
    EXPECT_TRUE(summary.materials[1].textures.isEmpty());
    EXPECT_EQ(summary.materials[2].name, "wire");
    EXPECT_EQ(summary.materials[2].triangles, 1U);
    EXPECT_TRUE(summary.materials[2].textures.isEmpty());
}

TEST(ModelSummaryTest, EmptyModelHasAnEmptySummary) {
    const ModelSummary summary = summaryOf(DrawData());
    EXPECT_EQ(summary.draws, 0);
    EXPECT_EQ(summary.commands, 0);
    EXPECT_EQ(summary.gpuBytes, 0U);
    EXPECT_TRUE(summary.attributes.isEmpty());
    EXPECT_FALSE(summary.bounds.isValid);
}

TEST(ModelSummaryTest, SpeedIsTenToTheSixthBytesPerSecond) {
    ModelSummary summary = summaryOf(DrawData());
    EXPECT_DOUBLE_EQ(summary.megabytesPerSecond(), 20);
    summary.seconds = 0;
    EXPECT_EQ(summary.megabytesPerSecond(), 0);
}

} // namespace

} // namespace Atelier::Vel::Tool
