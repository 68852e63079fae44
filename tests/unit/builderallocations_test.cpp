#include <vector>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/modelbuilder.h>

#include "allocationcount.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"

namespace Atelier::Vel {
namespace {

constexpr unsigned int kFloat = 0x1406;

/// The allocations of uploading `faceCount` triangles, quadrilaterals and pentagons.
std::size_t allocationsOfUpload(unsigned int faceCount) {
    ModelBuilder builder;
    const QString position = QStringLiteral("position");
    const QString other = QStringLiteral("other");
    const QString group = QStringLiteral("group");
    std::vector<float> values;
    std::vector<unsigned int> corners;
    std::vector<unsigned int> counts;
    std::vector<unsigned int> faces;
    for (unsigned int face = 0; face < faceCount; ++face) {
        const float x = static_cast<float>(face % 1000);
        const unsigned int row = face / 1000;
        const float y = static_cast<float>(row);
        const float polygon[] = {x, y, 0, x + 1, y, 0, x + 1.5F, y + 0.5F, 0, x + 1, y + 1, 0, x, y + 1, 0};
        counts.push_back(3 + face % 3);
        faces.push_back(face);
        for (unsigned int corner = 0; corner < counts.back(); ++corner)
            corners.push_back(face * 5 + corner);
        values.insert(values.end(), std::begin(polygon), std::end(polygon));
    }
    for (const QString& name : {position, other}) {
        builder.createVertexAttribute(name, 3, kFloat, 0, 0);
        builder.addValuesToVertexAttribute(name, values.size(), values.data(), kFloat);
        builder.addIndicesToVertexAttribute(name, corners.size(), corners.data());
    }
    builder.addVertexCountsToFaces(counts.size(), counts.data());
    builder.createMaterialGroup(group, InstanceData(), -1, 0);
    builder.addFacesToMaterialGroup(group, faces.size(), faces.data(), QString());
    builder.generateNormals(QStringLiteral("normal"));
    const Testing::RecordingContext context;
    const Testing::MessageLog log;
    GPUModel model;
    const std::size_t before = Testing::allocationCount();
    builder.upload(&model, InstanceData(), position, QString(), 0x88E4, 4);
    const std::size_t after = Testing::allocationCount();
    EXPECT_EQ(model.drawableCount(), 1);
    return after - before;
}

TEST(BuilderAllocationsTest, UploadAllocatesNothingPerVertexOrFace) {
    if (!Testing::countsAllocations())
        GTEST_SKIP() << "allocations cannot be counted here";
    allocationsOfUpload(10);
    const std::size_t few = allocationsOfUpload(100);
    EXPECT_GT(few, 0U) << "nothing was counted";
    EXPECT_LE(allocationsOfUpload(100000), few + 40);
}

} // namespace
} // namespace Atelier::Vel
