#include <velmodel/modelbuilder.h>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/program.h>
#include <velgl/shaderinterface.h>
#include <velgl/vertexarrayobject.h>

#include "literal/literalbuilder.h"
#include "literal/literaltriangulation.h"
#include "support/glfixture.h"

namespace Atelier::Vel {
namespace {

using Testing::Framebuffer;

constexpr unsigned int kFloat = 0x1406;
constexpr unsigned int kUnsignedByte = 0x1401;
constexpr unsigned int kUnsignedShort = 0x1403;
constexpr unsigned int kUnsignedInt = 0x1405;
constexpr unsigned int kStaticDraw = 0x88E4;
constexpr unsigned int kTriangles = 4;

constexpr int kCells = 6;
constexpr int kCellSize = 8;

const QString kPosition = QStringLiteral("va_Vertex");
const QString kShade = QStringLiteral("va_Shade");
const QString kMaterialPlan = QStringLiteral("BuilderTestMaterial");
const QString kInstancePlan = QStringLiteral("BuilderTestInstance");
const QString kGroupId = QStringLiteral("group");

const char kVertexShader[] = R"(
in vec3 va_Vertex;
in vec4 va_Shade;
flat out int command;
out float shade;
void main() {
    command = velglCommand();
    shade = va_Shade.x;
    gl_Position = vec4(va_Vertex, 1.0);
}
)";

const char kMaterialShader[] = R"(
flat in int command;
in float shade;
out vec4 pixel;
void main() { pixel = vec4(velglMaterial(command).color * shade / 255.0, 1.0); }
)";

const char kGroupIdShader[] = R"(
flat in int command;
in float shade;
out vec4 pixel;
void main() { pixel = vec4(float(velglInstance(command).group) / 255.0, shade / 255.0, 0.0, 1.0); }
)";

/// The colour of the cell that the group with this id fills.
QColor groupColor(int id) {
    return QColor(40 * id % 256, 90 * id % 256, 255 - 30 * id);
}

/// A row of cells and vertices that nothing draws. Each cell is one quadrilateral with its own group.
class ModelBuilderGLTest : public Testing::GLFixture {
protected:
    void SetUp() override {
        GLFixture::SetUp();
        auto* materials = new InstanceDataPlan(kMaterialPlan);
        materials->addMember(InstanceDataPlan::DataType::Vec3, QStringLiteral("color"));
        InstanceDataRegistry::Instance().registerPlan(materials);
        auto* instances = new InstanceDataPlan(kInstancePlan);
        instances->addMember(InstanceDataPlan::DataType::Int, kGroupId);
        InstanceDataRegistry::Instance().registerPlan(instances);
    }

    static std::unique_ptr<Program> program(const char* fragmentShader) {
        const ShaderPlans plans{kMaterialPlan, kInstancePlan};
        const QByteArray version = "#version 430 core\n";
        QString error;
        auto result = Program::fromSource(
            version + shaderInterface(ShaderStage::Vertex, plans) + kVertexShader,
            version + shaderInterface(ShaderStage::Fragment, plans) + fragmentShader, error);
        EXPECT_TRUE(result) << error.toStdString();
        return result;
    }

    /// All vertices differ, so `vertexCount` is also the number of vertices after merging.
    void makeMesh(quint32 vertexCount) {
        Literal::Attribute positions;
        Literal::Attribute shades;
        shades.elementSize = 1;
        shades.components = 4;
        for (quint32 vertex = 0; vertex < vertexCount; ++vertex) {
            const int cell = static_cast<int>(vertex / 4);
            const bool isRight = vertex % 4 == 1 || vertex % 4 == 2;
            const float x = -1.0F + 2.0F * static_cast<float>(cell + (isRight ? 1 : 0)) / kCells;
            const float position[] = {x, vertex % 4 >= 2 ? 1.0F : -1.0F, 0.0F};
            const unsigned char shade[] = {200, static_cast<unsigned char>(vertex % 4), 0, 0};
            positions.values.append(reinterpret_cast<const char*>(position), sizeof position);
            shades.values.append(reinterpret_cast<const char*>(shade), sizeof shade);
            positions.indices.push_back(vertex);
            shades.indices.push_back(vertex);
        }
        mesh.verticesPerFace.assign(kCells, 4);
        mesh.verticesPerFace.push_back(vertexCount - kCells * 4);
        mesh.attributes = {{kPosition, positions}, {kShade, shades}};
        Literal::buildGPUFriendlyStreams(mesh, false);
        ASSERT_EQ(mesh.newVertexCount, static_cast<int>(vertexCount));
    }

    /// Groups in the order of their ids, which differs from the order of the cells. Odd ids have another draw
    /// key.
    void feed(ModelBuilder& builder) {
        builder.addVertexCountsToFaces(mesh.verticesPerFace.size(), mesh.verticesPerFace.data());
        addAttribute(builder, kPosition, 3, kFloat);
        addAttribute(builder, kShade, 4, kUnsignedByte);
        for (unsigned int cell = 0; cell < kCells; ++cell) {
            const int id = groupId(cell);
            const QColor color = groupColor(id);
            const float components[] = {static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
                                        static_cast<float>(color.blueF())};
            InstanceData material(kMaterialPlan);
            material.set(QStringLiteral("color"), components, sizeof components);
            const QString name = QStringLiteral("cell %1").arg(cell);
            builder.createMaterialGroup(name, material, id, static_cast<quint64>(id % 2));
            builder.addFacesToMaterialGroup(name, 1, &cell, QString());
        }
    }
    void addAttribute(ModelBuilder& builder, const QString& name, int components, unsigned int type) {
        const Literal::Attribute& attribute = mesh.attributes[name];
        builder.createVertexAttribute(name, components, type, 0, 0);
        builder.addValuesToVertexAttribute(
            name, static_cast<quint64>(attribute.values.size() / attribute.elementSize),
            attribute.values.constData(), type);
        builder.addIndicesToVertexAttribute(name, attribute.indices.size(), attribute.indices.data());
    }
    static int groupId(unsigned int cell) { return 1 + static_cast<int>(cell) * 5 % 6; }
    static unsigned int cellOf(int id) {
        unsigned int cell = 0;
        while (groupId(cell) != id)
            ++cell;
        return cell;
    }

    /// The triangles of all cells, in the order of their groups.
    QVector<unsigned int> triangles() {
        QVector<unsigned int> result;
        for (int id = 1; id <= kCells; ++id) {
            const unsigned int start = cellOf(id) * 4;
            const int corners[] = {static_cast<int>(start), static_cast<int>(start + 1),
                                   static_cast<int>(start + 2), static_cast<int>(start + 3)};
            Literal::triangulate3D(
                4, corners, reinterpret_cast<const float*>(mesh.attributes[kPosition].values.constData()),
                result);
        }
        return result;
    }

    void expectBuffers(const DrawBuffers& drawable, unsigned int indexType) {
        QByteArray indices;
        for (const unsigned int index : triangles())
            indices.append(reinterpret_cast<const char*>(&index), indexType == kUnsignedShort ? 2 : 4);
        EXPECT_EQ(drawable.indexType(), indexType);
        EXPECT_EQ(drawable.indexBuffer()->readBack(), indices);
        const QVector<VertexArrayObject::Stream> streams = drawable.VAO()->streams();
        ASSERT_EQ(streams.size(), 2);
        EXPECT_EQ(streams[0].name, kShade);
        EXPECT_EQ(streams[0].buffer->readBack(), mesh.attributes[kShade].gpuValues);
        EXPECT_EQ(streams[1].name, kPosition);
        EXPECT_EQ(streams[1].buffer->readBack(), mesh.attributes[kPosition].gpuValues);
    }

    /// One command per group with the drawable's key, over its part of the common index buffer.
    static void expectCommands(DrawBuffers& drawable, quint64 key) {
        const QVector<DrawElementsIndirectCommand> commands = drawable.readBackCommands();
        ASSERT_EQ(commands.size(), kCells / 2);
        for (int i = 0; i < commands.size(); ++i) {
            const int id = 2 * i + (key == 0 ? 2 : 1);
            EXPECT_EQ(commands[i].count, 6U);
            EXPECT_EQ(commands[i].instanceCount, 1U);
            EXPECT_EQ(commands[i].firstIndex, static_cast<quint32>(id - 1) * 6);
            EXPECT_EQ(commands[i].baseVertex, 0U);
            EXPECT_EQ(commands[i].baseInstance, 0U);
        }
    }

    static QImage drawn(GPUModel& model, Program& program) {
        Framebuffer picture(QSize(kCells * kCellSize, kCellSize));
        picture.begin();
        {
            const AutoBinder binder(&program);
            model.draw();
        }
        return picture.pixels();
    }

    template<typename Color>
    static void expectCells(const QImage& picture, const Color& color) {
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const QColor expected = color(groupId(static_cast<unsigned int>(x / kCellSize)));
                const QColor actual = picture.pixelColor(x, y);
                ASSERT_NEAR(actual.red(), expected.red(), 1) << x << ", " << y;
                ASSERT_NEAR(actual.green(), expected.green(), 1) << x << ", " << y;
                ASSERT_NEAR(actual.blue(), expected.blue(), 1) << x << ", " << y;
            }
    }

    void expectScene(unsigned int indexType, const QString& groupIdMember) {
        ModelBuilder builder({}, 1);
        feed(builder);
        GPUModel model;
        builder.upload(&model, InstanceData(kInstancePlan), kPosition, groupIdMember, kStaticDraw,
                       kTriangles);
        ASSERT_EQ(model.drawableCount(), 2);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(model.key(i), static_cast<quint64>(i));
            expectBuffers(*model.drawable(i), indexType);
            expectCommands(*model.drawable(i), model.key(i));
            EXPECT_EQ(model.instances(i)->readBack(), model.instances(i)->packed());
            EXPECT_EQ(model.materials(i) == nullptr, !groupIdMember.isNull());
        }
        const auto shaded = [](int value) { return (value * 200 + 127) / 255; };
        if (groupIdMember.isNull())
            expectCells(drawn(model, *program(kMaterialShader)), [&](int id) {
                const QColor color = groupColor(id);
                return QColor(shaded(color.red()), shaded(color.green()), shaded(color.blue()));
            });
        else
            expectCells(drawn(model, *program(kGroupIdShader)), [](int id) { return QColor(id, 200, 0); });
    }

public:
    Literal::Mesh mesh;
};

TEST_F(ModelBuilderGLTest, ShortIndicesDrawMaterials) {
    ASSERT_NO_FATAL_FAILURE(makeMesh(65534));
    expectScene(kUnsignedShort, QString());
}

TEST_F(ModelBuilderGLTest, ShortIndicesDrawGroupIds) {
    ASSERT_NO_FATAL_FAILURE(makeMesh(65534));
    expectScene(kUnsignedShort, kGroupId);
}

TEST_F(ModelBuilderGLTest, WideIndicesDrawMaterials) {
    ASSERT_NO_FATAL_FAILURE(makeMesh(65535));
    expectScene(kUnsignedInt, QString());
}

TEST_F(ModelBuilderGLTest, WideIndicesDrawGroupIds) {
    ASSERT_NO_FATAL_FAILURE(makeMesh(65535));
    expectScene(kUnsignedInt, kGroupId);
}

TEST_F(ModelBuilderGLTest, GeneratedNormalsReachTheBuffers) {
    ASSERT_NO_FATAL_FAILURE(makeMesh(kCells * 4 + 5));
    ModelBuilder builder;
    feed(builder);
    builder.generateNormals(QStringLiteral("va_Normal"));
    GPUModel model;
    builder.upload(&model, InstanceData(kInstancePlan), kPosition, QString(), kStaticDraw, kTriangles);
    const QVector<unsigned int> list = triangles();
    const QByteArray& positions = mesh.attributes[kPosition].gpuValues;
    const auto* const floats = reinterpret_cast<const float*>(positions.constData());
    const std::vector<float> normals =
        Literal::vertexNormals(std::vector<float>(floats, floats + positions.size() / 4),
                               std::vector<quint32>(list.begin(), list.end()));
    const QVector<VertexArrayObject::Stream> streams = model.drawable(0)->VAO()->streams();
    ASSERT_EQ(streams.size(), 3);
    EXPECT_EQ(streams[0].name, QStringLiteral("va_Normal"));
    EXPECT_EQ(streams[0].buffer->readBack(), QByteArray(reinterpret_cast<const char*>(normals.data()),
                                                        static_cast<int>(normals.size() * sizeof(float))));
}

TEST_F(ModelBuilderGLTest, ModelOutlivesItsBuilder) {
    ASSERT_NO_FATAL_FAILURE(makeMesh(kCells * 4));
    GPUModel model;
    {
        ModelBuilder builder;
        feed(builder);
        builder.upload(&model, InstanceData(kInstancePlan), kPosition, kGroupId, kStaticDraw, kTriangles);
    }
    expectCells(drawn(model, *program(kGroupIdShader)), [](int id) { return QColor(id, 200, 0); });
}

TEST_F(ModelBuilderGLTest, ModelWithoutTrianglesDrawsNothing) {
    ASSERT_NO_FATAL_FAILURE(makeMesh(kCells * 4 + 2));
    ModelBuilder builder;
    feed(builder);
    const unsigned int face = kCells;
    for (unsigned int cell = 0; cell < kCells; ++cell)
        builder.createMaterialGroup(QStringLiteral("cell %1").arg(cell), InstanceData(kMaterialPlan), -1, 0);
    builder.addFacesToMaterialGroup(QStringLiteral("cell 0"), 1, &face, QString());
    GPUModel model;
    builder.upload(&model, InstanceData(kInstancePlan), kPosition, kGroupId, kStaticDraw, kTriangles);
    ASSERT_EQ(model.drawableCount(), 1);
    EXPECT_EQ(model.drawable(0)->indexCount(), 0);
    const QImage picture = drawn(model, *program(kGroupIdShader));
    EXPECT_EQ(picture.pixelColor(1, 1), QColor(Qt::black));
}

} // namespace
} // namespace Atelier::Vel
