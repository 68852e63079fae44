#include <epoxy/gl.h>

#include "testscene.h"

#include <QtGui/QMatrix4x4>

#include <gtest/gtest.h>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/program.h>
#include <velgl/shaderinterface.h>
#include <velgl/vertexarrayobject.h>

#include "support/glfixture.h"

namespace Atelier::Vel::Testing {

namespace {

using DataType = InstanceDataPlan::DataType;

} // namespace

const char* const kSceneVertexShader = R"(
in vec3 va_Vertex;
flat out int command;
void main() {
    command = velglCommand();
    gl_Position = velglInstance(command).placement * vec4(va_Vertex, 1.0);
}
)";

const char* const kSceneFragmentShader = R"(
flat in int command;
out vec4 pixel;
void main() {
    VelglMaterial material = velglMaterial(command);
    pixel = vec4(material.color, material.opacity);
    if (velglHas_first())
        pixel *= texture(velgl_first, vec2(0.5));
    if (velglHas_second())
        pixel *= texture(velgl_second, vec2(0.5));
}
)";

void registerTestPlans() {
    auto* materials = new InstanceDataPlan(QStringLiteral("TestMaterial"));
    materials->addMember(DataType::Float, QStringLiteral("opacity"));
    materials->addMember(DataType::Texture, QStringLiteral("first"));
    materials->addMember(DataType::Vec3, QStringLiteral("color"));
    materials->addMember(DataType::Texture, QStringLiteral("second"));
    InstanceDataRegistry::Instance().registerPlan(materials);
    auto* instances = new InstanceDataPlan(QStringLiteral("TestInstance"));
    instances->addMember(DataType::Mat4, QStringLiteral("placement"));
    InstanceDataRegistry::Instance().registerPlan(instances);
}

InstanceData coloredMaterial(const QColor& color) {
    const float components[] = {float(color.redF()), float(color.greenF()), float(color.blueF())};
    const float opacity = 1.0F;
    InstanceData material(QStringLiteral("TestMaterial"));
    material.set(QStringLiteral("color"), components, sizeof components);
    material.set(QStringLiteral("opacity"), &opacity, sizeof opacity);
    return material;
}

InstanceData movedInstance(const QVector3D& offset) {
    QMatrix4x4 placement;
    placement.translate(offset);
    InstanceData instance(QStringLiteral("TestInstance"));
    instance.set(QStringLiteral("placement"), placement.constData(), 16 * sizeof(float));
    return instance;
}

QSharedPointer<BufferObject> bufferOfBytes(const void* data, int count, int elementSize) {
    auto buffer = QSharedPointer<BufferObject>::create();
    EXPECT_TRUE(buffer->uploadArbitraryData(data, count, GL_STATIC_DRAW, quint64(elementSize)));
    return buffer;
}

DrawElementsIndirectCommand cellCommand(int cell) {
    DrawElementsIndirectCommand command;
    command.count = 3;
    command.instanceCount = 1;
    command.firstIndex = std::uint32_t(cell * 3);
    return command;
}

DrawBuffers* triangleRow(int cells) {
    QVector<float> positions;
    QVector<unsigned short> indices;
    QVector<DrawElementsIndirectCommand> commands;
    for (int cell = 0; cell < cells; ++cell) {
        const float left = -1.0F + 2.0F * float(cell) / float(cells);
        const float right = -1.0F + 2.0F * float(cell + 1) / float(cells);
        positions << left << -1.0F << 0.0F << right << -1.0F << 0.0F << left << 3.0F << 0.0F;
        for (int corner = 0; corner < 3; ++corner)
            indices << static_cast<unsigned short>(cell * 3 + corner);
        commands << cellCommand(cell);
    }
    auto vao = QSharedPointer<VertexArrayObject>::create();
    vao->registerBO(QStringLiteral("va_Vertex"), bufferOf(positions), 3, GL_FLOAT);
    auto* buffers = new DrawBuffers(nullptr);
    buffers->setVAO(vao);
    buffers->setIndexedDraw(bufferOf(indices), indices.size(), GL_UNSIGNED_SHORT);
    buffers->setVertexCount(unsigned(cells * 3));
    buffers->setPrimitiveType(GL_TRIANGLES);
    buffers->setDrawElementsIndirectCommands(commands.constData(), commands.size());
    return buffers;
}

std::unique_ptr<Program> sceneProgram() {
    const ShaderPlans plans{QStringLiteral("TestMaterial"), QStringLiteral("TestInstance")};
    const QByteArray version = "#version 430 core\n";
    QString error;
    std::unique_ptr<Program> program = Program::fromSource(
        version + shaderInterface(ShaderStage::Vertex, plans) + kSceneVertexShader,
        version + shaderInterface(ShaderStage::Fragment, plans) + kSceneFragmentShader, error);
    EXPECT_TRUE(program) << error.toStdString();
    return program;
}

std::unique_ptr<Program> commandProgram() {
    const QByteArray version = "#version 430 core\n";
    QString error;
    std::unique_ptr<Program> program = Program::fromSource(
        version + shaderInterface(ShaderStage::Vertex, {}) +
            "in vec3 va_Vertex;\nflat out int command;\n"
            "void main() { command = velglCommand(); gl_Position = vec4(va_Vertex, 1.0); }\n",
        version + "flat in int command;\nout vec4 pixel;\n"
                  "void main() { pixel = vec4(float(command + 1) * 10.0 / 255.0, 0.0, 0.0, 1.0); }\n",
        error);
    EXPECT_TRUE(program) << error.toStdString();
    return program;
}

QColor rowColor(GPUModel& model) {
    const std::unique_ptr<Program> program = sceneProgram();
    Framebuffer picture(QSize(8, 8));
    picture.begin();
    const AutoBinder binder(program.get());
    model.draw();
    return picture.pixels().pixelColor(2, 4);
}

void addRow(GPUModel& model, const QList<QColor>& colors) {
    QList<InstanceData> materials;
    QList<InstanceData> instances;
    for (const QColor& color : colors) {
        materials << coloredMaterial(color);
        instances << movedInstance({});
    }
    model.add(triangleRow(colors.size()), 1,
              new InstanceDataCollection(QStringLiteral("TestMaterial"), materials),
              new InstanceDataCollection(QStringLiteral("TestInstance"), instances), 0);
}

} // namespace Atelier::Vel::Testing
