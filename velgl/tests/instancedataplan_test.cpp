#include <velgl/instancedataplan.h>

#include <type_traits>

#include <gmock/gmock.h>

#include <velgl/instancedata.h>

#include "glslwords.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

using DataType = InstanceDataPlan::DataType;

InstanceDataPlan planOf(std::initializer_list<DataType> types) {
    InstanceDataPlan plan(QStringLiteral("Plan"));
    for (const DataType type : types)
        plan.addMember(type, QStringLiteral("m%1").arg(plan.members().size()));
    return plan;
}

std::vector<int> offsetsOf(const InstanceDataPlan& plan) {
    std::vector<int> offsets;
    for (const InstanceDataPlan::Member& member : plan.members())
        offsets.push_back(member.offset);
    return offsets;
}

QByteArray bytesOf(float value) {
    return {reinterpret_cast<const char*>(&value), int(sizeof value)};
}

} // namespace

static_assert(std::is_convertible_v<QString, InstanceDataPlan>);

TEST(InstanceDataPlanTest, TypesHaveTheirFixedValues) {
    EXPECT_EQ(int(DataType::Texture), 0);
    EXPECT_EQ(int(DataType::Int), 1);
    EXPECT_EQ(int(DataType::UInt), 2);
    EXPECT_EQ(int(DataType::Float), 13);
    EXPECT_EQ(int(DataType::Vec2), 14);
    EXPECT_EQ(int(DataType::Vec3), 15);
    EXPECT_EQ(int(DataType::Vec4), 16);
    EXPECT_EQ(int(DataType::Mat4), 17);
}

TEST(InstanceDataPlanTest, MembersKeepTheirOrder) {
    InstanceDataPlan plan(QStringLiteral("InstanceInfo"));
    plan.addMember(DataType::Mat4, QStringLiteral("ModelMatrix"));
    plan.addMember(DataType::Texture, QStringLiteral("map"));
    EXPECT_EQ(plan.name(), QStringLiteral("InstanceInfo"));
    ASSERT_EQ(plan.members().size(), 2);
    EXPECT_EQ(plan.members()[0].name, QStringLiteral("ModelMatrix"));
    EXPECT_EQ(plan.members()[0].type, DataType::Mat4);
    EXPECT_EQ(plan.members()[1].name, QStringLiteral("map"));
    EXPECT_EQ(plan.textureNames(), QStringList{QStringLiteral("map")});
}

TEST(InstanceDataPlanTest, FloatAfterThreeComponentsUsesTheGap) {
    const InstanceDataPlan plan = planOf({DataType::Vec3, DataType::Float, DataType::Float});
    EXPECT_THAT(offsetsOf(plan), testing::ElementsAre(0, 12, 16));
    EXPECT_EQ(plan.stride(), 32);
}

TEST(InstanceDataPlanTest, MaterialOfFloatsAndColoursHasTheDefinedOffsets) {
    const InstanceDataPlan plan = planOf({DataType::Float, DataType::Float, DataType::Vec3, DataType::Vec3,
                                          DataType::Vec3, DataType::Texture, DataType::Texture});
    EXPECT_THAT(offsetsOf(plan), testing::ElementsAre(0, 4, 16, 32, 48, -1, -1));
    EXPECT_EQ(plan.stride(), 64);
}

TEST(InstanceDataPlanTest, EveryTypeIsAlignedByStd430) {
    const InstanceDataPlan plan = planOf(
        {DataType::Int, DataType::Vec2, DataType::UInt, DataType::Mat4, DataType::Float, DataType::Vec4});
    EXPECT_THAT(offsetsOf(plan), testing::ElementsAre(0, 8, 16, 32, 96, 112));
    EXPECT_EQ(plan.stride(), 128);
    EXPECT_EQ(planOf({DataType::Float}).stride(), 4);
    EXPECT_EQ(planOf({DataType::Vec2, DataType::Float}).stride(), 16);
}

TEST(InstanceDataPlanTest, PlanWithoutValuesHasNoStride) {
    EXPECT_EQ(planOf({}).stride(), 0);
    EXPECT_EQ(planOf({DataType::Texture}).stride(), 0);
    EXPECT_TRUE(planOf({DataType::Texture}).pack({InstanceData()}).isEmpty());
    EXPECT_TRUE(planOf({DataType::Texture}).glslStruct(QStringLiteral("Nothing")).isEmpty());
}

TEST(InstanceDataPlanTest, SecondMemberOfANameIsLeftOut) {
    InstanceDataPlan plan(QStringLiteral("Plan"));
    const MessageLog log;
    plan.addMember(DataType::Float, QStringLiteral("twice"));
    plan.addMember(DataType::Vec3, QStringLiteral("twice"));
    EXPECT_EQ(plan.members().size(), 1);
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(
                    QStringLiteral("Plan 'Plan' has a member 'twice' already; the second one is left out")));
}

TEST(InstanceDataPlanTest, ItemsArePackedInOrderWithZerosForMissingMembers) {
    const InstanceDataPlan plan = planOf({DataType::Float, DataType::Texture, DataType::Vec2});
    InstanceData first;
    InstanceData second;
    const float one = 1;
    const float pair[] = {2, 3};
    first.set(QStringLiteral("m0"), &one, sizeof one);
    second.set(QStringLiteral("m2"), pair, sizeof pair);
    const QByteArray zero(4, '\0');
    EXPECT_EQ(plan.pack({first, second}),
              bytesOf(1) + zero + zero + zero + zero + zero + bytesOf(2) + bytesOf(3));
}

TEST(InstanceDataPlanTest, ValuesOutsideThePlanAreCarriedButNotPacked) {
    const InstanceDataPlan plan = planOf({DataType::Float});
    InstanceData item;
    const float value = 7;
    item.set(QStringLiteral("undeclared"), &value, sizeof value);
    const MessageLog log;
    EXPECT_EQ(plan.pack({item}), QByteArray(4, '\0'));
    EXPECT_TRUE(log.messages().empty());
    EXPECT_TRUE(item.hasValue(QStringLiteral("undeclared")));
}

TEST(InstanceDataPlanTest, ValueOfAnotherSizeIsRefusedNamingBothSizes) {
    const InstanceDataPlan plan = planOf({DataType::Vec3, DataType::Float});
    InstanceData item;
    const double wide = 7;
    const float narrow = 5;
    item.set(QStringLiteral("m0"), &wide, sizeof wide);
    item.set(QStringLiteral("m1"), &narrow, sizeof narrow);
    const MessageLog log;
    EXPECT_EQ(plan.pack({item}), QByteArray(12, '\0') + bytesOf(5));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(QStringLiteral(
                    "Value 'm0' has 8 bytes, but its member of plan 'Plan' has 12; it is left out")));
}

TEST(InstanceDataPlanTest, TooManyItemsAreReportedAndNotPacked) {
    InstanceDataPlan plan(QStringLiteral("Large"));
    for (int i = 0; i < 1024; ++i)
        plan.addMember(DataType::Mat4, QStringLiteral("m%1").arg(i));
    ASSERT_EQ(plan.stride(), 0x10000);
    QList<InstanceData> items;
    for (int i = 0; i < 0x8000; ++i)
        items << InstanceData();
    const MessageLog log;
    EXPECT_TRUE(plan.pack(items).isEmpty());
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre("32768 items of plan 'Large' are too many for one buffer"));
}

TEST(InstanceDataPlanTest, TextureUnitsFollowTheOrderOfTheMembers) {
    InstanceDataPlan plan(QStringLiteral("Plan"));
    plan.addMember(DataType::Texture, QStringLiteral("z"));
    plan.addMember(DataType::Float, QStringLiteral("m"));
    plan.addMember(DataType::Texture, QStringLiteral("a"));
    EXPECT_EQ(plan.textureNames(), (QStringList{"z", "a"}));
}

TEST(InstanceDataPlanTest, TextureBeyondTheLimitIsLeftOut) {
    InstanceDataPlan plan(QStringLiteral("Plan"));
    const MessageLog log;
    for (int i = 0; i < 34; ++i)
        plan.addMember(DataType::Texture, QStringLiteral("t%1").arg(i));
    plan.addMember(DataType::Float, QStringLiteral("value"));
    EXPECT_EQ(plan.textureNames().size(), 32);
    EXPECT_EQ(plan.textureNames().last(), QStringLiteral("t31"));
    EXPECT_EQ(plan.members().size(), 33);
    EXPECT_EQ(plan.members().last().name, QStringLiteral("value"));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(
                    "Plan 'Plan' has 32 textures already, which is the limit; texture 't32' is left out",
                    "Plan 'Plan' has 32 textures already, which is the limit; texture 't33' is left out"));
}

TEST(InstanceDataPlanTest, ValuesDoNotCountAsTextures) {
    InstanceDataPlan plan = planOf({DataType::Float});
    const MessageLog log;
    for (int i = 0; i < 32; ++i) {
        plan.addMember(DataType::Float, QStringLiteral("v%1").arg(i));
        plan.addMember(DataType::Texture, QStringLiteral("t%1").arg(i));
    }
    EXPECT_EQ(plan.textureNames().size(), 32);
    EXPECT_TRUE(log.messages().empty());
}

TEST(InstanceDataPlanTest, StructDeclaresTheValueMembers) {
    const InstanceDataPlan plan = planOf({DataType::Int, DataType::UInt, DataType::Float, DataType::Texture,
                                          DataType::Vec2, DataType::Vec3, DataType::Vec4, DataType::Mat4});
    EXPECT_EQ(plan.glslStruct(QStringLiteral("Item")), QStringLiteral("struct Item {\n"
                                                                      "    int m0;\n"
                                                                      "    uint m1;\n"
                                                                      "    float m2;\n"
                                                                      "    vec2 m4;\n"
                                                                      "    vec3 m5;\n"
                                                                      "    vec4 m6;\n"
                                                                      "    mat4 m7;\n"
                                                                      "};\n"));
}

TEST(InstanceDataPlanTest, WordsOfGlslGetAnUnderscore) {
    const QStringList words = glslWords();
    for (const QString& word : words) {
        EXPECT_EQ(InstanceDataPlan::glslName(word), word + QLatin1Char('_'));
        EXPECT_EQ(InstanceDataPlan::glslName(word.toUpper()), word.toUpper());
        for (const QString& other :
             {word + QLatin1Char('_'), word + QLatin1Char('x'), QLatin1Char('x') + word})
            EXPECT_EQ(InstanceDataPlan::glslName(other), other);
    }
    InstanceDataPlan plan(QStringLiteral("Plan"));
    plan.addMember(DataType::Float, QStringLiteral("in"));
    EXPECT_EQ(plan.glslStruct(QStringLiteral("Item")), QStringLiteral("struct Item {\n    float in_;\n};\n"));
}

TEST(InstanceDataPlanTest, MacrosGetAnUnderscore) {
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("__LINE__")), QStringLiteral("___LINE__"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("__FILE__")), QStringLiteral("___FILE__"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("__VERSION__")), QStringLiteral("___VERSION__"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("GL_core_profile")),
              QStringLiteral("_GL_core_profile"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("GLint")), QStringLiteral("GLint"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("__LINE")), QStringLiteral("__LINE"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("a__b")), QStringLiteral("a__b"));
}

TEST(InstanceDataPlanTest, NamesBecomeIdentifiers) {
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("map_Kd")), QStringLiteral("map_Kd"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("my map.1")), QStringLiteral("my_map_1"));
    EXPECT_EQ(InstanceDataPlan::glslName(QString::fromUtf8("größe")), QStringLiteral("gr__e"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("2nd")), QStringLiteral("_2nd"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("gl_Position")), QStringLiteral("_gl_Position"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("gl")), QStringLiteral("gl"));
    EXPECT_EQ(InstanceDataPlan::glslName(QStringLiteral("aglow_gl_2")), QStringLiteral("aglow_gl_2"));
    EXPECT_EQ(InstanceDataPlan::glslName(QString()), QStringLiteral("_"));
}

} // namespace Atelier::Vel::Testing
