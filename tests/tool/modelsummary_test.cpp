#include "modelsummary.h"

#include <gmock/gmock.h>

#include "mixedmodel.h"
#include "support/glfixture.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

class ModelSummaryTest : public Testing::GLFixture {
protected:
    static ModelSummary summaryOf(std::unique_ptr<GPUModel> model) {
        LoadedModel loaded;
        loaded.model = std::move(model);
        loaded.report.bytesRead = 5000000;
        loaded.report.triangles = 3;
        loaded.seconds = 0.25;
        return summarize(QStringLiteral("mixed.obj"), loaded);
    }
};

TEST_F(ModelSummaryTest, AddsUpAllDrawables) {
    const ModelSummary summary = summaryOf(Testing::mixedModel());
    EXPECT_EQ(summary.file, "mixed.obj");
    EXPECT_EQ(summary.report.bytesRead, 5000000);
    EXPECT_EQ(summary.draws, 2);
    EXPECT_EQ(summary.commands, 4);
    // Indices, two attributes, four commands, two materials and an instance.
    EXPECT_EQ(summary.gpuBytes, 24U + 144 + 48 + 4 * 20 + 2 * 64 + 128);
    EXPECT_EQ(summary.notes, QStringList());
    EXPECT_TRUE(summary.bounds.isValid);
}

TEST_F(ModelSummaryTest, AttributesAreSortedAndNamedOnce) {
    const ModelSummary summary = summaryOf(Testing::mixedModel());
    ASSERT_EQ(summary.attributes.size(), 2);
    EXPECT_EQ(summary.attributes[0].name, "aa_Weight");
    EXPECT_EQ(summary.attributes[0].components, 4);
    EXPECT_EQ(summary.attributes[0].type, "GL_UNSIGNED_BYTE");
    EXPECT_EQ(summary.attributes[1].name, "va_Vertex");
    EXPECT_EQ(summary.attributes[1].components, 3);
    EXPECT_EQ(summary.attributes[1].type, "GL_FLOAT");
}

TEST_F(ModelSummaryTest, MaterialsAreThoseOfTheCommands) {
    const ModelSummary summary = summaryOf(Testing::mixedModel());
    ASSERT_EQ(summary.materials.size(), 4);
    EXPECT_EQ(summary.materials[0].name, "metal");
    EXPECT_EQ(summary.materials[0].triangles, 1U);
    ASSERT_EQ(summary.materials[0].textures.size(), 1);
    EXPECT_EQ(summary.materials[0].textures[0].map, "map_Kd");
    EXPECT_EQ(summary.materials[0].textures[0].path, "/maps/metal.png");
    EXPECT_EQ(summary.materials[0].textures[0].status, "missing");
    EXPECT_FALSE(summary.materials[0].textures[0].size.isValid());
    EXPECT_EQ(summary.materials[1].name, "paint");
    EXPECT_EQ(summary.materials[1].triangles, 2U);
    EXPECT_TRUE(summary.materials[1].textures.isEmpty()) << "a texture without a file";
    EXPECT_EQ(summary.materials[2].triangles, 0U);
    EXPECT_TRUE(summary.materials[2].textures.isEmpty()) << "a command without a material";
    EXPECT_TRUE(summary.materials[3].name.isEmpty());
}

TEST_F(ModelSummaryTest, EmptyModelHasNothingToSumUp) {
    const ModelSummary summary = summaryOf(std::make_unique<GPUModel>());
    EXPECT_EQ(summary.draws, 0);
    EXPECT_EQ(summary.commands, 0);
    EXPECT_EQ(summary.gpuBytes, 0U);
    EXPECT_TRUE(summary.attributes.isEmpty());
    EXPECT_FALSE(summary.bounds.isValid);
}

TEST_F(ModelSummaryTest, SpeedIsTenToTheSixthBytesPerSecond) {
    ModelSummary summary = summaryOf(std::make_unique<GPUModel>());
    EXPECT_DOUBLE_EQ(summary.megabytesPerSecond(), 20);
    summary.seconds = 0;
    EXPECT_EQ(summary.megabytesPerSecond(), 0);
}

} // namespace

} // namespace Atelier::Vel::Tool
