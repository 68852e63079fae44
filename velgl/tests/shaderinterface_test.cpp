#include <velgl/shaderinterface.h>

#include <gmock/gmock.h>

#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

namespace Atelier::Vel::Testing {

namespace {

using DataType = InstanceDataPlan::DataType;

class ShaderInterfaceTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        auto* plan = new InstanceDataPlan(QStringLiteral("ShaderPlan"));
        plan->addMember(DataType::Vec3, QStringLiteral("Kd"));
        plan->addMember(DataType::Texture, QStringLiteral("map_Kd"));
        plan->addMember(DataType::Texture, QStringLiteral("map_Ks"));
        InstanceDataRegistry::Instance().registerPlan(plan);
    }
};

} // namespace

TEST_F(ShaderInterfaceTest, FragmentStageGetsItemsAndTextures) {
    EXPECT_EQ(shaderInterface(ShaderStage::Fragment, {QStringLiteral("ShaderPlan"), QString()}),
              "struct VelglMaterial {\n"
              "    vec3 Kd;\n"
              "};\n"
              "layout(std430, binding = 0) readonly buffer VelglMaterials { VelglMaterial items[]; } "
              "velgl_Materials;\n"
              "VelglMaterial velglMaterial(int command) { return velgl_Materials.items[command]; }\n"
              "uniform int velgl_textures;\n"
              "layout(binding = 0) uniform sampler2D velgl_map_Kd;\n"
              "bool velglHas_map_Kd() { return (velgl_textures & (1 << 0)) != 0; }\n"
              "layout(binding = 1) uniform sampler2D velgl_map_Ks;\n"
              "bool velglHas_map_Ks() { return (velgl_textures & (1 << 1)) != 0; }\n");
}

TEST_F(ShaderInterfaceTest, OnlyTheVertexStageKnowsTheCommand) {
    EXPECT_EQ(
        shaderInterface(ShaderStage::Vertex, {QString(), QStringLiteral("ShaderPlan")}),
        "#ifdef GL_ARB_shader_draw_parameters\n"
        "#extension GL_ARB_shader_draw_parameters : enable\n"
        "#endif\n"
        "uniform int velgl_firstCommand;\n"
        "#ifdef GL_ARB_shader_draw_parameters\n"
        "int velglCommand() { return velgl_firstCommand < 0 ? gl_BaseInstanceARB : velgl_firstCommand "
        "+ gl_DrawIDARB; }\n"
        "#else\n"
        "int velglCommand() { return velgl_firstCommand; }\n"
        "#endif\n"
        "uniform int velgl_lastInstance;\n"
        "int velglInstanceNumber() {\n"
        "    return velglCommand() * (velgl_lastInstance + 1) + min(gl_InstanceID, velgl_lastInstance);\n"
        "}\n"
        "struct VelglInstance {\n"
        "    vec3 Kd;\n"
        "};\n"
        "layout(std430, binding = 1) readonly buffer VelglInstances { VelglInstance items[]; } "
        "velgl_Instances;\n"
        "VelglInstance velglInstance(int number) { return velgl_Instances.items[number]; }\n"
        "uniform int velgl_textures;\n");
}

TEST_F(ShaderInterfaceTest, MaterialsComeBeforeInstances) {
    const QByteArray text =
        shaderInterface(ShaderStage::Fragment, {QStringLiteral("ShaderPlan"), QStringLiteral("ShaderPlan")});
    EXPECT_LT(text.indexOf("struct VelglMaterial"), text.indexOf("struct VelglInstance"));
    EXPECT_EQ(text.count("sampler2D"), 2) << "only materials have textures";
}

TEST_F(ShaderInterfaceTest, PlanWithoutValuesDeclaresItsTexturesOnly) {
    auto* plan = new InstanceDataPlan(QStringLiteral("TexturePlan"));
    plan->addMember(DataType::Texture, QStringLiteral("my map"));
    InstanceDataRegistry::Instance().registerPlan(plan);
    EXPECT_EQ(shaderInterface(ShaderStage::Fragment, {plan->name(), plan->name()}),
              "uniform int velgl_textures;\n"
              "layout(binding = 0) uniform sampler2D velgl_my_map;\n"
              "bool velglHas_my_map() { return (velgl_textures & (1 << 0)) != 0; }\n");
}

TEST_F(ShaderInterfaceTest, UnknownPlansDeclareNothing) {
    EXPECT_EQ(shaderInterface(ShaderStage::Fragment, {QStringLiteral("no such plan"), QString()}),
              "uniform int velgl_textures;\n");
}

} // namespace Atelier::Vel::Testing
