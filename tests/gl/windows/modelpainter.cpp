#include <epoxy/gl.h>

#include "windows/modelpainter.h"

#include <gtest/gtest.h>

#include <velgl/autobinder.h>
#include <velgl/gpumodel.h>
#include <velgl/program.h>
#include <velgl/shaderinterface.h>

namespace Atelier::Vel::Testing {

namespace {

constexpr char kVertexShader[] = R"(
in vec3 va_Vertex;
in vec2 va_TexCoord;
out vec2 texCoord;
flat out int command;
void main() {
    texCoord = va_TexCoord;
    command = velglCommand();
    gl_Position = velglInstance(command).ModelMatrix * vec4(va_Vertex, 1.0);
})";

constexpr char kFragmentShader[] = R"(
in vec2 texCoord;
flat in int command;
out vec4 colour;
void main() {
    colour = vec4(velglMaterial(command).Kd, 1.0);
    if (velglHas_map_Kd())
        colour *= texture(velgl_map_Kd, texCoord);
})";

QByteArray shader(ShaderStage stage, const char* body) {
    return "#version 430 core\n" + shaderInterface(stage, {"OBJMaterial", "InstanceInfo"}) + body;
}

} // namespace

ModelPainter::ModelPainter() = default;

ModelPainter::~ModelPainter() = default;

void ModelPainter::begin() {
    QString error;
    _program = Program::fromSource(shader(ShaderStage::Vertex, kVertexShader),
                                   shader(ShaderStage::Fragment, kFragmentShader), error);
    EXPECT_TRUE(_program) << error.toStdString();
}

void ModelPainter::paint() {
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    const AutoBinder binder(_program.get());
    EXPECT_TRUE(_program && _program->name() != 0) << "the context has no program";
    if (model != nullptr)
        model->draw();
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

QImage ModelPainter::pixels(const QSize& size) {
    QImage image(size, QImage::Format_RGBA8888);
    glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    return image.mirrored();
}

void ModelPainter::bindProgram() {
    const AutoBinder binder(_program.get());
}

void ModelPainter::end() {
    _program.reset();
}

} // namespace Atelier::Vel::Testing
