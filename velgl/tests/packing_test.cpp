#include <epoxy/gl.h>

#include <velgl/instancedataplan.h>

#include <random>

#include <QtCore/QStringList>

#include <velgl/program.h>

#include "support/glfixture.h"

namespace Atelier::Vel::Testing {

namespace {

using DataType = InstanceDataPlan::DataType;

class PackingTest : public GLFixture {};

constexpr DataType kTypes[] = {DataType::Texture, DataType::Int,  DataType::UInt, DataType::Float,
                               DataType::Vec2,    DataType::Vec3, DataType::Vec4, DataType::Mat4};

// Reads every member, so that the driver removes none.
QByteArray sumOf(const InstanceDataPlan& plan) {
    QByteArray sum = "0.0";
    for (const InstanceDataPlan::Member& member : plan.members()) {
        const QByteArray name = "items[1]." + member.name.toLatin1();
        const bool isScalar =
            member.type == DataType::Int || member.type == DataType::UInt || member.type == DataType::Float;
        if (isScalar)
            sum += " + float(" + name + ")";
        else if (member.type == DataType::Mat4)
            sum += " + " + name + "[3].x";
        else if (member.type != DataType::Texture)
            sum += " + " + name + ".x";
    }
    return sum;
}

GLint property(GLuint program, const QByteArray& variable, GLenum name) {
    const GLuint index = glGetProgramResourceIndex(program, GL_BUFFER_VARIABLE, variable.constData());
    EXPECT_NE(index, GL_INVALID_INDEX) << variable.constData();
    GLint value = -1;
    if (index != GL_INVALID_INDEX)
        glGetProgramResourceiv(program, GL_BUFFER_VARIABLE, index, 1, &name, 1, nullptr, &value);
    return value;
}

void expectDriverAgrees(const InstanceDataPlan& plan) {
    const QByteArray fragment = "#version 430 core\n" + plan.glslStruct(QStringLiteral("Item")).toLatin1() +
                                "layout(std430, binding = 0) readonly buffer Items { Item items[]; };\n"
                                "out vec4 pixel;\nvoid main() { pixel = vec4(" +
                                sumOf(plan) + "); }\n";
    QString error;
    const auto program =
        Program::fromSource("#version 430 core\nvoid main() { gl_Position = vec4(0.0); }\n", fragment, error);
    ASSERT_TRUE(program) << error.toStdString() << fragment.constData();
    for (const InstanceDataPlan::Member& member : plan.members()) {
        if (member.type == DataType::Texture)
            continue;
        const QByteArray variable = "items[0]." + member.name.toLatin1();
        EXPECT_EQ(property(program->name(), variable, GL_OFFSET), member.offset) << fragment.constData();
        EXPECT_EQ(property(program->name(), variable, GL_TOP_LEVEL_ARRAY_STRIDE), plan.stride())
            << fragment.constData();
    }
}

} // namespace

TEST_F(PackingTest, DriverReportsTheSameOffsetsForEveryPairOfTypes) {
    for (const DataType first : kTypes)
        for (const DataType second : kTypes) {
            InstanceDataPlan plan(QStringLiteral("Pair"));
            plan.addMember(first, QStringLiteral("first"));
            plan.addMember(second, QStringLiteral("second"));
            plan.addMember(DataType::Float, QStringLiteral("last"));
            expectDriverAgrees(plan);
        }
}

TEST_F(PackingTest, DriverReportsTheSameOffsetsForRandomPlans) {
    std::mt19937 random(20);
    std::uniform_int_distribution<int> anyType(0, 7);
    for (int round = 0; round < 60; ++round) {
        InstanceDataPlan plan(QStringLiteral("Random"));
        plan.addMember(DataType::Float, QStringLiteral("m"));
        for (int member = 0; member < 12; ++member)
            plan.addMember(kTypes[anyType(random)], QStringLiteral("m%1").arg(member));
        expectDriverAgrees(plan);
    }
}

} // namespace Atelier::Vel::Testing
