#include <epoxy/gl.h>

#include "framescene.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/shaderinterface.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Bench {

namespace {

using Command = DrawElementsIndirectCommand;
using DataType = InstanceDataPlan::DataType;

const QString kMaterialName = QStringLiteral("FrameMaterial");
const QString kInstanceName = QStringLiteral("FrameInstance");

const char kVertexShader[] = R"(
in vec2 va_Vertex;
flat out int command;
void main() {
    command = velglCommand();
    vec4 cell = velglInstance(command).cell;
    gl_Position = vec4(cell.xy + cell.zw * va_Vertex, 0.0, 1.0);
}
)";

// Red and green depend on the texture, blue on the material.
const char kFragmentShader[] = R"(
flat in int command;
out vec4 pixel;
void main() {
    vec2 texel = velglHas_image() ? texture(velgl_image, vec2(0.5)).rg : vec2(1.0);
    pixel = vec4(texel, velglMaterial(command).shade, 1.0);
}
)";

std::unique_ptr<Program> makeProgram() {
    const ShaderPlans plans{kMaterialName, kInstanceName};
    const QByteArray version = "#version 430 core\n";
    QString error;
    auto program =
        Program::fromSource(version + shaderInterface(ShaderStage::Vertex, plans) + kVertexShader,
                            version + shaderInterface(ShaderStage::Fragment, plans) + kFragmentShader, error);
    if (!program)
        failFrames(qPrintable(error));
    return program;
}

std::unique_ptr<Texture> makeTexture(int number) {
    auto texture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGBA8, 4, 4, 0, nullptr);
    const std::vector<FramePixel> texels(16, paintedPixel(0, number));
    if (!texture->bind())
        failFrames("no texture");
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    texture->unbind();
    return texture;
}

InstanceData materialOf(int command, Texture& texture) {
    InstanceData material(kMaterialName);
    const float shade = float(command % 256) / 255.0F;
    material.set(QStringLiteral("shade"), &shade, sizeof shade);
    material.setTexture(QStringLiteral("image"), &texture);
    return material;
}

InstanceData instanceOf(int command, int side) {
    InstanceData instance(kInstanceName);
    const int column = command % side;
    const int row = command / side;
    const float size = 2.0F / float(side);
    const float cell[] = {-1.0F + size * float(column), -1.0F + size * float(row), size, size};
    instance.set(QStringLiteral("cell"), cell, sizeof cell);
    return instance;
}

QSharedPointer<BufferObject> makeBuffer(const void* data, int count, unsigned int elementSize) {
    auto buffer = QSharedPointer<BufferObject>::create();
    if (!buffer->uploadArbitraryData(data, count, GL_STATIC_DRAW, elementSize))
        failFrames("no buffer");
    return buffer;
}

} // namespace

int FrameCase::side() const {
    return int(std::ceil(std::sqrt(commands)));
}

FramePixel paintedPixel(int command, int texture) {
    return {static_cast<unsigned char>(texture % 256), static_cast<unsigned char>(texture / 256),
            static_cast<unsigned char>(command % 256), 255};
}

void registerFramePlans() {
    auto* material = new InstanceDataPlan(kMaterialName);
    material->addMember(DataType::Float, QStringLiteral("shade"));
    material->addMember(DataType::Texture, QStringLiteral("image"));
    InstanceDataRegistry::Instance().registerPlan(material);
    auto* instance = new InstanceDataPlan(kInstanceName);
    instance->addMember(DataType::Vec4, QStringLiteral("cell"));
    InstanceDataRegistry::Instance().registerPlan(instance);
}

FrameScene::FrameScene(const FrameCase& measured) : program(makeProgram()) {
    for (int number = 0; number < measured.textures; ++number)
        textures.push_back(makeTexture(number));
    QList<InstanceData> materials;
    QList<InstanceData> instances;
    for (int command = 0; command < measured.commands; ++command) {
        materials << materialOf(command, *textures[std::size_t(command % measured.textures)]);
        instances << instanceOf(command, measured.side());
    }
    auto vao = QSharedPointer<VertexArrayObject>::create();
    vao->registerBO(QStringLiteral("va_Vertex"), makeBuffer(kFrameTriangle, 3, 2 * sizeof(float)), 2,
                    GL_FLOAT);
    auto* buffers = new DrawBuffers;
    buffers->setVAO(vao);
    buffers->setIndexedDraw(makeBuffer(kFrameIndices, 3, sizeof kFrameIndices[0]), 3, GL_UNSIGNED_SHORT);
    const std::vector<Command> commands(std::size_t(measured.commands), Command{3, 1, 0, 0, 0});
    buffers->setDrawElementsIndirectCommands(commands.data(), measured.commands);
    model.add(buffers, 1, new InstanceDataCollection(kMaterialName, materials),
              new InstanceDataCollection(kInstanceName, instances), 0);
}

void failFrames(const char* reason) {
    std::fprintf(stderr, "velmodel_frames: %s\n", reason);
    std::exit(1);
}

} // namespace Atelier::Vel::Bench
